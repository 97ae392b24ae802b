#include "card_limits.h"

#include "export_classes.h"
#include "zorvat/automation.h"
#include "zorvat/settings.h"

namespace zorvat::cli {
namespace {

// The limits the class's entry declares; null for an unknown class or one without.
const reconcile::FileLimits* limits_of(std::string_view class_name) {
  const reconcile::ClassRules* rules = formats::find_export_class(class_name);
  return rules ? rules->limits : nullptr;
}

}  // namespace

CardReadPlace card_place(const Variant& card, std::size_t index) {
  CardReadPlace place;
  place.index = index;
  for (std::string_view name : {"ExportID", "Number"}) {
    if (std::optional<std::string> id = reconcile::property_text(card, name); id && !id->empty()) {
      place.id = *id;
      place.id_name = name;
      break;
    }
  }
  return place;
}

std::vector<CardNeed> card_needs(std::string_view class_name) {
  const reconcile::FileLimits* limits = limits_of(class_name);
  if (!limits || !limits->card_needs) return {};
  return limits->card_needs();
}

std::optional<std::string> card_limit_passed(std::string_view class_name, const Error& error,
                                             const Variant& cards, std::size_t index) {
  const reconcile::FileLimits* limits = limits_of(class_name);
  if (!limits || !limits->batch_limit_passed) return std::nullopt;
  return limits->batch_limit_passed(error, cards, index);
}

std::optional<ValuePastLimit> value_past_limit(std::string_view class_name, const Variant& card) {
  const reconcile::FileLimits* limits = limits_of(class_name);
  if (!limits || !limits->value_past_limit) return std::nullopt;
  return limits->value_past_limit(card);
}

std::vector<Finding> card_warnings(const ClassDescription& description, const Variant& cards,
                                   std::string_view setup,
                                   const std::optional<std::string>& written) {
  std::vector<Finding> findings;
  if (!written) return findings;
  const reconcile::FileLimits* limits = limits_of(description.class_name);
  if (limits && limits->card_warnings) {
    // The cards as the report names them, for the warnings and the cards they name.
    std::vector<CardReadPlace> places;
    for_each(cards,
             [&](const Variant& card) { places.push_back(card_place(card, places.size())); });
    const auto place_of = [&](std::size_t index) {
      if (index < places.size()) return places[index];
      CardReadPlace place;
      place.index = index;
      return place;
    };
    const reconcile::CardName card_name = [&](std::size_t index) {
      return card_text(place_of(index));
    };
    std::vector<reconcile::CardWarning> warnings = limits->card_warnings(cards, card_name);
    for (std::size_t at = 0; at < warnings.size() && at < kCardsNamedAtMost; ++at) {
      CardReadPlace place = place_of(warnings[at].card);
      place.property = std::move(warnings[at].property);
      findings.push_back({Finding::Severity::Warning, std::move(place), std::nullopt,
                          std::move(warnings[at].text)});
    }
    if (warnings.size() > kCardsNamedAtMost) {
      const std::size_t more = warnings.size() - kCardsNamedAtMost;
      findings.push_back({Finding::Severity::Warning, std::nullopt, std::nullopt,
                          std::to_string(more) + (more == 1 ? " more warning" : " more warnings") +
                              " of the cards like those above"});
    }
  }
  for (Finding& finding : settings_warnings(description, setup))
    findings.push_back(std::move(finding));
  return findings;
}

std::vector<Finding> settings_warnings(const ClassDescription& description,
                                       std::string_view setup) {
  std::vector<Finding> findings;
  const reconcile::FileLimits* limits = limits_of(description.class_name);
  if (!limits || !limits->settings_warnings) return findings;
  for (reconcile::SettingsWarning& warning : limits->settings_warnings(SettingsFields(setup))) {
    SettingPlace place{warning.position, {}};
    if (warning.position < description.settings.size())
      place.name = description.settings[warning.position].name;
    findings.push_back(
        {Finding::Severity::Warning, std::nullopt, std::move(place), std::move(warning.text)});
  }
  return findings;
}

}  // namespace zorvat::cli
