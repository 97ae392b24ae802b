// Reads a PCPayLink file back: the header, one record per amount keyed by the
// employee number, and the trailer's control counts.
#pragma once

#include <string_view>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Codes: "REG", "OT1" and "OT2" for the fixed rates, otherwise the earning code.
reconcile::FileContents read_pcpaylink_file(std::string_view bytes, const SettingsFields& settings);

}  // namespace zorvat::formats
