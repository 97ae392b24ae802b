#include "pcpaylink/pcpaylink_form.h"

#include <string>
#include <vector>

#include "pcpaylink/pcpaylink.h"
#include "zorvat/variant.h"

namespace zorvat::formats {
namespace {

constexpr const char* kMiscPayCodes = "fraMiscPayCodes";

std::vector<std::string> split_codes(std::string_view codes) {
  std::vector<std::string> list;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = codes.find(',', start);
    list.emplace_back(codes.substr(start, comma - start));
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  return list;
}

// The earning codes each category may be paid under, in PayLink's order.
std::vector<std::string> earning_codes(const char* category) {
  const std::string_view common = "VA,R3,SA,MI,TE,IN,BNW,BNP,BNF,99,EX,R1X,SAX,AV";
  const std::string category_name(category);
  if (category_name == "VAC") return split_codes(common);
  if (category_name == "HOL") {
    std::vector<std::string> codes = split_codes(common);
    codes.front() = "HO";
    return codes;
  }
  if (category_name == "SIC")
    return split_codes("QS,NS,R3,SA,MI,TE,IN,BNW,BNP,BNF,99,EX,R1X,SAX,AV");
  return split_codes("R3,SA,MI,TE,IN,BNW,BNP,BNF,99,EX,R1X,SAX,AV");
}

struct MiscRow {
  const char* category;
  const char* caption;
};
constexpr MiscRow kMiscRows[] = {
    {"VAC", "Vacation:"}, {"HOL", "Holiday:"}, {"SIC", "Sick:"}, {"OTH", "Other:"}};

}  // namespace

PCPayLinkForm::PCPayLinkForm() : FormModel("frmPCPayLink", "PCPayLink", "PayChex", 5055, 5175, 8) {
  struct Box {
    const char* name;  // lbl<name>, txt<name>
    const char* caption;
    const char* text;
    std::size_t max_length;
  };
  const Box boxes[] = {{"OfficeNumber", "Office Number (0-1295):", "0", 4},
                       {"ClientID", "Client ID:", "A001", 4},
                       {"SiteNumber", "Site Number (0-9):", "0", 1},
                       {"SeqNumber", "Sequence Number (0-46655):", "0", 5}};
  for (int i = 0; i < 4; ++i) {
    const int top = 180 + i * 390;
    label(std::string("lbl") + boxes[i].name, -1, boxes[i].caption, {120, top + 30, 2655, 255});
    Control& box = text_box(std::string("txt") + boxes[i].name, -1, boxes[i].text,
                            {2880, top, 1095, 285}, boxes[i].max_length);
    bind(box, static_cast<int>(PCPayLink::kOfficeNumber) + i, Binding::Text);
    box.key_press = i == PCPayLink::kClientID ? upper_case_key : digits_only_key;
  }
  control("txtOfficeNumber").change = [this] {
    check_range("txtOfficeNumber", 1295, "Office Number");
  };
  control("txtSeqNumber").change = [this] {
    check_range("txtSeqNumber", 46655, "Sequence Number");
  };

  frame(kMiscPayCodes, "Miscellaneous Pay Codes", {120, 1860, 4815, 2175});
  label("lblCode", -1, "Code", {2880, 2100, 1095, 255}, kMiscPayCodes);
  for (int row = 0; row < 4; ++row) {
    const std::string category = kMiscRows[row].category;
    const int top = 2400 + row * 390;
    label("lbl" + category + "PayCode", -1, kMiscRows[row].caption, {240, top + 30, 2535, 255},
          kMiscPayCodes);
    Control& combo = combo_box(std::string("cbo") + category, earning_codes(category.c_str()), true,
                               {2880, top, 1095, 315}, kMiscPayCodes);
    bind(combo, static_cast<int>(PCPayLink::kVACPayCode) + row, Binding::Text);
    // Form load: the first code of every list is selected.
    combo.list_index = 0;
    combo.text = combo.items.front();
  }

  standard_buttons(1320, 4440);
}

void PCPayLinkForm::prepare(std::string_view title) {
  help_context = kHelpContext;
  caption = std::string(title);
}

void PCPayLinkForm::check_range(const char* box, double highest, const char* what) {
  const std::string& text = control(box).text;
  const Variant value(text);
  if (!is_numeric(value) || to_double(value) < 0 || to_double(value) > highest)
    show_message(std::string(what) + " must be between " + "0" + " and " +
                 general_number_text(highest));
}

PCPayLinkForm& frmPCPayLink() {
  return shared_form<PCPayLinkForm>();
}

}  // namespace zorvat::formats
