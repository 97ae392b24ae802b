// The Format engine: any pattern with any value either renders or raises a classic
// error (a pattern it does not implement raises 5 as it is parsed); a pattern parsed
// once renders the same as one parsed per call.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "zorvat/error.h"
#include "zorvat/format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto split = input.find('\0');
  const std::string pattern = input.substr(0, split);
  const std::string text = split == std::string::npos ? std::string() : input.substr(split + 1);

  zorvat::Variant value;
  switch (data[0] % 6) {
    case 0:
      value = zorvat::Variant(text);
      break;
    case 1: {
      double number = 0;
      std::memcpy(&number, text.data(), std::min(text.size(), sizeof number));
      value = zorvat::Variant(number);
      break;
    }
    case 2:
      value = zorvat::Variant(static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10)));
      break;
    case 3:
      value = zorvat::Variant(zorvat::Date{std::strtod(text.c_str(), nullptr)});
      break;
    case 4:
      value = zorvat::Variant::null();
      break;
    default:
      value = zorvat::Variant(text.size() % 2 == 0);
      break;
  }
  // A pattern the engine refuses is refused the same way by the one-off call.
  std::optional<zorvat::FormatPattern> refused_or_parsed;
  try {
    refused_or_parsed.emplace(pattern);
  } catch (const zorvat::Error& error) {
    if (error.number() != 5) std::abort();
    try {
      zorvat::format(value, pattern);
    } catch (const zorvat::Error& again) {
      if (again.number() != error.number()) std::abort();
      zorvat::parse_numeric(text);
      return 0;
    }
    std::abort();
  }
  const zorvat::FormatPattern& parsed = *refused_or_parsed;
  std::string once, twice;
  bool raised_once = false, raised_twice = false;
  try {
    once = parsed(value);
  } catch (const zorvat::Error&) {
    raised_once = true;
  }
  try {
    twice = zorvat::format(value, pattern);
  } catch (const zorvat::Error&) {
    raised_twice = true;
  }
  if (raised_once != raised_twice || once != twice) std::abort();
  zorvat::parse_numeric(text);
  return 0;
}
