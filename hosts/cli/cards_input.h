// Where the command takes the time cards from: `--cards FILE` names a cards file, and
// `--cards -` reads them from standard input, whole, before the class runs. Messages
// name standard input "<stdin>".
#pragma once

#include <string>

#include "json_cards.h"

namespace zorvat::cli {

// Whether `cards_path` stands for standard input ("-").
bool cards_from_standard_input(const std::string& cards_path);

// The name messages give the cards: the path, or "<stdin>".
std::string cards_name(const std::string& cards_path);

// Loads the cards of `cards_path` (load_cards_file, or standard input through the same
// loader). Throws CardsFileError when they cannot be read or are not a cards file.
Variant load_cards(const std::string& cards_path);

}  // namespace zorvat::cli
