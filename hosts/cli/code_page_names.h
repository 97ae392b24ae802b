// How a user names a code page on the command line, the same on every platform:
// "utf-8", "windows-1252", "cp1252", "ibm850" or the bare number.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zorvat::cli {

// The code page's number for a name of those forms (65001 for UTF-8); no value for
// a name of another form (which a converter may still know by that name).
std::optional<unsigned> code_page_number(std::string_view name);

}  // namespace zorvat::cli
