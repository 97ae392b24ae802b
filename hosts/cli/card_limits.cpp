#include "card_limits.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>

#include "generic/generic.h"
#include "intuitpac/intuitpac_layout.h"
#include "pcpreview/pcpreview_layout.h"
#include "primepay/primepay_layout.h"
#include "zorvat/automation.h"
#include "zorvat/settings.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {
namespace {

// ADP7 adds the batch's second-level overtime minutes up in a 16-bit integer.
constexpr double kAdp7Overtime2BatchLimit = std::numeric_limits<std::int16_t>::max();
// IntuitPAC keeps the last characters of the employee number, as many as its column.
constexpr std::size_t kIntuitPacEmployeeDigits = formats::intuitpac_layout::kEmployeePart.width;

// The largest whole number `width` digits hold.
double largest_in(std::size_t width) {
  return std::pow(10.0, static_cast<double>(width)) - 1;
}

std::string whole(double value) {
  return general_number_text(value);
}

// "the employee number: columns 2-7, at most 999999"
std::string number_column(const Column& column) {
  return std::string(column.name) + ": columns " + std::to_string(column.first) + "-" +
         std::to_string(column.last()) + ", at most " + whole(largest_in(column.width));
}

// Hours in hundredths in `width` digits: "9999.99 hours (599999 minutes)".
std::string hundredths_column(const Column& column, std::size_t digits) {
  const double hundredths = largest_in(digits);
  char hours[32];
  std::snprintf(hours, sizeof hours, "%.2f", hundredths / 100.0);
  return std::string(column.name) + ": columns " + std::to_string(column.first) + "-" +
         std::to_string(column.last()) + ", at most " + hours + " hours (" +
         whole(std::floor((hundredths + 0.5) * 60.0 / 100.0)) + " minutes)";
}

// Digits a Format pattern of zeros and "#" writes before its decimal point.
std::size_t integer_digits(std::string_view pattern) {
  const std::size_t point = pattern.find('.');
  return point == std::string_view::npos ? pattern.size() : point;
}

std::optional<std::string> text_property(const Variant& card, std::string_view property) {
  try {
    return to_text(get_property(card, property));
  } catch (const Error&) {
    return std::nullopt;
  }
}

}  // namespace

CardReadPlace card_place(const Variant& card, std::size_t index) {
  CardReadPlace place;
  place.index = index;
  for (std::string_view name : {"ExportID", "Number"}) {
    if (std::optional<std::string> id = text_property(card, name); id && !id->empty()) {
      place.id = *id;
      place.id_name = name;
      break;
    }
  }
  return place;
}

std::vector<CardNeed> card_needs(std::string_view class_name) {
  std::vector<CardNeed> needs;
  if (class_name == "IntuitPAC") {
    namespace layout = formats::intuitpac_layout;
    const std::string digits = std::to_string(kIntuitPacEmployeeDigits);
    needs.push_back(
        {"Number", "the last " + digits + " characters of the employee number go to " +
                       std::string(layout::kEmployeePart.name) + " (columns " +
                       std::to_string(layout::kEmployeePart.first) + "-" +
                       std::to_string(layout::kEmployeePart.last()) + "): a number needs " +
                       digits + " digits or more (one under 1000 fails the export with error 5), " +
                       "and two numbers with the same last " + digits +
                       " digits are one employee to the payroll system"});
    needs.push_back(
        {"REG", "Jr edition, " + hundredths_column(layout::kJrRegular, layout::kJrRegular.width)});
    needs.push_back({"OT1", "Jr edition, " + hundredths_column(layout::kJrOvertime1,
                                                               layout::kJrOvertime1.width)});
    needs.push_back(
        {"OT2, VAC, HOL, SIC, OTH",
         "Jr edition, " + hundredths_column(layout::kJrOvertime2, layout::kJrOvertime2.width)});
    needs.push_back({"REG, OT1, OT2, VAC, HOL, SIC, OTH",
                     "full edition, " +
                         hundredths_column(layout::kAmount1st, layout::kAmount1st.width) +
                         ", the last digit overpunched with the sign"});
  } else if (class_name == "PrimePay") {
    namespace layout = formats::primepay_layout;
    needs.push_back({"Number", number_column(layout::kEmployeeNumber)});
    needs.push_back(
        {"REG", hundredths_column(layout::kRegularHundredths, layout::kRegularHundredths.width)});
    needs.push_back({"OT1, OT2, VAC, HOL, SIC, OTH",
                     hundredths_column(layout::kOtherHundredths, layout::kOtherHundredths.width)});
  } else if (class_name == "PCPreview") {
    namespace layout = formats::pcpreview_layout;
    needs.push_back({"Number", number_column(layout::kEmployeeNumber)});
    needs.push_back({"FirstName, LastName", std::string(layout::kName.name) + ": columns " +
                                                std::to_string(layout::kName.first) + "-" +
                                                std::to_string(layout::kName.last()) + ", " +
                                                std::to_string(layout::kName.width) +
                                                " letters; a longer name is cut"});
    needs.push_back(
        {"REG, OT1, OT2, VAC, HOL, SIC, OTH",
         hundredths_column(layout::kHours, integer_digits(layout::kHours.pattern) + 2)});
  } else if (class_name == "ADP7") {
    needs.push_back(
        {"OT2", "EPIP: the second-level overtime of a batch (all its cards) adds up to at most " +
                    whole(kAdp7Overtime2BatchLimit) +
                    " minutes; a larger batch fails the export with error 6 (Overflow)"});
  }
  return needs;
}

