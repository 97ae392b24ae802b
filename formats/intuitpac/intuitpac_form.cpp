#include "intuitpac/intuitpac_form.h"

#include "intuitpac/intuitpac.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kMiscPayCodes = "fraMiscPayCodes";
constexpr const char* kPayCodeCaptions[] = {
    "Regular Pay Code:", "Overtime Level 1 Pay Code:", "Overtime Level 2 Pay Code:"};
// The short layout's one pay-code box; the caption is spelt as it has always been.
constexpr const char* kJrPayCodeCaption = "Overime Level 2 Pay Code:";

struct MiscRow {
  const char* category;
  const char* caption;
};
constexpr MiscRow kMiscRows[] = {
    {"VAC", "Vacation:"}, {"HOL", "Holiday:"}, {"SIC", "Sick:"}, {"OTH", "Other:"}};

}  // namespace

IntuitPACForm::IntuitPACForm()
    : FormModel("frmIntuitPAC", "IntuitPAC", "PCAccess", 5415, 5055, 12) {
  label("lblCompanyName", -1, "Company Name:", {120, 210, 2295, 255});
  Control& company = text_box("txtCompanyName", -1, {}, {2520, 180, 1335, 285}, 9);
  bind(company, IntuitPAC::kCompanyName, Binding::Text);
  company.validate = [this](bool& cancel) { txtCompanyName_Validate(cancel); };

  for (int i = 0; i < 3; ++i) {
    const int top = 600 + i * 390;
    label("lblPayCode", i, kPayCodeCaptions[i], {120, top + 30, 2295, 255});
    bind(text_box("txtPayCode", i, {}, {2520, top, 735, 285}),
         static_cast<int>(IntuitPAC::kPayCode0) + i, Binding::Text);
  }

  frame(kMiscPayCodes, "Miscellaneous Pay Codes", {120, 1860, 5175, 2175});
  label("lblCode", -1, "Code", {2520, 2100, 735, 255}, kMiscPayCodes);
  label("lblExportAsDeduction", -1, "Export As Deduction", {3480, 2100, 1695, 255}, kMiscPayCodes);
  for (int row = 0; row < 4; ++row) {
    const std::string category = kMiscRows[row].category;
    const int top = 2400 + row * 390;
    label("lbl" + category + "PayCode", -1, kMiscRows[row].caption, {240, top + 30, 2175, 255},
          kMiscPayCodes);
    bind(text_box("txt" + category + "PayCode", -1, {}, {2520, top, 735, 285}, 0, kMiscPayCodes),
         static_cast<int>(IntuitPAC::kVACPayCode) + row, Binding::Text);
    bind(check_box("chk" + category + "Deduct", -1, {}, {4200, top + 30, 255, 255}, kMiscPayCodes),
         static_cast<int>(IntuitPAC::kVACDeduct) + row, Binding::CheckValue);
  }

  standard_buttons(1800, 4320);
}

IntuitPACForm::~IntuitPACForm() = default;

void IntuitPACForm::prepare(std::string_view title) {
  help_context = kHelpContext;
  checker_ = std::make_unique<IntuitPAC>(context());
  checker_->Title = std::string(title);
  caption = std::string(title);
  jr_ = checker_->IsJr(title);
  if (jr_) {
    for (int i = 1; i <= 2; ++i) {
      control("txtPayCode", i).visible = false;
      control("lblPayCode", i).visible = false;
    }
    control("lblPayCode", 0).caption = kJrPayCodeCaption;
  } else {
    // The boxes a short edition hid stay hidden on this instance: a full edition
    // writes all three pay-code fields from the first box anyway.
    control("lblPayCode", 0).caption = kPayCodeCaptions[0];
  }
}

std::string IntuitPACForm::write_back() const {
  std::vector<std::string> fields = bound_fields();
  // The pay-code fields are taken by edition: the short editions write the three
  // boxes, the full editions the first box three times. Imports rely on it.
  for (int i = 0; i < 3; ++i)
    fields[IntuitPAC::kPayCode0 + i] = control("txtPayCode", jr_ ? i : 0).text;
  return join_fields(fields);
}

void IntuitPACForm::txtCompanyName_Validate(bool& cancel) {
  Control& company = control("txtCompanyName");
  if (!checker_ || !visible()) return;
  try {
    // Only field 0 is there to check.
    checker_->ValidateSetupData(company.text);
  } catch (const Error& error) {
    set_text(company, company.text);
    cancel = true;
    show_message(error.description());
  }
}

IntuitPACForm& frmIntuitPAC() {
  return shared_form<IntuitPACForm>();
}

}  // namespace zorvat::formats
