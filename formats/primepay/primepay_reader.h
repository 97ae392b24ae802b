// Reads a PrimePay file back: the header's dates, then one record per detail line,
// keyed by the six-digit employee number, named "REG" for the regular line and by
// the pay code otherwise, with the line's batch number.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorvat/reconcile/records.h"

namespace zorvat::formats {

// `employee_numbers`: the cards' numbers as the export writes them ("000000"), which
// tell how wide a detail's employee number is where it has more digits (or fewer, as
// text); without them every number is read at its column's width.
reconcile::FileContents read_primepay_file(std::string_view bytes,
                                           const std::vector<std::string>& employee_numbers);

}  // namespace zorvat::formats