std::optional<std::string> card_limit_passed(std::string_view class_name, const Error& error,
                                             const Variant& cards, std::size_t index) {
  if (class_name == "ADP7" && error.number() == rt::kOverflow) {
    // The exported cards' second-level overtime up to this one.
    double total = 0;
    std::size_t at = 0;
    for_each(cards, [&](const Variant& card) {
      if (at++ > index) return;
      try {
        const double regular = get_number(card, time_card::kREG);
        const double overtime1 = get_number(card, time_card::kOT1);
        const double overtime2 = get_number(card, time_card::kOT2);
        if (regular + overtime1 + overtime2 != 0) total += overtime2;
      } catch (const Error&) {
      }
    });
    if (std::fabs(total) > kAdp7Overtime2BatchLimit)
      return "with this card the batch's second-level overtime reaches " + whole(total) +
             " minutes, past the " + whole(kAdp7Overtime2BatchLimit) +
             " ADP7 can add up; export the cards in smaller batches";
  }
  return std::nullopt;
}

namespace {

// A column of hundredths of hours (PrimePay) or of hours with two decimals (PCPreview):
// the minutes of `property` past what `digits` digits of hundredths hold.
std::optional<ValuePastLimit> hours_past(const Variant& card, std::string_view property,
                                         const Column& column, std::size_t digits) {
  double minutes = 0;
  try {
    minutes = to_double(get_property(card, property));
  } catch (const Error&) {
    return std::nullopt;
  }
  const double hundredths = std::round(std::fabs(minutes) / 60.0 * 100.0);
  if (hundredths <= largest_in(digits)) return std::nullopt;
  return ValuePastLimit{std::string(property), general_number_text(minutes) + " minutes pass " +
                                                   hundredths_column(column, digits)};
}

std::optional<ValuePastLimit> number_past(const Variant& card, const Column& column) {
  double number = 0;
  try {
    number = to_double(get_property(card, "Number"));
  } catch (const Error&) {
    return std::nullopt;
  }
  if (std::fabs(number) <= largest_in(column.width)) return std::nullopt;
  return ValuePastLimit{
      "Number", "Number " + general_number_text(number) + " passes " + number_column(column)};
}

}  // namespace

