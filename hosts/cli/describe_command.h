// `zorvat describe CLASS [--json | --markdown] [--defaults]`, `zorvat describe --all
// --markdown`: what an export class writes and what
// its settings string holds, field by field (name, values, the setup form's design
// value, the error the check raises), so that a settings string can be written
// without the form. With --defaults: the settings string a new user starts from (the
// form's design values), then whether the class's check accepts it or which fields
// must be filled first. With --markdown: the same table as a README section (the
// README's settings reference is generated from it). `zorvat classes` lists every class
// with what it writes. `--all --markdown` prints every class's section, the README's
// settings reference as `./project docs` writes it.
//
// Exit status: 0, 2 usage error (an unknown class).
#pragma once

#include <iosfwd>
#include <string>

namespace CLI {
class App;
}

namespace zorvat::cli {

class DescribeCommands {
 public:
  // Adds the `describe` and `classes` subcommands to `app`.
  explicit DescribeCommands(CLI::App& app);

  // Runs the parsed command; nothing (false) when neither was parsed.
  bool parsed() const;
  int run(std::ostream& out, std::ostream& err) const;

 private:
  CLI::App* describe_;
  CLI::App* classes_;
  std::string class_name_;
  bool json_ = false;
  bool defaults_ = false;
  bool markdown_ = false;
  bool all_ = false;
};

}  // namespace zorvat::cli
