// Field values as qbXML writes them as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zorvat/date.h"
#include "zorvat/quickbooks/session.h"
#include "zorvat/quickbooks/time_interval.h"

namespace zorvat::quickbooks {

// A duration as the schema's time interval "PT<h>H<m>M<s>S", the counts without sign.
// A duration with a negative count (the edit-total split can make the hours
// negative: -8 hours and 30 minutes) is negative as a whole, and the sign goes before
// the whole value: "-PT8H30M0S". The counts are not folded into one total, so the
// entry that reaches QuickBooks is the entry that was made.
std::string duration_text(const Duration& duration);
// Reads exactly the form duration_text writes; nullopt for anything else (a sign
// inside, "PT-8H30M0S", is not a time interval). "-PT8H30M0S" reads back as -8 hours
// and 30 minutes: the sign goes to the first count that is not zero.
std::optional<Duration> parse_duration_text(std::string_view text);

// A transaction date as "YYYY-MM-DD"; the time of day is not sent.
std::string txn_date_text(const Date& date);

// The text of a qbXML version pair ("1.0").
std::string version_text(std::int32_t major_version, std::int32_t minor_version);

}  // namespace zorvat::quickbooks
