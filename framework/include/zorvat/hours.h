// Minutes to hours. Each export class carries its own conversion, differing in
// argument and result type and in rounding; the differences show in the files, so
// each class picks the conversion that is its own and passes its own error source
// ("zorvat.Generic.Min2Hrs"). All arithmetic is double precision: minutes / 60.0, and
// hundredths as that quotient x 100.0. Whole results round half to even. A result
// that is not finite (a floating-point overflow or invalid operand) raises
// 6 "Overflow", and so does a whole result outside the 32-bit range.
#pragma once

#include <cstdint>
#include <string_view>

namespace zorvat::hours {

// minutes / 60, unrounded (Generic, PCPayLink, PCPreview, Peachtree Min2Hrs).
double minutes_to_hours(double minutes, std::string_view source);

// minutes / 60 rounded to whole hours, half to even (PrimePay Min2Hrs).
std::int32_t minutes_to_whole_hours(std::int32_t minutes, std::string_view source);

// 0 below 60 minutes (zero and negatives too), otherwise minutes / 60 rounded to
// whole hours, half to even (QB2000 Min2Hrs).
std::int32_t minutes_to_whole_hours_from_one_hour(std::int32_t minutes, std::string_view source);

// (minutes / 60) x 100 rounded half to even (Peachtree, PrimePay, QB2000 Min2HrsinHun).
std::int32_t minutes_to_hundredths(std::int32_t minutes, std::string_view source);

}  // namespace zorvat::hours
