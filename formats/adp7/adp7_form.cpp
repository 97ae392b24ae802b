#include "adp7/adp7_form.h"

#include "adp7/adp7.h"

namespace zorvat::formats {
namespace {

constexpr const char* kPayCodes = "fraPayCode";
constexpr const char* kOutputFormat = "fraOutputFormat";

struct PayCodeRow {
  const char* category;  // "OT2": lblOT2PayCode, txtOT2PayCode, txtOT2CodeName
  const char* caption;
  const char* code_name;  // the code name's preset
};
constexpr PayCodeRow kRows[] = {
    {"OT2", "Overtime Level 2 Pay Code", "Hours 3"},
    {"VAC", "Vacation Pay Code", "Vacation Hours"},
    {"HOL", "Holiday Pay Code", "Holiday Hours"},
    {"SIC", "Sick Pay Code", "Sick Hours"},
    {"OTH", "Other Pay Code", "Hours 4"},
};

}  // namespace

ADP7Form::ADP7Form() : FormModel("frmADP7", "ADP7", "ADP Version 7.0", 7695, 4695, 14) {
  const char* const heads[][2] = {{"CompanyCode", "Company Code"},
                                  {"BatchSeqNum", "Batch Sequence Number"},
                                  {"PayNumber", "Pay Number"}};
  for (int i = 0; i < 3; ++i) {
    const int top = 180 + i * 390;
    label(std::string("lbl") + heads[i][0], -1, heads[i][1], {120, top + 30, 2055, 255});
    Control& box = text_box(std::string("txt") + heads[i][0], -1, {}, {2280, top, 975, 285});
    bind(box, static_cast<int>(ADP7::kCompanyCode) + i, Binding::Text);
    // Company code and pay number are ADP codes: typed in upper case.
    if (i != 1) box.key_press = upper_case_key;
  }

  frame(kPayCodes, "ADP Pay Codes", {120, 1380, 4815, 2535});
  label("lblCode", -1, "Code", {2760, 1620, 735, 255}, kPayCodes);
  label("lblCodeName", -1, "Code Name", {3600, 1620, 1215, 255}, kPayCodes);
  for (int row = 0; row < 5; ++row) {
    const std::string category = kRows[row].category;
    const int top = 1920 + row * 390;
    label("lbl" + category + "PayCode", -1, kRows[row].caption, {240, top + 30, 2415, 255},
          kPayCodes);
    Control& code =
        text_box("txt" + category + "PayCode", -1, {}, {2760, top, 735, 285}, 0, kPayCodes);
    code.key_press = upper_case_key;
    bind(code, static_cast<int>(ADP7::kOT2PayCode) + 2 * row, Binding::Text);
    Control& name = text_box("txt" + category + "CodeName", -1, kRows[row].code_name,
                             {3600, top, 1215, 285}, 0, kPayCodes);
    bind(name, static_cast<int>(ADP7::kOT2CodeName) + 2 * row, Binding::Text);
  }

  frame(kOutputFormat, "Format Options", {4680, 120, 2895, 1095});
  option_button("optEPIP", -1, "Output to ADP EPIP format", {4800, 360, 2655, 255}, kOutputFormat)
      .value = 1;
  option_button("optCSV", -1, "Output to ADP CSV format", {4800, 720, 2655, 255}, kOutputFormat);

  standard_buttons(4200, 4140);
}

void ADP7Form::prepare(std::string_view) {
  help_context = kHelpContext;
}

void ADP7Form::fill(const SettingsFields& fields) {
  FormModel::fill(fields);
  const std::string& format = fields.at(ADP7::kOutputFormat);
  // Anything but "EPIP" selects CSV; EPIP is then set from the text "TRUE" or "FALSE".
  if (format == "CSV" || format != "EPIP") set_value(control("optCSV"), 1);
  set_value(control("optEPIP"), format == "EPIP" ? 1 : 0);
}

std::string ADP7Form::write_back() const {
  std::vector<std::string> fields = bound_fields();
  fields[ADP7::kOutputFormat] = control("optCSV").value != 0 ? "CSV" : "EPIP";
  return join_fields(fields);
}

ADP7Form& frmADP7() {
  return shared_form<ADP7Form>();
}

}  // namespace zorvat::formats
