// The failures of QuickBooks' session manager the simulator reproduces: COM result
// codes (negative as a signed number) with the descriptions QuickBooks gives them.
#pragma once

#include "zorvat/quickbooks/company.h"

namespace zorvat::quickbooks::com_failures {

// 0x80040400: a request document that is not well-formed qbXML.
inline constexpr long kParseError = -2147220480;
// 0x80040402: a call the session manager did not expect in its state (the
// description says which).
inline constexpr long kUnexpected = -2147220478;
// 0x80040408
inline constexpr long kCouldNotStart = -2147220472;
// 0x8004040A: BeginSession named another company file than the one open.
inline constexpr long kDifferentCompanyFile = -2147220470;
// 0x8004040D: no session (or another one) behind the call.
inline constexpr long kInvalidTicket = -2147220467;
// 0x80040420
inline constexpr long kDeniedAccess = -2147220448;
// 0x80040423: a message set of a qbXML version (or a country's edition) the session
// manager does not build.
inline constexpr long kUnsupportedVersion = -2147220445;

ComFailure parse_error();
ComFailure could_not_start();
ComFailure different_company_file();
ComFailure invalid_ticket();
ComFailure denied_access();
ComFailure unsupported_version();
ComFailure unexpected(std::string_view what);

// Raises the failure as a zorvat::Error with the session manager's source.
[[noreturn]] void raise_failure(const ComFailure& failure);

// The source of every error the simulated session manager raises.
inline constexpr std::string_view kSource = "zorvat.QuickBooksSimulator";

}  // namespace zorvat::quickbooks::com_failures
