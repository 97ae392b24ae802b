// The time export: one QuickBooks time entry per day and hour type that has minutes,
// and entries for a card's edit totals, dated the first day of the period.
#include <iterator>

#include "qb2000/qb2000.h"
#include "qb2000/qb2000_dates.h"
#include "qb2000/qb2000_requests.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/hours.h"
#include "zorvat/time_card.h"

namespace zorvat::formats {
namespace {

constexpr std::size_t kHourTypes = time_card::kHourCategoryCount;

// The edit totals that are sent, with the settings field of their payroll item.
struct EditTotal {
  const PropertyName& property;
  std::size_t item_field;
};
constexpr EditTotal kEditTotals[] = {{time_card::kEditCategories[0], QB2000::kRegularItem},
                                     {time_card::kEditCategories[1], QB2000::kOvertime1Item},
                                     {time_card::kEditCategories[2], QB2000::kOvertime2Item}};

constexpr std::string_view kNotesPrefix = "HLS - ";
constexpr std::string_view kEditTotalNotes = "HLS - Edit Totals";

// One time entry holds at most a day: longer edit totals are split into days.
constexpr std::int32_t kHoursPerEntry = 24;

// QuickBooks answers a time entry with this status when time tracking is off.
constexpr std::int32_t kTimeTrackingUnavailable = 3250;
constexpr std::string_view kTimeTrackingUnavailableText =
    "The QuickBooks Time Tracking Preference is not available or disabled.\r\n"
    "Please enable Time Tracking under QuickBooks Company Preferences.";

// The date an entry carries: formatted "MM/DD/YY" and read back, so only the calendar
// day with a two-digit year reaches QuickBooks (Execute has refused a period with a
// date that does not come back the same, before it connected).
Date entry_date(const Variant& date) {
  const std::optional<Date> read_back = qb2000::sent_date(date);
  if (!read_back) raise_runtime(rt::kTypeMismatch);
  return *read_back;
}

// Examines response 0 only: time tracking switched off stops the export; any other
// status is let go. A request set that carried no entry has no response to examine.
void check_time_tracking(const quickbooks::ResponseSet& responses, std::string_view source) {
  if (responses.responses.empty()) return;
  if (responses.responses.front().status_code == kTimeTrackingUnavailable)
    raise(kTimeTrackingUnavailable, source, kTimeTrackingUnavailableText);
}

}  // namespace

void QB2000::ExportTimeCard(const Variant& time_card, quickbooks::SessionManager& session,
                            const QbxmlVersion& version) {
  guarded(export_time_card_source_, [&] {
    const std::string employee_key =
        to_concat_text(get_property(time_card, time_card::kFirstName)) + "," +
        to_concat_text(get_property(time_card, time_card::kMI)) + "," +
        to_concat_text(get_property(time_card, time_card::kLastName));

    for_each(get_property(time_card, time_card::kDays), [&](const Variant& day) {
      double total = 0;
      for (const PropertyName& property : time_card::kHourCategories)
        total += get_number(day, property);
      if (total > 0) ExportTCData(employee_key, day, session, version);
    });

    const SettingsFields fields(setup_data());
    for (const EditTotal& edit : kEditTotals) {
      const Variant minutes = get_property(time_card, edit.property);
      if (to_double(minutes) > 0)
        ExportEditTotals(employee_key, to_long(minutes),
                         get_property(time_card, time_card::kPeriodStart),
                         fields.at(edit.item_field), session, version);
    }
  });
}

// One request set per day, with one entry for each hour type that has minutes.
void QB2000::ExportTCData(const std::string& employee_key, const Variant& day,
                          quickbooks::SessionManager& session, const QbxmlVersion& version) {
  guarded(export_tc_data_source_, [&] {
    const qb2000::NameParts parts = qb2000::name_parts(employee_key, ',');
    // The employee's name as QuickBooks writes it.
    const std::string name =
        names_last_first_
            ? qb2000::trim_spaces(parts.last + ", " +
                                  (parts.first.empty() ? "" : parts.first + " ") + parts.middle)
            : qb2000::trim_spaces(parts.first + " " +
                                  (parts.middle.empty() ? "" : parts.middle + " ") + parts.last);

    const SettingsFields fields(setup_data());
    quickbooks::RequestSet request_set = qb2000::new_request_set(version);
    for (std::size_t type = 0; type < kHourTypes; ++type) {
      // Minutes are whole: a fraction of a minute rounds away before the test.
      const std::int32_t minutes = to_long(get_property(day, time_card::kHourCategories[type]));
      if (minutes <= 0) continue;
      const std::string& item = fields.at(kRegularItem + type);
      quickbooks::TimeTrackingAdd entry;
      entry.entity_full_name = name;
      entry.duration = {Min2Hrs(minutes), minutes % 60, 0};
      entry.txn_date = entry_date(get_property(day, time_card::kDayDate));
      entry.payroll_item_wage_full_name = item;
      entry.is_billable = false;
      entry.notes = std::string(kNotesPrefix) + item;
      entry.field_order = quickbooks::kDayEntryFieldOrder;
      request_set.requests.emplace_back(std::move(entry));
    }
    check_time_tracking(session.DoRequests(request_set), export_tc_data_source_);
  });
}

// An edit total as entries of at most 24 hours, each in a request set of its own. The
// number of whole days is the hours / 24 rounded, so the last entry holds what is
// left, which may be nothing or less than nothing (40 hours: 24, 24 and -8).
void QB2000::ExportEditTotals(const std::string& employee_key, std::int32_t minutes,
                              const Variant& date, const std::string& payroll_item,
                              quickbooks::SessionManager& session, const QbxmlVersion& version) {
  guarded(export_edit_totals_source_, [&] {
    const std::int32_t hours = Min2Hrs(minutes);
    const std::int32_t rest = minutes % 60;
    std::vector<quickbooks::Duration> durations;
    if (hours < kHoursPerEntry) {
      durations.push_back({hours, rest, 0});
    } else {
      const std::int32_t days = double_to_long(static_cast<double>(hours) / kHoursPerEntry);
      for (std::int32_t day = 0; day < days; ++day) durations.push_back({kHoursPerEntry, 0, 0});
      durations.push_back({Min2Hrs(minutes) - kHoursPerEntry * days, rest, 0});
    }

    for (const quickbooks::Duration& duration : durations) {
      quickbooks::TimeTrackingAdd entry;
      entry.txn_date = entry_date(date);
      // The key as it came, commas and all: edit totals are not named as QuickBooks
      // names its employees.
      entry.entity_full_name = employee_key;
      entry.duration = duration;
      entry.payroll_item_wage_full_name = payroll_item;
      entry.is_billable = false;
      entry.notes = std::string(kEditTotalNotes);
      entry.field_order = quickbooks::kEditTotalFieldOrder;
      quickbooks::RequestSet request_set = qb2000::new_request_set(version);
      request_set.requests.emplace_back(std::move(entry));
      check_time_tracking(session.DoRequests(request_set), export_edit_totals_source_);
    }
  });
}

std::int32_t QB2000::Min2Hrs(std::int32_t minutes) {
  return hours::minutes_to_whole_hours_from_one_hour(minutes, min2hrs_source_);
}

std::int32_t QB2000::Min2HrsinHun(std::int32_t minutes) {
  return hours::minutes_to_hundredths(minutes, min2hrsinhun_source_);
}

}  // namespace zorvat::formats
