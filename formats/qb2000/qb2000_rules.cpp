#include "qb2000/qb2000_rules.h"

#include "qb2000/qb2000.h"

namespace zorvat::formats::qb2000 {

const reconcile::ClassRules& class_rules() {
  static constexpr reconcile::ClassRules rules{"QB2000", create_export_class<QB2000>};
  return rules;
}

}  // namespace zorvat::formats::qb2000
