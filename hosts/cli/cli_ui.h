// The command line's answers to what a class asks of the user.
//
// The Save dialog is answered from --out (an empty --out is an empty file name);
// without it a terminal user is asked for a path (on Windows, a user at a console gets
// the Windows Save dialog), and with no terminal the dialog is cancelled. Message boxes are
// collected (and, in plain mode, printed on stderr as they come). Questions take the answers given
// in advance (--answer), in order; past those they are asked on a terminal and otherwise get their
// default answer: No, or Cancel. The progress window's message line is printed on stderr whenever
// it changes.
#pragma once

#include <cstdio>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "zorvat/ui_services.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {

class CommandLineUi final : public UiServices {
 public:
  struct Options {
    std::optional<std::string> out;  // the Save dialog's answer
    bool interactive = false;        // stdin and stderr are a terminal
    bool echo_messages = true;       // print message boxes on stderr
    std::deque<Answer> answers;      // the answers of the next questions, in order
  };
  explicit CommandLineUi(Options options) : options_(std::move(options)) {}

  SaveDialogResult save_dialog(const SaveDialogRequest& request) override;
  void message_box(const MessageBoxRequest& request) override;
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override;
  void show_help(std::string_view help_file, std::string_view window,
                 unsigned long context) override;
  void show_modeless(FormModel& form) override;

  const std::vector<std::string>& messages() const { return messages_; }

 private:
  std::optional<std::string> read_line(const std::string& prompt);

  Options options_;
  std::vector<std::string> messages_;
  std::string progress_message_;
};

// Remembers the path of the file a class wrote, for the report.
class RecordingFiles final : public OutputFiles {
 public:
  explicit RecordingFiles(OutputFiles& target) : target_(target) {}
  void write_file(const std::string& path, std::string_view contents) override {
    target_.write_file(path, contents);
    written_ = path;
    only_ascii_ = is_ascii(contents);
  }
  const std::optional<std::string>& written() const { return written_; }
  // Whether the text written was ASCII alone, which every code page the command writes
  // in has.
  bool wrote_only_ascii() const { return only_ascii_; }

 private:
  OutputFiles& target_;
  std::optional<std::string> written_;
  bool only_ascii_ = true;
};

class FixedDateClock final : public Clock {
 public:
  explicit FixedDateClock(Date today) : today_(today) {}
  Date today() const override { return today_; }

 private:
  Date today_;
};

}  // namespace zorvat::cli
