// Reads a Tally file back: one record per line, the export ID and the card's hours.
#pragma once

#include <string_view>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Code "ALL": a line carries the card's time of every category together.
reconcile::FileContents read_tally_file(std::string_view bytes, const SettingsFields& settings);

}  // namespace zorvat::formats
