// What an ADP7 batch holds: its second-level overtime adds up in a 16-bit integer.
#pragma once

#include "zorvat/reconcile/limits.h"

namespace zorvat::formats::adp7 {

extern const reconcile::FileLimits kFileLimits;

}  // namespace zorvat::formats::adp7
