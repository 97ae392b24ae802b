#include "peachtree/peachtree_form.h"

#include "peachtree/peachtree.h"

namespace zorvat::formats {
namespace {

constexpr const char* kPeachtree = "fraPeachtree";
constexpr const char* kLevelCaptions[] = {
    "Regular:", "Overtime 1:", "Overtime 2:", "Vacation:", "Holiday:", "Sick:", "Other:"};

}  // namespace

PeachtreeForm::PeachtreeForm()
    : FormModel("frmPeachtree", "Peachtree", "Peachtree", 6135, 5415, 16) {
  frame(kPeachtree, "Peachtree Pay Levels and Codes", {120, 120, 5895, 3495});
  label("lblLevel", -1, "Pay Level", {1680, 360, 975, 255}, kPeachtree);
  label("lblPayItemCode", -1, "Pay Item Code", {2760, 360, 2415, 255}, kPeachtree);
  for (int i = 0; i < 7; ++i) {
    const int top = 660 + i * 390;
    label("lblPayLevel", i, kLevelCaptions[i], {240, top + 30, 1335, 255}, kPeachtree);
    bind(text_box("txtPayLevel", i, "0", {1680, top, 495, 285}, 2, kPeachtree),
         static_cast<int>(Peachtree::kPayLevelReg) + i, Binding::Text);
    bind(text_box("txtPayItemCode", i, i < 3 ? "ADMN-01000" : "ADMN-02000", {2760, top, 3015, 285},
                  32, kPeachtree),
         static_cast<int>(Peachtree::kPayItemCodeReg) + i, Binding::Text);
  }
  bind(check_box("chkOutputTitles", -1, "Output Field Titles", {240, 3780, 2415, 255}),
       Peachtree::kOutputFieldTitles, Binding::CheckValue);
  label("lblSequence", -1, "Batch Sequence:", {2760, 3810, 1455, 255});
  bind(text_box("txtSequence", -1, "1", {4320, 3780, 1095, 285}), Peachtree::kBatchSequence,
       Binding::Text);

  standard_buttons(2520, 4680);
}

void PeachtreeForm::prepare(std::string_view) {
  help_context = kHelpContext;
}

PeachtreeForm& frmPeachtree() {
  return shared_form<PeachtreeForm>();
}

}  // namespace zorvat::formats
