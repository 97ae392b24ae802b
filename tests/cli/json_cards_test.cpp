// The JSON time cards against an independent parser: every value of generated files
// (with quotes, backslashes and brackets inside text, at every offset, and files large
// enough to be read in several pieces) must come back as that parser reads it.
#include "json_cards.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "test_folder.h"

#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/time_card.h"

namespace zorvat::cli {
namespace {

using nlohmann::json;

// Compares a loaded value with the independent parser's reading of it.
void expect_same(const Variant& loaded, const json& expected, const std::string& where) {
  switch (expected.type()) {
    case json::value_t::string:
      if (loaded.type() == Variant::Type::Date) return;  // dates are checked separately
      ASSERT_TRUE(loaded.is_string()) << where;
      EXPECT_EQ(loaded.as_string(), expected.get<std::string>()) << where;
      break;
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
      if (loaded.type() == Variant::Type::Long)
        EXPECT_EQ(loaded.as_long(), expected.get<std::int64_t>()) << where;
      else
        EXPECT_EQ(loaded.as_double(), expected.get<double>()) << where;
      break;
    case json::value_t::number_float:
      EXPECT_EQ(loaded.as_double(), expected.get<double>()) << where;
      break;
    case json::value_t::boolean:
      EXPECT_EQ(loaded.as_boolean(), expected.get<bool>()) << where;
      break;
    case json::value_t::null:
      EXPECT_TRUE(loaded.is_null()) << where;
      break;
    case json::value_t::array: {
      std::size_t index = 0;
      for_each(loaded, [&](const Variant& element) {
        ASSERT_LT(index, expected.size()) << where;
        expect_same(element, expected[index], where + "[" + std::to_string(index) + "]");
        ++index;
      });
      EXPECT_EQ(index, expected.size()) << where;
      EXPECT_EQ(to_long(get_property(loaded, "Count")), static_cast<std::int32_t>(expected.size()));
      break;
    }
    case json::value_t::object:
      for (const auto& [key, value] : expected.items())
        expect_same(get_property(loaded, key), value, where + "." + key);
      break;
    default:
      FAIL() << where;
  }
}

// Text that is hard on a scanner: quotes, backslashes, brackets and commas, escapes
// of every kind and non-ASCII text.
std::string tricky_text(std::mt19937& random) {
  static const std::vector<std::string> pieces = {
      "\"",           "\\",  "{",   "}",      "[",   "]",  ",",
      "\\\"",         "a",   "Ann", " ",      "\n",  "\t", "\xC3\xA9",
      "\xE2\x82\xAC", "],[", "},{", "\\\\\"", "\"}]"};
  std::string text;
  const int length = static_cast<int>(random() % 12);
  for (int i = 0; i < length; ++i) text += pieces[random() % pieces.size()];
  return text;
}

json random_cards(std::mt19937& random, int count) {
  json cards = json::array();
  for (int i = 0; i < count; ++i) {
    json card = {{"ExportID", tricky_text(random)},
                 {"Number", static_cast<int>(random() % 100000)},
                 {"REG", static_cast<int>(random() % 5000) - 100},
                 {"OT1", static_cast<double>(random() % 7) / 2.0},
                 {"Badge", random() % 2 ? json(tricky_text(random)) : json(nullptr)},
                 {"Big", 3000000000LL + static_cast<long long>(random() % 1000)},
                 {"Flag", random() % 2 == 0},
                 {"Nested", {{"a", json::array({1, "x", json::object()})}}}};
    json days = json::array();
    for (int d = 0; d < static_cast<int>(random() % 4); ++d)
      days.push_back({{"DayDate", "2004-03-0" + std::to_string(d + 1)},
                      {"Hours", 480},
                      {"Note", tricky_text(random)}});
    card["Days"] = days;
    cards.push_back(card);
  }
  return {{"PeriodEnd", "2004-03-06"}, {"Title", tricky_text(random)}, {"cards", cards}};
}

// Enumerates `cards` through `read`, which must raise error `number`, and returns where
// the read place puts that error (an empty place when it puts it nowhere).
template <class Read>
CardReadPlace place_of_raised(const Variant& cards, long number, Read&& read) {
  try {
    for_each(cards, read);
    ADD_FAILURE() << "nothing raised " << number;
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), number);
    if (auto place = card_being_read(cards, error.number())) return *place;
    ADD_FAILURE() << "no card is being read";
  }
  return {};
}

