// answer_save.exe: answers a Save dialog of another process as a user would, for the
// installer's tests, where a scripting host (cscript) runs an export and cannot answer
// the component's Save dialog itself.
//
//   answer_save.exe C:\folder\file.out [seconds]
//
// Waits (30 seconds unless told) for a visible Save dialog of any process, types the
// path into its file name box and presses Save. Prints "answered: <dialog title>" and
// exits 0, or prints "no Save dialog" and exits 1.
#include <windows.h>

#include <commdlg.h>
#include <dlgs.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

std::wstring class_name(HWND window) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, 64);
  return name;
}

// The edit control of the dialog's file name box (a combo box on newer dialogs).
HWND file_name_edit(HWND dialog) {
  HWND box = GetDlgItem(dialog, cmb13);
  if (box == nullptr) return GetDlgItem(dialog, edt1);
  if (class_name(box) == L"Edit") return box;
  HWND edit = FindWindowExW(box, nullptr, L"Edit", nullptr);
  return edit != nullptr ? edit : box;
}

BOOL CALLBACK find_save_dialog(HWND window, LPARAM data) {
  if (IsWindowVisible(window) && class_name(window) == L"#32770" &&
      (GetDlgItem(window, cmb13) != nullptr || GetDlgItem(window, edt1) != nullptr)) {
    *reinterpret_cast<HWND*>(data) = window;
    return FALSE;
  }
  return TRUE;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) {
    std::fwprintf(stderr, L"usage: answer_save.exe PATH [seconds]\n");
    return 2;
  }
  const std::wstring path = argv[1];
  const int seconds = argc > 2 ? static_cast<int>(std::wcstol(argv[2], nullptr, 10)) : 30;
  for (int tick = 0; tick < seconds * 20; ++tick) {
    HWND dialog = nullptr;
    EnumWindows(&find_save_dialog, reinterpret_cast<LPARAM>(&dialog));
    if (dialog == nullptr) {
      Sleep(50);
      continue;
    }
    Sleep(200);  // let the dialog finish its initialisation
    HWND edit = file_name_edit(dialog);
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    wchar_t title[256] = {};
    GetWindowTextW(dialog, title, 256);
    HWND save = GetDlgItem(dialog, IDOK);
    if (save != nullptr)
      PostMessageW(save, BM_CLICK, 0, 0);
    else
      PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    std::wprintf(L"answered: %ls\n", title);
    return 0;
  }
  std::wprintf(L"no Save dialog\n");
  return 1;
}
