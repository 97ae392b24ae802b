#include "win32_services.h"

#include <windows.h>

#include <commdlg.h>
#include <dlgs.h>
#include <shellapi.h>

#include <algorithm>
#include <string>

#include "raii.h"
#include "zorvat/error.h"

namespace zorvat::win32 {
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
// NUL-separated strings ending in two NULs; empty for no filter.
std::wstring filter_list(std::string_view filter) {
  if (filter.empty()) return {};
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

// The module this code is linked into: zorvat.dll in the server, zorvat.exe on the
// command line.
HMODULE this_module() {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(&this_module), &module);
  return module;
}

// A help file named without a folder lies beside the component, as the classic
// components resolve their help file against their own folder. WinHelpA takes the
// path in the ANSI code page.
std::string help_file_path(std::string_view help_file) {
  if (help_file.find_first_of("\\/:") != std::string_view::npos) return std::string(help_file);
  wchar_t module_path[MAX_PATH + 1] = {};
  const DWORD length = GetModuleFileNameW(this_module(), module_path, MAX_PATH);
  std::wstring folder(module_path, length);
  const auto separator = folder.find_last_of(L"\\/");
  if (length == 0 || length >= MAX_PATH || separator == std::wstring::npos)
    return std::string(help_file);
  folder.resize(separator + 1);
  const std::wstring wide = folder + to_wide(help_file);
  const int size = WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return std::string(help_file);
  std::string path(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, path.data(), size, nullptr, nullptr);
  path.resize(static_cast<std::size_t>(size - 1));
  return path;
}

[[noreturn]] void raise_last_error() {
  raise_runtime(file_error_from_win32(GetLastError()));
}

// An open output file; closed without a report if the file step gives up on it.
class Win32Stream final : public OutputStream {
 public:
  explicit Win32Stream(HANDLE file) : file_(file) {}

  void write(std::string_view bytes) override {
    // All of the bytes; more than 1 GB takes more than one call.
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

// The longest name one folder entry may have on the file systems Windows writes to.
constexpr std::size_t kMaxNameChars = 255;

std::size_t name_length(const std::wstring& path) {
  const auto separator = path.find_last_of(L"\\/:");
  return separator == std::wstring::npos ? path.size() : path.size() - separator - 1;
}

// GetTempFileName reports a folder that is missing, or is a file, as ERROR_DIRECTORY,
// which is no "Path not found" of its own: the folder is looked at to tell.
[[noreturn]] void raise_temporary_file_error(const std::wstring& folder) {
  const DWORD error = GetLastError();
  const DWORD attributes = GetFileAttributesW(folder.c_str());
  if (error == ERROR_DIRECTORY &&
      (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY)))
    raise_runtime(file_error_from_win32(ERROR_PATH_NOT_FOUND));
  raise_runtime(file_error_from_win32(error));
}

// The fields the Save and Open dialogs share: the owner, the filter list (none when
// empty) and the file buffer, in an Explorer-style resizable dialog that leaves the
// current folder alone.
OPENFILENAMEW file_dialog(const std::wstring& filter, std::wstring& file) {
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner_window();
  dialog.lpstrFilter = filter.empty() ? nullptr : filter.c_str();
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = file.data();
  dialog.nMaxFile = static_cast<DWORD>(file.size());
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_ENABLESIZING;
  return dialog;
}

}  // namespace

SaveDialogResult Win32Ui::save_dialog(const SaveDialogRequest& request) {
  const std::wstring filter = filter_list(request.filter);
  std::wstring file(kFileBufferChars, L'\0');
  const std::wstring proposed = to_wide(request.file_name);
  proposed.copy(file.data(), std::min<std::size_t>(proposed.size(), kFileBufferChars - 1));

  SaveDialogState state;
  OPENFILENAMEW dialog = file_dialog(filter, file);
  dialog.Flags |= OFN_ENABLEHOOK;
  dialog.lCustData = reinterpret_cast<LPARAM>(&state);
  dialog.lpfnHook = &save_dialog_hook;

  if (GetSaveFileNameW(&dialog)) return {false, to_utf8(file.c_str(), wcslen(file.c_str()))};
  // Cancel, a closed window or a dialog failure: the classes return False on each.
  if (state.empty_name_confirmed) return {false, {}};
  return {true, {}};
}

OpenDialogResult Win32Ui::open_dialog(const OpenDialogRequest& request) {
  const std::wstring filter = filter_list(request.filter);
  const std::wstring title = to_wide(request.title);
  const std::wstring folder = to_wide(request.initial_folder);
  std::wstring file(kFileBufferChars, L'\0');
  OPENFILENAMEW dialog = file_dialog(filter, file);
  dialog.lpstrTitle = title.empty() ? nullptr : title.c_str();
  dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
  if (!GetOpenFileNameW(&dialog)) return {};
  return {false, to_utf8(file.c_str(), wcslen(file.c_str()))};
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
  // "file>window": the window name may come with its ">" or without.
  std::string path = help_file_path(help_file);
  if (!window.empty()) {
    if (window.front() != '>') path += '>';
    path += window;
  }
  WinHelpA(nullptr, path.c_str(), HELP_CONTEXT, context);
}

namespace {
// Text for the ANSI calls, in the system's code page as a classic program passes it.
std::string to_ansi(std::string_view text) {
  const std::wstring wide = to_wide(text);
  const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()),
                                         nullptr, 0, nullptr, nullptr);
  std::string ansi(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), ansi.data(), length,
                      nullptr, nullptr);
  return ansi;
}
}  // namespace

void Win32Ui::launch_associated_program(std::string_view document) {
  const std::string file = to_ansi(document);
  // The classic call: a result of at most 255 characters, cut at its first NUL
  // (the buffer itself is as large as the call may fill). A document without an
  // associated program leaves the result empty.
  char program[MAX_PATH + 1] = {};
  FindExecutableA(file.c_str(), "", program);
  std::string command_line(program, strnlen(program, 255));
  command_line += " \"" + file + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_SHOWMINNOACTIVE;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(nullptr, command_line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process))
    raise_runtime(rt::kFileNotFound);
  unique_handle thread(process.hThread);
  unique_handle started(process.hProcess);
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
  const std::wstring folder = folder_of(to_wide(target));
  if (GetTempFileNameW(folder.c_str(), L"zvt", 0, name) == 0) raise_temporary_file_error(folder);
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
  // Windows refuses to replace a read-only file and to give a name longer than the file
  // system allows. Wine (run by root, at least) replaces the one and reports the other
  // as a missing file, so both are checked first and raised as Windows reports them.
  const std::wstring destination = to_wide(target);
  const DWORD attributes = GetFileAttributesW(destination.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
    raise_runtime(file_error_from_win32(ERROR_ACCESS_DENIED));
  if (name_length(destination) > kMaxNameChars)
    raise_runtime(file_error_from_win32(ERROR_FILENAME_EXCED_RANGE));
  if (!MoveFileExW(to_wide(temporary).c_str(), destination.c_str(),
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

}  // namespace zorvat::win32
