// Reads a Generic file back: one record per card and category, keyed by the export
// ID, in the layout the settings chose (separator, quotes, title line, terminator).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// `export_ids`, the cards' export IDs in collection order, is needed only where the
// fields run together (no separator and no quotes, as the Tab option with Remove
// Blanks writes them): there a line can only be split knowing where its ID ends.
reconcile::FileContents read_generic_file(std::string_view bytes, const SettingsFields& settings,
                                          const std::vector<std::string>& export_ids = {});

}  // namespace zorvat::formats