TEST(JsonCards, ValuesMatchAnIndependentParser) {
  std::mt19937 random(20040306);
  for (int round = 0; round < 40; ++round) {
    const json document = random_cards(random, 1 + round * 3);
    // Pretty and compact layouts move every value to other offsets.
    for (int indent : {-1, 1, 4}) {
      const std::string text = document.dump(indent);
      const Variant cards = load_cards_json(text, "generated");
      expect_same(cards, document["cards"], "cards");
      EXPECT_EQ(get_property(cards, "Title").as_string(), document["Title"].get<std::string>());
      EXPECT_EQ(to_date(get_property(cards, "PeriodEnd")), Date::from_civil(2004, 3, 6));
    }
  }
}

TEST(JsonCards, LargeFilesAreReadInPiecesWithoutLosingACard) {
  std::mt19937 random(7);
  const json document = random_cards(random, 40000);  // several megabytes
  const std::string text = document.dump(1);
  ASSERT_GT(text.size(), 9u << 20);
  const Variant cards = load_cards_json(text, "large");
  EXPECT_EQ(to_long(get_property(cards, "Count")), 40000);
  expect_same(cards, document["cards"], "cards");
}

TEST(JsonCards, EscapesAtEveryOffsetOfABlock) {
  // A backslash run ending exactly at each offset of a 64-byte block.
  for (int pad = 0; pad < 130; ++pad) {
    const json document = {
        {"cards", json::array({{{"A", std::string(static_cast<std::size_t>(pad), 'x') + "\\\"]},"},
                                {"B", 1}},
                               {{"A", "\\"}, {"B", 2}}})}};
    const Variant cards = load_cards_json(document.dump(), "escapes");
    expect_same(cards, document["cards"], "pad " + std::to_string(pad));
  }
}

TEST(JsonCards, LargeFilesReadFromDiskLoseNoCardAndStillPlaceErrors) {
  // From disk the file is mapped and its pages given back as they are converted: every
  // card must still come back, and an error at the very end must still be placed by
  // line, which means reading the given-back pages again.
  const auto folder = testing_support::fresh_test_folder("zorvat-json-cards");
  std::mt19937 random(11);
  const json document = random_cards(random, 40000);
  const std::string text = document.dump(1);
  ASSERT_GT(text.size(), 9u << 20);
  // With a byte-order mark the text starts three bytes into the first page.
  for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
    testing_support::write_file(folder / "large.json", mark + text);
    const Variant cards = load_cards_file((folder / "large.json").string());
    EXPECT_EQ(to_long(get_property(cards, "Count")), 40000);
    expect_same(cards, document["cards"], "cards");
  }

  std::string broken = text;
  const std::size_t last_bracket = broken.rfind(']');
  broken.insert(last_bracket, ",}");
  testing_support::write_file(folder / "broken.json", broken);
  const auto line =
      std::count(broken.begin(), broken.begin() + static_cast<long>(last_bracket), '\n') + 1;
  try {
    load_cards_file((folder / "broken.json").string());
    FAIL() << "a broken file was loaded";
  } catch (const CardsFileError& error) {
    EXPECT_NE(std::string(error.what()).find("line " + std::to_string(line) + ","),
              std::string::npos)
        << error.what();
  }
}

