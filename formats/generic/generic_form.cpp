#include "generic/generic_form.h"

#include "generic/generic.h"

namespace zorvat::formats {
namespace {

constexpr const char* kOutputOptions = "fraOutputOptions";
constexpr const char* kFieldSeperators = "fraFieldSeperators";

}  // namespace

GenericForm::GenericForm() : FormModel("frmGeneric", "Generic", "Generic V2.0", 6615, 3555, 12) {
  frame(kOutputOptions, "Generic Output Options", {120, 120, 3495, 2055});
  const char* const options[] = {"Insert Quotes Around Non-Numeric", "Output Field Titles",
                                 "Remove Blanks", "Include Employee Information",
                                 "Include Full Name"};
  for (int i = 0; i < 5; ++i) {
    Control& option = check_box("chkOutputOptions", i, options[i], {240, 360 + i * 330, 3255, 255},
                                kOutputOptions);
    bind(option, static_cast<int>(Generic::kInsertQuotes) + i, Binding::CheckValue);
  }

  label("lblLineTerminator", -1, "Line Terminator", {120, 2340, 1335, 255});
  Control& terminator =
      combo_box("cboLineTerminator", {"CRLF", "CR", "LF", "LFCR"}, false, {1560, 2280, 1335, 315});
  bind(terminator, Generic::kLineTerminator, Binding::ListIndex);
  // Form load: the first terminator, CR LF, is selected.
  terminator.list_index = 0;
  terminator.text = terminator.items[0];

  frame(kFieldSeperators, "Generic Field Seperators", {3735, 120, 2760, 2535});
  const char* const separators[] = {"Tab (0x09)", "Comma (,)", "Slash (/)", "Semi-Colon (;)",
                                    "Custom"};
  for (int i = 0; i < 5; ++i) {
    Control& option = option_button("optFieldSeperators", i, separators[i],
                                    {3855, 360 + i * 360, 1935, 255}, kFieldSeperators);
    bind(option, static_cast<int>(Generic::kSeparatorTab) + i, Binding::OptionValue);
  }
  Control& custom =
      text_box("txtCustomSeperator", -1, {}, {4815, 1770, 615, 285}, 0, kFieldSeperators);
  bind(custom, Generic::kCustomSeparatorText, Binding::Text);

  standard_buttons(2880, 2910);
}

void GenericForm::prepare(std::string_view) {
  help_context = kHelpContext;
}

GenericForm& frmGeneric() {
  return shared_form<GenericForm>();
}

}  // namespace zorvat::formats
