#include "win32_services.h"

#include "qbfc_session.h"

namespace zorvat::com {
namespace {
Win32Ui server_ui;
Win32FileSystem server_file_system;
SafeOutputFiles server_files(server_file_system);
const Win32Clock server_clock;
}  // namespace

ExportContext server_context() {
  return {server_ui, server_files, server_clock, &server_session_factory()};
}

}  // namespace zorvat::com
