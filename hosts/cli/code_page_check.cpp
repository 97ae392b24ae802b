#include "code_page_check.h"

#include <nlohmann/json.hpp>

#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/settings.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {
namespace {

// The property's text, when the card has the property and it holds text.
std::optional<std::string> text_of(const Variant& card, std::string_view property) {
  try {
    const Variant value = get_property(card, property);
    if (value.type() != Variant::Type::String) return std::nullopt;
    return to_text(value);
  } catch (const Error&) {
    return std::nullopt;
  }
}

void add_if_missing(std::vector<MissingLetters>& found, std::string property, std::string text,
                    const CodePage& code_page) {
  std::vector<char32_t> characters = characters_missing(code_page, text);
  if (!characters.empty())
    found.push_back({std::move(property), std::move(text), std::move(characters)});
}

}  // namespace

std::vector<CardMissingLetters> missing_letters(const Variant& cards, const ExportClass& instance,
                                                std::string_view setup, const CodePage& code_page) {
  std::vector<CardMissingLetters> result;
  const std::vector<std::string_view> properties = instance.written_text_properties();
  if (properties.empty()) return result;  // no file, no code page

  CardMissingLetters settings;
  const SettingsFields fields(setup);
  for (std::size_t position = 0; position < fields.size(); ++position)
    add_if_missing(settings.properties, "settings position " + std::to_string(position),
                   fields.at(position), code_page);
  if (!settings.properties.empty()) result.push_back(std::move(settings));

  std::size_t index = 0;
  for_each(cards, [&](const Variant& card) {
    CardMissingLetters missing;
    missing.card = index++;
    for (std::string_view property : properties)
      if (std::optional<std::string> text = text_of(card, property))
        add_if_missing(missing.properties, std::string(property), std::move(*text), code_page);
    if (missing.properties.empty()) return;
    for (std::string_view id_name : {"ExportID", "Number"}) {
      try {
        const Variant id = get_property(card, id_name);
        missing.id = to_text(id);
        missing.id_name = id_name;
        break;
      } catch (const Error&) {
      }
    }
    result.push_back(std::move(missing));
  });
  return result;
}

std::string warning_line(const CardMissingLetters& missing, std::string_view code_page_name) {
  return "zorvat: warning: " + missing_letters_line(missing, code_page_name) +
         "; the file holds what the conversion makes of it";
}

std::string missing_letters_line(const CardMissingLetters& missing,
                                 std::string_view code_page_name) {
  std::string line;
  if (missing.card) {
    line += "card " + std::to_string(*missing.card);
    if (!missing.id.empty()) line += " (" + missing.id_name + " " + missing.id + ")";
  } else {
    line += "the settings";
  }
  line += ": " + std::string(code_page_name) + " lacks";
  bool first_property = true;
  for (const MissingLetters& property : missing.properties) {
    line += first_property ? " " : "; and ";
    first_property = false;
    bool first_character = true;
    for (char32_t character : property.characters) {
      if (!first_character) line += ", ";
      first_character = false;
      line += '"';
      append_utf8(line, character);
      line += "\" (" + code_point_name(character) + ")";
    }
    line += " in " + property.property + " \"" + property.text + "\"";
  }
  return line;
}

nlohmann::ordered_json missing_letters_json(const std::vector<CardMissingLetters>& missing) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const CardMissingLetters& card : missing) {
    for (const MissingLetters& property : card.properties) {
      nlohmann::ordered_json characters = nlohmann::ordered_json::array();
      for (char32_t character : property.characters) {
        std::string text;
        append_utf8(text, character);
        characters.push_back({{"character", text}, {"codePoint", code_point_name(character)}});
      }
      list.push_back({{"card", card.card ? nlohmann::ordered_json(*card.card) : nullptr},
                      {"id", card.card ? nlohmann::ordered_json(card.id) : nullptr},
                      {"property", property.property},
                      {"text", property.text},
                      {"characters", characters}});
    }
  }
  return list;
}

}  // namespace zorvat::cli
