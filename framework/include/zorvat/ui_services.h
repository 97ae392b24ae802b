// What an export class asks of the user and of the machine. A class never opens a
// dialog or a file itself; the host (the command line, the COM server, a test
// script) implements these services.
#pragma once

#include <string>
#include <string_view>

#include "zorvat/date.h"

namespace zorvat {

namespace quickbooks {
class SessionManagerFactory;
}

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

struct OpenDialogRequest {
  std::string title;
  // The common dialog's filter, "description | pattern" as the class words it.
  std::string filter;
  std::string initial_folder;
};

struct OpenDialogResult {
  bool cancelled = true;
  std::string file_name;
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

class FormModel;

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

  // The common Open dialog, cancel reported as `cancelled`. A host without one
  // answers as if the user cancelled.
  virtual OpenDialogResult open_dialog(const OpenDialogRequest& request);

  // Shows a form (zorvat/forms.h) modally: returns once the form has hidden itself
  // (Save, Cancel) or was closed (FormModel::close_box). A host without forms raises
  // 5, the setup form "is not available on this host".
  virtual void show_form(FormModel& form);
  // Shows a modeless window (the progress window), or brings it up to date and to
  // the front after a change. A host without windows shows nothing.
  virtual void show_modeless(FormModel& form);
  // Takes a modeless window off the screen.
  virtual void hide_modeless(FormModel& form);

  // Starts the program associated with a document (its file type's program), with the
  // document as its argument, minimised and without taking the focus. A host that
  // cannot start programs does nothing.
  virtual void launch_associated_program(std::string_view document);
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
  // Where the QuickBooks export gets its session managers; null on a host that
  // cannot reach QuickBooks (the export then fails as if none were installed).
  quickbooks::SessionManagerFactory* quickbooks = nullptr;
};

// The system clock: today in local time.
const Clock& system_clock();

}  // namespace zorvat
