#include "win32_services.h"

#include <windows.h>

#include <commdlg.h>
#include <dlgs.h>

#include <algorithm>
#include <string>

#include "raii.h"
#include "zorvat/error.h"

namespace zorvat::com {
namespace {

// The common dialog keeps the chosen path in this buffer; paths may be long.
constexpr DWORD kFileBufferChars = 32768;
constexpr wchar_t kSaveStateProperty[] = L"zorvat.SaveDialog";

// The window the dialogs belong to: the host's active window on this thread, so
// that they are modal to the host.
HWND owner_window() {
  return GetActiveWindow();
}

// "Description | pattern | ..." as the classes word it, to the dialog's list of
// NUL-separated strings ending in two NULs.
std::wstring filter_list(std::string_view filter) {
  std::wstring list = to_wide(filter);
  for (wchar_t& c : list)
    if (c == L'|') c = L'\0';
  list.push_back(L'\0');
  list.push_back(L'\0');
  return list;
}

// The Save dialog ends on Save only when a name was typed. A user who presses Save
// with no name is answered as the classes expect: the dialog closes and reports an
// empty name, on which they say "No file name selected!". The dialog window is
// subclassed from the hook's first message to see the Save command first.
struct SaveDialogState {
  WNDPROC dialog_procedure = nullptr;
  bool empty_name_confirmed = false;
};

bool file_name_is_blank(HWND dialog) {
  HWND name = GetDlgItem(dialog, cmb13);
  if (name == nullptr) name = GetDlgItem(dialog, edt1);
  if (name == nullptr) return false;
  const int length = GetWindowTextLengthW(name);
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  GetWindowTextW(name, text.data(), length + 1);
  return text.find_first_not_of(L" \t", 0) >= static_cast<std::size_t>(length);
}

LRESULT CALLBACK save_dialog_procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* state = static_cast<SaveDialogState*>(GetPropW(dialog, kSaveStateProperty));
  if (state == nullptr) return DefWindowProcW(dialog, message, wparam, lparam);
  const WNDPROC procedure = state->dialog_procedure;
  if (message == WM_COMMAND && LOWORD(wparam) == IDOK && file_name_is_blank(dialog)) {
    state->empty_name_confirmed = true;
    return CallWindowProcW(procedure, dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                           reinterpret_cast<LPARAM>(GetDlgItem(dialog, IDCANCEL)));
  }
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    RemovePropW(dialog, kSaveStateProperty);
  }
  return CallWindowProcW(procedure, dialog, message, wparam, lparam);
}

UINT_PTR CALLBACK save_dialog_hook(HWND child, UINT message, WPARAM, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    const auto* dialog_data = reinterpret_cast<const OPENFILENAMEW*>(lparam);
    auto* state = reinterpret_cast<SaveDialogState*>(dialog_data->lCustData);
    HWND dialog = GetParent(child);
    SetPropW(dialog, kSaveStateProperty, state);
    state->dialog_procedure = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
        dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&save_dialog_procedure)));
  }
  return 0;
}

UINT icon_style(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information:
      return MB_ICONINFORMATION;
    case MessageIcon::Exclamation:
      return MB_ICONEXCLAMATION;
    case MessageIcon::Critical:
      return MB_ICONERROR;
    case MessageIcon::Question:
      return MB_ICONQUESTION;
    case MessageIcon::None:
      break;
  }
  return 0;
}

int show_message(const MessageBoxRequest& request, UINT buttons) {
  const std::wstring text = to_wide(request.text);
  const std::wstring title = request.title.empty() ? kDefaultCaption : to_wide(request.title);
  UINT style = buttons | icon_style(request.icon);
  style |= request.system_modal ? MB_SYSTEMMODAL : MB_APPLMODAL;
  if (request.foreground) style |= MB_SETFOREGROUND;
  return MessageBoxW(owner_window(), text.c_str(), title.c_str(), style);
}

[[noreturn]] void raise_last_error() {
  raise_runtime(file_error_from_win32(GetLastError()));
}

// An open output file; closed without a report if the file step gives up on it.
class Win32Stream final : public OutputStream {
 public:
  explicit Win32Stream(HANDLE file) : file_(file) {}

  void write(std::string_view bytes) override {
    // One write of the whole text; a text past 1 GB takes more than one call.
    while (!bytes.empty()) {
      const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 0x40000000));
      DWORD written = 0;
      if (!WriteFile(file_.get(), bytes.data(), chunk, &written, nullptr)) raise_last_error();
      bytes.remove_prefix(written);
    }
  }

  void finish() override {
    // Devices cannot be flushed; a file must reach the disk before it replaces the
    // previous one.
    if (!FlushFileBuffers(file_.get()) && GetLastError() != ERROR_INVALID_FUNCTION &&
        GetLastError() != ERROR_INVALID_HANDLE)
      raise_last_error();
    if (!file_.close()) raise_last_error();
  }

 private:
  unique_handle file_;
};

