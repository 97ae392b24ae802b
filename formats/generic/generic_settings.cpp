// Generic's settings string, field by field. Validate accepts every value.
#include "generic/generic.h"
#include "generic/generic_form.h"

namespace zorvat::formats {

ClassDescription Generic::describe() {
  constexpr const char* kCheck = "0 or 1 (check box)";
  constexpr const char* kOption =
      "True or False (option button; the first of 5 to 9 that is True picks the separator, none "
      "True: no separator)";
  return describe_settings(
      GenericForm(),
      "a delimited ASCII file, one line per card: separator, line terminator, titles, quoting, "
      "names",
      {
          {"Insert Quotes Around Non-Numeric", kCheck},
          {"Output Field Titles", kCheck},
          {"Remove Blanks", kCheck},
          {"Include Employee Information", kCheck},
          {"Include Full Name", kCheck},
          {"Separator Tab (0x09)", "True or False; writes four blanks, not a tab character"},
          {"Separator Comma (,)", kOption},
          {"Separator Slash (/)", kOption},
          {"Separator Semi-Colon (;)", kOption},
          {"Separator Custom", kOption},
          {"Custom Separator", "any text without a comma, used as it stands"},
          {"Line Terminator", "0 CR LF, 1 CR, 2 LF, 3 LF CR (list index)"},
      });
}

}  // namespace zorvat::formats
