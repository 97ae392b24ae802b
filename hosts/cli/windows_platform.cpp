// zorvat.exe on Windows: the safe file step over the Win32 file system, and for a user
// at a console the Windows dialogs and forms every Windows host shows (hosts/win32).
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "file_bytes.h"
#include "platform.h"
#include "win32/calendar_setting.h"
#include "win32/win32_services.h"

namespace zorvat::cli {
namespace {

bool is_console(DWORD which) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(which), &mode) != FALSE;
}

}  // namespace

FileSystem& system_file_system() {
  static win32::Win32FileSystem file_system;
  return file_system;
}

bool read_standard_input(std::string& bytes) {
  // Text mode would turn CR LF into LF and stop at the first Ctrl-Z.
  if (_setmode(_fileno(stdin), _O_BINARY) == -1) return false;
  return append_rest_of(stdin, bytes);
}

bool interactive_session() {
  // A console's input handle, not merely a character device: NUL is one too.
  return is_console(STD_INPUT_HANDLE);
}

UiServices* desktop_ui() {
  static win32::Win32Ui ui;
  return &ui;
}

int default_two_digit_year_max() {
  return win32::users_two_digit_year_max();
}

}  // namespace zorvat::cli
