// The qbXML readers: any bytes are either read or refused with a zorvat::Error;
// nothing else may happen. A request document that is read is written and read
// again to the same request set.
#include <cstdint>
#include <string>

#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string xml(reinterpret_cast<const char*>(data), size);
  try {
    const zorvat::quickbooks::ResponseSet responses = zorvat::quickbooks::read_qbxml_response(xml);
    for (const auto& response : responses.responses) {
      if (response.detail && response.detail->empty()) __builtin_trap();
    }
  } catch (const zorvat::Error&) {
  }
  try {
    const zorvat::quickbooks::RequestSet request_set = zorvat::quickbooks::read_qbxml_request(xml);
    const std::string written = zorvat::quickbooks::write_qbxml_request(request_set);
    if (zorvat::quickbooks::read_qbxml_request(written) != request_set) __builtin_trap();
  } catch (const zorvat::Error&) {
  }
  return 0;
}
