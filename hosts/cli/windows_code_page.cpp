// zorvat.exe writes in the system's ANSI code page unless told otherwise, as the COM
// server does in a classic host; any code page Windows has can be named.
#include "code_page_names.h"
#include "code_page_option.h"
#include "win32/win32_code_page.h"

namespace zorvat::cli {

std::string default_code_page_name() {
  return code_page_name(win32::system_ansi_code_page());
}

std::unique_ptr<CodePage> code_page_named(std::string_view name) {
  const std::optional<unsigned> number = code_page_number(name);
  if (!number || !win32::has_code_page(*number)) return nullptr;
  return std::make_unique<win32::Win32CodePage>(*number, code_page_name(*number));
}

}  // namespace zorvat::cli