TEST(JsonCards, FieldsAreFoundByNameWhateverTheirOrderFromCardToCard) {
  // The reader guesses that a card lists its fields where the card before did; cards
  // that change the order, lack a field, or spell it in another case must still be
  // read by name.
  const Variant cards = load_cards_json(
      R"({"cards": [{"A": 1, "B": 2, "C": 3}, {"C": 30, "A": 10}, {"B": 200, "A": 100, "C": 300},
                    {"a": 1000, "b": 2000, "c": 3000}, {"C": 4, "B": 5, "A": 6, "Days": [
                    {"A": 7, "B": 8}, {"B": 9, "A": 10}]}]})",
      "orders");
  std::vector<std::string> read;
  for_each(cards, [&](const Variant& card) {
    std::string line;
    for (const char* name : {"A", "B", "C"}) {
      try {
        line += std::to_string(to_long(get_property(card, name))) + " ";
      } catch (const Error& error) {
        line += "#" + std::to_string(error.number()) + " ";
      }
    }
    read.push_back(line);
  });
  EXPECT_EQ(read, (std::vector<std::string>{"1 2 3 ", "10 #438 30 ", "100 200 300 ",
                                            "1000 2000 3000 ", "6 5 4 "}));
}

TEST(JsonCards, ACardKeptByTheClassKeepsItsValuesWhileTheOthersAreRead) {
  const Variant cards = load_cards_json(
      R"({"cards": [{"ExportID": "first", "REG": 1}, {"ExportID": "second", "REG": 2},
                    {"ExportID": "third", "REG": 3}]})",
      "kept");
  std::vector<Variant> kept;
  std::vector<std::string> seen;
  for_each(cards, [&](const Variant& card) {
    seen.push_back(to_text(get_property(card, "ExportID")));
    if (seen.size() != 2) kept.push_back(card);  // the second is let go
  });
  EXPECT_EQ(seen, (std::vector<std::string>{"first", "second", "third"}));
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(to_text(get_property(kept[0], "ExportID")), "first");
  EXPECT_EQ(to_long(get_property(kept[0], "REG")), 1);
  EXPECT_EQ(to_text(get_property(kept[1], "ExportID")), "third");
  EXPECT_EQ(to_long(get_property(kept[1], "REG")), 3);
}

TEST(JsonCards, EnumerationsTellHowManyElementsAreStillToCome) {
  const Variant cards = load_cards_json(
      R"({"cards": [{"Days": [{"A": 1}, {"A": 2}]}, {"Days": []}, {"Days": [{"A": 3}]}]})",
      "counted");
  auto card_enumerator = object_of(cards).enumerate();
  std::vector<std::size_t> cards_left{card_enumerator->remaining_hint()};
  std::vector<std::size_t> days_left;
  Variant card;
  while (card_enumerator->next(card)) {
    cards_left.push_back(card_enumerator->remaining_hint());
    auto day_enumerator = object_of(get_property(card, "Days")).enumerate();
    days_left.push_back(day_enumerator->remaining_hint());
    Variant day;
    while (day_enumerator->next(day)) days_left.push_back(day_enumerator->remaining_hint());
  }
  EXPECT_EQ(cards_left, (std::vector<std::size_t>{3, 2, 1, 0}));
  EXPECT_EQ(days_left, (std::vector<std::size_t>{2, 1, 0, 0, 1, 0}));
}

TEST(JsonCards, MalformedArraysAreRejected) {
  for (const char* text :
       {"{\"cards\": [{\"a\": 1},]}", "{\"cards\": [,]}", "{\"cards\": [{\"a\": \"]}",
        "{\"cards\": [{\"a\": 1}}", "{\"cards\": [{\"a\": 1}", "{\"cards\": [1 2]}"}) {
    EXPECT_THROW(load_cards_json(text, "bad"), CardsFileError) << text;
  }
  EXPECT_EQ(to_long(get_property(load_cards_json("{\"cards\": [ ]}", "empty"), "Count")), 0);
  EXPECT_EQ(to_long(get_property(load_cards_json("{\"cards\":[]}", "empty"), "Count")), 0);
}

TEST(JsonCards, AByteOrderMarkBeforeTheDocumentIsSkipped) {
  // As Notepad saves UTF-8: EF BB BF, then the JSON.
  const Variant cards = load_cards_json(
      "\xEF\xBB\xBF{\"PeriodEnd\": \"2004-03-06\", \"cards\": [{\"ExportID\": \"E1\"}]}",
      "bom.json");
  EXPECT_EQ(to_long(get_property(cards, "Count")), 1);
  EXPECT_EQ(to_date(get_property(cards, "PeriodEnd")), Date::from_civil(2004, 3, 6));
  // Only at the start: the same bytes anywhere else are not blank space.
  EXPECT_THROW(load_cards_json("{\"cards\": \xEF\xBB\xBF[]}", "inside.json"), CardsFileError);
}

