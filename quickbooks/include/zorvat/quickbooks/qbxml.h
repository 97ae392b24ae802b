// qbXML documents: the request sets and responses of the session layer as the XML
// QuickBooks reads and writes. Writers lay documents out one way only (described in
// README.md of this folder); readers accept what the writers produce, refuse
// anything malformed with a zorvat::Error that says what and where, and never read
// past the document.
#pragma once

#include <string>
#include <string_view>

#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

// The number of every error the readers raise: the session manager's own for a
// document it cannot parse.
inline constexpr long kQbxmlParseError = -2147220480;

std::string write_qbxml_request(const RequestSet& request_set);
RequestSet read_qbxml_request(std::string_view xml);

// `answered` is the request set the responses answer, response i answering request
// i; its requests name the response elements and describe the time entries
// returned.
std::string write_qbxml_response(const ResponseSet& responses, const RequestSet& answered);
ResponseSet read_qbxml_response(std::string_view xml);
// Also checks that the document answers `answered`: no more responses than requests,
// each of the kind of its request.
ResponseSet read_qbxml_response(std::string_view xml, const RequestSet& answered);

}  // namespace zorvat::quickbooks
