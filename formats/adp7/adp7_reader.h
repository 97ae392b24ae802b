// Reads an ADP7 file back, EPIP or CSV as the settings choose: one record per amount,
// keyed by the export ID (the file number), with the batch number of the file.
#pragma once

#include <string_view>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Codes: "REG" and "OT1" for the regular and overtime columns, otherwise the pay code
// written with the amount.
reconcile::FileContents read_adp7_file(std::string_view bytes, const SettingsFields& settings);

}  // namespace zorvat::formats
