// The JSON time-card reader: any bytes either load (and then every value can be read)
// or are refused with a message; nothing else may happen.
#include <cstdint>
#include <string>

#include "json_cards.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"

namespace {

void read_everything(const zorvat::Variant& value, int depth) {
  if (!value.is_object() || depth > 64) return;
  for (const char* name : {"ExportID", "Number", "REG", "Days", "DayDate", "Count", "PeriodEnd"}) {
    try {
      const zorvat::Variant property = zorvat::get_property(value, name);
      zorvat::to_concat_text(property);
      read_everything(property, depth + 1);
    } catch (const zorvat::Error&) {
    }
  }
  try {
    zorvat::for_each(value,
                     [&](const zorvat::Variant& element) { read_everything(element, depth + 1); });
  } catch (const zorvat::Error&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const zorvat::Variant cards = zorvat::cli::load_cards_json(
        std::string(reinterpret_cast<const char*>(data), size), "fuzz");
    read_everything(cards, 0);
  } catch (const zorvat::cli::CardsFileError&) {
  }
  return 0;
}
