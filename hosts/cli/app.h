// The `zorvat` command: runs one export class as the time-and-attendance host does.
//
//   zorvat export CLASS --cards FILE|- [--setup TEXT | --setup-file PATH] [--title TEXT]
//                       [--out PATH] [--today YYYY-MM-DD] [--answer yes|no]... [--json]
//                       QB2000: --qb-company COMPANY.json [--qb-log FILE]
//   zorvat validate CLASS [--setup TEXT | --setup-file PATH] [--title TEXT] [--json]
//   zorvat classes
//   zorvat help [COMMAND]
//
// export, validate and reconcile take --two-digit-year-max YEAR, the latest year a
// two-digit year stands for (two_digit_year_option.h). `--cards -` reads the cards from
// standard input (cards_input.h); --setup-file keeps the settings string in a file,
// which a successful export writes the new string back to (setup_option.h). `zorvat`
// alone lists the commands on stderr, a usage error.
//
// Exit status: 0 Execute returned True (validate: the settings passed), 1 it returned
// False, 2 usage error (bad arguments, unreadable or malformed cards file), 3 an error
// was raised (also when the export succeeded but its settings file could not be written
// back).
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace zorvat::cli {

enum ExitStatus { kSucceeded = 0, kReturnedFalse = 1, kUsageError = 2, kErrorRaised = 3 };

// Runs the command with `args` (without the program name). `out` and `err` are the
// standard streams; the terminal decides whether the Save dialog may prompt.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        bool interactive);

}  // namespace zorvat::cli