TEST(JsonCards, NumbersOutOfRangeAreRefusedWithAMessage) {
  // Found by fuzzing: the second reading that locates the error failed itself.
  const char* text =
      "{\n \"PeriodEnd\": \"2004-03-03\",\n \"cards\": [\n  {\n   \"ExportID\": \"`791\",\n"
      "   \"Number\": 1e3452ditot2,\n ]\n}\n";
  try {
    load_cards_json(text, "overflow.json");
    FAIL() << "accepted";
  } catch (const CardsFileError& error) {
    EXPECT_NE(std::string(error.what()).find("overflow.json: not valid JSON"), std::string::npos)
        << error.what();
  }
  EXPECT_THROW(load_cards_json("{\"cards\": [{\"REG\": 1e999}]}", "big"), CardsFileError);
}

// The whole message of a refused file, or "loaded".
std::string refusal(const std::string& text) {
  try {
    load_cards_json(text, "m.json");
  } catch (const CardsFileError& error) {
    return error.what();
  }
  return "loaded";
}

// The first card's `property` in `text`.
Variant first_card_value(const std::string& text, const char* property) {
  Variant value;
  for_each(load_cards_json(text, "n.json"), [&](const Variant& card) {
    if (value.type() == Variant::Type::Empty) value = get_property(card, property);
  });
  return value;
}

TEST(JsonCards, IntegersBeyondSixtyFourBitsAreDoubles) {
  // 99999999999999999999 lies between the Doubles 1e20 - 16384 and 1e20, nearer 1e20.
  for (const char* text : {"99999999999999999999", "100000000000000000000"}) {
    const Variant reg =
        first_card_value(std::string("{\"cards\": [{\"REG\": ") + text + "}]}", "REG");
    EXPECT_EQ(reg.type(), Variant::Type::Double) << text;
    EXPECT_EQ(to_double(reg), 1e20) << text;
  }
  const Variant negative =
      first_card_value("{\"cards\": [{\"OT1\": -99999999999999999999}]}", "OT1");
  EXPECT_EQ(negative.type(), Variant::Type::Double);
  EXPECT_EQ(to_double(negative), -1e20);
  // Below the signed 64-bit range by one: the Double -2^63.
  EXPECT_EQ(to_double(first_card_value("{\"cards\": [{\"REG\": -9223372036854775809}]}", "REG")),
            -9223372036854775808.0);
  // An integer of 19 digits within the range keeps its value as before, next to a long one
  // (both in the same piece, which is read again).
  const Variant cards = load_cards_json(
      "{\"cards\": [{\"REG\": 1234567890123456789, \"OT1\": 18446744073709551616, "
      "\"ExportID\": \"99999999999999999999\"}]}",
      "n.json");
  for_each(cards, [](const Variant& card) {
    EXPECT_EQ(to_double(get_property(card, "REG")), 1234567890123456768.0);
    EXPECT_EQ(to_double(get_property(card, "OT1")), 18446744073709551616.0);
    EXPECT_EQ(to_text(get_property(card, "ExportID")), "99999999999999999999");
  });
  // Outside the cards too.
  EXPECT_EQ(to_double(get_property(
                load_cards_json("{\"Batch\": 123456789012345678901234, \"cards\": []}", "n.json"),
                "Batch")),
            123456789012345678901234.0);
}

