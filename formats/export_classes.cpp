#include "export_classes.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "export_class_list.h"

namespace zorvat::formats {
namespace {

std::vector<reconcile::ClassRules>& classes() {
#define ZORVAT_CLASS_RULES(Class, folder) folder::class_rules(),
  static std::vector<reconcile::ClassRules> list = {ZORVAT_EXPORT_CLASSES(ZORVAT_CLASS_RULES)};
#undef ZORVAT_CLASS_RULES
  return list;
}

// Set once anything has read the list: from then on it is fixed.
bool& list_in_use() {
  static bool in_use = false;
  return in_use;
}

bool same_name(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

const std::vector<reconcile::ClassRules>& export_classes() {
  list_in_use() = true;
  return classes();
}

void add_export_class(const reconcile::ClassRules& rules) {
  if (list_in_use()) throw std::logic_error("export class added after the list was used");
  classes().push_back(rules);
}

const reconcile::ClassRules* find_export_class(std::string_view name_or_prog_id) {
  if (name_or_prog_id.size() > kProgIdPrefix.size() &&
      same_name(name_or_prog_id.substr(0, kProgIdPrefix.size()), kProgIdPrefix))
    name_or_prog_id.remove_prefix(kProgIdPrefix.size());
  for (const reconcile::ClassRules& rules : export_classes())
    if (same_name(rules.class_name, name_or_prog_id)) return &rules;
  return nullptr;
}

const ExportRegistry& export_registry() {
  static const ExportRegistry registry = [] {
    ExportRegistry built;
    for (const reconcile::ClassRules& rules : export_classes())
      built.add(std::string(rules.class_name), rules.create);
    return built;
  }();
  return registry;
}

}  // namespace zorvat::formats
