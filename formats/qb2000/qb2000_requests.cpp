#include "qb2000/qb2000_requests.h"

#include "zorvat/error.h"

namespace zorvat::formats::qb2000 {

quickbooks::RequestSet new_request_set(const QbxmlVersion& version) {
  quickbooks::RequestSet request_set;
  request_set.major_version = version.major;
  request_set.minor_version = version.minor;
  request_set.on_error = quickbooks::OnError::Continue;
  return request_set;
}

const quickbooks::Response& first_response(const quickbooks::ResponseSet& responses) {
  if (responses.responses.empty()) raise_runtime(rt::kSubscriptOutOfRange);
  return responses.responses.front();
}

std::vector<std::string> split_text(std::string_view text, char separator) {
  std::vector<std::string> parts;
  if (text.empty()) return parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t found = text.find(separator, start);
    if (found == std::string_view::npos) {
      parts.emplace_back(text.substr(start));
      return parts;
    }
    parts.emplace_back(text.substr(start, found - start));
    start = found + 1;
  }
}

NameParts name_parts(std::string_view text, char separator) {
  std::vector<std::string> parts = split_text(text, separator);
  if (parts.size() < 3) raise_runtime(rt::kSubscriptOutOfRange);
  return {std::move(parts[0]), std::move(parts[1]), std::move(parts[2])};
}

std::string trim_spaces(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  const std::size_t last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

}  // namespace zorvat::formats::qb2000
