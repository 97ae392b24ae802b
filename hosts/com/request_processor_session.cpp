#include "request_processor_session.h"

#include "late_bound.h"
#include "zorvat/quickbooks/versions.h"

namespace zorvat::com {
namespace {

// QBXMLRPConnectionType: QuickBooks Desktop on this machine.
constexpr std::int32_t kLocalQuickBooksDesktop = 1;

}  // namespace

void RequestProcessorTransport::OpenConnection(std::string_view app_id, std::string_view app_name) {
  const Argument id = Argument::text(app_id);
  const Argument name = Argument::text(app_name);
  const Argument connection = Argument::long_integer(kLocalQuickBooksDesktop);
  LateBound(processor_).call(L"OpenConnection2", {&id, &name, &connection});
}

std::string RequestProcessorTransport::BeginSession(std::string_view company_file,
                                                    quickbooks::OpenMode mode) {
  const Argument file = Argument::text(company_file);
  // QBFileMode numbers the open modes as ENOpenMode does.
  const Argument open_mode = Argument::long_integer(static_cast<std::int32_t>(mode));
  return text_of(LateBound(processor_).call(L"BeginSession", {&file, &open_mode}));
}

std::string RequestProcessorTransport::ProcessRequest(std::string_view ticket,
                                                      std::string_view request_xml) {
  const Argument session = Argument::text(ticket);
  const Argument request = Argument::text(request_xml);
  return text_of(LateBound(processor_).call(L"ProcessRequest", {&session, &request}));
}

std::vector<std::string> RequestProcessorTransport::QBXMLVersionsForSession(
    std::string_view ticket) {
  const Argument session = Argument::text(ticket);
  return quickbooks::versions_for_back_end(
      texts_of(LateBound(processor_).call(L"QBXMLVersionsForSession", {&session})),
      quickbooks::kNewestVersionWritten);
}

void RequestProcessorTransport::EndSession(std::string_view ticket) {
  const Argument session = Argument::text(ticket);
  LateBound(processor_).call(L"EndSession", {&session});
}

void RequestProcessorTransport::CloseConnection() {
  LateBound(processor_).call(L"CloseConnection");
}

std::unique_ptr<quickbooks::SessionManager> make_request_processor_session(
    ComPtr<IDispatch> processor) {
  return std::make_unique<quickbooks::QbxmlSessionManager>(
      std::make_unique<RequestProcessorTransport>(std::move(processor)));
}

}  // namespace zorvat::com
