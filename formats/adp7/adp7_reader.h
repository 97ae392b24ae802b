// Reads an ADP7 file back, EPIP or CSV as the settings choose: one record per amount,
// keyed by the export ID (the file number), with the batch number of the file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Codes: "REG" and "OT1" for the regular and overtime columns, otherwise the pay code
// written with the amount.
// `shifts`: the cards' shifts as the export writes them ("00"), which tell how wide an
// EPIP line's shift is where it has more digits or a sign (or fewer letters, as text);
// without them every shift is read in its two columns.
reconcile::FileContents read_adp7_file(std::string_view bytes, const SettingsFields& settings,
                                       const std::vector<std::string>& shifts);

}  // namespace zorvat::formats
