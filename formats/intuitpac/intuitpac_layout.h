// IntuitPAC's records, column by column, for its writer and its reader. Every record
// is 80 columns and ends with CR LF. The Jr edition writes one record per card with
// plain hundredths; the full edition writes two, with overpunched amounts (the last
// digit and the sign in one letter) and the card's shift as it stands, whose width
// moves the columns after it.
#pragma once

#include "zorvat/columns.h"

namespace zorvat::formats::intuitpac_layout {

inline constexpr std::string_view kRecordEnd = "\r\n";
inline constexpr std::size_t kRecordWidth = 80;

// --- Every record starts with the company and the employee ----------------------------
inline constexpr Column kCompanyPart{"the company part", 1, 4, {}, "&&&&"};
inline constexpr Column kColumn5{"column 5", 5, 1, "4"};
inline constexpr Column kEmployeePart{"the employee part", 6, 4, {}, "0000"};
inline constexpr Column kColumn10{"column 10", 10, 1, "8"};
inline constexpr Column kRecordStart[] = {kCompanyPart, kColumn5, kEmployeePart, kColumn10};
static_assert(columns_follow(kRecordStart));

// --- Jr: one record of 70 columns and the fill ----------------------------------------
inline constexpr Column kJrRegular{"regular hundredths", 11, 5, {}, "00000"};
inline constexpr Column kJrOvertime1{"overtime hundredths", 16, 5, {}, "00000"};
inline constexpr Column kJrPayCodeOT2{"a pay code", 21, 2, {}, "00"};
inline constexpr Column kJrOvertime2{"hundredths", 23, 8, {}, "00000000"};
inline constexpr Column kJrPayCodeVAC{"a pay code", 31, 2, {}, "00"};
inline constexpr Column kJrVacation{"hundredths", 33, 8, {}, "00000000"};
inline constexpr Column kJrPayCodeHOL{"a pay code", 41, 2, {}, "00"};
inline constexpr Column kJrHoliday{"hundredths", 43, 8, {}, "00000000"};
inline constexpr Column kJrPayCodeSIC{"a pay code", 51, 2, {}, "00"};
inline constexpr Column kJrSick{"hundredths", 53, 8, {}, "00000000"};
inline constexpr Column kJrPayCodeOTH{"a pay code", 61, 2, {}, "00"};
inline constexpr Column kJrOther{"hundredths", 63, 8, {}, "00000000"};
inline constexpr Column kJrFill{"the fill to column 80", 71, 10};
inline constexpr Column kJrRecord[] = {kJrRegular,    kJrOvertime1, kJrPayCodeOT2, kJrOvertime2,
                                       kJrPayCodeVAC, kJrVacation,  kJrPayCodeHOL, kJrHoliday,
                                       kJrPayCodeSIC, kJrSick,      kJrPayCodeOTH, kJrOther,
                                       kJrFill};
static_assert(columns_follow(kJrRecord, kColumn10.last() + 1));
static_assert(kJrFill.last() == kRecordWidth);

// --- Full: the shift, then pay codes and overpunched amounts ---------------------------
inline constexpr Column kColumns11To13{"the blanks of columns 11-13", 11, 3, "   "};
// The shift as it stands: one column for a one-digit shift; a wider one moves the rest.
inline constexpr Column kShift{"the shift", 14, 1};
inline constexpr Column kPayCode1st{"a pay code", 15, 2, {}, "00"};
inline constexpr Column kAmount1st{"an amount", 17, 7, {}, "0000000"};
inline constexpr Column kPayCode2nd{"a pay code", 24, 2, {}, "00"};
inline constexpr Column kAmount2nd{"an amount", 26, 7, {}, "0000000"};
inline constexpr Column kPayCode3rd{"a pay code", 33, 2, {}, "00"};
inline constexpr Column kAmount3rd{"an amount", 35, 7, {}, "0000000"};
inline constexpr Column kPayCode4th{"a pay code", 42, 2, {}, "00"};
inline constexpr Column kAmount4th{"an amount", 44, 7, {}, "0000000"};
// The first record: regular, overtime 1 and overtime 2 under their pay codes.
inline constexpr Column kHoursFill{"the fill to column 80", 42, 39};
inline constexpr Column kHoursRecord[] = {kColumns11To13, kShift,      kPayCode1st,
                                          kAmount1st,     kPayCode2nd, kAmount2nd,
                                          kPayCode3rd,    kAmount3rd,  kHoursFill};
static_assert(columns_follow(kHoursRecord, kColumn10.last() + 1));
static_assert(kHoursFill.last() == kRecordWidth);
// The second: vacation, holiday, sick and other time, each negated as a deduction.
inline constexpr Column kMiscellaneousFill{"the fill to column 80", 51, 30};
inline constexpr Column kMiscellaneousRecord[] = {
    kColumns11To13, kShift,     kPayCode1st, kAmount1st, kPayCode2nd,       kAmount2nd,
    kPayCode3rd,    kAmount3rd, kPayCode4th, kAmount4th, kMiscellaneousFill};
static_assert(columns_follow(kMiscellaneousRecord, kColumn10.last() + 1));
static_assert(kMiscellaneousFill.last() == kRecordWidth);

// The letters of an overpunched amount's last column: the last digit 0-9 of a positive
// amount, then of a negative one.
inline constexpr std::string_view kOverPunchCharacters = "{ABCDEFGHI}JKLMNOPQR";

}  // namespace zorvat::formats::intuitpac_layout
