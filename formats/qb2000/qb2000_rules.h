// QB2000's entry in the class list: it writes no file, so reconciliation knows only
// how to create it.
#pragma once

#include "class_rules.h"

namespace zorvat::formats::qb2000 {

const reconcile::ClassRules& class_rules();

}  // namespace zorvat::formats::qb2000
