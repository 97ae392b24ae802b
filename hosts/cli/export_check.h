// What the command line knows about an export before it writes anything: where a raised
// error belongs (a card's property, or a position of the settings string), and the
// whole export run in memory and read back (`zorvat export --check`), with every
// reason the export would fail or its file would not read back (errors), and every
// way a payroll system may misread a file that is written (warnings).
//
// Settings positions are numbered from 0 and named as the class's description
// (`zorvat describe CLASS`) numbers and names them; cards by their index in the file
// from 0, with their ExportID (else Number).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json_cards.h"
#include "zorvat/code_page.h"
#include "zorvat/error.h"
#include "zorvat/export_class.h"
#include "zorvat/variant.h"

namespace zorvat::cli {

// A position of the settings string, with its name from the class's description.
struct SettingPlace {
  std::size_t position = 0;
  std::string name;
};

// "settings position 3 (Overtime 1 Pay Code)"
std::string setting_text(const SettingPlace& setting);
// "card 3 (ExportID E103)", ", property Number" added when one is named.
std::string card_text(const CardReadPlace& card);

// Where a raised error belongs: at most one of the two.
struct ErrorPlace {
  std::optional<CardReadPlace> card;
  std::optional<SettingPlace> setting;
  std::string note;  // why, for a settings position: "the string has 3 fields; ..."
};

// Where an error raised by the class's check method belongs: the first position a
// string with too few fields lacks; for a type mismatch, the field that cannot be
// converted (found by checking again with that field alone cleaned up); else the
// position whose error number it is.
ErrorPlace place_of_check_error(const ClassDescription& description, std::string_view setup,
                                std::string_view title, const Error& error);

// Where an error raised by Execute belongs. `read_place` is what card_being_read said
// right after the error, before anything else read the cards. A settings string with
// too few fields, or a field that cannot be converted (found by exporting again with
// that field alone cleaned up), is blamed before the card; otherwise the card, and
// its property only when one of its values explains the error.
ErrorPlace place_of_export_error(const ClassDescription& description, const Variant& cards,
                                 std::string_view setup, std::string_view title, const Error& error,
                                 std::optional<CardReadPlace> read_place);

// A warning for a settings string with a field count other than the class reads;
// nothing when the count is right.
std::optional<std::string> field_count_warning(const ClassDescription& description,
                                               std::string_view setup);

// How many cards the check names for one kind of finding; the rest are counted in
// one finding after them, so that a batch where every card is concerned still reads.
inline constexpr std::size_t kCardsNamedAtMost = 20;

// One thing `export --check` found.
struct Finding {
  enum class Severity { Error, Warning };
  Severity severity = Severity::Error;
  std::optional<CardReadPlace> card;
  std::optional<SettingPlace> setting;
  std::string message;
};

// "error: card 3 (ExportID E103), property Number: ..." as a line of the plain report.
std::string finding_line(const Finding& finding);

// Runs the whole export in memory, as `zorvat export` would run it (the class's check,
// Execute with every card, the file in `code_page`), and reads the file back through
// the class's reader, comparing it with the cards; writes nothing. Also looks for what
// a payroll system may misread. The findings are in the order found, errors and
// warnings together.
std::vector<Finding> check_export(std::string_view class_name, const Variant& cards,
                                  const std::string& setup, const std::string& title,
                                  const CodePage& code_page);

}  // namespace zorvat::cli
