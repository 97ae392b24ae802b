// launch_witness.exe: stands in for QuickBooks as the program associated with a
// company file. Started as `launch_witness.exe "file"`, it writes beside the file a
// "<file>.launched" holding its command line as received and how it was asked to show
// its window, then exits.
#include <windows.h>

#include <shellapi.h>

#include <string>

int main() {
  int count = 0;
  LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  if (arguments == nullptr || count < 2) return 2;
  const std::wstring record_path = std::wstring(arguments[1]) + L".launched";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  GetStartupInfoW(&startup);
  std::wstring text = L"command line: ";
  text += GetCommandLineW();
  text += L"\nshow window: ";
  text += (startup.dwFlags & STARTF_USESHOWWINDOW) ? std::to_wstring(startup.wShowWindow)
                                                   : std::wstring(L"default");
  text += L"\n";
  LocalFree(arguments);
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()),
                                        nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), utf8.data(), bytes,
                      nullptr, nullptr);
  // Written aside and renamed, so that the record appears whole or not at all.
  const std::wstring partial_path = record_path + L".partial";
  HANDLE file = CreateFileW(partial_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return 1;
  DWORD written = 0;
  const bool done =
      WriteFile(file, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr) != FALSE;
  CloseHandle(file);
  if (!done || !MoveFileExW(partial_path.c_str(), record_path.c_str(), MOVEFILE_REPLACE_EXISTING))
    return 1;
  return 0;
}