std::optional<ValuePastLimit> value_past_limit(std::string_view class_name, const Variant& card) {
  static constexpr std::string_view kOthers[] = {"OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
  if (class_name == "IntuitPAC") {
    const std::optional<std::string> number = text_property(card, "Number");
    if (number && text_length(*number) < kIntuitPacEmployeeDigits)
      return ValuePastLimit{
          "Number", "IntuitPAC writes the last " + std::to_string(kIntuitPacEmployeeDigits) +
                        " digits of the employee number, and Number " + *number + " has fewer"};
  } else if (class_name == "PrimePay") {
    namespace layout = formats::primepay_layout;
    if (auto past = number_past(card, layout::kEmployeeNumber)) return past;
    if (auto past =
            hours_past(card, "REG", layout::kRegularHundredths, layout::kRegularHundredths.width))
      return past;
    for (std::string_view property : kOthers)
      if (auto past =
              hours_past(card, property, layout::kOtherHundredths, layout::kOtherHundredths.width))
        return past;
  } else if (class_name == "PCPreview") {
    namespace layout = formats::pcpreview_layout;
    if (auto past = number_past(card, layout::kEmployeeNumber)) return past;
    const std::size_t digits = integer_digits(layout::kHours.pattern) + 2;
    if (auto past = hours_past(card, "REG", layout::kHours, digits)) return past;
    for (std::string_view property : kOthers)
      if (auto past = hours_past(card, property, layout::kHours, digits)) return past;
  }
  return std::nullopt;
}

std::vector<Finding> card_warnings(const ClassDescription& description, const Variant& cards,
                                   std::string_view setup,
                                   const std::optional<std::string>& written) {
  std::vector<Finding> findings;
  if (description.class_name == "IntuitPAC" && written) {
    // The employee part of the records: the last four characters of the number.
    std::map<std::string, CardReadPlace> first_with;
    std::size_t index = 0;
    for_each(cards, [&](const Variant& card) {
      const std::size_t at = index++;
      const std::optional<std::string> number = text_property(card, "Number");
      if (!number || text_length(*number) < kIntuitPacEmployeeDigits) return;
      const std::string kept(text_right(*number, kIntuitPacEmployeeDigits));
      CardReadPlace place = card_place(card, at);
      place.property = "Number";
      if (kept != *number)
        findings.push_back({Finding::Severity::Warning, place, std::nullopt,
                            "Number " + *number + " is cut to its last " +
                                std::to_string(kIntuitPacEmployeeDigits) + " digits, " + kept});
      CardReadPlace card_alone = place;
      card_alone.property.clear();
      const auto [earlier, first] = first_with.emplace(kept, std::move(card_alone));
      if (!first)
        findings.push_back({Finding::Severity::Warning, place, std::nullopt,
                            "Number " + *number + " is written as employee " + kept +
                                ", as is the number of " + card_text(earlier->second) +
                                ": the payroll system takes the two for one employee"});
    });
  }
  if (description.class_name == "PCPreview" && written) {
    // The first and last name, a blank between, in a column of 25 letters.
    namespace layout = formats::pcpreview_layout;
    std::size_t index = 0;
    for_each(cards, [&](const Variant& card) {
      const std::size_t at = index++;
      const std::optional<std::string> first = text_property(card, "FirstName");
      const std::optional<std::string> last = text_property(card, "LastName");
      if (!first || !last) return;
      const std::string name = *first + " " + *last;
      if (text_length(name) <= layout::kName.width) return;
      CardReadPlace place = card_place(card, at);
      place.property = "LastName";
      findings.push_back({Finding::Severity::Warning, place, std::nullopt,
                          "the name \"" + name + "\" has " + std::to_string(text_length(name)) +
                              " letters; " + std::string(layout::kName.name) + " (columns " +
                              std::to_string(layout::kName.first) + "-" +
                              std::to_string(layout::kName.last()) + ") holds " +
                              std::to_string(layout::kName.width) + ", so it is cut to \"" +
                              std::string(text_left(name, layout::kName.width)) + "\""});
    });
  }
  if (written)
    for (Finding& finding : settings_warnings(description, setup))
      findings.push_back(std::move(finding));
  return findings;
}

std::vector<Finding> settings_warnings(const ClassDescription& description,
                                       std::string_view setup) {
  std::vector<Finding> findings;
  auto setting = [&](std::size_t position) {
    SettingPlace place{position, {}};
    if (position < description.settings.size()) place.name = description.settings[position].name;
    return place;
  };
  if (description.class_name == "Generic") {
    const SettingsFields fields(setup);
    try {
      using formats::Generic;
      if (Generic::separator_of(fields).empty())
        findings.push_back(
            {Finding::Severity::Warning, std::nullopt,
             setting(field_is_true(fields.at(Generic::kSeparatorCustom))
                         ? Generic::kCustomSeparatorText
                         : Generic::kSeparatorCustom),
             field_is_true(fields.at(Generic::kSeparatorCustom))
                 ? "the custom separator is empty: the fields of a line run together"
                 : "none of positions 5 to 9 is True, so no separator is chosen: the fields of "
                   "a line run together"});
      if (Generic::terminator_of(fields).empty())
        findings.push_back({Finding::Severity::Warning, std::nullopt,
                            setting(Generic::kLineTerminator),
                            "\"" + fields.at(Generic::kLineTerminator) +
                                "\" is none of 0 to 3, so the lines have no line end: the file "
                                "is one line"});
    } catch (const Error&) {
      // Fields the export could not convert were reported as its error.
    }
  }
  return findings;
}

}  // namespace zorvat::cli
