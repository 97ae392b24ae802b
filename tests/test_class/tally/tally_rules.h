// Tally's entry in a class list: its creation, and the expectation and reader that
// reconcile what it writes.
#pragma once

#include "class_rules.h"

namespace zorvat::formats::tally {

const reconcile::ClassRules& class_rules();

}  // namespace zorvat::formats::tally
