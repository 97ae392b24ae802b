// The code page the command writes files in and reads them back with: Windows-1252 by
// default on every platform (the code page of the US Windows these payroll systems run
// on), zorvat.exe the system's ANSI code page; `--code-page NAME|NUMBER` chooses another
// ("utf-8", "windows-1250", "1252", "850", ...).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "zorvat/code_page.h"

namespace zorvat::cli {

// What `--code-page` says when it is not given.
std::string default_code_page_name();

// The code page a user names: "utf-8" (or 65001), "windows-NNNN", "cpNNNN" or the bare
// number NNNN, or any name the platform's converter knows. Null when the platform has
// no such code page.
std::unique_ptr<CodePage> code_page_named(std::string_view name);

// The usage error for a name code_page_named does not know.
std::string unknown_code_page_message(std::string_view name);

}  // namespace zorvat::cli
