#include "qb2000/qb2000_check.h"

#include <algorithm>

#include "qb2000/qb2000.h"
#include "qb2000/qb2000_requests.h"
#include "zorvat/automation.h"
#include "zorvat/settings.h"
#include "zorvat/time_card.h"

namespace zorvat::formats::qb2000 {
namespace {

quickbooks::TimeTrackingAdd entry(std::string name, const std::string& item, std::string notes) {
  quickbooks::TimeTrackingAdd add;
  add.entity_full_name = std::move(name);
  add.payroll_item_wage_full_name = item;
  add.notes = std::move(notes);
  return add;
}

}  // namespace

std::vector<CardFieldProblem> field_limit_problems(const Variant& cards, std::string_view setup) {
  const SettingsFields fields(setup);
  auto item = [&](std::size_t position) {
    return position < fields.size() ? fields.at(position) : std::string();
  };
  std::vector<CardFieldProblem> found;
  std::size_t card_number = 0;
  for_each(cards, [&](const Variant& card) {
    ++card_number;
    const std::string first = to_concat_text(get_property(card, time_card::kFirstName));
    const std::string middle = to_concat_text(get_property(card, time_card::kMI));
    const std::string last = to_concat_text(get_property(card, time_card::kLastName));

    std::vector<quickbooks::Request> requests;
    requests.emplace_back(quickbooks::EmployeeAdd{first, middle, last});
    // The names the day entries carry, in either of QuickBooks' name orders.
    const std::string first_first =
        trim_spaces(first + " " + (middle.empty() ? "" : middle + " ") + last);
    const std::string last_first =
        trim_spaces(last + ", " + (first.empty() ? "" : first + " ") + middle);
    for_each(get_property(card, time_card::kDays), [&](const Variant& day) {
      for (std::size_t type = 0; type < std::size(time_card::kHourCategories); ++type) {
        if (get_number(day, time_card::kHourCategories[type]) <= 0) continue;
        const std::string& code = item(QB2000::kRegularItem + type);
        for (const std::string& name : {first_first, last_first})
          requests.emplace_back(entry(name, code, "HLS - " + code));
      }
    });
    for (std::size_t type = 0; type < time_card::kEditCategoryCount; ++type)
      if (get_number(card, time_card::kEditCategories[type]) > 0)
        requests.emplace_back(entry(first + "," + middle + "," + last,
                                    item(QB2000::kRegularItem + type), "HLS - Edit Totals"));

    for (const quickbooks::Request& request : requests) {
      for (const quickbooks::FieldLimitProblem& problem :
           quickbooks::field_limit_problems(request)) {
        const bool seen =
            std::any_of(found.begin(), found.end(), [&](const CardFieldProblem& known) {
              return known.card == card_number && known.problem.field == problem.field;
            });
        if (!seen) found.push_back({card_number, problem});
      }
    }
  });
  return found;
}

}  // namespace zorvat::formats::qb2000
