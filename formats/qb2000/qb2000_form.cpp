#include "qb2000/qb2000_form.h"

#include <string>

namespace zorvat::formats {
namespace {

struct Item {
  const char* caption;
  const char* text;
};
constexpr Item kItems[] = {
    {"Quick Books Company File:", ""},
    {"Regular Pay Code:", "Regular Hourly Rate"},
    {"Overtime Level 1 Pay Code:", "Overtime Hourly Rate"},
    {"Overtime Level 2 Pay Code:", "Premuim Overtime Hourly Rate"},
    {"Vacation Pay Code:", "Vacation Hourly Rate"},
    {"Holiday Pay Code:", "Holiday Hourly Rate"},
    {"Sick Pay Code:", "Sick Hourly Rate"},
    {"Other Pay Code:", "Other Hourly Rate"},
};
// QuickBooks names its payroll items with at most 31 characters.
constexpr std::size_t kItemLength = 31;

constexpr int kSelect = 3;

}  // namespace

QB2000Form::QB2000Form() : FormModel("frmQB2000", "QB2000", "QB2000", 7335, 4095, 8) {
  for (int i = 0; i < 8; ++i) {
    const int top = 180 + i * 390;
    label("lblPayCode", i, kItems[i].caption, {120, top + 30, 2295, 255});
    bind(
        text_box("txtPayCode", i, kItems[i].text, {2520, top, 3375, 285}, i == 0 ? 0 : kItemLength),
        i, Binding::Text);
  }
  command_button("cmdButton", kSelect, "Select...", {6000, 150, 1215, 375});
  standard_buttons(2520, 3420);
}

void QB2000Form::prepare(std::string_view title) {
  help_context = kHelpContext;
  caption = std::string(title);
}

void QB2000Form::seeded() {
  // An empty company file starts from QuickBooks' folder, seeded or not.
  Control& company_file = control("txtPayCode", 0);
  if (company_file.text.empty()) set_text(company_file, std::string(kDefaultFolder));
}

void QB2000Form::cmdButton_Click(int index) {
  if (index != kSelect) {
    FormModel::cmdButton_Click(index);
    return;
  }
  OpenDialogRequest request;
  request.filter = "QuickBooks File (*.QBW) | *.QBW";
  request.title = "Select Intuit Quickbooks File";
  request.initial_folder = "C:\\Program Files\\Intuit\\";
  const OpenDialogResult answer = ui().open_dialog(request);
  if (!answer.cancelled) set_text(control("txtPayCode", 0), answer.file_name);
}

QB2000Form& frmQB2000() {
  return shared_form<QB2000Form>();
}

}  // namespace zorvat::formats
