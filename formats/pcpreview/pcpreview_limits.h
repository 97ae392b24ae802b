// What PCPreview's columns hold of the cards: the employee number, the name (a longer
// one is cut) and the hours with two decimals, each in the width its layout gives it.
#pragma once

#include "zorvat/reconcile/limits.h"

namespace zorvat::formats::pcpreview {

extern const reconcile::FileLimits kFileLimits;

}  // namespace zorvat::formats::pcpreview
