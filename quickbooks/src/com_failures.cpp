#include "zorvat/quickbooks/com_failures.h"

#include "zorvat/error.h"

namespace zorvat::quickbooks::com_failures {

ComFailure parse_error() {
  return {kParseError, "QuickBooks found an error when parsing the provided XML text stream."};
}
ComFailure could_not_start() {
  return {kCouldNotStart, "Could not start QuickBooks."};
}
ComFailure different_company_file() {
  return {kDifferentCompanyFile,
          "A QuickBooks company data file is already open and it is different from the one "
          "requested."};
}
ComFailure invalid_ticket() {
  return {kInvalidTicket, "The ticket parameter is invalid."};
}
ComFailure denied_access() {
  return {kDeniedAccess, "The QuickBooks user has denied access."};
}
ComFailure unsupported_version() {
  return {kUnsupportedVersion,
          "The version of QBXML that was requested is not supported or is unknown."};
}
ComFailure unexpected(std::string_view what) {
  return {kUnexpected, "Unexpected error: " + std::string(what)};
}

void raise_failure(const ComFailure& failure) {
  raise(failure.number, kSource, failure.description);
}

}  // namespace zorvat::quickbooks::com_failures
