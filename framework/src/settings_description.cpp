#include "zorvat/settings_description.h"

namespace zorvat {

std::string ClassDescription::defaults() const {
  std::string text;
  for (const SettingDescription& setting : settings) {
    if (setting.position > 0) text += ',';
    text += setting.design_value;
  }
  return text;
}

std::vector<const SettingDescription*> ClassDescription::to_fill() const {
  std::vector<const SettingDescription*> fields;
  for (const SettingDescription& setting : settings)
    if (setting.required && setting.design_value.empty()) fields.push_back(&setting);
  return fields;
}

}  // namespace zorvat
