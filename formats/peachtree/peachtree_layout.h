// Peachtree's ticket fields, for its writer, its reader and its expectation: the
// Format patterns of its values. The tickets are comma-separated.
#pragma once

#include <string_view>

namespace zorvat::formats::peachtree_layout {

inline constexpr std::string_view kTicketDatePattern = "mm/dd/yy";
// The Duration: whole hours, ":", minutes.
inline constexpr std::string_view kWholeHoursPattern = "##0";
inline constexpr std::string_view kMinutesPattern = "00";
inline constexpr std::string_view kUnitDurationPattern = "##0.00";

}  // namespace zorvat::formats::peachtree_layout
