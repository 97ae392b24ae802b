// IntuitPAC's entry in the class list: its creation, and the expectation and reader that
// reconcile what it writes.
#pragma once

#include "class_rules.h"

namespace zorvat::formats::intuitpac {

const reconcile::ClassRules& class_rules();

}  // namespace zorvat::formats::intuitpac
