// Reads a Peachtree time-ticket file back: one record per ticket, keyed by the
// "Recorded by ID" (the export ID), named by its activity item, with the ticket's
// date and number. The amount is the Duration column ("h:mm"), the time payroll
// imports.
#pragma once

#include <string_view>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

reconcile::FileContents read_peachtree_file(std::string_view bytes, const SettingsFields& settings);

// The minutes a Duration text stands for: the hour part times 60 plus the minute part,
// each with its own sign ("2:30" is 150, "-2:-30" is -150); no value for other text.
std::optional<std::int64_t> duration_minutes(std::string_view text);

}  // namespace zorvat::formats
