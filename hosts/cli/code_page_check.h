// Which letters of an export the file's code page lacks: for every card, each
// property whose text the class writes, and the settings string. The file is written
// all the same (a missing letter becomes what the conversion makes of it, as the
// classic component writes it); the command warns about each card before it writes.
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/code_page.h"
#include "zorvat/export_class.h"
#include "zorvat/variant.h"

namespace zorvat::cli {

struct MissingLetters {
  std::string property;  // "LastName", or "settings" for the settings string
  std::string text;      // the property's text
  std::vector<char32_t> characters;
};

// One card's properties (or the settings string's fields) holding such letters.
struct CardMissingLetters {
  std::optional<std::size_t> card;  // in the cards file, from 0; none for the settings
  std::string id;                   // the card's ExportID, else its Number
  std::string id_name;              // "ExportID" or "Number"
  std::vector<MissingLetters> properties;
};

// Every card (in collection order) and the settings string with letters the code page
// lacks. A property the card does not have is left to the export to report.
std::vector<CardMissingLetters> missing_letters(const Variant& cards, const ExportClass& instance,
                                                std::string_view setup, const CodePage& code_page);

// What a card holds that the code page lacks, without a line end:
//   card 2 (ExportID E102): windows-1252 lacks "王" (U+738B) in LastName "Wang 王"
std::string missing_letters_line(const CardMissingLetters& missing,
                                 std::string_view code_page_name);

// The export's warning for a card: "zorvat: warning: ", the line above, and "; the file
// holds what the conversion makes of it".
std::string warning_line(const CardMissingLetters& missing, std::string_view code_page_name);

// The list as JSON: one object per property, {"card", "id", "property", "text",
// "characters": [{"character", "codePoint"}]}; card and id are null for the settings.
nlohmann::ordered_json missing_letters_json(const std::vector<CardMissingLetters>& missing);

}  // namespace zorvat::cli
