// Reconciliation: what the cards hold, per employee and category, against what an
// export class's file carries, every difference named by the rule that causes it.
//
// For each class an expectation works out from the cards and the settings alone what
// its file must carry (which amounts, under which code, rounded how, and why time is
// left out); nothing is written and no counter advances. Reconciling a written file
// reads it back and compares it with that expectation: time the expectation accounts
// for is explained, any other difference is not.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/export_class.h"
#include "zorvat/reconcile/limits.h"
#include "zorvat/reconcile/reasons.h"
#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"
#include "zorvat/variant.h"

namespace zorvat::reconcile {

// One rule's share of a row's difference (0 for a rule that only relabels time).
struct Adjustment {
  Reason reason;
  Amount delta = 0;
};

// One employee's category: the card's time and what the file carries of it.
struct Row {
  std::string employee;  // the key the file writes for the card
  std::string category;  // REG, OT1, OT2, VAC, HOL, SIC, OTH (or a code only the file has)
  Amount input = 0;
  Amount in_file = 0;
  std::vector<Adjustment> adjustments;

  Amount difference() const { return in_file - input; }
  bool explained() const;
  // The card has time in the category, or the file has, or a rule applies to it.
  bool worth_showing() const { return input != 0 || in_file != 0 || !adjustments.empty(); }
};

// An amount the file must carry, on behalf of a row.
struct ExpectedRecord {
  std::string employee;
  std::string code;
  std::optional<CivilDate> date;
  Amount amount = 0;
  std::size_t row = 0;
};

struct Expectation {
  std::string layout;
  std::vector<Row> rows;  // in_file: what the class's rules leave of the input
  std::vector<ExpectedRecord> records;
  // What the file must state about itself, by the names its reader gives them.
  std::vector<std::pair<std::string, std::int64_t>> controls;
};

// What reconciliation knows of one export class: how to create it (for its check of
// the settings) and, for a class that writes a file, what the file must carry and how
// it is read back. Each class registers its own (see the formats' class list).
// Settings a payroll office would use with a class, each passing the class's check:
// what the benchmark exports with.
struct SettingsExample {
  std::string_view label;  // "ADP7-EPIP"
  std::string_view setup;
  std::string_view title = {};
  bool cards_with_days = false;  // the class reads the cards' day records
};

struct ClassRules {
  std::string_view class_name;
  std::unique_ptr<ExportClass> (*create)(ExportContext context);
  // Null for a class that writes no file (QB2000 talks to a QuickBooks session).
  Expectation (*expect)(const Variant& cards, const SettingsFields& settings,
                        std::string_view title) = nullptr;
  // Reads a written file; raises ReadError for a file not in the layout.
  FileContents (*read)(std::string_view bytes, const SettingsFields& settings,
                       std::string_view title, const Variant& cards) = nullptr;

  std::span<const SettingsExample> examples = {};
  // What the file can hold of the cards (fixed widths, a batch limit) and may let a
  // payroll system misread; null for a class with no such limits.
  const FileLimits* limits = nullptr;

  bool reads_files() const { return expect != nullptr && read != nullptr; }
};

struct Reconciliation {
  std::string class_name;
  std::string layout;
  bool file_read = false;  // false for a check before writing
  std::vector<Row> rows;
  // Numbers the file states about itself that are not what the cards and settings
  // make them (a trailer total, a batch or ticket number), one sentence each.
  std::vector<std::string> problems;

  // Rows without a named reason for their difference, and problems.
  std::size_t unexplained() const;
};

// The class's own check of its settings, as a host runs it before an export, on a
// host that shows no dialog and writes no file; raises the class's error.
void run_settings_check(const ClassRules& rules, std::string_view setup, std::string_view title);

// The analysis before writing: the class's check of its settings, then what the file
// will carry.
Reconciliation check(const ClassRules& rules, const Variant& cards, std::string_view setup,
                     std::string_view title);
// The analysis of a written file (raises ReadError when it is not in the layout).
Reconciliation reconcile(const ClassRules& rules, const Variant& cards, std::string_view setup,
                         std::string_view title, std::string_view file_bytes);

// Hours with `decimals` (0 to 9) decimals ("12.50", "-0.0167"); `sign` adds "+" to
// positives.
std::string hours_text(Amount amount, int decimals, bool sign = false);

// The readable table: a row per employee and category with time or a reason, the
// totals, and the reasons used with their sentences.
std::string table_text(const Reconciliation& reconciliation);

}  // namespace zorvat::reconcile
