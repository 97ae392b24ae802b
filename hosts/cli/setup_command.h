// `zorvat setup CLASS [--setup TEXT | --setup-file PATH] [--title TEXT]`: runs the
// class's Setup, its setup form shown in the terminal, and prints the new settings
// string; with --setup-file, a saved string that differs is also written back to the
// file.
//
// On a terminal the form is interactive (terminal_form.h); on a Windows console it is
// the Windows form the COM server shows, with its message boxes. Without one, standard
// input is a script of user actions, one per line (zorvat/form_script.h). Message
// boxes are printed on stderr as "message: TEXT".
//
// Exit status: 0 saved, 1 cancelled (the settings string is printed either way, as
// the form wrote it back), 2 usage error (also an invalid script line), 3 Setup raised
// an error (one line on stderr, as for export; also a settings file that could not be
// written back, after the new string is printed).
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "setup_option.h"

namespace CLI {
class App;
}

namespace zorvat::cli {

class SetupCommand {
 public:
  // Adds the `setup` subcommand to `app`.
  explicit SetupCommand(CLI::App& app);

  bool parsed() const;
  // Runs the parsed command; `interactive` when stdin and stderr are a terminal.
  int run(std::ostream& out, std::ostream& err, bool interactive);

 private:
  CLI::App* command_;
  std::string class_name_;
  std::string setup_;
  std::optional<SetupOption> setup_option_;
  std::string title_;
};

}  // namespace zorvat::cli
