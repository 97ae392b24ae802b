#include "json_cards.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <span>
#include <unordered_map>
#include <vector>

#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/text.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#define ZORVAT_HAVE_MMAP 1
#else
#define ZORVAT_HAVE_MMAP 0
#endif

// How the cards are held: every value of the file is one 16-byte cell in one array.
// An object is a run of cells (one per field, each naming its key by a number from the
// table of distinct names); an array is a run of element cells; text lives in one
// arena. A card of twenty-odd properties costs about 400 bytes however long its names,
// against several times that for a general JSON document tree.
//
// The file is parsed in pieces of a few megabytes: a light scanner finds the top-level
// fields and the card boundaries, and simdjson parses each piece of cards, which is
// turned into cells and dropped. So the parse never holds more than one piece's tree.

namespace zorvat::cli {
namespace {

std::string folded(std::string_view text) {
  return to_lower_ascii(text);
}

enum class Kind : std::uint8_t { Long, Double, Text, Date, Boolean, Null, Object, Array };

// Where a run of text or cells lies.
struct Span {
  std::uint32_t first;  // Text: offset in the arena; Object/Array: first cell
  std::uint32_t count;  // Text: length; Object/Array: number of cells
};

struct Cell {
  std::uint32_t key = 0;  // the field's name in the key table; 0 for array elements
  Kind kind = Kind::Null;
  union {
    std::int32_t long_value;
    double number;  // Double, and the serial day of a Date
    bool boolean;
    Span span;
  };
  Cell() : number(0.0) {}
};
static_assert(sizeof(Cell) == 16);

struct TransparentHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>{}(text);
  }
};

// Where the classes are reading, kept as they read so that an error raised while a
// card is read can name the card and the property. A few stores per read; the
// names are made into text only when asked for.
struct ReadTrail {
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  // One property read from the current card or one of its days.
  struct Read {
    Span object;             // the object's fields
    std::uint32_t property;  // its folded key; kNone for a name no object has
    std::uint32_t day;       // index in the card's "Days"; kNone for the card itself
  };
  std::uint32_t card = kNone;         // index in "cards" of the card handed out last
  std::uint32_t day = kNone;          // index in the card's "Days" of the day handed out last
  std::uint32_t card_object = kNone;  // first field of the current card
  std::string unknown;                // the last name asked for that no object has

  void start_card(std::uint32_t index, std::uint32_t object) {
    card = index;
    card_object = object;
    day = kNone;
    read_count_ = 0;
  }
  // Every read of a card comes here. The room for more is made out of line, so that
  // the read itself needs no call.
  void note(const Read& read) {
    if (read_count_ == room_.size()) [[unlikely]]
      make_room();
    room_[read_count_++] = read;
  }
  // The reads of the current card, in order.
  std::span<const Read> reads() const { return {room_.data(), read_count_}; }

 private:
  [[gnu::noinline]] void make_room() { room_.resize(room_.size() * 2 + 32); }

  std::vector<Read> room_;
  std::size_t read_count_ = 0;
};

class Store {
 public:
  std::vector<Cell> cells;
  std::string text;
  Cell top;    // the top-level object
  Cell cards;  // its "cards" array
  // Objects run on one thread, the host's; the trail is written as they are read.
  mutable ReadTrail trail;

  std::uint32_t key_id(std::string_view name) {
    // Every card repeats the same few names: a small table by a cheap hash answers
    // before the general map is asked.
    auto& slot = key_cache_[quick_hash(name) % key_cache_.size()];
    if (slot.id != kNone && same_short_text(slot.text, name)) return slot.id;
    std::uint32_t id = kNone;
    if (auto found = ids_.find(name); found != ids_.end()) {
      id = found->second;
    } else {
      id = add_key(name);
    }
    slot = {std::string(name), id};
    return id;
  }
  bool is_date_key(std::uint32_t key) const { return flags_[key] & kDateKey; }
  bool is_days_key(std::uint32_t key) const { return flags_[key] & kDaysKey; }

 private:
  static std::size_t quick_hash(std::string_view name) {
    std::size_t hash = name.size();
    for (char c : name) hash = hash * 31 + static_cast<unsigned char>(c);
    return hash;
  }

