// PrimePay's records, column by column, for its writer and its reader: a header line
// of 63 columns, then a detail line of 65 columns per hour type with time. Regular
// time has a detail of its own, with its hundredths at 9-14; the other types carry
// theirs at 20-26 with the pay code after them. Every line ends with CR LF.
#pragma once

#include "zorvat/columns.h"

namespace zorvat::formats::primepay_layout {

inline constexpr std::string_view kLineEnd = "\r\n";

// --- The header -------------------------------------------------------------------
inline constexpr Column kHeaderTag{"the header tag", 1, 9, "HPTA10001"};
inline constexpr Column kExportDate{"the export date", 10, 8, {}, "mm/dd/yy"};
inline constexpr Column kRecorderName{"the recorder name", 18, 37};
inline constexpr Column kColumn55{"column 55", 55, 1, "N"};
inline constexpr Column kPeriodEnd{"the period end", 56, 8, {}, "mm/dd/yy"};
inline constexpr Column kHeader[] = {kHeaderTag, kExportDate, kRecorderName, kColumn55, kPeriodEnd};
static_assert(columns_follow(kHeader));
inline constexpr std::size_t kHeaderWidth = kPeriodEnd.last();

// --- Both details -------------------------------------------------------------------
inline constexpr Column kDetailTag{"the detail tag", 1, 1, "D"};
inline constexpr Column kEmployeeNumber{"the employee number", 2, 6, {}, "000000"};
inline constexpr Column kColumn8{"column 8", 8, 1, " "};
// The batch sequence through "000" when it is above zero; blank otherwise.
inline constexpr Column kBatch{"the batch", 63, 3, {}, "000"};

// --- The regular detail -------------------------------------------------------------
inline constexpr Column kRegularHundredths{"regular hundredths", 9, 6, {}, "000000"};
inline constexpr Column kRegularFill{"columns 15-62", 15, 48};
inline constexpr Column kRegularDetail[] = {kDetailTag,         kEmployeeNumber, kColumn8,
                                            kRegularHundredths, kRegularFill,    kBatch};
static_assert(columns_follow(kRegularDetail));

// --- The detail of another hour type ------------------------------------------------
inline constexpr Column kOtherLead{"columns 9-19", 9, 11};
inline constexpr Column kOtherHundredths{"hundredths of hours", 20, 7, {}, "0000000"};
inline constexpr Column kPayCode{"the pay code", 27, 2, {}, "00"};
inline constexpr Column kOtherFill{"columns 29-62", 29, 34};
inline constexpr Column kOtherDetail[] = {kDetailTag,       kEmployeeNumber, kColumn8,   kOtherLead,
                                          kOtherHundredths, kPayCode,        kOtherFill, kBatch};
static_assert(columns_follow(kOtherDetail));

inline constexpr std::size_t kDetailWidth = kBatch.last();

}  // namespace zorvat::formats::primepay_layout
