// `--setup TEXT` and `--setup-file PATH`: the settings string on the command line, or
// kept in a file of one line, as a host keeps it between exports.
//
// The file holds the string on its first line. A final line end (LF or CR LF) is not
// part of it, nor is a UTF-8 byte-order mark an editor put before it; everything else
// is, blanks and other CRs included, as the class sees it.
// A file with a second line, a missing or unreadable file, and both options together
// are usage errors.
//
// Where the command changes the string (an export advancing its batch number, the setup
// form saved), the new string is written back to the same file through the safe file
// step (a temporary file beside it, then one rename over it), beginning and ending as
// the file did: with its byte-order mark and its line end, or none. A string that did not change
// leaves the file untouched.
#pragma once

#include <optional>
#include <string>

#include "zorvat/error.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zorvat::cli {

class SetupOption {
 public:
  // Adds --setup and --setup-file to `command`; `setup` receives the string, from the
  // file once read() has read it. `file_help` says what the command does with the file.
  SetupOption(CLI::App& command, std::string& setup, const std::string& setup_help,
              const std::string& file_help);
  SetupOption(const SetupOption&) = delete;
  SetupOption& operator=(const SetupOption&) = delete;

  // After the command line is parsed: reads the file when --setup-file was given. The
  // usage error when it cannot be used, nothing otherwise.
  std::optional<std::string> read();

  // Writes `new_setup` back to the file the string was read from, when it was read
  // from one and differs. The error when the file could not be written (it is then
  // left as it was).
  std::optional<Error> write_back(const std::string& new_setup) const;

 private:
  std::string& setup_;
  CLI::Option* text_option_ = nullptr;
  CLI::Option* file_option_ = nullptr;
  std::string path_;
  bool from_file_ = false;
  std::string read_;             // the string as the file held it
  std::string byte_order_mark_;  // the file's own, written back before the new string
  std::string line_end_;         // the file's own, written back after the new string
};

}  // namespace zorvat::cli
