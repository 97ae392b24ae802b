#include "qb2000_check_command.h"

#include <nlohmann/json.hpp>

#include <ostream>

#include "app.h"
#include "card_limits.h"
#include "cards_input.h"
#include "cli_ui.h"
#include "platform.h"
#include "qb2000/qb2000.h"
#include "qb2000/qb2000_check.h"
#include "qb2000/qb2000_dates.h"
#include "reconcile_command.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/text.h"

namespace zorvat::cli {
namespace {

void print_error(bool json, std::ostream& out, std::ostream& err, long number,
                 const std::string& source, const std::string& description) {
  if (json) {
    nlohmann::ordered_json report;
    report["class"] = "QB2000";
    report["dates"] = nlohmann::ordered_json::array();
    report["problems"] = nlohmann::ordered_json::array();
    report["error"] = {{"number", number}, {"source", source}, {"description", description}};
    out << report.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  } else if (number == 0) {
    err << "zorvat: " << description << '\n';
  } else {
    err << "zorvat: error " << number << " in " << source << ": " << description << '\n';
  }
}

// The card a problem was found on (numbered from 1 in collection order), named as every
// other report names a card: its index from 0 and its ExportID, else its Number.
CardReadPlace problem_card(const Variant& cards, std::size_t number_from_1) {
  std::optional<CardReadPlace> place;
  std::size_t index = 0;
  for_each(cards, [&](const Variant& card) {
    if (++index == number_from_1) place = card_place(card, index - 1);
  });
  return place ? *place : CardReadPlace{number_from_1 - 1, {}, {}, {}};
}

// The field-limit problems, one line each, or a line saying every field fits.
void print_field_problems(const std::vector<formats::qb2000::CardFieldProblem>& problems,
                          const Variant& cards, std::ostream& out) {
  if (problems.empty()) {
    out << "Every name, payroll item and note of the cards fits QuickBooks' fields.\n";
    return;
  }
  for (const auto& [card, problem] : problems)
    out << card_text(problem_card(cards, card)) << ": " << problem.description() << '\n';
  out << problems.size() << (problems.size() == 1 ? " field is" : " fields are")
      << " longer than QuickBooks takes; the export would stop there.\n";
}

// "YYYY-MM-DD", as the cards file writes its dates.
std::string iso_date(Date date) {
  static const FormatPattern pattern("yyyy-mm-dd");
  return pattern(Variant(date));
}

}  // namespace

bool names_qb2000(const std::string& class_name) {
  return names_class(class_name, "QB2000");
}

int run_qb2000_check(const std::string& cards_path, const std::string& setup, bool json,
                     std::ostream& out, std::ostream& err) {
  Variant cards;
  try {
    cards = load_cards(cards_path);
  } catch (const CardsFileError& error) {
    print_error(json, out, err, 0, "zorvat", error.what());
    return kUsageError;
  }
  std::vector<formats::qb2000::CenturyShiftedDate> dates;
  std::vector<formats::qb2000::CardFieldProblem> problems;
  try {
    // The class's check of its settings comes first, as before an export; no session
    // manager is given, so none can be opened.
    CommandLineUi ui({std::nullopt, false, false, {}});
    FixedDateClock clock(system_clock().today());
    formats::QB2000 qb2000(ExportContext{ui, safe_output_files(), clock, nullptr});
    qb2000.ValidateSetupData(setup);
    // The dates first: the export refuses them before it looks at anything else.
    dates = formats::qb2000::century_shifted_dates(cards);
    problems = formats::qb2000::field_limit_problems(cards, setup);
  } catch (const Error& error) {
    print_error(json, out, err, error.number(), error.source(), error.description());
    return kErrorRaised;
  }

  if (json) {
    nlohmann::ordered_json report;
    report["class"] = "QB2000";
    report["dates"] = nlohmann::ordered_json::array();
    for (const formats::qb2000::CenturyShiftedDate& date : dates)
      report["dates"].push_back({{"index", date.card},
                                 {"employee", date.employee},
                                 {"property", date.period_start ? "PeriodStart" : "DayDate"},
                                 {"date", iso_date(date.held)},
                                 {"sent", date.sent ? nlohmann::ordered_json(iso_date(*date.sent))
                                                    : nlohmann::ordered_json()},
                                 {"description", date.description()}});
    report["problems"] = nlohmann::ordered_json::array();
    for (const auto& [card, problem] : problems)
      report["problems"].push_back({{"card", card - 1},
                                    {"id", problem_card(cards, card).id},
                                    {"employee", problem.employee},
                                    {"field", problem.field},
                                    {"length", problem.length},
                                    {"limit", problem.limit},
                                    {"description", problem.description()}});
    report["error"] = nullptr;
    out << report.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  } else {
    for (const formats::qb2000::CenturyShiftedDate& date : dates) out << date.description() << '\n';
    if (!dates.empty())
      out << dates.size() << (dates.size() == 1 ? " card holds" : " cards hold")
          << " a date QuickBooks would get a century off; the export would stop before sending "
             "anything.\n";
    print_field_problems(problems, cards, out);
  }
  return problems.empty() && dates.empty() ? kSucceeded : kUnexplainedDifference;
}

}  // namespace zorvat::cli