TEST(JsonCards, ANumberNoDoubleHoldsIsRefusedWithItsLineColumnAndProperty) {
  EXPECT_EQ(refusal("{\"cards\": [\n  {\"ExportID\": \"E1\",\n   \"REG\": 1e400}\n]}"),
            "cards file m.json: line 3, column 11: property REG: 1e400 is beyond the range of a "
            "number (a Double holds magnitudes up to 1.79769313486232E+308)");
  EXPECT_EQ(refusal("{\"cards\": [{\"Days\": [{\"OT1\": 0}, {\"OT1\":-2.5E+999}]}]}"),
            "cards file m.json: line 1, column 41: property OT1: -2.5E+999 is beyond the range "
            "of a number (a Double holds magnitudes up to 1.79769313486232E+308)");
  EXPECT_EQ(refusal("{\"Scale\": [1, 1" + std::string(400, '0') + "], \"cards\": []}"),
            "cards file m.json: line 1, column 15: an element of an array: 1" +
                std::string(400, '0') +
                " is beyond the range of a number (a Double holds magnitudes up to "
                "1.79769313486232E+308)");
  // A name with an escaped quote is given as it is written.
  EXPECT_EQ(refusal("{\"cards\": [{\"a\\\"b\": 9e9999}]}"),
            "cards file m.json: line 1, column 21: property a\\\"b: 9e9999 is beyond the range of "
            "a number (a Double holds magnitudes up to 1.79769313486232E+308)");
  // Too small for a Double is no error: the nearest one, 0.
  EXPECT_EQ(to_double(first_card_value("{\"cards\": [{\"REG\": 1e-400}]}", "REG")), 0.0);
}

TEST(JsonCards, DeepNestingIsRefused) {
  const std::string deep = "{\"cards\": [" + std::string(2000, '[') + std::string(2000, ']') + "]}";
  EXPECT_THROW(load_cards_json(deep, "deep"), CardsFileError);
}

TEST(JsonCards, RefusalsNameTheFileAndThePlaceInFull) {
  EXPECT_EQ(refusal("[]"),
            "cards file m.json: top level: expected an object with a \"cards\" array");
  EXPECT_EQ(refusal(R"({"PeriodEnd": "2004-03-06"})"),
            "cards file m.json: top level: no \"cards\" array");
  EXPECT_EQ(refusal(R"({"cards": {}})"), "cards file m.json: cards: expected an array of cards");
  EXPECT_EQ(refusal(R"({"cards": [{}, {"Days": [1]}]})"),
            "cards file m.json: cards[1].Days[0]: expected an object");
  EXPECT_EQ(
      refusal(R"({"cards": [{"Days": [{"DayDate": "2004-13-01"}]}]})"),
      "cards file m.json: cards[0].Days[0].DayDate: \"2004-13-01\" is not a date (YYYY-MM-DD)");
  EXPECT_EQ(refusal(R"({"PeriodEnd": "March 6", "cards": []})"),
            "cards file m.json: top level.PeriodEnd: \"March 6\" is not a date (YYYY-MM-DD)");
  EXPECT_EQ(refusal(R"({"cards": [{"a": 1},]})"),
            "cards file m.json: not valid JSON: [json.exception.parse_error.101] parse error at "
            "line 1, column 21: syntax error while parsing value - unexpected ']'; expected '[', "
            "'{', or a literal");
  // Cards nested past simdjson's depth limit but within the scanner's, which the
  // second reading accepts: with no line and column to give, the message gives the
  // place the scanner had reached while the cards were parsed, the start of the array.
  EXPECT_EQ(refusal("{\"cards\": [" + std::string(1024, '[') + std::string(1024, ']') + "]}"),
            "cards file m.json: not valid JSON: unexpected text at byte 11");
}

TEST(JsonCards, AbsentPropertiesRaise438) {
  const Variant cards = load_cards_json("{\"cards\": [{\"REG\": 60}]}", "one");
  for_each(cards, [](const Variant& card) {
    EXPECT_EQ(to_long(get_property(card, "reg")), 60);
    try {
      get_property(card, "OT1");
      FAIL();
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), 438);
    }
  });
}

// Reads `name` from every card of `cards` as a number, or "#" and the error number.
std::string read_declared(const Variant& cards, const PropertyName& name) {
  std::string line;
  for_each(cards, [&](const Variant& card) {
    try {
      line += std::to_string(to_long(get_property(card, name))) + " ";
    } catch (const Error& error) {
      line += "#" + std::to_string(error.number()) + " ";
    }
  });
  return line;
}

