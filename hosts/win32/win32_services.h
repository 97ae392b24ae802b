// The services the export classes ask of the machine, on Windows: the common Save
// dialog, modal message boxes, WinHelp and the setup forms for the user; the safe file
// step over the Win32 file system; the local date as today. Every Windows host (the COM
// server, the command line) shows the same dialogs and writes through the same step.
#pragma once

#include <map>
#include <memory>

#include "zorvat/file_step.h"
#include "zorvat/ui_services.h"

namespace zorvat::win32 {

// The caption of a message box whose class gives none: the component's own name.
inline constexpr wchar_t kDefaultCaption[] = L"zorvat";

class FormWindow;

class Win32Ui final : public UiServices {
 public:
  Win32Ui();
  ~Win32Ui() override;
  Win32Ui(const Win32Ui&) = delete;
  Win32Ui& operator=(const Win32Ui&) = delete;

  SaveDialogResult save_dialog(const SaveDialogRequest& request) override;
  void message_box(const MessageBoxRequest& request) override;
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override;
  void show_help(std::string_view help_file, std::string_view window,
                 unsigned long context) override;
  // FindExecutableA on the document, then "program "document"" started minimised
  // without the focus; a program that cannot be started raises 53 File not found.
  void launch_associated_program(std::string_view document) override;

  // The common Open dialog, with the request's title and starting folder.
  OpenDialogResult open_dialog(const OpenDialogRequest& request) override;
  // The forms (win32_forms_ui.cpp): the setup forms as modal dialogs, the progress
  // window as a modeless window.
  void show_form(FormModel& form) override;
  void show_modeless(FormModel& form) override;
  void hide_modeless(FormModel& form) override;

 private:
  std::map<const FormModel*, std::unique_ptr<FormWindow>> modeless_;
};

// The safe file step's primitives: a temporary file beside the target, flushed, then
// moved over the target; failures raise the classic file errors.
class Win32FileSystem final : public FileSystem {
 public:
  Kind kind(const std::string& path) override;
  std::unique_ptr<OutputStream> create_beside(const std::string& target,
                                              std::string& temporary_path) override;
  std::unique_ptr<OutputStream> open_for_output(const std::string& path) override;
  void replace(const std::string& temporary, const std::string& target) override;
  void remove(const std::string& path) noexcept override;
};

class Win32Clock final : public Clock {
 public:
  Date today() const override;
};

}  // namespace zorvat::win32
