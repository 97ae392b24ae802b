#include "cli_ui.h"

#include <iostream>

#include "platform.h"
#include "zorvat/forms.h"

namespace zorvat::cli {

std::optional<std::string> CommandLineUi::read_line(const std::string& prompt) {
  std::cerr << prompt << std::flush;
  std::string line;
  if (!std::getline(std::cin, line)) {
    std::cerr << '\n';
    return std::nullopt;
  }
  return line;
}

SaveDialogResult CommandLineUi::save_dialog(const SaveDialogRequest& request) {
  if (options_.out) return {false, *options_.out};
  if (!options_.interactive) return {true, {}};
  // Where the system has a Save dialog of its own (Windows), the user gets that one.
  if (UiServices* desktop = desktop_ui()) return desktop->save_dialog(request);
  std::cerr << "Save as  (" << request.filter << ")\n";
  std::string prompt = "File name";
  if (!request.file_name.empty()) prompt += " [" + request.file_name + "]";
  prompt += " (end of input cancels): ";
  const auto line = read_line(prompt);
  if (!line) return {true, {}};
  // Confirming the dialog as it stands keeps the proposed name.
  return {false, line->empty() ? request.file_name : *line};
}

void CommandLineUi::message_box(const MessageBoxRequest& request) {
  messages_.push_back(request.text);
  if (options_.echo_messages) {
    if (!request.title.empty()) std::cerr << request.title << ": ";
    std::cerr << request.text << '\n';
  }
}

Answer CommandLineUi::question(const MessageBoxRequest& request, QuestionButtons buttons) {
  messages_.push_back(request.text);
  const Answer fallback = buttons == QuestionButtons::YesNo ? Answer::No : Answer::Cancel;
  if (!options_.answers.empty()) {
    const Answer answer = options_.answers.front();
    options_.answers.pop_front();
    if (options_.echo_messages) {
      if (!request.title.empty()) std::cerr << request.title << ": ";
      std::cerr << request.text << '\n'
                << "(answered " << (answer == Answer::Yes ? "yes" : "no") << ")\n";
    }
    return answer;
  }
  if (!options_.interactive) {
    if (options_.echo_messages) std::cerr << request.text << '\n';
    return fallback;
  }
  const char* choices = buttons == QuestionButtons::YesNo      ? " [y/n] "
                        : buttons == QuestionButtons::OkCancel ? " [o(k)/c(ancel)] "
                                                               : " [r(etry)/c(ancel)] ";
  while (true) {
    const auto line =
        read_line((request.title.empty() ? "" : request.title + ": ") + request.text + choices);
    if (!line) return fallback;
    const char first = line->empty() ? '\0' : static_cast<char>((*line)[0] | 0x20);
    switch (buttons) {
      case QuestionButtons::YesNo:
        if (first == 'y') return Answer::Yes;
        if (first == 'n') return Answer::No;
        break;
      case QuestionButtons::OkCancel:
        if (first == 'o') return Answer::Ok;
        if (first == 'c') return Answer::Cancel;
        break;
      case QuestionButtons::RetryCancel:
        if (first == 'r') return Answer::Retry;
        if (first == 'c') return Answer::Cancel;
        break;
    }
  }
}

void CommandLineUi::show_help(std::string_view help_file, std::string_view window,
                              unsigned long context) {
  std::cerr << "help: " << help_file << window << ", topic " << context << '\n';
}

void CommandLineUi::show_modeless(FormModel& form) {
  // Only the progress window is shown modeless; its message line tells the stage.
  const Control* message = form.find("lblMessage");
  if (message == nullptr || message->caption.empty() || message->caption == progress_message_)
    return;
  progress_message_ = message->caption;
  std::cerr << progress_message_ << '\n';
}

}  // namespace zorvat::cli
