// The output files of the commands that take no --code-page: the default code page.
#include "code_page_option.h"
#include "platform.h"

namespace zorvat::cli {

OutputFiles& safe_output_files() {
  static const std::unique_ptr<CodePage> code_page = code_page_named(default_code_page_name());
  static SafeOutputFiles files(system_file_system(), code_page ? *code_page : utf8_code_page());
  return files;
}

}  // namespace zorvat::cli
