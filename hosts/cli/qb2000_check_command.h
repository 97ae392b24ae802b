// `zorvat export QB2000 --cards FILE --setup TEXT [--json] --check`: the cards the
// export would stop on, listed before any session with QuickBooks is opened. First the
// cards holding a date that a two-digit year does not carry through the window
// (--two-digit-year-max), which the export refuses before it sends anything; then the
// cards whose names or notes are longer than QuickBooks' fields take (the export
// would stop on the first of them with error 380, sending nothing of that request set).
//
// Plain output: one line per card with such a date (naming the card by its index from
// 0), then one line per field problem, "card N: <description>" (N from 1), or a line
// saying every field fits. --json: {"class": "QB2000", "dates": [{"index", "employee",
// "property", "date", "sent", "description"}], "problems": [{"card", "employee",
// "field", "length", "limit", "description"}], "error": null}. Exit status: 0 when
// nothing stops the export, 4 when some card does, 2 usage error (unreadable cards), 3
// an error was raised (the class's check of its settings).
#pragma once

#include <iosfwd>
#include <string>

namespace zorvat::cli {

// Whether `class_name` names the QuickBooks export ("QB2000" or "zorvat.QB2000").
bool names_qb2000(const std::string& class_name);

int run_qb2000_check(const std::string& cards_path, const std::string& setup, bool json,
                     std::ostream& out, std::ostream& err);

}  // namespace zorvat::cli
