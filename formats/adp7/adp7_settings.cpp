// ADP7's settings string, field by field; the error of a field is 1001 plus its
// position, and the check looks only at the batch number and the five pay codes.
#include "adp7/adp7.h"
#include "adp7/adp7_form.h"

namespace zorvat::formats {

ClassDescription ADP7::describe() {
  using enum ADP7ErrorsEnum;
  constexpr const char* kPayCode = "ADP pay code, at least 2 characters";
  constexpr const char* kCodeName = "any text: the CSV column title of the pay code";
  return describe_settings(
      ADP7Form(), "a PC/Payroll 7 import: fixed-position EPIP batch records, or CSV",
      {
          {"Company Code",
           "ADP company code; starts the batch header and every CSV line",
           {},
           true},
          {"Batch Sequence Number", "0 to 99; advanced by each export, 99 wraps to 0",
           ZORVAT_SETTING_GUARD(errBatchSeqNum), true},
          {"Pay Number", "ADP pay number, written on every employee line", {}, true},
          {"Overtime Level 2 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errOT2PayCode), true},
          {"Overtime Level 2 Code Name", kCodeName},
          {"Vacation Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errVACPayCode), true},
          {"Vacation Code Name", kCodeName},
          {"Holiday Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errHOLPayCode), true},
          {"Holiday Code Name", kCodeName},
          {"Sick Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errSICPayCode), true},
          {"Sick Code Name", kCodeName},
          {"Other Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errOTHPayCode), true},
          {"Other Code Name", kCodeName},
          {"Output Format", "EPIP, or CSV (anything but EPIP writes CSV)"},
      });
}

}  // namespace zorvat::formats
