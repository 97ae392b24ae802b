#include "zorvat/quickbooks/versions.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace zorvat::quickbooks {
namespace {

std::optional<int> number_of(std::string_view digits) {
  // A part of a version is one to four digits, as QuickBooks writes them.
  if (digits.empty() || digits.size() > 4 ||
      digits.find_first_not_of("0123456789") != std::string_view::npos)
    return std::nullopt;
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<QbxmlVersionNumber> parse_qbxml_version(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos) return std::nullopt;
  const std::optional<int> major = number_of(text.substr(0, point));
  const std::optional<int> minor = number_of(text.substr(point + 1));
  if (!major || !minor) return std::nullopt;
  return QbxmlVersionNumber{*major, *minor};
}

std::vector<std::string> versions_for_back_end(const std::vector<std::string>& listed,
                                               QbxmlVersionNumber newest_built) {
  const QbxmlVersionNumber newest = std::min(newest_built, kNewestVersionWritten);
  std::optional<std::size_t> chosen;
  std::optional<QbxmlVersionNumber> chosen_number;
  for (std::size_t index = 0; index < listed.size(); ++index) {
    const std::optional<QbxmlVersionNumber> number = parse_qbxml_version(listed[index]);
    if (!number || *number > newest) continue;
    if (!chosen_number || *number > *chosen_number) {
      chosen = index;
      chosen_number = number;
    }
  }
  if (!chosen) return listed;
  std::vector<std::string> ordered;
  ordered.reserve(listed.size());
  ordered.push_back(listed[*chosen]);
  for (std::size_t index = 0; index < listed.size(); ++index)
    if (index != *chosen) ordered.push_back(listed[index]);
  return ordered;
}

}  // namespace zorvat::quickbooks
