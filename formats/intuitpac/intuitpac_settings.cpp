// IntuitPAC's settings string, field by field; the error of a field is 1001 plus its
// position. The edition (Title) decides the layout and the company-name rule.
#include "intuitpac/intuitpac.h"
#include "intuitpac/intuitpac_form.h"

namespace zorvat::formats {

ClassDescription IntuitPAC::describe() {
  using enum IntuitPACErrorsEnum;
  constexpr const char* kPayCode = "0 to 99";
  constexpr const char* kDeduct = "0 or 1 (check box): exported as a deduction (full layout)";
  return describe_settings(
      IntuitPACForm(),
      "the 80-column .clk file, full layout with signed overpunch or the short Jr layout (by "
      "Title)",
      {
          {"Company Name",
           "7 or 9 characters; with 9 the fourth is C or E (Q in the Jr editions); its last four "
           "start every record",
           ZORVAT_SETTING_GUARD(errCompanyName), true},
          {"Regular Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errPayCode0), true},
          {"Overtime Level 1 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errPayCode1), true},
          {"Overtime Level 2 Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errPayCode2), true},
          {"Vacation Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errVAC), true},
          {"Holiday Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errHOL), true},
          {"Sick Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errSIC), true},
          {"Other Pay Code", kPayCode, ZORVAT_SETTING_GUARD(errOTH), true},
          {"Vacation Export As Deduction", kDeduct},
          {"Holiday Export As Deduction", kDeduct},
          {"Sick Export As Deduction", kDeduct},
          {"Other Export As Deduction", kDeduct},
      });
}

}  // namespace zorvat::formats