  std::uint32_t add_key(std::string_view name) {
    const auto id = static_cast<std::uint32_t>(names_.size());
    names_.emplace_back(name);
    ids_.emplace(std::string(name), id);
    const std::string fold_name = folded(name);
    auto [fold_entry, added] =
        folded_ids_.emplace(fold_name, static_cast<std::uint32_t>(folded_of_.size()));
    static_cast<void>(added);
    folded_of_.push_back(fold_entry->second);
    position_hints_.push_back(0);
    flags_.push_back(static_cast<std::uint8_t>(
        (fold_name == "periodend" || fold_name == "periodstart" || fold_name == "daydate" ? kDateKey
                                                                                          : 0) |
        (fold_name == "days" ? kDaysKey : 0)));
    return id;
  }

 public:
  // The key and folded key a property name stands for; false when no object of the
  // file has a field of that name, in any case.
  bool lookup(std::string_view name, std::uint32_t& exact, std::uint32_t& fold_id) const {
    // The classes ask for the same few names over and over, by the same constants:
    // the answers are remembered by the name's address and confirmed by its text.
    // (Objects run on one thread, the host's, so the cache needs no lock.)
    // Each address has four neighbouring slots to be remembered in, so that two names
    // whose addresses meet in one slot do not push each other out at every card.
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(name.data()));
    const auto home = static_cast<std::size_t>((address * 0x9E3779B97F4A7C15ULL) >> 56);
    CacheSlot* free_slot = nullptr;
    for (std::size_t way = 0; way < 4; ++way) {
      CacheSlot& candidate = cache_[(home + way) % cache_.size()];
      if (candidate.data == name.data() && same_short_text(candidate.text, name)) {
        exact = candidate.exact;
        fold_id = candidate.fold_id;
        return candidate.known;
      }
      if (free_slot == nullptr && candidate.data == nullptr) free_slot = &candidate;
    }
    CacheSlot& slot = free_slot != nullptr ? *free_slot : cache_[home];
    exact = kNone;
    fold_id = kNone;
    if (auto found = ids_.find(name); found != ids_.end()) {
      exact = found->second;
      fold_id = folded_of_[exact];
    } else if (auto fold_found = folded_ids_.find(folded(name)); fold_found != folded_ids_.end()) {
      fold_id = fold_found->second;
    }
    const bool known = fold_id != kNone;
    slot = {name.data(), std::string(name), exact, fold_id, known};
    return known;
  }
  // What a declared name was found to stand for.
  struct Resolved {
    std::uint32_t exact = kNone;
    std::uint32_t fold_id = kNone;
    bool resolved = false;
  };
  // The answer kept for the declared name of `ordinal`; null before its first lookup.
  const Resolved* resolved(std::uint32_t ordinal) const {
    return ordinal < resolved_.size() && resolved_[ordinal].resolved ? &resolved_[ordinal]
                                                                     : nullptr;
  }
  // The same for a name the classes declared: the answer is kept under the name's
  // ordinal, so that every read after the first is one index.
  bool lookup(const PropertyName& name, std::uint32_t& exact, std::uint32_t& fold_id) const {
    const std::uint32_t ordinal = name.ordinal();
    if (const Resolved* answer = resolved(ordinal)) {
      exact = answer->exact;
      fold_id = answer->fold_id;
      return fold_id != kNone;
    }
    const bool known = lookup(name.text(), exact, fold_id);
    // Declared names are a few dozen constants; a process that kept making new ones
    // would only lose the shortcut.
    if (ordinal < kMostResolvedNames) {
      if (ordinal >= resolved_.size()) resolved_.resize(ordinal + 1);
      resolved_[ordinal] = {exact, fold_id, true};
    }
    return known;
  }
  // Property names are a few characters long: compared in line, without a call. From
  // four bytes on, two words are compared, one from each end of the names (they overlap
  // when the name is shorter than two words), so that no byte past either name is read.
  static bool same_short_text(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
    auto same_ends = [&](auto word) {
      constexpr std::size_t kWord = sizeof word;
      decltype(word) a_head, b_head, a_tail, b_tail;
      std::memcpy(&a_head, a.data(), kWord);
      std::memcpy(&b_head, b.data(), kWord);
      std::memcpy(&a_tail, a.data() + size - kWord, kWord);
      std::memcpy(&b_tail, b.data() + size - kWord, kWord);
      return ((a_head ^ b_head) | (a_tail ^ b_tail)) == 0;
    };
    if (size >= 8 && size <= 16) return same_ends(std::uint64_t{});
    if (size >= 4 && size < 8) return same_ends(std::uint32_t{});
    if (size > 16) return std::memcmp(a.data(), b.data(), size) == 0;
    for (std::size_t i = 0; i < size; ++i)
      if (a[i] != b[i]) return false;
    return true;
  }
  std::uint32_t folded_of(std::uint32_t key) const { return folded_of_[key]; }
  // A key of the file spelt as `fold_id` folds (the first one met).
  std::uint32_t key_of_folded(std::uint32_t fold_id) const {
    const auto found = std::find(folded_of_.begin(), folded_of_.end(), fold_id);
    return static_cast<std::uint32_t>(found - folded_of_.begin());
  }
  const std::string& name_of(std::uint32_t key) const { return names_[key]; }

  // Where in its object a field of key `key` stood when it was found last: the cards
  // of a file list their fields in the same order, so the guess is almost always right
  // and a read costs one comparison instead of a walk over the card.
  std::uint32_t& position_hint(std::uint32_t key) const { return position_hints_[key]; }

  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

 private:
  static constexpr std::uint8_t kDateKey = 1, kDaysKey = 2;
  struct KeySlot {
    std::string text;
    std::uint32_t id = kNone;
  };
  std::array<KeySlot, 256> key_cache_{};
  std::vector<std::uint8_t> flags_;
  std::vector<std::string> names_;
  std::vector<std::uint32_t> folded_of_;
  mutable std::vector<std::uint32_t> position_hints_;
  std::unordered_map<std::string, std::uint32_t, TransparentHash, std::equal_to<>> ids_;
  std::unordered_map<std::string, std::uint32_t, TransparentHash, std::equal_to<>> folded_ids_;
  struct CacheSlot {
    const char* data = nullptr;
    std::string text;
    std::uint32_t exact = kNone;
    std::uint32_t fold_id = kNone;
    bool known = false;
  };
  mutable std::array<CacheSlot, 256> cache_{};
  static constexpr std::uint32_t kMostResolvedNames = 4096;
  mutable std::vector<Resolved> resolved_;
};
using StoreRef = std::shared_ptr<const Store>;

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

  // The top level answers for its "cards" array too: Count and enumeration.
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
      trail.note({cell_.span, known ? fold_id : ReadTrail::kNone,
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

// The time-card collection: the top-level object, enumerating its cards.
class CardCollection final : public AutomationObject {
 public:
  CardCollection(StoreRef store, Cell top, Cell cards)
      : store_(store), top_(store, top), cards_(std::move(store), cards) {}
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

// --- Loading --------------------------------------------------------------------

[[noreturn]] void fail(const std::string& name, const std::string& place, const std::string& what) {
  throw CardsFileError("cards file " + name + ": " + place + ": " + what);
}

// simdjson says what is wrong but not where; on failure the text is read again by a
// parser that reports line and column (its callback keeps nothing, so a large file
// costs no document).
std::string locate_syntax_error(std::string_view json) {
  try {
    const auto discarded = nlohmann::json::parse(
        json.begin(), json.end(),
        [](int, nlohmann::json::parse_event_t, nlohmann::json&) { return false; });
    static_cast<void>(discarded);
  } catch (const nlohmann::json::exception& error) {  // a syntax error or a number out of range
    return error.what();
  }
  return {};
}

// Where a value stands in the file, for messages: built into text only on failure.
struct Where {
  const Where* parent = nullptr;
  std::string_view label;  // "cards", "top level"; empty when `key` names the field
  std::uint32_t key = Store::kNone;
  long index = -1;

  std::string text(const Store& store) const {
    std::string result = parent != nullptr ? parent->text(store) + "." : std::string();
    result += key != Store::kNone ? std::string_view(store.name_of(key)) : label;
    if (index >= 0) result += "[" + std::to_string(index) + "]";
    return result;
  }
};

// Windows editors (Notepad among them) start a UTF-8 file with a byte-order mark; the
// JSON is what follows it.
std::string_view without_byte_order_mark(std::string_view json) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return json.substr(0, kMark.size()) == kMark ? json.substr(kMark.size()) : json;
}

class Loader {
 public:
  // `mapped`: `json` is a private read-only mapping of the file, whose pages the
  // loader gives back as soon as it has turned them into cells.
  Loader(std::string_view json, std::string name, bool mapped = false)
      : json_(without_byte_order_mark(json)),
        name_(std::move(name)),
        mapped_(mapped),
        mapping_(json.data()) {
    store_ = std::make_shared<Store>();
    // Reserved, not touched: pages are taken only as cells are written, and the
    // arrays never move while they grow.
    store_->cells.reserve(json.size() / 4 + 16);
    store_->text.reserve(json.size() / 2 + 16);
  }

  Variant load() {
    pos_ = 0;
    skip_blanks();
    if (!take('{')) fail(name_, "top level", "expected an object with a \"cards\" array");
    std::vector<Cell> top_fields;
    bool have_cards = false;
    Cell cards;
    skip_blanks();
    if (!take('}')) {
      while (true) {
        skip_blanks();
        const std::string key = scan_key();
        skip_blanks();
        if (!take(':')) syntax_error();
        skip_blanks();
        Cell field;
        if (key == "cards") {
          if (peek() != '[') fail(name_, "cards", "expected an array of cards");
          field = load_cards();
          cards = field;
          have_cards = true;
        } else {
          const std::size_t start = pos_;
          skip_value();
          field = convert_piece(json_.substr(start, pos_ - start), key);
        }
        field.key = store_->key_id(key);
        top_fields.push_back(field);
        skip_blanks();
        if (take(',')) continue;
        if (take('}')) break;
        syntax_error();
      }
    }
    skip_blanks();
    if (pos_ != json_.size()) syntax_error();
    if (!have_cards) fail(name_, "top level", "no \"cards\" array");
    store_->top = append_run(top_fields, Kind::Object);
    store_->cards = cards;
    return Variant(ObjectRef(std::make_shared<CardCollection>(store_, store_->top, cards)));
  }

 private:
  static constexpr std::size_t kPieceBytes = 4 << 20;
  static constexpr std::size_t kParseGranule = 256 << 10;

  // The cards array: each piece of whole cards is parsed and turned into cells; the
  // card cells themselves are gathered and laid down together at the end.
  Cell load_cards() {
    take('[');
    std::vector<Cell> card_cells;
    std::size_t piece_start = pos_;
    std::size_t count = 1;  // cards in the piece so far: separators seen + 1
    // Every comma between two cards is a place to cut; a piece is cut at the first
    // one past its size, and the rest of the array is the last piece.
    const std::size_t close = scan_array(pos_, [&](std::size_t comma) {
      if (comma - piece_start < kPieceBytes) {
        ++count;
        return;
      }
      convert_cards(json_.substr(piece_start, comma - piece_start), count, card_cells);
      release_before(comma);
      piece_start = comma + 1;
      count = 1;
    });
    const std::string_view last = json_.substr(piece_start, close - piece_start);
    const bool blank = last.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (!blank)
      convert_cards(last, count, card_cells);
    else if (!card_cells.empty() || count > 1)
      syntax_error();  // "[1,]" or "[,]"
    pos_ = close + 1;
    return append_run(card_cells, Kind::Array);
  }

  // Walks an array's text from `from` (just past its "[") to its closing "]", whose
  // position it returns, calling `separator(position)` for each comma between two of
  // its elements. Sixty-four bytes are classified at a time: where a block holds a
  // quote, a prefix XOR of the quote bits tells which bytes lie inside strings, and
  // only the brackets outside them, and the commas between the array's own elements,
  // are visited. A block with a backslash (an escape) is walked byte by byte. Only the
  // nesting is checked here; the pieces' parser checks the rest.
  template <class Separator>
  std::size_t scan_array(std::size_t from, Separator&& separator) {
    const char* begin = json_.data();
    const std::size_t size = json_.size();
    bool in_string = false;
    int depth = 0;
    std::size_t at = from;
    // Returns true at the array's own closing bracket.
    auto structural = [&](std::size_t position, char c) {
      switch (c) {
        case '{':
        case '[':
          if (++depth > 1024) fail(name_, "not valid JSON", "nested too deeply");
          return false;
        case '}':
        case ']':
          if (depth == 0) {
            if (c != ']') syntax_error();
            return true;
          }
          --depth;
          return false;
        default:  // ','
          if (depth == 0) separator(position);
          return false;
      }
    };
    auto walk_bytes = [&](std::size_t end, std::size_t& close) {
      for (; at < end; ++at) {
        const char c = begin[at];
        if (in_string) {
          if (c == '\\')
            ++at;
          else if (c == '"')
            in_string = false;
        } else if (c == '"') {
          in_string = true;
        } else if ((c == '{' || c == '[' || c == '}' || c == ']' || c == ',') &&
                   structural(at, c)) {
          close = at;
          return true;
        }
      }
      return false;
    };
    std::size_t close = 0;
#if defined(__SSE2__)
    while (at + 64 <= size) {
      const std::uint64_t backslashes = block_mask<'\\'>(begin + at);
      if (backslashes != 0) {
        // Escapes: byte by byte to the end of the block (an escape may reach one
        // byte past it, which the walk then skips).
        if (walk_bytes(at + 64, close)) return close;
        continue;
      }
      const std::uint64_t quotes = block_mask<'"'>(begin + at);
      std::uint64_t inside = prefix_xor(quotes) ^ (in_string ? ~std::uint64_t{0} : 0);
      in_string = (inside >> 63) != 0;
      // Only the brackets change the depth: they are visited one by one, and the
      // commas between two of them only where the depth is the array's own (a
      // card's own commas, twenty-odd to one separator, are passed over together).
      std::uint64_t brackets = block_mask<'{', '[', '}', ']'>(begin + at) & ~inside;
      std::uint64_t commas = block_mask<','>(begin + at) & ~inside;
      while (true) {
        const std::uint64_t bracket = brackets & (~brackets + 1);  // the lowest, or none
        const std::uint64_t before = bracket != 0 ? bracket - 1 : ~std::uint64_t{0};
        for (std::uint64_t separators = depth == 0 ? commas & before : 0; separators != 0;
             separators &= separators - 1)
          separator(at + static_cast<std::size_t>(__builtin_ctzll(separators)));
        commas &= ~before;
        if (bracket == 0) break;
        const std::size_t position = at + static_cast<std::size_t>(__builtin_ctzll(bracket));
        if (structural(position, begin[position])) return position;
        brackets &= brackets - 1;
      }
      at += 64;
    }
#endif
    if (walk_bytes(size, close)) return close;
    at = size;
    syntax_error();
  }

#if defined(__SSE2__)
  // One bit per byte of the 64 at `p`: set where the byte is one of `Chars`.
  template <char... Chars>
  static std::uint64_t block_mask(const char* p) {
    std::uint64_t mask = 0;
    for (int part = 0; part < 4; ++part) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * part));
      __m128i hits = _mm_setzero_si128();
      ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8(Chars)))), ...);
      mask |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(hits)))
              << (16 * part);
    }
    return mask;
  }
