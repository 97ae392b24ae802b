// What the QuickBooks export's procedures share: the request sets they create, the
// one response they read of each, and the text rules of the lists they build.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qb2000/qb2000.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::formats::qb2000 {

// A new request set for the session's qbXML version whose requests go on when one
// of them fails.
quickbooks::RequestSet new_request_set(const QbxmlVersion& version);

// Response 0 of a request set's responses, the only one the export examines; 9
// "Subscript out of range" when there is none.
const quickbooks::Response& first_response(const quickbooks::ResponseSet& responses);

// Splits at every `separator`; an empty text has no parts at all, as the settings
// string has no fields when empty.
std::vector<std::string> split_text(std::string_view text, char separator);

// An employee's three name parts, kept together in one text: "First,MI,Last" (the
// employee key of the time entries) or "First:MI:Last" (an entry of the
// missing-employee list).
struct NameParts {
  std::string first;
  std::string middle;
  std::string last;
};
// The first three parts of `text` split at `separator`; 9 "Subscript out of range"
// when it has fewer.
NameParts name_parts(std::string_view text, char separator);

// The text without its leading and trailing spaces (other blanks stay).
std::string trim_spaces(std::string_view text);

}  // namespace zorvat::formats::qb2000
