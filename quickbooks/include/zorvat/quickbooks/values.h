// Field values as qbXML writes them as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zorvat/date.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

// A duration as "PT<h>H<m>M<s>S". Each count is written with its own sign: an hour
// count that came out zero or negative is sent as it is ("PT-8H30M0S" for -8 hours
// and 30 minutes), never folded into one signed total, so the entry that reaches
// QuickBooks is the entry that was made (and QuickBooks refuses it).
std::string duration_text(const Duration& duration);
// Reads exactly the form duration_text writes; nullopt for anything else.
std::optional<Duration> parse_duration_text(std::string_view text);

// A transaction date as "YYYY-MM-DD"; the time of day is not sent.
std::string txn_date_text(const Date& date);

// The text of a qbXML version pair ("1.0").
std::string version_text(std::int32_t major_version, std::int32_t minor_version);

}  // namespace zorvat::quickbooks
