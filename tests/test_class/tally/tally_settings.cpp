// Tally's settings string: one field.
#include "tally/tally.h"
#include "tally/tally_form.h"

namespace zorvat::formats {

ClassDescription Tally::describe() {
  using enum TallyErrorsEnum;
  return describe_settings(
      TallyForm(), "a CSV line per card: export ID and total hours",
      {
          {"Output Field Titles", "0 or 1 (check box): 1 writes the title line",
           ZORVAT_SETTING_GUARD(errTitles), true},
      });
}

}  // namespace zorvat::formats
