// Which card, and which of its properties, the classes were reading when an error was
// raised: the read trail (card_read_trail.h) read back against the cells.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>

#include "json_card_store.h"
#include "json_card_view.h"
#include "json_cards.h"
#include "zorvat/variant.h"

namespace zorvat::cli {
namespace {

using json_cards::Cell;
using json_cards::Kind;
using json_cards::ReadTrail;
using json_cards::Store;

// The field `read` asked for, in its object; nullptr when the object has none.
const Cell* field_read(const Store& store, const ReadTrail::Read& read) {
  if (read.property == ReadTrail::kNone) return nullptr;
  for (std::uint32_t i = 0; i < read.field_count; ++i) {
    const Cell& field = store.cells[read.first_field + i];
    if (store.folded_of(field.key) == read.property) return &field;
  }
  return nullptr;
}

// The amounts of time of a card and of a day, in minutes: the values every class
// converts to numbers (the other properties are text, dates, or formatted as they are).
bool is_minutes(std::string_view folded_name) {
  static constexpr std::string_view kMinutes[] = {
      "reg", "ot1", "ot2", "vac", "hol", "sic", "oth", "hours", "editreg", "editot1", "editot2"};
  return std::find(std::begin(kMinutes), std::end(kMinutes), folded_name) != std::end(kMinutes);
}

// Whether converting `field` to a number would raise `number`: 13 for text that is
// not a number, 6 for a number too large for the 32-bit integers the
// classes take minutes and hundredths of hours in.
bool raises(const Store& store, const Cell& field, long number) {
  if (!is_minutes(json_cards::folded(store.name_of(field.key)))) return false;
  double value = 0;
  switch (field.kind) {
    case Kind::Long:
      value = field.long_value;
      break;
    case Kind::Double:
      value = field.number;
      break;
    case Kind::Text: {
      const NumericParse parsed =
          parse_numeric(std::string_view(store.text).substr(field.span.first, field.span.count));
      if (parsed.status == NumericParse::Status::NotNumeric) return number == 13;
      if (parsed.status == NumericParse::Status::Overflow) return number == 6;
      value = parsed.value;
      break;
    }
    default:
      return false;  // dates and Booleans convert; Null raises 94; Days is no number
  }
  // Minutes whose hundredths of an hour pass the 32-bit range overflow as well.
  constexpr double kLargestMinutes = 2147483647.0 * 60.0 / 100.0;
  return number == 6 && std::fabs(value) > kLargestMinutes;
}

// The card's ExportID, else its Number, as text; `id_name` is set to the name as the
// file spells it. Empty with neither.
std::string id_of(const Store& store, const Cell& card, std::string& id_name) {
  for (const char* name : {"exportid", "number"}) {
    for (std::uint32_t i = 0; i < card.span.count; ++i) {
      const Cell& field = store.cells[card.span.first + i];
      if (json_cards::folded(store.name_of(field.key)) != name) continue;
      std::string id;
      if (field.kind == Kind::Text)
        id = std::string_view(store.text).substr(field.span.first, field.span.count);
      else if (field.kind == Kind::Long)
        id = std::to_string(field.long_value);
      else if (field.kind == Kind::Double)
        id = general_number_text(field.number);
      if (!id.empty()) {
        id_name = store.name_of(field.key);
        return id;
      }
    }
  }
  return {};
}

}  // namespace

std::optional<CardReadPlace> card_being_read(const Variant& cards, long error_number) {
  const Store* cards_store = json_cards::store_of(cards);
  if (cards_store == nullptr) return std::nullopt;
  const Store& store = *cards_store;
  const ReadTrail& trail = store.trail;
  if (trail.card == ReadTrail::kNone) return std::nullopt;

  CardReadPlace place;
  place.index = trail.card;
  place.id = id_of(store, store.cells[store.cards.span.first + trail.card], place.id_name);
  if (trail.reads().empty()) return place;
  // A class may read several values before it converts them: a conversion error
  // belongs to the first value read that cannot be converted (none: the error did not
  // come from the card's values, and no property is named); anything else (a property
  // the card lacks) to the last property read.
  const ReadTrail::Read* culprit = &trail.reads().back();
  if (error_number == 13 || error_number == 6) {
    culprit = nullptr;
    for (const ReadTrail::Read& read : trail.reads()) {
      const Cell* field = field_read(store, read);
      if (field != nullptr && raises(store, *field, error_number)) {
        culprit = &read;
        break;
      }
    }
    if (culprit == nullptr) return place;
  }
  place.property = culprit->property != ReadTrail::kNone
                       ? store.name_of(store.key_of_folded(culprit->property))
                       : trail.unknown;
  if (culprit->day != ReadTrail::kNone)
    place.property = "Days[" + std::to_string(culprit->day) + "]." + place.property;
  return place;
}

}  // namespace zorvat::cli
