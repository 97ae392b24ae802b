// PCPreview's earnings record, column by column, for its writer and its reader: 127
// columns per hour type with time, the records running on with no line end between
// them. A pay code of two digits, or a sequence of more than one, overruns its
// column and moves the rest of the record, as the import has always received it.
#pragma once

#include "zorvat/columns.h"

namespace zorvat::formats::pcpreview_layout {

inline constexpr Column kEmployeeNumber{"the employee number", 1, 6, {}, "000000"};
inline constexpr Column kName{"the name", 7, 25};
inline constexpr Column kColumns32To50{"columns 32-50", 32, 19};
inline constexpr Column kEarningsType{"the earnings record type", 51, 2, "E "};
inline constexpr Column kPayCode{"the pay code", 53, 1, {}, "0"};
inline constexpr Column kAfterPayCode{"the blanks after the pay code", 54, 9};
inline constexpr Column kHours{"the hours", 63, 8, {}, "#####.00", Justify::Right};
inline constexpr Column kColumns71To89{"columns 71-89", 71, 19};
// The sequence of the settings when it is above zero; blank otherwise.
inline constexpr Column kSequence{"the sequence", 90, 1};
inline constexpr Column kFill{"columns 91-127", 91, 37};
inline constexpr Column kEarningsRecord[] = {
    kEmployeeNumber, kName,  kColumns32To50, kEarningsType, kPayCode,
    kAfterPayCode,   kHours, kColumns71To89, kSequence,     kFill};
static_assert(columns_follow(kEarningsRecord));

}  // namespace zorvat::formats::pcpreview_layout
