// Generic's fields, for its writer, its reader and its expectation: the Format
// patterns of its values. The fields are delimited as the settings choose, in the order
// of the title line.
#pragma once

#include <string_view>

namespace zorvat::formats::generic_layout {

inline constexpr std::string_view kEmployeeNumberPattern = "000000000";
inline constexpr std::string_view kShiftPattern = "00";
// Each category in hours with two decimals.
inline constexpr std::string_view kHoursPattern = "###0.00";

}  // namespace zorvat::formats::generic_layout