#endif

  // Bit i of the result is the parity of the bits 0..i of `bits`: behind an odd
  // number of quotes, a byte is inside a string.
  static std::uint64_t prefix_xor(std::uint64_t bits) {
    bits ^= bits << 1;
    bits ^= bits << 2;
    bits ^= bits << 4;
    bits ^= bits << 8;
    bits ^= bits << 16;
    bits ^= bits << 32;
    return bits;
  }

  void convert_cards(std::string_view piece, std::size_t count, std::vector<Cell>& card_cells) {
    // The parser keeps its buffers for the longest text it has been given and makes
    // new ones for a longer one. The full pieces of a large file are all a few bytes
    // either side of the same size: blanks after the array round each one up to a
    // whole number of granules, so that the buffers are made once instead of again
    // (and paged in again) each time a piece comes out a little longer than any
    // before it. A smaller text (a small file, the last piece) is parsed as it is.
    const std::size_t length = piece.size() + 2;
    const std::size_t padded = length < kPieceBytes
                                   ? length
                                   : (length + kParseGranule - 1) / kParseGranule * kParseGranule;
    buffer_.clear();
    reserve_buffer(padded);
    buffer_.push_back('[');
    buffer_.append(piece);
    buffer_.push_back(']');
    buffer_.resize(padded, ' ');
    simdjson::dom::element root;
    if (parser_.parse(buffer_.data(), buffer_.size(), false).get(root) != simdjson::SUCCESS)
      syntax_error();
    simdjson::dom::array cards = root.get_array().value_unsafe();
    std::size_t converted = 0;
    for (simdjson::dom::element card : cards) {
      const Where where{nullptr, "cards", Store::kNone, static_cast<long>(card_cells.size())};
      if (!card.is_object()) fail(name_, where.text(*store_), "expected an object");
      card_cells.push_back(convert(card, Store::kNone, where));
      ++converted;
    }
    // The scanner and the parser must agree on where the cards are.
    if (converted != count) syntax_error();
  }

  Cell convert_piece(std::string_view piece, const std::string& key) {
    reserve_buffer(piece.size());
    buffer_.assign(piece);
    simdjson::dom::element root;
    if (parser_.parse(buffer_.data(), buffer_.size(), false).get(root) != simdjson::SUCCESS)
      syntax_error();
    const Where where{nullptr, "top level", Store::kNone, -1};
    return convert(root, store_->key_id(key), where);
  }

  // One value into a cell; objects and arrays lay their members down as a run first
  // and then fill in nested values after it, so every run stays contiguous.
  // `key` is the value's field name (kNone for array elements); `where` is the object
  // or array element holding it.
  Cell convert(simdjson::dom::element value, std::uint32_t key, const Where& where) {
    Cell cell;
    using simdjson::dom::element_type;
    switch (value.type()) {
      case element_type::INT64: {
        const std::int64_t number = value.get_int64().value_unsafe();
        if (number >= INT32_MIN && number <= INT32_MAX) {
          cell.kind = Kind::Long;
          cell.long_value = static_cast<std::int32_t>(number);
        } else {
          cell.kind = Kind::Double;
          cell.number = static_cast<double>(number);
        }
        break;
      }
      case element_type::UINT64:
        cell.kind = Kind::Double;
        cell.number = static_cast<double>(value.get_uint64().value_unsafe());
        break;
      case element_type::DOUBLE:
        cell.kind = Kind::Double;
        cell.number = value.get_double().value_unsafe();
        break;
      case element_type::STRING: {
        const std::string_view text = value.get_string().value_unsafe();
        if (key != Store::kNone && store_->is_date_key(key)) {
          const auto date = parse_iso_date(text);
          if (!date)
            fail(name_, where.text(*store_) + "." + store_->name_of(key),
                 "\"" + std::string(text) + "\" is not a date (YYYY-MM-DD)");
          cell.kind = Kind::Date;
          cell.number = date->serial;
          break;
        }
        cell.kind = Kind::Text;
        cell.span.first = arena_offset(text.size());
        cell.span.count = static_cast<std::uint32_t>(text.size());
        store_->text.append(text);
        break;
      }
      case element_type::BOOL:
        cell.kind = Kind::Boolean;
        cell.boolean = value.get_bool().value_unsafe();
        break;
      case element_type::NULL_VALUE:
        cell.kind = Kind::Null;
        break;
      case element_type::OBJECT: {
        const simdjson::dom::object object = value.get_object().value_unsafe();
        const std::uint32_t first = reserve_run(object.size());
        std::uint32_t at = first;
        // Objects at the same depth (the cards, their days) repeat the same names in
        // the same order: the key the previous one had at this place is tried first.
        // (Looked up afresh for every field: a nested object may add a depth.)
        const std::size_t depth = depth_++;
        if (depth >= keys_by_depth_.size()) keys_by_depth_.resize(depth + 1);
        for (auto field : object) {
          std::vector<std::uint32_t>& expected = keys_by_depth_[depth];
          const std::size_t place = at - first;
          std::uint32_t field_key = Store::kNone;
          if (place < expected.size() &&
              Store::same_short_text(store_->name_of(expected[place]), field.key)) {
            field_key = expected[place];
          } else {
            field_key = store_->key_id(field.key);
            if (place < expected.size())
              expected[place] = field_key;
            else
              expected.push_back(field_key);
          }
          if (store_->is_days_key(field_key) && !field.value.is_array())
            fail(name_, where.text(*store_) + ".Days", "expected an array of days");
          Cell member = convert(field.value, field_key, where);
          member.key = field_key;
          store_->cells[at++] = member;
        }
        --depth_;
        cell.kind = Kind::Object;
        cell.span = {first, at - first};
        break;
      }
      case element_type::ARRAY: {
        const simdjson::dom::array array = value.get_array().value_unsafe();
        const bool days = key != Store::kNone && store_->is_days_key(key);
        const std::uint32_t first = reserve_run(array.size());
        std::uint32_t at = first;
        for (simdjson::dom::element element : array) {
          const Where element_where{&where, {}, key, static_cast<long>(at - first)};
          if (days && !element.is_object())
            fail(name_, element_where.text(*store_), "expected an object");
          store_->cells[at++] = convert(element, Store::kNone, element_where);
        }
        cell.kind = Kind::Array;
        cell.span = {first, at - first};
        break;
      }
    }
    return cell;
  }

  std::uint32_t reserve_run(std::size_t count) {
    const std::size_t first = store_->cells.size();
    if (first + count > Store::kNone) fail(name_, "cards", "too many values");
    store_->cells.resize(first + count);
    return static_cast<std::uint32_t>(first);
  }

  Cell append_run(const std::vector<Cell>& run, Kind kind) {
    Cell cell;
    cell.kind = kind;
    cell.span.first = reserve_run(run.size());
    cell.span.count = static_cast<std::uint32_t>(run.size());
    std::copy(run.begin(), run.end(), store_->cells.begin() + cell.span.first);
    return cell;
  }

  // The file's pages before `offset` are read and converted: a mapped file gives them
  // back, so that the input's pages and the cards made from them are never all in
  // memory at once. (Read again, as for an error message, they come back from the
  // file unchanged.)
  void release_before(std::size_t offset) {
#if ZORVAT_HAVE_MMAP
    if (!mapped_) return;
    // Offsets count from the JSON text, which a byte-order mark puts past the start of
    // the mapping; pages count from the mapping.
    static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const auto from_mapping = static_cast<std::size_t>(json_.data() - mapping_) + offset;
    const std::size_t whole_pages = from_mapping / page * page;
    if (whole_pages > released_) {
      ::madvise(const_cast<char*>(mapping_) + released_, whole_pages - released_, MADV_DONTNEED);
      released_ = whole_pages;
    }
#else
    static_cast<void>(offset);
#endif
  }

  std::uint32_t arena_offset(std::size_t length) {
    const std::size_t offset = store_->text.size();
    if (offset + length > Store::kNone) fail(name_, "cards", "too much text");
    return static_cast<std::uint32_t>(offset);
  }

  // --- the scanner: just enough JSON to find fields and card boundaries ---------

  char peek() const {
    return pos_ < json_.size() ? json_[pos_] : '\0';
  }
  bool take(char c) {
    if (peek() != c || pos_ >= json_.size()) return false;
    ++pos_;
    return true;
  }
  void skip_blanks() {
    while (pos_ < json_.size()) {
      const char c = json_[pos_];
      if (c != ' ' && c != '\n' && c != '\r' && c != '\t') break;
      ++pos_;
    }
  }
  void skip_string() {
    const char* p = json_.data() + pos_ + 1;  // past the opening quote
    const char* end = json_.data() + json_.size();
    while ((p = find_first<'"', '\\'>(p, end)) != end) {
      if (*p == '"') {
        pos_ = static_cast<std::size_t>(p + 1 - json_.data());
        return;
      }
      p += 2;  // a backslash and the character it escapes
    }
    pos_ = json_.size();
    syntax_error();
  }
  std::string scan_key() {
    if (peek() != '"') syntax_error();
    const std::size_t start = pos_;
    skip_string();
    simdjson::dom::element key;
    reserve_buffer(pos_ - start);
    buffer_.assign(json_.substr(start, pos_ - start));
    if (parser_.parse(buffer_.data(), buffer_.size(), false).get(key) != simdjson::SUCCESS ||
        !key.is_string())
      syntax_error();
    return std::string(key.get_string().value_unsafe());
  }
  // The first byte from `p` on that is one of `Chars`; `end` when there is none.
  // Sixteen bytes at a time where the processor offers it: most of a cards file is
  // names and digits, which the scanner only has to pass over.
  template <char... Chars>
  static const char* find_first(const char* p, const char* end) {
#if defined(__SSE2__)
    while (end - p >= 16) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
      __m128i hits = _mm_setzero_si128();
      ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8(Chars)))), ...);
      const int mask = _mm_movemask_epi8(hits);
      if (mask != 0) return p + __builtin_ctz(static_cast<unsigned>(mask));
      p += 16;
    }
