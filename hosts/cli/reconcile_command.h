// `zorvat reconcile` and `zorvat export ... --check`: every minute of the cards
// accounted for in an export class's file.
//
//   zorvat reconcile CLASS --cards FILE --setup TEXT|--setup-file PATH [--title TEXT] [--json]
//                    FILE_WRITTEN
//   zorvat export CLASS --cards FILE --setup TEXT|--setup-file PATH [--title TEXT] [--json]
//                 --check
//
// Both print a table (employee, category, input hours, in the file, difference,
// reason) with totals, or one JSON object with --json. Exit status: 0 every difference
// has a named reason, 4 some difference has none, 2 usage error (bad arguments,
// unreadable cards, a written file that is not in the class's layout), 3 an error was
// raised (the class's check of its settings, or settings the export would fail on).
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "setup_option.h"

namespace CLI {
class App;
}

namespace zorvat::cli {

inline constexpr int kUnexplainedDifference = 4;

// The export's own options, as the export command parsed them.
struct ExportOptions {
  const std::string& class_name;
  const std::string& cards_path;
  const std::string& setup;
  const std::string& title;
  const std::string& code_page;
  bool json;
};

class ReconcileCommands {
 public:
  // Adds the `reconcile` command to `app` and the --check flag to `export_command`.
  ReconcileCommands(CLI::App& app, CLI::App& export_command);

  // Runs reconcile, or export --check, when the command line asked for it; no value
  // when it asked for something else.
  std::optional<int> run(const ExportOptions& export_options, std::ostream& out, std::ostream& err);

 private:
  CLI::App* reconcile_ = nullptr;
  bool check_ = false;
  bool strict_ = false;
  std::string class_name_;
  std::string cards_path_;
  std::string setup_;
  std::optional<SetupOption> setup_option_;
  std::string title_;
  std::string written_path_;
  std::string code_page_;  // the code page the written file is read in
  bool json_ = false;
};

}  // namespace zorvat::cli
