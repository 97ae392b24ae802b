// Peachtree's settings string, field by field; the error of a field is 4002 plus its
// position. The batch sequence is not checked: a bad one fails the export itself.
#include "peachtree/peachtree.h"
#include "peachtree/peachtree_form.h"

namespace zorvat::formats {

ClassDescription Peachtree::describe() {
  using enum PeachtreeErrorsEnum;
  constexpr const char* kLevel = "0 to 20";
  constexpr const char* kItem = "at most 32 characters (the ticket's Activity Item ID)";
  return describe_settings(
      PeachtreeForm(), "a 23-column time-ticket CSV with a running ticket number",
      {
          {"Regular Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelReg), true},
          {"Overtime 1 Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelOT1), true},
          {"Overtime 2 Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelOT2), true},
          {"Vacation Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelVAC), true},
          {"Holiday Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelHOL), true},
          {"Sick Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelSIC), true},
          {"Other Pay Level", kLevel, ZORVAT_SETTING_GUARD(errLevelOTH), true},
          {"Regular Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeReg)},
          {"Overtime 1 Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeOT1)},
          {"Overtime 2 Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeOT2)},
          {"Vacation Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeVAC)},
          {"Holiday Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeHOL)},
          {"Sick Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeSIC)},
          {"Other Pay Item Code", kItem, ZORVAT_SETTING_GUARD(errCodeOTH)},
          {"Output Field Titles", "0 or 1 (check box): 1 writes the title row"},
          {"Batch Sequence",
           "number of the next ticket; advanced by each ticket written (a non-number fails the "
           "export)",
           {},
           true},
      });
}

}  // namespace zorvat::formats
