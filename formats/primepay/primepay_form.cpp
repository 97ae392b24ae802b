#include "primepay/primepay_form.h"

#include <string>

#include "primepay/primepay.h"
#include "zorvat/variant.h"

namespace zorvat::formats {
namespace {

constexpr const char* kMiscPayCodes = "fraMiscPayCodes";
constexpr std::size_t kPayCodeLength = 2;
constexpr const char* kOutOfRange = "Batch Sequence Field must be between 0 and 127";
constexpr const char* kNotNumeric = "Batch Sequence must be a numberic value between 0 and 127";

struct MiscRow {
  const char* category;
  const char* caption;
  const char* code;
};
constexpr MiscRow kMiscRows[] = {{"VAC", "Vacation:", "23"},
                                 {"HOL", "Holiday:", "24"},
                                 {"SIC", "Sick:", "25"},
                                 {"OTH", "Other:", "28"}};

}  // namespace

PrimePayForm::PrimePayForm() : FormModel("frmPrimePay", "PrimePay", "PrimePay", 4935, 4575, 7) {
  label("lblBatchSequence", -1, "Batch Sequence Number:", {120, 210, 2295, 255});
  Control& batch = text_box("txtBatchSequence", -1, "0", {2520, 180, 615, 285}, 3);
  batch.key_press = digits_only_key;
  batch.change = [this] { txtBatchSequence_Change(); };
  bind(batch, PrimePay::kBatchSequenceNumber, Binding::Text);

  const char* const captions[] = {"Overtime Level 1 Pay Code:", "Overtime Level 2 Pay Code:"};
  const char* const codes[] = {"02", "20"};
  for (int i = 0; i < 2; ++i) {
    const int top = 570 + i * 390;
    label("lblPayCode", i, captions[i], {120, top + 30, 2295, 255});
    bind(text_box("txtPayCode", i, codes[i], {2520, top, 495, 285}, kPayCodeLength),
         static_cast<int>(PrimePay::kOvertime1PayCode) + i, Binding::Text);
  }

  frame(kMiscPayCodes, "Miscellaneous Pay Codes", {120, 1440, 4695, 2175});
  label("lblCode", -1, "Code", {2520, 1680, 735, 255}, kMiscPayCodes);
  for (int row = 0; row < 4; ++row) {
    const std::string category = kMiscRows[row].category;
    const int top = 1980 + row * 390;
    label("lbl" + category + "PayCode", -1, kMiscRows[row].caption, {240, top + 30, 2175, 255},
          kMiscPayCodes);
    bind(text_box("txt" + category + "PayCode", -1, kMiscRows[row].code, {2520, top, 495, 285},
                  kPayCodeLength, kMiscPayCodes),
         static_cast<int>(PrimePay::kVacationPayCode) + row, Binding::Text);
  }

  standard_buttons(1320, 3840);
}

void PrimePayForm::prepare(std::string_view) {
  help_context = kHelpContext;
}

void PrimePayForm::txtBatchSequence_Change() {
  Control& batch = control("txtBatchSequence");
  const Variant text(batch.text);
  if (is_numeric(text) && (to_double(text) < 0 || to_double(text) > 127)) show_message(kOutOfRange);
  if (!is_numeric(text)) {
    show_message(kNotNumeric);
    set_text(batch, {});
  }
}

PrimePayForm& frmPrimePay() {
  return shared_form<PrimePayForm>();
}

}  // namespace zorvat::formats
