#include "generic/generic.h"

#include "generic/generic_form.h"
#include "generic/generic_layout.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/text.h"
#include "zorvat/time_card.h"

namespace zorvat::formats {
namespace {

constexpr std::string_view kFileFilter = "Generic ASCII (*.TAB) | *.TAB";

// The option labelled "Tab (0x09)" has always written four blanks, not a tab.
constexpr std::string_view kTabOptionSeparator = "    ";

constexpr std::string_view kTitles[] = {
    "EXPORT ID",           "EmployeeNumber", "ShiftCode", "RegularHours", "FirstLevelOvertime",
    "SecondLevelOvertime", "VACATION",       "HOLIDAY",   "SICK",         "OTHER"};

const FormatPattern& employee_number_pattern() {
  static const FormatPattern pattern(generic_layout::kEmployeeNumberPattern);
  return pattern;
}
const FormatPattern& shift_pattern() {
  static const FormatPattern pattern(generic_layout::kShiftPattern);
  return pattern;
}
const FormatPattern& hours_pattern() {
  static const FormatPattern pattern(generic_layout::kHoursPattern);
  return pattern;
}

}  // namespace

bool Generic::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    separator_.reset();
    terminator_.reset();
    quoting_.reset();
    include_employee_information_.reset();
    include_full_name_.reset();
    settings_ = SettingsFields(setup_data());

    std::string text;
    if (field_equals_number(settings_.at(kOutputFieldTitles), 1)) CreateHeader(text);

    // Every card yields a line, in the collection's own order, also one with no time.
    for_each_record(pcTimeCards, text, [&](const Variant& card) { EmployeeRecord(card, text); });

    if (field_is_true(settings_.at(kRemoveBlanks))) std::erase(text, ' ');

    if (!save_text({std::string(kFileFilter), {}}, text)) return false;
    SetupData(settings_.join());
    return true;
  });
}

bool Generic::Setup() {
  return guarded(source_of("Setup"), [&] { return open_setup_form(frmGeneric()); });
}

void Generic::Validate(std::string_view psProperty, Variant& pvValue) {
  guarded(source_of("Validate"), [&] {
    const std::string property = to_upper_ascii(psProperty);
    // No property has a rule: every name and value is accepted as it is.
    static_cast<void>(pvValue);
  });
}

void Generic::run_check() {
  Variant value{std::string()};
  Validate("", value);
}

std::string Generic::separator_of(const SettingsFields& fields) {
  if (field_is_true(fields.at(kSeparatorTab))) return std::string(kTabOptionSeparator);
  if (field_is_true(fields.at(kSeparatorComma))) return ",";
  if (field_is_true(fields.at(kSeparatorSlash))) return "/";
  if (field_is_true(fields.at(kSeparatorSemiColon))) return ";";
  if (field_is_true(fields.at(kSeparatorCustom))) return fields.at(kCustomSeparatorText);
  return {};  // no option selected: the fields run together
}

std::string Generic::terminator_of(const SettingsFields& fields) {
  const double choice = to_double(Variant(fields.at(kLineTerminator)));
  if (choice == 0) return "\r\n";
  if (choice == 1) return "\r";
  if (choice == 2) return "\n";
  if (choice == 3) return "\n\r";
  return {};  // any other value: no terminator at all
}

const std::string& Generic::GetSeperator() {
  if (!separator_)
    separator_ = guarded(source_of("GetSeperator"),
                         [&] { return separator_of(SettingsFields(setup_data())); });
  return *separator_;
}

const std::string& Generic::LineTerminator() {
  if (!terminator_)
    terminator_ = guarded(source_of("LineTerminator"),
                          [&] { return terminator_of(SettingsFields(setup_data())); });
  return *terminator_;
}

namespace {

bool cached_test(std::optional<bool>& cache, const SettingsFields& settings, std::size_t position) {
  if (!cache) cache = field_equals_number(settings.at(position), 1);
  return *cache;
}

}  // namespace

bool Generic::quoting() {
  return cached_test(quoting_, settings_, kInsertQuotes);
}

bool Generic::include_employee_information() {
  return cached_test(include_employee_information_, settings_, kIncludeEmployeeInformation);
}

bool Generic::include_full_name() {
  return cached_test(include_full_name_, settings_, kIncludeFullName);
}

void Generic::append_field(std::string& text, std::string_view field) {
  if (quoting()) {
    text.push_back('"');
    text += field;
    text.push_back('"');
  } else {
    text += field;
  }
}

void Generic::CreateHeader(std::string& text) {
  guarded(source_of("CreateHeader"), [&] {
    const std::string& separator = GetSeperator();
    bool first = true;
    auto title = [&](std::string_view name) {
      if (!first) text += separator;
      first = false;
      append_field(text, name);
    };
    for (std::string_view name : kTitles) title(name);
    if (include_employee_information()) {
      if (include_full_name()) {
        title("FullName");
      } else {
        title("LastName");
        title("FirstName");
      }
      title("BadgeNumber");
    }
    text += LineTerminator();
  });
}

void Generic::EmployeeRecord(const Variant& card, std::string& text) {
  guarded(employee_record_source_, [&] {
    const std::string& separator = GetSeperator();
    const bool quote = quoting();
    bool first = true;
    // Each field is written in line order: separator, opening quote, value, quote.
    auto open_field = [&] {
      if (!first) text += separator;
      first = false;
      if (quote) text.push_back('"');
    };
    auto close_field = [&] {
      if (quote) text.push_back('"');
    };
    auto text_field = [&](const PropertyName& property) {
      open_field();
      append_text(text, card, property);
      close_field();
    };
    auto pattern_field = [&](const FormatPattern& pattern, const Variant& value) {
      open_field();
      pattern.append_to(text, value);
      close_field();
    };

    text_field(time_card::kExportID);
    pattern_field(employee_number_pattern(), get_property(card, time_card::kNumber));
    pattern_field(shift_pattern(), get_property(card, time_card::kShift));
    for (const PropertyName& category : time_card::kHourCategories) {
      const double hours = Min2Hrs(get_number(card, category));
      open_field();
      hours_pattern().append_to(text, hours);
      close_field();
    }
    if (include_employee_information()) {
      if (include_full_name()) {
        std::string full_name;
        append_text(full_name, card, time_card::kFirstName);
        full_name += ' ';
        append_text(full_name, card, time_card::kMI);
        full_name += ' ';
        append_text(full_name, card, time_card::kLastName);
        open_field();
        text += full_name;
        close_field();
      } else {
        text_field(time_card::kLastName);
        text_field(time_card::kFirstName);
      }
      // The last column is titled "BadgeNumber" in both modes, but only the quoted
      // layout has ever carried the badge; the unquoted one repeats the employee
      // number, unformatted. Payroll imports built on either layout depend on it.
      text_field(quote ? time_card::kBadge : time_card::kNumber);
    }
    text += LineTerminator();
  });
}

double Generic::Min2Hrs(double minutes) {
  return hours::minutes_to_hours(minutes, min2hrs_source_);
}

}  // namespace zorvat::formats
