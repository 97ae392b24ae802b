// The schema check of the request processor's simulator: every qbXML request document is
// validated against qbxml_requests.xsd (a resource of qbsim.dll, written from the
// published qbXML schema) by the platform's own XML library, MSXML 6.0's schema cache
// (XMLSchemaCache60 and DOMDocument60), as QuickBooks validates what it is sent.
#pragma once

#include <string>
#include <string_view>

namespace zorvat::qbsim {

// What the schema check found in `document` (UTF-8): empty when it is valid, otherwise
// the XML library's reason, or why the check could not run.
std::string request_schema_problem(std::string_view document);

}  // namespace zorvat::qbsim
