// The services the export classes ask of the machine, on Windows: the common Save
// dialog, modal message boxes and WinHelp for the user; the safe file step over the
// Win32 file system; the local date as today.
#pragma once

#include "zorvat/file_step.h"
#include "zorvat/ui_services.h"

namespace zorvat::com {

// The caption of a message box whose class gives none: the component's own name.
inline constexpr wchar_t kDefaultCaption[] = L"zorvat";

class Win32Ui final : public UiServices {
 public:
  SaveDialogResult save_dialog(const SaveDialogRequest& request) override;
  void message_box(const MessageBoxRequest& request) override;
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override;
  void show_help(std::string_view help_file, std::string_view window,
                 unsigned long context) override;
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

// The services every object of this server is created with.
ExportContext server_context();

}  // namespace zorvat::com
