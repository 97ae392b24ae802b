#include "pcpreview/pcpreview_form.h"

#include <string>

#include "pcpreview/pcpreview.h"

namespace zorvat::formats {
namespace {

constexpr const char* kMiscPayCodes = "fraMiscPayCodes";
constexpr std::size_t kPayCodeLength = 2;

struct MiscRow {
  const char* category;
  const char* caption;
  const char* code;
};
constexpr MiscRow kMiscRows[] = {{"VAC", "Vacation:", "D"},
                                 {"HOL", "Holiday:", "E"},
                                 {"SIC", "Sick:", "F"},
                                 {"OTH", "Other:", "G"}};

}  // namespace

PCPreviewForm::PCPreviewForm()
    : FormModel("frmPCPreview", "PCPreview", "PayChex Preview", 5415, 5415, 13) {
  label("lblClientNumber", -1, "Client Number:", {120, 210, 2295, 255});
  Control& client = text_box("txtClientNumber", -1, "0", {2520, 180, 1095, 285});
  client.key_press = digits_only_key;
  bind(client, PCPreview::kClientNumber, Binding::Text);

  const char* const pay_code_captions[] = {
      "Regular Pay Code:", "Overtime Level 1 Pay Code:", "Overtime Level 2 Pay Code:"};
  const char* const pay_codes[] = {"A", "B", "C"};
  for (int i = 0; i < 3; ++i) {
    const int top = 570 + i * 390;
    label("lblPayCode", i, pay_code_captions[i], {120, top + 30, 2295, 255});
    Control& code = text_box("txtPayCode", i, pay_codes[i], {2520, top, 495, 285}, kPayCodeLength);
    code.key_press = upper_case_key;
    bind(code, static_cast<int>(PCPreview::kRegularPayCode) + i, Binding::Text);
  }

  label("lblSequence", -1, "Sequence:", {120, 1770, 2295, 255});
  Control& sequence = text_box("txtSequence", -1, "0", {2520, 1740, 1095, 285});
  sequence.key_press = digits_only_key;
  bind(sequence, PCPreview::kSequence, Binding::Text);

  frame(kMiscPayCodes, "Miscellaneous Pay Codes", {120, 2220, 5175, 2175});
  label("lblCode", -1, "Code", {2520, 2460, 735, 255}, kMiscPayCodes);
  label("lblExportAsDeduction", -1, "Export As Deduction", {3480, 2460, 1695, 255}, kMiscPayCodes);
  for (int row = 0; row < 4; ++row) {
    const std::string category = kMiscRows[row].category;
    const int top = 2760 + row * 390;
    label("lbl" + category + "PayCode", -1, kMiscRows[row].caption, {240, top + 30, 2175, 255},
          kMiscPayCodes);
    Control& code = text_box("txt" + category + "PayCode", -1, kMiscRows[row].code,
                             {2520, top, 495, 285}, kPayCodeLength, kMiscPayCodes);
    code.key_press = upper_case_key;
    bind(code, static_cast<int>(PCPreview::kVacationPayCode) + row, Binding::Text);
    bind(check_box("chk" + category + "Deduct", -1, {}, {4200, top + 30, 255, 255}, kMiscPayCodes),
         static_cast<int>(PCPreview::kVacationDeduct) + row, Binding::CheckValue);
  }

  standard_buttons(1800, 4680);
}

void PCPreviewForm::prepare(std::string_view) {
  help_context = kHelpContext;
}

PCPreviewForm& frmPCPreview() {
  return shared_form<PCPreviewForm>();
}

}  // namespace zorvat::formats
