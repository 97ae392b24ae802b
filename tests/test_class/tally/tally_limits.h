// What a Tally line holds of a card: its export ID as it stands, up to the line end.
#pragma once

#include "zorvat/reconcile/limits.h"

namespace zorvat::formats::tally {

extern const reconcile::FileLimits kFileLimits;

}  // namespace zorvat::formats::tally
