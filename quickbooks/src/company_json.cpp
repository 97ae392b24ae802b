// Company files described in JSON: every key is known, every value has its type.
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "zorvat/error.h"
#include "zorvat/quickbooks/company.h"

namespace zorvat::quickbooks {
namespace {

constexpr std::string_view kSource = "zorvat.QuickBooksCompany";

using Json = nlohmann::json;

class Reader {
 public:
  explicit Reader(std::string_view origin) : origin_(origin) {}

  [[noreturn]] void fail(std::string_view place, std::string_view problem) const {
    std::string message = origin_;
    if (!place.empty()) message += ": " + std::string(place);
    message += ": " + std::string(problem);
    raise(rt::kInvalidProcedureCall, kSource, message);
  }

  static std::string type_of(const Json& value) {
    const std::string name = value.is_number() ? "number" : value.type_name();
    const bool vowel = std::string_view("aeiou").find(name.front()) != std::string_view::npos;
    return (vowel ? "an " : "a ") + name;
  }

  std::string text(const Json& value, const std::string& place) const {
    if (!value.is_string()) fail(place, "expected a string, found " + type_of(value));
    return value.get<std::string>();
  }
  bool flag(const Json& value, const std::string& place) const {
    if (!value.is_boolean()) fail(place, "expected true or false, found " + type_of(value));
    return value.get<bool>();
  }
  std::vector<std::string> texts(const Json& value, const std::string& place) const {
    if (!value.is_array()) fail(place, "expected a list of strings, found " + type_of(value));
    std::vector<std::string> result;
    for (std::size_t index = 0; index < value.size(); ++index) {
      result.push_back(text(value[index], place + "[" + std::to_string(index) + "]"));
    }
    return result;
  }
  ComFailure failure(const Json& value, const std::string& place) const {
    if (!value.is_object()) fail(place, "expected an object, found " + type_of(value));
    ComFailure result;
    bool has_number = false;
    for (const auto& [key, member] : value.items()) {
      const std::string member_place = place + "." + key;
      if (key == "number") {
        if (!member.is_number_integer())
          fail(member_place, "expected a whole number, found " + type_of(member));
        const auto number = member.get<std::int64_t>();
        if (number >= 0 || number < -2147483648LL) {
          fail(member_place, "a session-manager failure has a negative 32-bit number");
        }
        result.number = static_cast<long>(number);
        has_number = true;
      } else if (key == "description") {
        result.description = text(member, member_place);
      } else {
        fail(member_place, "unknown key (known: number, description)");
      }
    }
    if (!has_number) fail(place, "\"number\" is missing");
    return result;
  }

 private:
  std::string origin_;
};

}  // namespace

Company parse_company_json(std::string_view json, std::string_view origin) {
  const Reader reader(origin);
  Json document;
  try {
    document = Json::parse(json.begin(), json.end());
  } catch (const Json::parse_error& error) {
    reader.fail("", "not valid JSON (" + std::string(error.what()) + ")");
  }
  if (!document.is_object())
    reader.fail("", "expected an object, found " + Reader::type_of(document));

  Company company;
  using Field = std::function<void(const Json&, const std::string&)>;
  const std::map<std::string, Field, std::less<>> fields = {
      {"company_file",
       [&](const Json& v, const std::string& p) { company.company_file = reader.text(v, p); }},
      {"qbxml_versions",
       [&](const Json& v, const std::string& p) { company.qbxml_versions = reader.texts(v, p); }},
      {"time_tracking",
       [&](const Json& v, const std::string& p) { company.time_tracking = reader.flag(v, p); }},
      {"payroll_items",
       [&](const Json& v, const std::string& p) { company.payroll_items = reader.texts(v, p); }},
      {"employees",
       [&](const Json& v, const std::string& p) { company.employees = reader.texts(v, p); }},
      {"employee_names_last_first",
       [&](const Json& v, const std::string& p) {
         company.employee_names_last_first = reader.flag(v, p);
       }},
      {"session_manager_installed",
       [&](const Json& v, const std::string& p) {
         company.session_manager_installed = reader.flag(v, p);
       }},
      {"open_connection_failure",
       [&](const Json& v, const std::string& p) {
         company.open_connection_failure = reader.failure(v, p);
       }},
      {"begin_session_failure",
       [&](const Json& v, const std::string& p) {
         company.begin_session_failure = reader.failure(v, p);
       }},
  };
  for (const auto& [key, value] : document.items()) {
    const auto field = fields.find(key);
    if (field == fields.end()) {
      std::string known;
      for (const auto& entry : fields) known += (known.empty() ? "" : ", ") + entry.first;
      reader.fail("\"" + key + "\"", "unknown key (known: " + known + ")");
    }
    field->second(value, "\"" + key + "\"");
  }
  return company;
}

Company load_company_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) raise(rt::kFileNotFound, kSource, path + ": the company file cannot be opened");
  std::ostringstream text;
  text << file.rdbuf();
  if (file.bad()) raise(rt::kDeviceIoError, kSource, path + ": the company file cannot be read");
  return parse_company_json(text.str(), path);
}

}  // namespace zorvat::quickbooks
