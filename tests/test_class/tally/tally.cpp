#include "tally/tally.h"

#include "tally/tally_form.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/settings.h"
#include "zorvat/time_card.h"

namespace zorvat::formats {
namespace {

constexpr std::string_view kFileFilter = "Tally (*.CSV) | *.CSV";
constexpr std::string_view kTitleLine = "ExportID,Hours\r\n";

const FormatPattern& hours_pattern() {
  static const FormatPattern pattern("0.00");
  return pattern;
}

}  // namespace

bool Tally::Execute(const Variant& pcTimeCards) {
  const std::string source = source_of("Execute");  // built once, not per card
  return guarded(source, [&] {
    const SettingsFields settings(setup_data());
    std::string text;
    if (field_equals_number(settings.at(kOutputFieldTitles), 1)) text += kTitleLine;
    for_each_record(pcTimeCards, text, [&](const Variant& card) {
      double minutes = 0;
      for (const PropertyName& category : time_card::kHourCategories)
        minutes += get_number(card, category);
      append_text(text, card, time_card::kExportID);  // column 1: the export ID
      text += ',';
      hours_pattern().append_to(text, hours::minutes_to_hours(minutes, source));
      text += "\r\n";  // column 2: the hours, "0.00"
    });
    return save_text({std::string(kFileFilter), {}}, text);
  });
}

bool Tally::Setup() {
  return guarded(source_of("Setup"), [&] { return open_setup_form(frmTally()); });
}

void Tally::ValidateSetupData(std::string_view psSetup) {
  guarded(source_of("ValidateSetupData"), [&] {
    const SettingsFields settings{std::string(psSetup)};
    if (!field_in_range(settings.at(kOutputFieldTitles), 0, 1))
      raise(static_cast<long>(TallyErrorsEnum::errTitles), source_of("ValidateSetupData"),
            "Output Field Titles must be 0 or 1");
  });
}

}  // namespace zorvat::formats
