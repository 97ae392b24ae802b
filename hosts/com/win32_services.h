// The services the server's objects are created with: the Windows dialogs, forms, file
// step and clock every Windows host shares (hosts/win32), and the QuickBooks session
// manager of the SDK.
#pragma once

#include "../win32/win32_services.h"

namespace zorvat::com {

// The services every object of this server is created with.
ExportContext server_context();

}  // namespace zorvat::com
