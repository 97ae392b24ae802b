// What an export class asks of the user and of the machine. A class never opens a
// dialog or a file itself; the host (the command line, the COM server, a test
// script) implements these services.
#pragma once

#include <string>
#include <string_view>

#include "zorvat/date.h"

namespace zorvat {

struct SaveDialogRequest {
  // The common dialog's filter, "description | pattern" as the class words it.
  std::string filter;
  // The proposed file name; empty when the class proposes none.
  std::string file_name;
};

struct SaveDialogResult {
  bool cancelled = true;
  std::string file_name;  // may be empty when the user confirmed an empty name
};

enum class MessageIcon { None, Information, Exclamation, Critical, Question };

struct MessageBoxRequest {
  std::string text;
  std::string title;  // empty: the default title
  MessageIcon icon = MessageIcon::None;
  bool foreground = false;
  bool system_modal = false;
};

enum class QuestionButtons { YesNo, OkCancel, RetryCancel };
enum class Answer { Ok, Cancel, Yes, No, Retry };

class UiServices {
 public:
  virtual ~UiServices() = default;
  // The common Save dialog, cancel reported as `cancelled`.
  virtual SaveDialogResult save_dialog(const SaveDialogRequest& request) = 0;
  // A modal message box with only an OK button.
  virtual void message_box(const MessageBoxRequest& request) = 0;
  // A modal question; returns the button pressed.
  virtual Answer question(const MessageBoxRequest& request, QuestionButtons buttons) = 0;
  // Opens the help file at a context topic in the given window.
  virtual void show_help(std::string_view help_file, std::string_view window,
                         unsigned long context) = 0;
};

// Where the classes' output goes: one whole text to one path, replacing the file.
// Raises the classic file errors (52, 53, 61, 70, 75, 76) when it cannot.
class OutputFiles {
 public:
  virtual ~OutputFiles() = default;
  virtual void write_file(const std::string& path, std::string_view contents) = 0;
};

// The date the classes take as today.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual Date today() const = 0;
};

// The services handed to every export class when it is created.
struct ExportContext {
  UiServices& ui;
  OutputFiles& files;
  const Clock& clock;
};

// The system clock: today in local time.
const Clock& system_clock();

}  // namespace zorvat
