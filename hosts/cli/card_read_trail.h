// Where the classes are reading the cards, kept as they read (by json_card_view.cpp) so
// that an error raised while a card is read can name the card and the property
// (card_read_place.cpp). A few stores per read; the names are made into text only when
// asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zorvat::cli::json_cards {

struct ReadTrail {
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  // One property read from the current card or one of its days.
  struct Read {
    std::uint32_t first_field;  // the cell of the object's first field
    std::uint32_t field_count;  // the object's fields
    std::uint32_t property;     // its folded key; kNone for a name no object has
    std::uint32_t day;          // index in the card's "Days"; kNone for the card itself
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

}  // namespace zorvat::cli::json_cards