std::wstring folder_of(const std::wstring& path) {
  const auto separator = path.find_last_of(L"\\/");
  if (separator == std::wstring::npos) return L".";
  if (separator == 0 || (separator == 2 && path[1] == L':')) return path.substr(0, separator + 1);
  return path.substr(0, separator);
}

}  // namespace

SaveDialogResult Win32Ui::save_dialog(const SaveDialogRequest& request) {
  const std::wstring filter = filter_list(request.filter);
  std::wstring file(kFileBufferChars, L'\0');
  const std::wstring proposed = to_wide(request.file_name);
  proposed.copy(file.data(), std::min<std::size_t>(proposed.size(), kFileBufferChars - 1));

  SaveDialogState state;
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner_window();
  dialog.lpstrFilter = request.filter.empty() ? nullptr : filter.c_str();
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = file.data();
  dialog.nMaxFile = kFileBufferChars;
  dialog.Flags =
      OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_ENABLEHOOK | OFN_ENABLESIZING;
  dialog.lCustData = reinterpret_cast<LPARAM>(&state);
  dialog.lpfnHook = &save_dialog_hook;

  if (GetSaveFileNameW(&dialog)) return {false, to_utf8(file.c_str(), wcslen(file.c_str()))};
  // Cancel, a closed window or a dialog failure: the classes return False on each.
  if (state.empty_name_confirmed) return {false, {}};
  return {true, {}};
}

void Win32Ui::message_box(const MessageBoxRequest& request) {
  show_message(request, MB_OK);
}

Answer Win32Ui::question(const MessageBoxRequest& request, QuestionButtons buttons) {
  UINT style = MB_YESNO;
  if (buttons == QuestionButtons::OkCancel) style = MB_OKCANCEL;
  if (buttons == QuestionButtons::RetryCancel) style = MB_RETRYCANCEL;
  switch (show_message(request, style)) {
    case IDOK:
      return Answer::Ok;
    case IDYES:
      return Answer::Yes;
    case IDNO:
      return Answer::No;
    case IDRETRY:
      return Answer::Retry;
    default:
      return Answer::Cancel;
  }
}

void Win32Ui::show_help(std::string_view help_file, std::string_view window,
                        unsigned long context) {
  std::string path(help_file);
  if (!window.empty()) {
    path += '>';
    path += window;
  }
  WinHelpA(owner_window(), path.c_str(), HELP_CONTEXT, context);
}

FileSystem::Kind Win32FileSystem::kind(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(to_wide(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Kind::Missing;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return Kind::Directory;
  if (attributes & FILE_ATTRIBUTE_DEVICE) return Kind::Other;
  return Kind::Regular;
}

std::unique_ptr<OutputStream> Win32FileSystem::create_beside(const std::string& target,
                                                             std::string& temporary_path) {
  // A new, uniquely named empty file in the target's folder, so that the rename that
  // replaces the target never crosses a volume.
  wchar_t name[MAX_PATH + 1] = {};
  if (GetTempFileNameW(folder_of(to_wide(target)).c_str(), L"zvt", 0, name) == 0)
    raise_last_error();
  temporary_path = to_utf8(name, wcslen(name));
  HANDLE file = CreateFileW(name, GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    DeleteFileW(name);
    raise_runtime(file_error_from_win32(error));
  }
  return std::make_unique<Win32Stream>(file);
}

std::unique_ptr<OutputStream> Win32FileSystem::open_for_output(const std::string& path) {
  HANDLE file = CreateFileW(to_wide(path).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) raise_last_error();
  return std::make_unique<Win32Stream>(file);
}

void Win32FileSystem::replace(const std::string& temporary, const std::string& target) {
  if (!MoveFileExW(to_wide(temporary).c_str(), to_wide(target).c_str(),
                   MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    raise_last_error();
}

void Win32FileSystem::remove(const std::string& path) noexcept {
  if (!path.empty()) DeleteFileW(to_wide(path).c_str());
}

Date Win32Clock::today() const {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return Date::from_civil(now.wYear, now.wMonth, now.wDay);
}

namespace {
Win32Ui server_ui;
Win32FileSystem server_file_system;
SafeOutputFiles server_files(server_file_system);
const Win32Clock server_clock;
}  // namespace

ExportContext server_context() {
  return {server_ui, server_files, server_clock};
}

}  // namespace zorvat::com
