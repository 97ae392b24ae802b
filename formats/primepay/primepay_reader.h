// Reads a PrimePay file back: the header's dates, then one record per detail line,
// keyed by the six-digit employee number, named "REG" for the regular line and by
// the pay code otherwise, with the line's batch number.
#pragma once

#include <string_view>

#include "zorvat/reconcile/records.h"

namespace zorvat::formats {

reconcile::FileContents read_primepay_file(std::string_view bytes);

}  // namespace zorvat::formats
