// What a Generic file must carry: every card, every category, in hours.
#include "generic/generic_rules.h"

#include "generic/generic.h"
#include "generic/generic_layout.h"
#include "generic/generic_limits.h"
#include "generic/generic_reader.h"
#include "zorvat/reconcile/expectation.h"

namespace zorvat::formats::generic {
namespace {

using namespace zorvat::reconcile;

std::string export_id(const Variant& card, bool remove_blanks) {
  std::string id = to_concat_text(get_property(card, "ExportID"));
  if (remove_blanks) std::erase(id, ' ');
  return id;
}

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view) {
  const bool remove_blanks = field_is_true(settings.at(Generic::kRemoveBlanks));
  ExpectationBuilder builder("Generic");
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(export_id(card, remove_blanks), minutes);
    for (std::size_t c = 0; c < kCategoryCount; ++c)
      builder.write(rows[c], std::string(kCategories[c]),
                    hours_with_decimals(minutes[c], generic_layout::kHoursPattern),
                    Reason::RoundedToHundredths);
  });
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view,
                  const Variant& cards) {
  const bool remove_blanks = field_is_true(settings.at(Generic::kRemoveBlanks));
  std::vector<std::string> export_ids;
  for_each(cards,
           [&](const Variant& card) { export_ids.push_back(export_id(card, remove_blanks)); });
  return read_generic_file(bytes, settings, export_ids);
}

constexpr SettingsExample kExamples[] = {
    {"Generic", "0,1,0,1,0,False,True,False,False,False,,0"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{
      "Generic", create_export_class<Generic>, expect, read, kExamples, &kFileLimits};
  return rules;
}

}  // namespace zorvat::formats::generic
