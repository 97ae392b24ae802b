// ADP7's entry in the class list: its creation, and the expectation and reader that
// reconcile what it writes.
#pragma once

#include "class_rules.h"

namespace zorvat::formats::adp7 {

const reconcile::ClassRules& class_rules();

}  // namespace zorvat::formats::adp7
