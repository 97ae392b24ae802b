// What PrimePay's columns hold of the cards: the employee number and the hundredths of
// hours, each in the width its layout gives it.
#pragma once

#include "zorvat/reconcile/limits.h"

namespace zorvat::formats::primepay {

extern const reconcile::FileLimits kFileLimits;

}  // namespace zorvat::formats::primepay
