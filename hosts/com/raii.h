// The Win32 resource owners and text conversions every Windows host shares
// (hosts/win32), in the server's namespace.
#pragma once

#include "../win32/raii.h"

namespace zorvat::com {
using namespace zorvat::win32;
}  // namespace zorvat::com
