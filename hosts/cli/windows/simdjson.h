// The part of simdjson's DOM interface the cards reader uses (json_card_loader.cpp), over
// nlohmann-json, for builds that have simdjson's header but not its compiled parser:
// MinGW, for which Debian ships no simdjson library. Values keep the types simdjson
// gives them: integers in the signed 64-bit range are INT64, larger ones UINT64,
// every other number DOUBLE; object members keep their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>

namespace simdjson {

// What the parser may read past the end of its text (nothing, here).
constexpr std::size_t SIMDJSON_PADDING = 64;

enum error_code { SUCCESS = 0, TAPE_ERROR = 3, INCORRECT_TYPE = 16 };

template <class T>
class simdjson_result {
 public:
  simdjson_result(T value, error_code error = SUCCESS) : value_(value), error_(error) {}
  error_code get(T& value) const {
    if (error_ == SUCCESS) value = value_;
    return error_;
  }
  T value_unsafe() const { return value_; }

 private:
  T value_;
  error_code error_;
};

namespace dom {

using Json = nlohmann::ordered_json;

enum class element_type { ARRAY, OBJECT, INT64, UINT64, DOUBLE, STRING, BOOL, NULL_VALUE };

class array;
class object;

class element {
 public:
  element() = default;
  explicit element(const Json* value) : value_(value) {}

  element_type type() const {
    switch (value_->type()) {
      case Json::value_t::array:
        return element_type::ARRAY;
      case Json::value_t::object:
        return element_type::OBJECT;
      case Json::value_t::number_integer:
        return element_type::INT64;
      case Json::value_t::number_unsigned:
        return value_->get<std::uint64_t>() <= static_cast<std::uint64_t>(INT64_MAX)
                   ? element_type::INT64
                   : element_type::UINT64;
      case Json::value_t::number_float:
        return element_type::DOUBLE;
      case Json::value_t::string:
        return element_type::STRING;
      case Json::value_t::boolean:
        return element_type::BOOL;
      default:
        return element_type::NULL_VALUE;
    }
  }
  bool is_object() const { return value_->is_object(); }
  bool is_array() const { return value_->is_array(); }
  bool is_string() const { return value_->is_string(); }

  simdjson_result<std::int64_t> get_int64() const {
    if (value_->is_number_unsigned())
      return static_cast<std::int64_t>(value_->get<std::uint64_t>());
    return value_->get<std::int64_t>();
  }
  simdjson_result<std::uint64_t> get_uint64() const { return value_->get<std::uint64_t>(); }
  simdjson_result<double> get_double() const { return value_->get<double>(); }
  simdjson_result<bool> get_bool() const { return value_->get<bool>(); }
  simdjson_result<std::string_view> get_string() const {
    return std::string_view(value_->get_ref<const std::string&>());
  }
  inline simdjson_result<array> get_array() const;
  inline simdjson_result<object> get_object() const;

 private:
  const Json* value_ = nullptr;
};

class array {
 public:
  class iterator {
   public:
    explicit iterator(Json::const_iterator at) : at_(at) {}
    element operator*() const { return element(&*at_); }
    iterator& operator++() {
      ++at_;
      return *this;
    }
    bool operator!=(const iterator& other) const { return at_ != other.at_; }

   private:
    Json::const_iterator at_;
  };

  array() = default;
  explicit array(const Json* value) : value_(value) {}
  std::size_t size() const { return value_->size(); }
  iterator begin() const { return iterator(value_->cbegin()); }
  iterator end() const { return iterator(value_->cend()); }

 private:
  const Json* value_ = nullptr;
};

struct key_value_pair {
  std::string_view key;
  element value;
};

class object {
 public:
  class iterator {
   public:
    explicit iterator(Json::const_iterator at) : at_(at) {}
    key_value_pair operator*() const {
      return {std::string_view(at_.key()), element(&at_.value())};
    }
    iterator& operator++() {
      ++at_;
      return *this;
    }
    bool operator!=(const iterator& other) const { return at_ != other.at_; }

   private:
    Json::const_iterator at_;
  };

  object() = default;
  explicit object(const Json* value) : value_(value) {}
  std::size_t size() const { return value_->size(); }
  iterator begin() const { return iterator(value_->cbegin()); }
  iterator end() const { return iterator(value_->cend()); }

 private:
  const Json* value_ = nullptr;
};

simdjson_result<array> element::get_array() const {
  return array(value_);
}
simdjson_result<object> element::get_object() const {
  return object(value_);
}

// Parses one document; the elements it hands out live until the next parse.
class parser {
 public:
  simdjson_result<element> parse(const char* json, std::size_t length, bool = true) {
    document_ = Json::parse(json, json + length, nullptr, false);
    if (document_.is_discarded()) return {element(), TAPE_ERROR};
    return element(&document_);
  }

 private:
  Json document_;
};

}  // namespace dom
}  // namespace simdjson
