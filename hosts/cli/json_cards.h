// Time cards from a JSON file, offered to the classes through the late-bound view.
//
//   {"PeriodEnd": "2004-03-06",
//    "cards": [{"ExportID": "E100", "Number": 315, "REG": 2400, ...,
//               "Days": [{"DayDate": "2004-03-01", "Hours": 480, ...}]}]}
//
// Values keep their JSON type, as the host's Variants do: integral numbers in the
// 32-bit range are Longs, other numbers Doubles, text stays text (numeric or not),
// true/false are Booleans, null is Null, arrays and objects are objects. "PeriodEnd",
// "PeriodStart" and "DayDate" are ISO dates and reach the classes as Dates. A
// property that is absent stays absent: reading it raises 438.
//
// The document is parsed once into a compact tape and read in place; nothing is
// copied per card, so a million cards load in a fraction of a second.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "zorvat/variant.h"

namespace zorvat::cli {

// A cards file that cannot be used: unreadable, not JSON, or not in the layout above.
// The message names the file and the place.
class CardsFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Loads and checks a cards file; the result holds the time-card collection.
Variant load_cards_file(const std::string& path);
// The same from JSON text in memory; `name` stands for the file in messages.
Variant load_cards_json(const std::string& json, const std::string& name = "<memory>");

// Where the classes were reading the cards of `cards` (a collection loaded above) when
// error `error_number` was raised: the card handed out last by its for-each, and the
// property the error belongs to (for 13 and 6, the first value read from the card that
// cannot be converted; otherwise the property read last), so that the error can point
// at them. Nothing before the first card and after the last.
struct CardReadPlace {
  std::size_t index = 0;  // in the file's "cards" array, from 0
  std::string id;         // the card's ExportID, else its Number; empty with neither
  std::string id_name;    // "ExportID" or "Number", as the file spells it
  std::string property;   // "REG", or "Days[2].REG" for a day's property; empty when
                          // no value of the card explains the error
};
std::optional<CardReadPlace> card_being_read(const Variant& cards, long error_number);

}  // namespace zorvat::cli
