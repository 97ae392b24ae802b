// What IntuitPAC's columns hold of the cards: the last four characters of the employee
// number (two numbers ending alike are one employee) and the hundredths of hours of
// either edition, each in the width its layout gives it.
#pragma once

#include "zorvat/reconcile/limits.h"

namespace zorvat::formats::intuitpac {

extern const reconcile::FileLimits kFileLimits;

}  // namespace zorvat::formats::intuitpac
