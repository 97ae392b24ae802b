#include "json_card_view.h"

#include <cstdint>
#include <memory>
#include <string_view>

#include "zorvat/automation.h"
#include "zorvat/text.h"

// The classes read the same few properties of every card, by declared names, in the
// order the cards list them: a read is answered by the name's ordinal (Store::resolved)
// and the place the field had in the object before (Store::position_hint) without a
// lookup or a walk, and only a read that misses goes the long way.

namespace zorvat::cli::json_cards {
namespace {

Variant to_variant(const StoreRef& store, const Cell& cell);

// What an enumeration hands out, for the read trail: the cards, a card's days, or
// anything else.
enum class Elements : std::uint8_t { Cards, Days, Other };

class CellObject;

class CellEnumerator final : public Enumerator {
 public:
  CellEnumerator(StoreRef store, std::uint32_t first, std::uint32_t count, Elements elements)
      : store_(std::move(store)),
        first_(first),
        next_(first),
        end_(first + count),
        elements_(elements) {}
  bool next(Variant& element) override {
    ReadTrail& trail = store_->trail;
    if (next_ == end_) {
      // Past the last card no card is being read; past the last day, no day.
      if (elements_ == Elements::Cards) trail.start_card(ReadTrail::kNone, ReadTrail::kNone);
      if (elements_ == Elements::Days) trail.day = ReadTrail::kNone;
      return false;
    }
    if (elements_ == Elements::Cards) {
      trail.start_card(next_ - first_, store_->cells[next_].span.first);
    } else if (elements_ == Elements::Days) {
      trail.day = next_ - first_;
    }
    element = Variant();  // lets go of the element handed out before
    element = next_object(store_->cells[next_++]);
    return true;
  }
  // The file's arrays are counted as they are read.
  std::size_t remaining_hint() const override { return end_ - next_; }

 private:
  Variant next_object(const Cell& cell);

  StoreRef store_;
  std::uint32_t first_, next_, end_;
  Elements elements_;
  // The object handed out last; once the class has let go of it, the next element
  // that is an object takes it over instead of a new allocation per card.
  std::shared_ptr<CellObject> handed_out_;
};

// An object or an array of the file, as the classes see it.
class CellObject final : public AutomationObject {
 public:
  CellObject(StoreRef store, Cell cell) : store_(std::move(store)), cell_(cell) {}

  Variant get(std::string_view property) const override {
    const Cell* field = find(property);
    if (field != nullptr) return to_variant(store_, *field);
    return get_missing(property);
  }
  Variant get(const PropertyName& property) const override {
    const Cell* field = find(property);
    if (field != nullptr) return to_variant(store_, *field);
    return get_missing(property.text());
  }
  // A number where the object before had it is answered in line; everything else,
  // out of line.
  double get_number(const PropertyName& property) const override {
    const Guess read = guess(property);
    if (read.field != nullptr) {
      if (read.field->kind == Kind::Long) {
        note_read(true, read.fold_id);
        return read.field->long_value;
      }
      if (read.field->kind == Kind::Double) {
        note_read(true, read.fold_id);
        return read.field->number;
      }
    }
    return get_number_generally(property);
  }
  void append_text(const PropertyName& property, std::string& out) const override {
    const Cell* field = find(property);
    if (field == nullptr) {
      out += to_concat_text(get_missing(property.text()));
    } else if (field->kind == Kind::Text) {
      out.append(store_->text, field->span.first, field->span.count);
    } else {
      out += to_concat_text(to_variant(store_, *field));
    }
  }

  std::unique_ptr<Enumerator> enumerate() const override {
    if (cell_.kind != Kind::Array) raise_not_supported();
    const Elements elements = cell_.span.first == store_->cards.span.first ? Elements::Cards
                              : store_->is_days_key(cell_.key)             ? Elements::Days
                                                                           : Elements::Other;
    return std::make_unique<CellEnumerator>(store_, cell_.span.first, cell_.span.count, elements);
  }

  // Points the object at another cell of the same file (only while nobody else holds
  // it: see CellEnumerator).
  void reset(const Cell& cell) { cell_ = cell; }

  // The field named `property`, in any case; null when the object has none.
  const Cell* find(std::string_view property) const { return find_generally(property); }
  // The same by a declared name. The common read, a name resolved before and standing
  // where the object before had it, is small enough to be written into every read;
  // everything else is done out of line.
  const Cell* find(const PropertyName& property) const {
    if (const Guess read = guess(property); read.field != nullptr) {
      note_read(true, read.fold_id);
      return read.field;
    }
    return find_slowly(property);
  }

 private:
  // The field of a declared name, resolved before, found where the object before had
  // it (the cards of a file list their fields in one order); null when any of that
  // does not hold. Nothing is put on the trail yet.
  struct Guess {
    const Cell* field = nullptr;
    std::uint32_t fold_id = 0;
  };
  Guess guess(const PropertyName& property) const {
    if (cell_.kind != Kind::Object) return {};
    const Store::Resolved* answer = store_->resolved(property.ordinal_if_taken());
    if (answer == nullptr || answer->exact == Store::kNone) return {};
    const std::uint32_t hint = store_->position_hint(answer->exact);
    if (hint >= cell_.span.count) return {};
    const Cell* field = store_->cells.data() + cell_.span.first + hint;
    if (field->key != answer->exact) return {};
    return {field, answer->fold_id};
  }

