#include "setup_option.h"

#include <CLI/CLI.hpp>

#include <string_view>

#include "file_bytes.h"
#include "platform.h"
#include "zorvat/code_page.h"
#include "zorvat/file_step.h"

namespace zorvat::cli {
namespace {

// The whole file, or why it cannot be read.
std::optional<std::string> read_bytes(const std::string& path, std::string& bytes) {
  if (system_file_system().kind(path) == FileSystem::Kind::Directory) return "it is a folder";
  return read_file_bytes(path, bytes);
}

// The mark an editor may put before UTF-8 text (Notepad's "UTF-8 with BOM").
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A settings file's bytes taken apart: the string, and what stands around it that is
// not part of it (a byte-order mark before it, the line end after it).
struct SettingsLine {
  std::string byte_order_mark;  // "" or kByteOrderMark
  std::string setup;
  std::string line_end;             // "", "\n" or "\r\n"
  bool more_than_one_line = false;  // a line end before the last one
};

SettingsLine split_settings_line(std::string_view bytes) {
  SettingsLine line;
  if (bytes.starts_with(kByteOrderMark)) {
    line.byte_order_mark = kByteOrderMark;
    bytes.remove_prefix(kByteOrderMark.size());
  }
  if (!bytes.empty() && bytes.back() == '\n') {
    const bool cr_lf = bytes.size() >= 2 && bytes[bytes.size() - 2] == '\r';
    line.line_end = cr_lf ? "\r\n" : "\n";
    bytes.remove_suffix(line.line_end.size());
  }
  line.more_than_one_line = bytes.find('\n') != std::string_view::npos;
  line.setup = bytes;
  return line;
}

}  // namespace

SetupOption::SetupOption(CLI::App& command, std::string& setup, const std::string& setup_help,
                         const std::string& file_help)
    : setup_(setup) {
  text_option_ = command.add_option("--setup", setup, setup_help)->type_name("TEXT");
  file_option_ = command.add_option("--setup-file", path_, file_help)->type_name("PATH");
}

std::optional<std::string> SetupOption::read() {
  if (file_option_->count() == 0) return std::nullopt;
  if (text_option_->count() != 0)
    return "--setup and --setup-file both give the settings string: give one of them";
  const std::string name = "settings file " + path_;
  std::string bytes;
  if (auto problem = read_bytes(path_, bytes)) return name + ": cannot be read (" + *problem + ")";
  SettingsLine line = split_settings_line(bytes);
  if (line.more_than_one_line)
    return name +
           ": line 2: the file holds the settings string on one line, and nothing after it "
           "but its line end";
  setup_ = std::move(line.setup);
  read_ = setup_;
  byte_order_mark_ = std::move(line.byte_order_mark);
  line_end_ = std::move(line.line_end);
  from_file_ = true;
  return std::nullopt;
}

std::optional<Error> SetupOption::write_back(const std::string& new_setup) const {
  if (!from_file_ || new_setup == read_) return std::nullopt;
  const std::string name = "settings file " + path_;
  const std::string kept = "; it still holds the settings string it was read with";
  // The file must read back as the same string: a line end inside it would not.
  const std::string bytes = byte_order_mark_ + new_setup + line_end_;
  const SettingsLine again = split_settings_line(bytes);
  if (again.more_than_one_line || again.setup != new_setup)
    return Error(rt::kInvalidProcedureCall, std::string(kComponentSource),
                 name + ": not updated (the new settings string holds a line end)" + kept);
  try {
    SafeOutputFiles(system_file_system(), utf8_code_page()).write_file(path_, bytes);
  } catch (const Error& error) {
    return Error(error.number(), std::string(kComponentSource),
                 name + ": not updated (" + error.description() + ")" + kept);
  }
  return std::nullopt;
}

}  // namespace zorvat::cli
