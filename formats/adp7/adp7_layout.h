// ADP7's EPIP batch, field by field, for its writer and its reader: a header, one line
// per exported card and a trailer, each ending with CR LF. The fields are tagged, not
// in columns: a three-digit tag, then its value, with no padding; only the header and
// the trailer are filled with blanks to column 79, and the header has "7" in column
// 80.
#pragma once

#include <string_view>

#include "zorvat/format.h"

namespace zorvat::formats::adp7_layout {

// A tagged field: its tag, how the reader names it, the Format pattern of its value
// (empty for text written as the settings hold it).
struct TaggedField {
  std::string_view tag;
  std::string_view name;
  std::string_view pattern = {};
};

// The field's pattern, parsed once.
template <const TaggedField& field>
const FormatPattern& field_pattern() {
  static const FormatPattern pattern(field.pattern);
  return pattern;
}

inline constexpr std::string_view kLineEnd = "\r\n";
inline constexpr std::size_t kFilledWidth = 79;
inline constexpr std::string_view kEndOfFields = "z";

// --- The header: "A001", the company code, the batch, "z", the fill, "7" --------------
inline constexpr std::string_view kHeaderTag = "A001";
inline constexpr TaggedField kBatch{"002", "the batch number", "00"};
inline constexpr std::string_view kColumn80 = "7";

// --- An employee line: "B003", the export ID, the pay number, the shift, the hours ----
inline constexpr std::string_view kEmployeeTag = "B003";
inline constexpr TaggedField kPayNumber{"004", "the pay number"};
inline constexpr TaggedField kShift{"010", "the shift", "00"};
// Each hour field is followed by a blank; overtime 2 has its pay code before the value.
inline constexpr TaggedField kRegular{"012", "regular hundredths", "0000000"};
inline constexpr TaggedField kOvertime1{"013", "overtime hundredths", "0000000"};
inline constexpr TaggedField kOvertime2{"016", "overtime 2 hundredths", "0000000"};

// --- CSV: the hours of each column ------------------------------------------------------
inline constexpr std::string_view kCsvHoursPattern = "#####.00";

// --- The trailer: "C", the batch's totals, "z", the fill -------------------------------
// Each total is followed by a blank but overtime 2's, which never was.
inline constexpr std::string_view kTrailerTag = "C";
inline constexpr TaggedField kRegularTotal{"030", "regular hundredths", "00000000000"};
inline constexpr TaggedField kOvertime1Total{"031", "overtime 1 hundredths", "00000000000"};
inline constexpr TaggedField kOvertime2Total{"032", "overtime 2 hundredths", "00000000000"};

}  // namespace zorvat::formats::adp7_layout