TEST(JsonCards, DeclaredNamesReadWhatTheirTextReadsInEveryFileTheyMeet) {
  // The resolution a declared name keeps belongs to one file: files that spell the
  // field otherwise, place it elsewhere, or lack it are read as they stand, also when
  // they take turns, and a second name of the same text reads alike.
  static const PropertyName kRegular{"REG"};
  static const PropertyName kRegularAgain{"REG"};
  EXPECT_NE(kRegular.ordinal(), kRegularAgain.ordinal());
  const Variant upper = load_cards_json(R"({"cards": [{"A": 0, "REG": 1}, {"REG": 2}]})", "upper");
  const Variant lower =
      load_cards_json(R"({"cards": [{"reg": 10, "B": 0}, {"Reg": 20}]})", "lower");
  const Variant none = load_cards_json(R"({"cards": [{"OT1": 5}]})", "none");
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(read_declared(upper, kRegular), "1 2 ");
    EXPECT_EQ(read_declared(lower, kRegular), "10 20 ");
    EXPECT_EQ(read_declared(none, kRegular), "#438 ");
    EXPECT_EQ(read_declared(lower, kRegularAgain), "10 20 ");
    EXPECT_EQ(read_declared(upper, kRegularAgain), "1 2 ");
  }
  // The names of the collection answer too: the count of cards, the period.
  const Variant period =
      load_cards_json(R"({"PeriodEnd": "2004-03-06", "cards": [{}, {}, {}]})", "period");
  EXPECT_EQ(to_long(get_property(period, time_card::kCount)), 3);
  EXPECT_EQ(to_date(get_property(period, time_card::kPeriodEnd)).serial,
            Date::from_civil(2004, 3, 6).serial);
}

TEST(JsonCards, ADeclaredNameAbsentFromACardStillNamesItInTheReadPlace) {
  const Variant cards = load_cards_json(R"({"cards": [{"ExportID": "E1", "REG": 60}]})", "place");
  const CardReadPlace place =
      place_of_raised(cards, 438, [](const Variant& card) { get_property(card, time_card::kOT1); });
  EXPECT_EQ(place.index, 0u);
  EXPECT_EQ(place.id, "E1");
  EXPECT_EQ(place.property, "OT1");
}

TEST(JsonCards, TextAppendedStraightFromTheFileReadsAsTheVariantWritesIt) {
  // Each value appended as text after what the line already holds, written out by
  // hand, or the error number; the Variant read and then written must agree.
  static const PropertyName kName{"Name"}, kEscaped{"Escaped"}, kEmpty{"Empty"}, kLong{"Long"},
      kFraction{"Fraction"}, kNothing{"Nothing"}, kYes{"Yes"}, kStart{"PeriodStart"}, kList{"List"},
      kAbsent{"Absent"};
  const Variant cards = load_cards_json(
      R"({"cards": [{"Name": "Ann Lee", "Escaped": "a\"b\\c\u00e9", "Empty": "", "Long": 315,
          "Fraction": 1.5, "Nothing": null, "Yes": true, "PeriodStart": "2004-02-29",
          "List": [1]}]})",
      "text");
  struct Expected {
    const PropertyName& name;
    std::string line;  // after "> ", when `error` is 0
    long error;
  };
  const Expected expected[] = {{kName, "> Ann Lee", 0}, {kEscaped, "> a\"b\\c\xC3\xA9", 0},
                               {kEmpty, "> ", 0},       {kLong, "> 315", 0},
                               {kFraction, "> 1.5", 0}, {kNothing, "> ", 0},
                               {kYes, "> True", 0},     {kStart, "> 2/29/2004", 0},
                               {kList, "", 13},         {kAbsent, "", 438}};
  for_each(cards, [&](const Variant& card) {
    for (const Expected& each : expected) {
      SCOPED_TRACE(std::string(each.name.text()));
      auto read = [&](auto how) -> std::pair<std::string, long> {
        std::string line = "> ";
        try {
          how(line);
          return {line, 0};
        } catch (const Error& error) {
          return {"", error.number()};
        }
      };
      const auto appended = read([&](std::string& line) { append_text(line, card, each.name); });
      const auto through_variant =
          read([&](std::string& line) { line += to_concat_text(get_property(card, each.name)); });
      EXPECT_EQ(appended, std::make_pair(each.line, each.error));
      EXPECT_EQ(through_variant, appended);
    }
  });
}

