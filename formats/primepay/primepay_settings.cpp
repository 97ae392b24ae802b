// PrimePay's settings string, field by field; the error of a field is 5001 plus its
// position.
#include "primepay/primepay.h"
#include "primepay/primepay_form.h"

namespace zorvat::formats {

ClassDescription PrimePay::describe() {
  using enum PrimePayErrorsEnum;
  // The check compares the pay codes as numbers without testing them first.
  constexpr const char* kPayCode = "0 to 99 (text that is not a number raises 13 Type mismatch)";
  return describe_settings(
      PrimePayForm(), "the .DAT file: a header for the pay period and fixed-width detail lines",
      {
          {"Batch Sequence Number", "0 to 127; the last column of every detail line",
           ZORVAT_SETTING_GUARD(errBatchSequenceNumber), true},
          {"Overtime Level 1 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errOT1), true},
          {"Overtime Level 2 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errOT2), true},
          {"Vacation Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errVAC), true},
          {"Holiday Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errHOL), true},
          {"Sick Pay Code",
           "0 to 99 (text that is not a number raises 13 Type mismatch); other time is written "
           "under it too",
           ZORVAT_SETTING_GUARD(errSIC), true},
          {"Other Pay Code",
           "0 to 99 (text that is not a number raises 13 Type mismatch); not written in the file",
           ZORVAT_SETTING_GUARD(errOTH), true},
      });
}

}  // namespace zorvat::formats
