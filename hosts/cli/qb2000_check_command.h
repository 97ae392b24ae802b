// `zorvat export QB2000 --cards FILE --setup TEXT [--json] --check`: the cards whose
// names or notes are longer than QuickBooks' fields take, listed before any session
// with QuickBooks is opened (the export itself would stop on the first of them with
// error 380, sending nothing of that request set).
//
// Plain output: one line per problem, "card N: <description>", or a line saying
// every field fits. --json: {"class": "QB2000", "problems": [{"card", "employee",
// "field", "length", "limit", "description"}], "error": null}. Exit status: 0 when
// everything fits, 4 when some card does not, 2 usage error (unreadable cards), 3 an
// error was raised (the class's check of its settings).
#pragma once

#include <iosfwd>
#include <string>

namespace zorvat::cli {

// Whether `class_name` names the QuickBooks export ("QB2000" or "zorvat.QB2000").
bool names_qb2000(const std::string& class_name);

int run_qb2000_check(const std::string& cards_path, const std::string& setup, bool json,
                     std::ostream& out, std::ostream& err);

}  // namespace zorvat::cli
