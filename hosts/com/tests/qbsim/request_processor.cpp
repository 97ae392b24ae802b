#include "request_processor.h"

#include <olectl.h>

#include "automation.h"
#include "registration.h"
#include "request_processor_idl.h"
#include "request_schema.h"
#include "session_manager.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::qbsim {

// {4E8B2C17-6A3D-4F90-B1E5-7C2D9A0F3B68}
constexpr CLSID kRequestProcessorClsid = {
    0x4e8b2c17, 0x6a3d, 0x4f90, {0xb1, 0xe5, 0x7c, 0x2d, 0x9a, 0x0f, 0x3b, 0x68}};
constexpr wchar_t kRequestProcessorProgId[] = L"QBXMLRP2.RequestProcessor";

namespace {

using namespace quickbooks;

class RequestProcessor final : public Automation<IRequestProcessor2> {
 public:
  HRESULT STDMETHODCALLTYPE OpenConnection(BSTR app_id, BSTR app_name) override {
    return guarded([&] { transport_.OpenConnection(utf8(app_id), utf8(app_name)); });
  }
  // The connection type is not kept: the simulated QuickBooks is always local.
  HRESULT STDMETHODCALLTYPE OpenConnection2(BSTR app_id, BSTR app_name,
                                            QBXMLRPConnectionType) override {
    return guarded([&] { transport_.OpenConnection(utf8(app_id), utf8(app_name)); });
  }
  HRESULT STDMETHODCALLTYPE BeginSession(BSTR file, QBFileMode mode, BSTR* ticket) override {
    return guarded([&] {
      *ticket = com::make_bstr(transport_.BeginSession(utf8(file), static_cast<OpenMode>(mode)));
    });
  }
  HRESULT STDMETHODCALLTYPE EndSession(BSTR ticket) override {
    return guarded([&] { transport_.EndSession(utf8(ticket)); });
  }
  HRESULT STDMETHODCALLTYPE CloseConnection() override {
    return guarded([&] { transport_.CloseConnection(); });
  }
  HRESULT STDMETHODCALLTYPE ProcessRequest(BSTR ticket, BSTR request, BSTR* response) override {
    return guarded([&] {
      const std::string document = utf8(request);
      const std::string problem = request_schema_problem(document);
      record_request_document(document, problem);
      // QuickBooks says no more than that it could not parse the document.
      if (!problem.empty()) com_failures::raise_failure(com_failures::parse_error());
      *response = com::make_bstr(transport_.ProcessRequest(utf8(ticket), document));
    });
  }
  HRESULT STDMETHODCALLTYPE get_QBXMLVersionsForSession(BSTR ticket,
                                                        SAFEARRAY** versions) override {
    return guarded(
        [&] { *versions = bstr_array(transport_.QBXMLVersionsForSession(utf8(ticket))); });
  }

 private:
  static std::string utf8(BSTR text) { return text != nullptr ? com::bstr_to_utf8(text) : ""; }

  SimulatorQbxmlTransport transport_{simulated_quickbooks()};
};

ClassFactory factory([](REFIID iid, void** object) {
  return make<RequestProcessor>()->QueryInterface(iid, object);
});

}  // namespace

HRESULT request_processor_class_object(REFCLSID clsid, REFIID iid, void** object) {
  if (!IsEqualCLSID(clsid, kRequestProcessorClsid)) return CLASS_E_CLASSNOTAVAILABLE;
  return factory.QueryInterface(iid, object);
}

}  // namespace zorvat::qbsim

// Registers the request processor (a machine with QuickBooks Desktop's own).
STDAPI RegisterRequestProcessor() {
  wchar_t path[MAX_PATH + 1] = {};
  if (GetModuleFileNameW(zorvat::qbsim::server_module(), path, MAX_PATH) == 0)
    return SELFREG_E_CLASS;
  return zorvat::qbsim::register_class(zorvat::qbsim::kRequestProcessorClsid,
                                       zorvat::qbsim::kRequestProcessorProgId, path,
                                       L"Company simulator qbXML request processor")
             ? S_OK
             : SELFREG_E_CLASS;
}

// Takes the request processor away.
STDAPI UnregisterRequestProcessor() {
  zorvat::qbsim::unregister_class(zorvat::qbsim::kRequestProcessorClsid,
                                  zorvat::qbsim::kRequestProcessorProgId);
  return S_OK;
}
