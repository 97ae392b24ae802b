// Reads a PCPreview file back: earnings records run together with no line break, one
// per amount, keyed by the six-digit employee number and named by the pay code
// written in column 53. The pay code's width moves the columns after it, so the
// reader takes the settings to know which codes the file may hold.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// `employee_numbers`: the cards' numbers as the export writes them ("000000"), which
// tell how wide a record's first column is where a number has more digits.
reconcile::FileContents read_pcpreview_file(std::string_view bytes, const SettingsFields& settings,
                                            const std::vector<std::string>& employee_numbers);

}  // namespace zorvat::formats