TEST(JsonCards, NamesThatDifferInOneByteAreToldApartWhateverTheirLength) {
  // Card after card the same place holds a name differing from the one before in a
  // single byte, at every position of names of 1 to 20 bytes: each card is read by
  // its own name, and the other name is absent from it.
  for (std::size_t length = 1; length <= 20; ++length) {
    for (std::size_t position = 0; position < length; ++position) {
      std::string first(length, 'k');
      for (std::size_t i = 0; i < length; ++i) first[i] = static_cast<char>('a' + i % 26);
      std::string second = first;
      second[position] = 'Z';
      const std::string text =
          "{\"cards\": [{\"" + first + "\": 1}, {\"" + second + "\": 2}, {\"" + first + "\": 3}]}";
      SCOPED_TRACE(text);
      const Variant cards = load_cards_json(text, "names");
      std::string read;
      for_each(cards, [&](const Variant& card) {
        for (const std::string& name : {first, second}) {
          try {
            read += std::to_string(to_long(get_property(card, name))) + " ";
          } catch (const Error& error) {
            read += "#" + std::to_string(error.number()) + " ";
          }
        }
      });
      EXPECT_EQ(read, "1 #438 #438 2 3 #438 ");
    }
  }
}

TEST(JsonCards, NumbersReadAsNumbersConvertEveryKindOfValueAsTheVariantDoes) {
  // Each value read as a number, written out by hand, and the error numbers of those
  // that are no number; the Variant read and then converted must agree with each.
  static const PropertyName kLong{"Long"}, kFraction{"Fraction"}, kBig{"Big"}, kText{"Text"},
      kWord{"Word"}, kNothing{"Nothing"}, kYes{"Yes"}, kNo{"No"}, kStart{"PeriodStart"},
      kList{"List"}, kAbsent{"Absent"};
  const Variant cards = load_cards_json(
      R"({"cards": [{"ExportID": "E7", "Long": -60, "Fraction": 1.5, "Big": 3000000000,
          "Text": "45", "Word": "x", "Nothing": null, "Yes": true, "No": false,
          "PeriodStart": "2004-02-29", "List": [1]}]})",
      "kinds");
  struct Expected {
    const PropertyName& name;
    double value;  // when `error` is 0
    long error;
  };
  const Expected expected[] = {
      {kLong, -60, 0}, {kFraction, 1.5, 0}, {kBig, 3000000000.0, 0},
      {kText, 45, 0},  {kWord, 0, 13},      {kNothing, 0, 94},
      {kYes, -1, 0},   {kNo, 0, 0},         {kStart, Date::from_civil(2004, 2, 29).serial, 0},
      {kList, 0, 13},  {kAbsent, 0, 438}};
  for_each(cards, [&](const Variant& card) {
    for (const Expected& each : expected) {
      SCOPED_TRACE(std::string(each.name.text()));
      auto read = [&](auto how) -> std::pair<double, long> {
        try {
          return {how(), 0};
        } catch (const Error& error) {
          return {0, error.number()};
        }
      };
      const auto as_number = read([&] { return get_number(card, each.name); });
      const auto through_variant = read([&] { return to_double(get_property(card, each.name)); });
      EXPECT_EQ(as_number, std::make_pair(each.value, each.error));
      EXPECT_EQ(through_variant, as_number);
    }
  });
  // Minutes that cannot be read as a number name their property in the read place.
  const Variant eight =
      load_cards_json(R"({"cards": [{"ExportID": "E8", "OT1": 60, "REG": "eight"}]})", "eight");
  const CardReadPlace place = place_of_raised(eight, 13, [](const Variant& card) {
    EXPECT_EQ(get_number(card, time_card::kOT1), 60);
    get_number(card, time_card::kREG);
  });
  EXPECT_EQ(place.id, "E8");
  EXPECT_EQ(place.property, "REG");
}

