#include "cards_input.h"

#include "platform.h"

namespace zorvat::cli {

bool cards_from_standard_input(const std::string& cards_path) {
  return cards_path == "-";
}

std::string cards_name(const std::string& cards_path) {
  return cards_from_standard_input(cards_path) ? "<stdin>" : cards_path;
}

Variant load_cards(const std::string& cards_path) {
  if (!cards_from_standard_input(cards_path)) return load_cards_file(cards_path);
  std::string json;
  if (!read_standard_input(json))
    throw CardsFileError("cards file " + cards_name(cards_path) + ": cannot be read (read error)");
  return load_cards_json(json, cards_name(cards_path));
}

}  // namespace zorvat::cli
