#include "json_cards.h"

#include <simdjson.h>

#include <nlohmann/json.hpp>

#include "zorvat/automation.h"
#include "zorvat/error.h"

namespace zorvat::cli {
namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

bool iequals(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

bool is_date_property(std::string_view key) {
  return iequals(key, "PeriodEnd") || iequals(key, "PeriodStart") || iequals(key, "DayDate");
}

// Owns the parsed document; every object handed out keeps it alive.
struct Document {
  simdjson::dom::parser parser;
  element root;
};
using DocumentRef = std::shared_ptr<const Document>;

Variant to_variant(const DocumentRef& document, std::string_view key, element value);

class JsonArray final : public AutomationObject {
 public:
  JsonArray(DocumentRef document, simdjson::dom::array array)
      : document_(std::move(document)), array_(array) {}

  Variant get(std::string_view property) const override {
    if (iequals(property, "Count")) return Variant(static_cast<std::int32_t>(array_.size()));
    raise_not_supported();
  }

  std::unique_ptr<Enumerator> enumerate() const override {
    class Each final : public Enumerator {
     public:
      Each(const JsonArray& owner) : owner_(owner), it_(owner.array_.begin()) {}
      bool next(Variant& out) override {
        if (it_ == owner_.array_.end()) return false;
        out = to_variant(owner_.document_, {}, *it_);
        ++it_;
        return true;
      }

     private:
      const JsonArray& owner_;
      simdjson::dom::array::iterator it_;
    };
    return std::make_unique<Each>(*this);
  }

 private:
  DocumentRef document_;
  simdjson::dom::array array_;
};

class JsonObject final : public AutomationObject {
 public:
  JsonObject(DocumentRef document, simdjson::dom::object object)
      : document_(std::move(document)), object_(object) {}

  Variant get(std::string_view property) const override {
    // Names usually match exactly; the case-blind pass is the dispatch rule.
    for (auto field : object_)
      if (field.key == property) return to_variant(document_, field.key, field.value);
    for (auto field : object_)
      if (iequals(field.key, property)) return to_variant(document_, field.key, field.value);
    raise_not_supported();
  }

 protected:
  DocumentRef document_;
  simdjson::dom::object object_;
};

// The top level: the collection of cards, with the file's own properties
// ("PeriodEnd") and Count.
class JsonCardCollection final : public AutomationObject {
 public:
  JsonCardCollection(DocumentRef document, simdjson::dom::object top, simdjson::dom::array cards)
      : top_(document, top), cards_(document, cards) {}

  Variant get(std::string_view property) const override {
    if (iequals(property, "Count")) return cards_.get("Count");
    return top_.get(property);
  }
  std::unique_ptr<Enumerator> enumerate() const override { return cards_.enumerate(); }

 private:
  JsonObject top_;
  JsonArray cards_;
};

Variant to_variant(const DocumentRef& document, std::string_view key, element value) {
  switch (value.type()) {
    case element_type::INT64: {
      const std::int64_t number = value.get_int64().value_unsafe();
      if (number >= INT32_MIN && number <= INT32_MAX)
        return Variant(static_cast<std::int32_t>(number));
      return Variant(static_cast<double>(number));
    }
    case element_type::UINT64:
      return Variant(static_cast<double>(value.get_uint64().value_unsafe()));
    case element_type::DOUBLE:
      return Variant(value.get_double().value_unsafe());
    case element_type::STRING: {
      const std::string_view text = value.get_string().value_unsafe();
      if (is_date_property(key)) {
        if (auto date = parse_iso_date(text)) return Variant(*date);
      }
      return Variant(text);
    }
    case element_type::BOOL:
      return Variant(value.get_bool().value_unsafe());
    case element_type::NULL_VALUE:
      return Variant::null();
    case element_type::ARRAY:
      return Variant(
          ObjectRef(std::make_shared<JsonArray>(document, value.get_array().value_unsafe())));
    case element_type::OBJECT:
      return Variant(
          ObjectRef(std::make_shared<JsonObject>(document, value.get_object().value_unsafe())));
  }
  return Variant();
}

[[noreturn]] void fail(const std::string& name, const std::string& place, const std::string& what) {
  throw CardsFileError("cards file " + name + ": " + place + ": " + what);
}

// Checks the layout once at load, so that a class never meets a malformed file
// halfway through an export: the collection and its cards are objects, Days are
// arrays of objects, and dates are real ISO dates.
void check_dates_of(const std::string& name, const std::string& place,
                    simdjson::dom::object object) {
  for (auto field : object) {
    if (!is_date_property(field.key) || !field.value.is_string()) continue;
    if (!parse_iso_date(field.value.get_string().value_unsafe()))
      fail(name, place + "." + std::string(field.key),
           "\"" + std::string(field.value.get_string().value_unsafe()) +
               "\" is not a date (YYYY-MM-DD)");
  }
}

void check_layout(const std::string& name, element root, simdjson::dom::object& top,
                  simdjson::dom::array& cards) {
  if (!root.is_object()) fail(name, "top level", "expected an object with a \"cards\" array");
  top = root.get_object().value_unsafe();
  check_dates_of(name, "top level", top);
  element cards_element;
  if (top["cards"].get(cards_element) != simdjson::SUCCESS)
    fail(name, "top level", "no \"cards\" array");
  if (!cards_element.is_array()) fail(name, "cards", "expected an array of cards");
  cards = cards_element.get_array().value_unsafe();
  std::size_t index = 0;
  for (element card : cards) {
    const std::string place = "cards[" + std::to_string(index) + "]";
    if (!card.is_object()) fail(name, place, "expected an object");
    const auto card_object = card.get_object().value_unsafe();
    check_dates_of(name, place, card_object);
    element days;
    if (card_object["Days"].get(days) == simdjson::SUCCESS) {
      if (!days.is_array()) fail(name, place + ".Days", "expected an array of days");
      std::size_t day_index = 0;
      const simdjson::dom::array day_array = days.get_array().value_unsafe();
      for (element day : day_array) {
        const std::string day_place = place + ".Days[" + std::to_string(day_index) + "]";
        if (!day.is_object()) fail(name, day_place, "expected an object");
        check_dates_of(name, day_place, day.get_object().value_unsafe());
        ++day_index;
      }
    }
    ++index;
  }
}

// simdjson says what is wrong but not where; on failure the text is read again by a
// parser that reports line and column.
std::string locate_syntax_error(const std::string& json) {
  try {
    // The callback keeps nothing, so even a large file costs no document.
    const auto discarded = nlohmann::json::parse(
        json, [](int, nlohmann::json::parse_event_t, nlohmann::json&) { return false; });
    static_cast<void>(discarded);
  } catch (const nlohmann::json::parse_error& error) {
    return error.what();
  }
  return {};
}

Variant load(simdjson::padded_string json, const std::string& name) {
  auto document = std::make_shared<Document>();
  if (auto error = document->parser.parse(json).get(document->root)) {
    std::string where = locate_syntax_error(std::string(json.data(), json.size()));
    fail(name, "not valid JSON", where.empty() ? simdjson::error_message(error) : where);
  }
  simdjson::dom::object top;
  simdjson::dom::array cards;
  check_layout(name, document->root, top, cards);
  return Variant(ObjectRef(std::make_shared<JsonCardCollection>(document, top, cards)));
}

}  // namespace

Variant load_cards_file(const std::string& path) {
  simdjson::padded_string json;
  if (auto error = simdjson::padded_string::load(path).get(json))
    throw CardsFileError("cards file " + path + ": cannot be read (" +
                         simdjson::error_message(error) + ")");
  return load(std::move(json), path);
}

Variant load_cards_json(std::string json, const std::string& name) {
  return load(simdjson::padded_string(json), name);
}

}  // namespace zorvat::cli
