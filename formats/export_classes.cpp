#include "export_classes.h"

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
  for (const reconcile::ClassRules& rules : export_classes())
    if (names_class(name_or_prog_id, rules.class_name)) return &rules;
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
