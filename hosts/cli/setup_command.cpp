#include "setup_command.h"

#include <CLI/CLI.hpp>

#include <iostream>

#include "app.h"
#include "cli_ui.h"
#include "export_classes.h"
#include "platform.h"
#include "terminal_form.h"
#include "zorvat/error.h"
#include "zorvat/form_script.h"

namespace zorvat::cli {
namespace {

// The user of `zorvat setup`: forms in the terminal or from a script on standard
// input, message boxes as "message: TEXT" lines on stderr. Save dialogs, questions
// and help are answered as for export. Where the system has dialogs of its own
// (Windows), an interactive user gets the real form and everything it opens instead.
class SetupUi final : public UiServices {
 public:
  SetupUi(std::ostream& err, bool interactive)
      : err_(err),
        interactive_(interactive),
        desktop_(interactive ? desktop_ui() : nullptr),
        common_({std::nullopt, interactive, false, {}}) {}

  SaveDialogResult save_dialog(const SaveDialogRequest& request) override {
    return common_.save_dialog(request);
  }
  void message_box(const MessageBoxRequest& request) override {
    if (desktop_ != nullptr) return desktop_->message_box(request);
    err_ << "message: " << request.text << std::endl;
  }
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override {
    if (desktop_ != nullptr) return desktop_->question(request, buttons);
    if (!interactive_) err_ << "message: " << request.text << std::endl;
    return common_.question(request, buttons);
  }
  void show_help(std::string_view help_file, std::string_view window,
                 unsigned long context) override {
    if (desktop_ != nullptr) return desktop_->show_help(help_file, window, context);
    err_ << "help: " << help_file << window << ", topic " << context << std::endl;
  }

  OpenDialogResult open_dialog(const OpenDialogRequest& request) override {
    if (desktop_ != nullptr) return desktop_->open_dialog(request);
    // Only a terminal user can answer; a script's lines are its actions on the form.
    if (!interactive_) return {};
    err_ << request.title << "  (" << request.filter << ", folder " << request.initial_folder
         << ")\nFile name (empty cancels): " << std::flush;
    std::string line;
    if (!std::getline(std::cin, line) || line.empty()) return {};
    return {false, line};
  }

  void show_form(FormModel& form) override {
    if (desktop_ != nullptr) return desktop_->show_form(form);
    if (interactive_) {
      run_terminal_form(form, std::cin, err_);
      return;
    }
    const bool valid = run_form_script(
        form,
        []() -> std::optional<std::string> {
          std::string line;
          if (!std::getline(std::cin, line)) return std::nullopt;
          return line;
        },
        [&](int line, const ScriptOutcome& outcome) {
          err_ << "zorvat: script line " << line << ": " << outcome.problem << std::endl;
        });
    if (!valid) script_failed_ = true;
  }

  bool script_failed() const { return script_failed_; }

 private:
  std::ostream& err_;
  bool interactive_;
  UiServices* desktop_;
  CommandLineUi common_;
  bool script_failed_ = false;
};

}  // namespace

SetupCommand::SetupCommand(CLI::App& app)
    : command_(app.add_subcommand("setup", "edit a class's settings on its setup form")) {
  command_->add_option("CLASS", class_name_, "export class name or ProgID (zorvat.Generic)")
      ->required();
  setup_option_.emplace(*command_, setup_, "the settings string (SetupData) the form starts from",
                        "read the settings string from this file (one line); a saved form "
                        "writes the new one back");
  command_->add_option("--title", title_, "the Title the host assigns");
  command_->footer(
      "On a terminal the form is interactive; otherwise standard input is a script of\n"
      "user actions, one per line:\n"
      "  type NAME[(INDEX)] TEXT, clear NAME[(INDEX)], check NAME[(INDEX)] 0|1,\n"
      "  choose NAME[(INDEX)], select NAME ITEMTEXT, leave NAME[(INDEX)],\n"
      "  click cmdButton(INDEX)   (0 Save, 1 Cancel, 2 Help)\n"
      "Prints the new settings string. Exit status: 0 saved, 1 cancelled, 2 usage\n"
      "error or invalid script line, 3 Setup raised an error.");
}

bool SetupCommand::parsed() const {
  return command_->parsed();
}

int SetupCommand::run(std::ostream& out, std::ostream& err, bool interactive) {
  if (auto problem = setup_option_->read()) {
    err << "zorvat: " << *problem << '\n';
    return kUsageError;
  }
  SetupUi ui(err, interactive);
  const ExportContext context{ui, safe_output_files(), system_clock()};
  auto instance = formats::export_registry().create(class_name_, context);
  if (!instance) {
    std::string known;
    for (const auto& name : formats::export_registry().class_names())
      known += (known.empty() ? "" : ", ") + name;
    err << "zorvat: unknown export class \"" << class_name_ << "\" (known: " << known << ")\n";
    return kUsageError;
  }

  instance->Title = title_;
  instance->SetupData(setup_);
  bool saved = false;
  try {
    saved = instance->Setup();
  } catch (const Error& error) {
    err << "zorvat: error " << error.number() << " in " << error.source() << ": "
        << error.description() << '\n';
    return kErrorRaised;
  }
  if (ui.script_failed()) return kUsageError;
  const std::string new_setup = instance->SetupData();
  out << new_setup << '\n';
  if (!saved) return kReturnedFalse;
  if (auto not_written_back = setup_option_->write_back(new_setup)) {
    err << "zorvat: " << not_written_back->description() << '\n';
    return kErrorRaised;
  }
  return kSucceeded;
}

}  // namespace zorvat::cli
