// What a Generic file needs of its settings to be read as lines of fields: a separator
// and a line end.
#pragma once

#include "zorvat/reconcile/limits.h"

namespace zorvat::formats::generic {

extern const reconcile::FileLimits kFileLimits;

}  // namespace zorvat::formats::generic