  // A declared name's field wherever it stands, or the name looked up first.
  [[gnu::noinline]] const Cell* find_slowly(const PropertyName& property) const {
    if (cell_.kind == Kind::Object) {
      const Store::Resolved* answer = store_->resolved(property.ordinal());
      if (answer != nullptr && answer->exact != Store::kNone) {
        note_read(true, answer->fold_id);
        return search(answer->exact, answer->fold_id);
      }
    }
    return find_generally(property);
  }

  [[gnu::noinline]] double get_number_generally(const PropertyName& property) const {
    const Cell* field = find(property);
    if (field == nullptr) return to_double(get_missing(property.text()));
    if (field->kind == Kind::Long) return field->long_value;
    if (field->kind == Kind::Double) return field->number;
    return to_double(to_variant(store_, *field));
  }

  Variant get_missing(std::string_view property) const {
    if (cell_.kind == Kind::Array && iequals(property, "count"))
      return Variant(static_cast<std::int32_t>(cell_.span.count));
    raise_not_supported();
  }

  static std::string_view text_of(std::string_view property) { return property; }
  static std::string_view text_of(const PropertyName& property) { return property.text(); }

  template <class Name>
  [[gnu::noinline]] const Cell* find_generally(const Name& property) const {
    if (cell_.kind != Kind::Object) return nullptr;
    std::uint32_t exact = 0, fold_id = 0;
    const bool known = store_->lookup(property, exact, fold_id);
    note_read(known, fold_id);
    if (!known) {
      store_->trail.unknown = text_of(property);
      return nullptr;
    }
    return search(exact, fold_id);
  }

  // Puts the read on the trail while a card is being read.
  void note_read(bool known, std::uint32_t fold_id) const {
    ReadTrail& trail = store_->trail;
    if (trail.card != ReadTrail::kNone)
      trail.note({cell_.span.first, cell_.span.count, known ? fold_id : ReadTrail::kNone,
                  cell_.span.first == trail.card_object ? ReadTrail::kNone : trail.day});
  }

  // The field of a known name: where the object before had it, else wherever it is.
  [[gnu::noinline]] const Cell* search(std::uint32_t exact, std::uint32_t fold_id) const {
    const Cell* begin = store_->cells.data() + cell_.span.first;
    const Cell* end = begin + cell_.span.count;
    if (exact != Store::kNone) {
      std::uint32_t& hint = store_->position_hint(exact);
      if (hint < cell_.span.count && begin[hint].key == exact) return begin + hint;
      for (const Cell* c = begin; c != end; ++c) {
        if (c->key == exact) {
          hint = static_cast<std::uint32_t>(c - begin);
          return c;
        }
      }
    }
    for (const Cell* c = begin; c != end; ++c)
      if (store_->folded_of(c->key) == fold_id) return c;
    return nullptr;
  }

  StoreRef store_;
  Cell cell_;
};

Variant CellEnumerator::next_object(const Cell& cell) {
  if (cell.kind != Kind::Object) return to_variant(store_, cell);
  if (handed_out_ && handed_out_.use_count() == 1)
    handed_out_->reset(cell);
  else
    handed_out_ = std::make_shared<CellObject>(store_, cell);
  return Variant(ObjectRef(handed_out_));
}

// The time-card collection: the top-level object, enumerating its cards. The top level
// answers for its "cards" array too: Count and enumeration.
class CardCollection final : public AutomationObject {
 public:
  // store_ is declared, and so initialised, before the two views that share it.
  explicit CardCollection(StoreRef store)
      : store_(std::move(store)), top_(store_, store_->top), cards_(store_, store_->cards) {}
  const Store& store() const { return *store_; }
  Variant get(std::string_view property) const override {
    if (property.size() == 5 && folded(property) == "count") return cards_.get(property);
    return top_.get(property);
  }
  Variant get(const PropertyName& property) const override {
    const std::string_view text = property.text();
    if (text.size() == 5 && folded(text) == "count") return cards_.get(text);
    return top_.get(property);
  }
  std::unique_ptr<Enumerator> enumerate() const override { return cards_.enumerate(); }

 private:
  StoreRef store_;
  CellObject top_;
  CellObject cards_;
};

Variant to_variant(const StoreRef& store, const Cell& cell) {
  switch (cell.kind) {
    case Kind::Long:
      return Variant(cell.long_value);
    case Kind::Double:
      return Variant(cell.number);
    case Kind::Text:
      return Variant(std::string_view(store->text).substr(cell.span.first, cell.span.count));
    case Kind::Date:
      return Variant(Date{cell.number});
    case Kind::Boolean:
      return Variant(cell.boolean);
    case Kind::Null:
      return Variant::null();
    case Kind::Object:
    case Kind::Array:
      return Variant(ObjectRef(std::make_shared<CellObject>(store, cell)));
  }
  return Variant();
}

}  // namespace

Variant card_collection(StoreRef store) {
  return Variant(ObjectRef(std::make_shared<CardCollection>(std::move(store))));
}

const Store* store_of(const Variant& cards) {
  const auto* collection = dynamic_cast<const CardCollection*>(&object_of(cards));
  return collection != nullptr ? &collection->store() : nullptr;
}

}  // namespace zorvat::cli::json_cards
