// PCPreview's settings string, field by field; the error of a field is 3001 plus its
// position, and the deduction flags are not checked.
#include "pcpreview/pcpreview.h"
#include "pcpreview/pcpreview_form.h"

namespace zorvat::formats {

ClassDescription PCPreview::describe() {
  using enum PCPreviewErrorsEnum;
  constexpr const char* kPayCode = "at most 2 characters";
  constexpr const char* kDeduct = "0 or 1 (check box); kept for the form, not used in the file";
  return describe_settings(
      PCPreviewForm(), "the Preview earnings records in the client's \"_TA\" file",
      {
          {"Client Number", "0 to 9999; names the file (NNNN_TA.txt)",
           ZORVAT_SETTING_GUARD(errClientNumber), true},
          {"Regular Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errPayCode0)},
          {"Overtime Level 1 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errPayCode1)},
          {"Overtime Level 2 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errPayCode2)},
          {"Sequence", "at most 2 characters (digits)", ZORVAT_SETTING_GUARD(errSequence)},
          {"Vacation Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errVAC)},
          {"Holiday Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errHOL)},
          {"Sick Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errSIC)},
          {"Other Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errOTH)},
          {"Vacation Export As Deduction", kDeduct},
          {"Holiday Export As Deduction", kDeduct},
          {"Sick Export As Deduction", kDeduct},
          {"Other Export As Deduction", kDeduct},
      });
}

}  // namespace zorvat::formats
