#include "win32_services.h"

#include "qbfc_session.h"
#include "win32/win32_code_page.h"

namespace zorvat::com {
namespace {
win32::Win32Ui server_ui;
win32::Win32FileSystem server_file_system;
// Files in the ANSI code page, as a classic component writes its text files.
SafeOutputFiles server_files(server_file_system, win32::ansi_code_page());
const win32::Win32Clock server_clock;
}  // namespace

ExportContext server_context() {
  return {server_ui, server_files, server_clock, &server_session_factory()};
}

}  // namespace zorvat::com