#endif
    for (; p < end; ++p)
      if (((*p == Chars) || ...)) return p;
    return end;
  }

  // Skips one value: a string, or a balanced object or array, or a bare scalar.
  void skip_value() {
    const char first = peek();
    if (first == '"') {
      skip_string();
      return;
    }
    if (first == '{' || first == '[') {
      const char* begin = json_.data();
      const char* end = begin + json_.size();
      const char* p = begin + pos_;
      int depth = 0;
      while ((p = find_first<'"', '\\', '{', '}', '[', ']'>(p, end)) != end) {
        const char c = *p;
        if (c == '"') {
          pos_ = static_cast<std::size_t>(p - begin);
          skip_string();
          p = begin + pos_;
          continue;
        }
        if (c == '{' || c == '[') {
          if (++depth > 1024) fail(name_, "not valid JSON", "nested too deeply");
        } else if (c == '}' || c == ']') {
          if (--depth == 0) {
            pos_ = static_cast<std::size_t>(p + 1 - begin);
            return;
          }
        }
        ++p;  // a stray backslash outside a string is the parser's to reject
      }
      pos_ = json_.size();
      syntax_error();
    }
    const std::size_t start = pos_;
    while (pos_ < json_.size()) {
      const char c = json_[pos_];
      if (c == ',' || c == '}' || c == ']' || c == ' ' || c == '\n' || c == '\r' || c == '\t')
        break;
      ++pos_;
    }
    if (pos_ == start) syntax_error();
  }

  [[noreturn]] void syntax_error() {
    const std::string where = locate_syntax_error(json_);
    fail(name_, "not valid JSON",
         where.empty() ? "unexpected text at byte " + std::to_string(pos_) : where);
  }

  std::string_view json_;
  std::string name_;
  bool mapped_ = false;
  const char* mapping_ = nullptr;  // the start of a mapped file
  std::size_t released_ = 0;       // bytes of a mapped file given back so far
  std::size_t pos_ = 0;
  std::shared_ptr<Store> store_;
  simdjson::dom::parser parser_;
  // The parser reads up to SIMDJSON_PADDING bytes past the text: the buffer is made that
  // much larger before it is filled, so that the parser takes it in place instead of
  // copying it into a padded buffer of its own.
  void reserve_buffer(std::size_t size) {
    buffer_.reserve(size + simdjson::SIMDJSON_PADDING);
  }
  std::string buffer_;
  std::size_t depth_ = 0;
  std::vector<std::vector<std::uint32_t>> keys_by_depth_;
};

}  // namespace

