#include "tally/tally_form.h"

#include "tally/tally.h"

namespace zorvat::formats {

TallyForm::TallyForm() : FormModel("frmTally", "Tally", "Tally", 3615, 1695, Tally::kFieldCount) {
  bind(check_box("chkOutputTitles", -1, "Output Field Titles", {240, 240, 2415, 255}),
       Tally::kOutputFieldTitles, Binding::CheckValue);
  standard_buttons(240, 840);
}

void TallyForm::prepare(std::string_view) {
  help_context = kHelpContext;
}

TallyForm& frmTally() {
  return shared_form<TallyForm>();
}

}  // namespace zorvat::formats
