// The Win32 resource owners and text conversions every Windows host shares
// (hosts/win32), named in the server's namespace one by one.
#pragma once

#include "../win32/raii.h"

namespace zorvat::com {
using win32::bstr_to_utf8;
using win32::ComPtr;
using win32::make_bstr;
using win32::to_utf8;
using win32::to_wide;
using win32::unique_bstr;
using win32::unique_excepinfo;
using win32::unique_handle;
using win32::unique_hkey;
using win32::unique_variant;
}  // namespace zorvat::com