namespace {

// The field `read` asked for, in its object; nullptr when the object has none.
const Cell* field_read(const Store& store, const ReadTrail::Read& read) {
  if (read.property == ReadTrail::kNone) return nullptr;
  for (std::uint32_t i = 0; i < read.object.count; ++i) {
    const Cell& field = store.cells[read.object.first + i];
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
  if (!is_minutes(folded(store.name_of(field.key)))) return false;
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

std::string id_of(const Store& store, const Cell& card, std::string& id_name) {
  for (const char* name : {"exportid", "number"}) {
    for (std::uint32_t i = 0; i < card.span.count; ++i) {
      const Cell& field = store.cells[card.span.first + i];
      if (folded(store.name_of(field.key)) != name) continue;
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
  const auto* collection = dynamic_cast<const CardCollection*>(&object_of(cards));
  if (collection == nullptr) return std::nullopt;
  const Store& store = collection->store();
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

Variant load_cards_json(std::string json, const std::string& name) {
  return Loader(json, name).load();
}

Variant load_cards_file(const std::string& path) {
  const auto cannot_read = [&](const std::string& why) {
    return CardsFileError("cards file " + path + ": cannot be read (" + why + ")");
  };
#if ZORVAT_HAVE_MMAP
  // Mapped, the file is read in place from the page cache: no copy, and no memory
  // of its own beyond what the cards take.
  const int fd = ::open(path.c_str(), O_RDONLY);
  if (fd < 0) throw cannot_read(std::strerror(errno));
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    throw cannot_read("not a regular file");
  }
  const auto size = static_cast<std::size_t>(info.st_size);
  if (size == 0) {
    ::close(fd);
    return load_cards_json(std::string(), path);
  }
  void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  ::close(fd);
  if (mapped == MAP_FAILED) throw cannot_read(std::strerror(errno));
  ::madvise(mapped, size, MADV_SEQUENTIAL);
  struct Unmap {
    void* address;
    std::size_t size;
    ~Unmap() { ::munmap(address, size); }
  } unmap{mapped, size};
  return Loader(std::string_view(static_cast<const char*>(mapped), size), path, true).load();
#else
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) throw cannot_read(std::strerror(errno));
  std::string json;
  char chunk[1 << 16];
  std::size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) json.append(chunk, got);
  const bool failed = std::ferror(file) != 0;
  std::fclose(file);
  if (failed) throw cannot_read("read error");
  return load_cards_json(std::move(json), path);
#endif
}

}  // namespace zorvat::cli
