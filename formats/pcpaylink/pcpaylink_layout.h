// PCPayLink's fields, for its writer, its reader and its expectation: the Format
// patterns of its values. The records are comma-separated.
#pragma once

#include <string_view>

namespace zorvat::formats::pcpaylink_layout {

inline constexpr std::string_view kOfficeNumberPattern = "0000";
inline constexpr std::string_view kEmployeeNumberPattern = "0000";
inline constexpr std::string_view kHoursPattern = "####.00";
inline constexpr std::string_view kSequencePattern = "000";

}  // namespace zorvat::formats::pcpaylink_layout