TEST(JsonCards, NumbersReadWhereTheCardBeforeHadThemConvertAsTheFirstCardsDid) {
  // Three cards with one layout: from the second card on, every name is found where
  // the card before had it. Each kind must read as it did on the first card, and
  // minutes that are no number name their property.
  static const PropertyName kLong{"Long"}, kFraction{"Fraction"}, kText{"Text"}, kYes{"Yes"},
      kStart{"PeriodStart"}, kOther{"OTH"}, kNothing{"Nothing"}, kVacation{"VAC"};
  const std::string card =
      R"({"ExportID": "E", "Long": -60, "Fraction": 1.5, "Text": "45", "Yes": true,
          "PeriodStart": "2004-02-29", "OTH": "x", "Nothing": null, "VAC": 1e12})";
  const Variant cards =
      load_cards_json(R"({"cards": [)" + card + "," + card + "," + card + "]}", "same layout");
  struct Expected {
    const PropertyName& name;
    double value;  // when `error` is 0
    long error;
  };
  const Expected expected[] = {{kLong, -60, 0},
                               {kFraction, 1.5, 0},
                               {kText, 45, 0},
                               {kYes, -1, 0},
                               {kStart, Date::from_civil(2004, 2, 29).serial, 0},
                               {kOther, 0, 13},
                               {kNothing, 0, 94},
                               {kVacation, 1e12, 0}};
  int card_number = 0;
  for_each(cards, [&](const Variant& each_card) {
    ++card_number;
    for (const Expected& each : expected) {
      SCOPED_TRACE(std::string(each.name.text()) + " of card " + std::to_string(card_number));
      for (int again = 0; again < 2; ++again) {
        try {
          EXPECT_EQ(get_number(each_card, each.name), each.value);
          EXPECT_EQ(each.error, 0);
        } catch (const Error& error) {
          EXPECT_EQ(error.number(), each.error);
          const auto place = card_being_read(cards, error.number());
          ASSERT_TRUE(place.has_value());
          EXPECT_EQ(place->index, static_cast<std::size_t>(card_number - 1));
          EXPECT_EQ(place->property, each.name.text());
        }
      }
    }
    // Minutes past the range of hundredths of an hour overflow once converted: the
    // place names the number read straight from the card.
    const auto place = card_being_read(cards, 6);
    ASSERT_TRUE(place.has_value());
    EXPECT_EQ(place->property, "VAC");
  });
  EXPECT_EQ(card_number, 3);
}

TEST(JsonCards, AnErrorAfterHundredsOfReadsOfOneCardStillNamesItsDay) {
  // Sixty days read three times each, then a day whose minutes are no number: the
  // place names that day. The card after it starts its reads afresh.
  std::string days;
  for (int day = 0; day < 60; ++day) days += R"({"REG": 60, "OT1": 30}, )";
  days += R"({"REG": "eight", "OT1": 30})";
  const Variant cards =
      load_cards_json(R"({"cards": [{"ExportID": "E1", "Days": [)" + days +
                          R"(]}, {"ExportID": "E2", "REG": "nine", "Days": []}]})",
                      "many reads");
  double minutes = 0;
  auto read_every_day = [&](const Variant& card) {
    for_each(get_property(card, time_card::kDays), [&](const Variant& day) {
      for (int again = 0; again < 3; ++again) {
        minutes += get_number(day, time_card::kOT1);
        minutes += get_number(day, time_card::kREG);
      }
    });
  };
  const CardReadPlace day_place = place_of_raised(cards, 13, read_every_day);
  EXPECT_EQ(minutes, 60 * 3 * 90 + 30);  // the last day's OT1 is read before its REG
  EXPECT_EQ(day_place.id, "E1");
  EXPECT_EQ(day_place.property, "Days[60].REG");

  int card_number = 0;
  const CardReadPlace card_place = place_of_raised(cards, 13, [&](const Variant& card) {
    if (card_number++ == 0) return;  // the first card is not read this time
    get_number(card, time_card::kREG);
  });
  EXPECT_EQ(card_place.id, "E2");
  EXPECT_EQ(card_place.property, "REG");
}

}  // namespace
}  // namespace zorvat::cli
