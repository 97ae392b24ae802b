#include "session_manager.h"

#include <nlohmann/json.hpp>

#include "message_set.h"
#include "responses.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/simulator.h"

namespace zorvat::qbsim {
namespace {

using nlohmann::json;
using namespace quickbooks;

struct SimulatedQuickBooks {
  std::unique_ptr<CompanySimulator> simulator = std::make_unique<CompanySimulator>(Company{});
  json request_sets = json::array();
};

SimulatedQuickBooks& quickbooks() {
  static SimulatedQuickBooks instance;
  return instance;
}

CompanySimulator& simulator() {
  return *quickbooks().simulator;
}

json recorded_calls() {
  json calls = json::array();
  for (const RecordedCall& call : simulator().calls())
    calls.push_back(
        {{"operation", call.operation}, {"arguments", call.arguments}, {"error", call.error}});
  return calls;
}

}  // namespace

ComPtr<DispatchObject> make_session_manager() {
  ComPtr<DispatchObject> manager = DispatchObject::create();
  manager->on(L"OpenConnection", [](const Arguments& arguments, VARIANT*) {
    arguments.expect(2);
    simulator().OpenConnection(arguments.text(0), arguments.text(1));
  });
  manager->on(L"BeginSession", [](const Arguments& arguments, VARIANT*) {
    arguments.expect(2);
    simulator().BeginSession(arguments.text(0), static_cast<OpenMode>(arguments.integer(1)));
  });
  manager->on(L"EndSession", [](const Arguments& arguments, VARIANT*) {
    arguments.expect(0);
    simulator().EndSession();
  });
  manager->on(L"CloseConnection", [](const Arguments& arguments, VARIANT*) {
    arguments.expect(0);
    simulator().CloseConnection();
  });
  manager->on(L"QBXMLVersionsForSession", [](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    const auto versions =
        std::make_shared<std::vector<std::string>>(simulator().QBXMLVersionsForSession());
    ComPtr<DispatchObject> list = DispatchObject::create();
    list->on(L"Count", [versions](const Arguments& count_arguments, VARIANT* count) {
      count_arguments.expect(0);
      return_integer(count, static_cast<std::int32_t>(versions->size()));
    });
    list->on(L"GetAt", [versions](const Arguments& at_arguments, VARIANT* version) {
      at_arguments.expect(1);
      const std::int32_t index = at_arguments.integer(0);
      if (index < 0 || static_cast<std::size_t>(index) >= versions->size())
        raise_runtime(rt::kSubscriptOutOfRange);
      return_text(version, (*versions)[static_cast<std::size_t>(index)]);
    });
    return_object(result, list.Get());
  });
  // The qbXML 1.x session managers' argument list: the version alone, no country.
  manager->on(L"CreateMsgSetRequest", [](const Arguments& arguments, VARIANT* result) {
    arguments.expect(2);
    return_object(result, make_message_set(arguments.integer(0), arguments.integer(1)).Get());
  });
  manager->on(L"DoRequests", [](const Arguments& arguments, VARIANT* result) {
    arguments.expect(1);
    const std::shared_ptr<MessageSet> set = message_set_of(arguments.object(0));
    if (!set) raise_runtime(rt::kTypeMismatch);
    quickbooks().request_sets.push_back(set->record);
    const RequestSet sent = set->to_send();
    const ResponseSet responses = simulator().DoRequests(sent);
    return_object(result, make_response_set(sent, responses).Get());
  });

  manager->on(L"LoadCompany", [](const Arguments& arguments, VARIANT*) {
    arguments.expect(1);
    Company company = parse_company_json(arguments.text(0), "LoadCompany");
    quickbooks().simulator = std::make_unique<CompanySimulator>(std::move(company));
    quickbooks().request_sets = json::array();
  });
  manager->on(L"RecordedRequestSets", [](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_text(result, quickbooks().request_sets.dump());
  });
  manager->on(L"RecordedCalls", [](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_text(result, recorded_calls().dump());
  });
  return manager;
}

}  // namespace zorvat::qbsim
