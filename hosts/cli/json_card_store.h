// How the cards of a JSON file are held: every value of the file is one 16-byte cell
// in one array. An object is a run of cells (one per field, each naming its key by a
// number from the table of distinct names); an array is a run of element cells; text
// lives in one arena. A card of twenty-odd properties costs about 400 bytes however
// long its names, against several times that for a general JSON document tree.
//
// The loader (json_card_loader.cpp) fills the store; the view (json_card_view.cpp)
// reads it for the classes.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "card_read_trail.h"
#include "zorvat/automation.h"
#include "zorvat/text.h"

namespace zorvat::cli::json_cards {

// Property names are matched in any case, as the host matches them.
inline std::string folded(std::string_view text) {
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

class Store {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  std::vector<Cell> cells;
  std::string text;
  Cell top;    // the top-level object
  Cell cards;  // its "cards" array
  // Objects run on one thread, the host's; the trail is written as they are read.
  mutable ReadTrail trail;

  // --- The key table: the distinct field names of the file, as it spells them ------

  // The key of a field name, added to the table when it is new.
  std::uint32_t key_id(std::string_view name);
  const std::string& name_of(std::uint32_t key) const { return names_[key]; }
  bool is_date_key(std::uint32_t key) const { return flags_[key] & kDateKey; }
  bool is_days_key(std::uint32_t key) const { return flags_[key] & kDaysKey; }
  // Keys that fold to the same lower case share a folded key.
  std::uint32_t folded_of(std::uint32_t key) const { return folded_of_[key]; }
  // A key of the file spelt as `fold_id` folds (the first one met).
  std::uint32_t key_of_folded(std::uint32_t fold_id) const;

  // --- Property names as the classes ask for them ----------------------------------

  // The key and folded key a property name stands for; false when no object of the
  // file has a field of that name, in any case.
  bool lookup(std::string_view name, std::uint32_t& exact, std::uint32_t& fold_id) const;
  // The same for a name the classes declared: the answer is kept under the name's
  // ordinal, so that every read after the first is one index.
  bool lookup(const PropertyName& name, std::uint32_t& exact, std::uint32_t& fold_id) const;
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

  // Where in its object a field of key `key` stood when it was found last: the cards
  // of a file list their fields in the same order, so the guess is almost always right
  // and a read costs one comparison instead of a walk over the card.
  std::uint32_t& position_hint(std::uint32_t key) const { return position_hints_[key]; }

 private:
  static constexpr std::uint8_t kDateKey = 1, kDaysKey = 2;
  // Declared names are a few dozen constants; a process that kept making new ones
  // would only lose the shortcut.
  static constexpr std::uint32_t kMostResolvedNames = 4096;

  struct TransparentHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const {
      return std::hash<std::string_view>{}(name);
    }
  };
  using KeyMap = std::unordered_map<std::string, std::uint32_t, TransparentHash, std::equal_to<>>;

  std::uint32_t add_key(std::string_view name);

  std::vector<std::uint8_t> flags_;
  std::vector<std::string> names_;
  std::vector<std::uint32_t> folded_of_;
  KeyMap ids_;
  KeyMap folded_ids_;
  mutable std::vector<Resolved> resolved_;
  mutable std::vector<std::uint32_t> position_hints_;
};

using StoreRef = std::shared_ptr<const Store>;

}  // namespace zorvat::cli::json_cards
