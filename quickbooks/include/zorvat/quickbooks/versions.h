// Which qbXML version an export's request sets are created with, when the back end
// that carries them builds fewer versions than QuickBooks speaks, or QuickBooks speaks
// more than the export writes.
//
// The export creates every request set with the first version of the session's list.
// A session manager of the SDK's first generations hands that list on as QuickBooks
// gives it. A newer generation builds message sets up to its own version only, and the
// request processor builds none (the export writes the documents): such a back end
// puts first the highest version that QuickBooks lists, that the back end builds and
// that the export writes.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvat::quickbooks {

struct QbxmlVersionNumber {
  int major = 0;
  int minor = 0;
  friend auto operator<=>(const QbxmlVersionNumber&, const QbxmlVersionNumber&) = default;
  friend bool operator==(const QbxmlVersionNumber&, const QbxmlVersionNumber&) = default;
};

// The newest qbXML version whose requests the export writes: the requests it sends
// (the payroll item and employee queries, EmployeeAdd, TimeTrackingAdd with
// BillableStatus) are the same from 6.0 to this version.
inline constexpr QbxmlVersionNumber kNewestVersionWritten{16, 0};

// "13.0" as {13, 0}; nothing for a version of another country's edition ("CA3.0",
// "UK2.0") or any text that is not two numbers joined by a point.
std::optional<QbxmlVersionNumber> parse_qbxml_version(std::string_view text);

// The session's list with the version to use first: the highest US version of `listed`
// that is no newer than `newest_built` nor than kNewestVersionWritten; the others
// follow in QuickBooks' order. When no listed version qualifies, the list is handed on
// as QuickBooks gave it, and the export says what it cannot use.
std::vector<std::string> versions_for_back_end(const std::vector<std::string>& listed,
                                               QbxmlVersionNumber newest_built);

}  // namespace zorvat::quickbooks
