#include "zorvat/quickbooks/simulator.h"

#include "company_answers.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/text.h"

namespace zorvat::quickbooks {
namespace {

using com_failures::raise_failure;

// Windows paths: letter case and the kind of slash do not tell two files apart.
std::string path_key(std::string_view path) {
  std::string key = to_lower_ascii(path);
  for (char& c : key) {
    if (c == '/') c = '\\';
  }
  return key;
}

// An empty name asks for the company file open in QuickBooks; an empty configured
// name stands for whatever file is asked for.
bool names_company_file(const Company& company, std::string_view requested) {
  return requested.empty() || company.company_file.empty() ||
         path_key(requested) == path_key(company.company_file);
}

// Tickets look like the GUIDs QuickBooks hands out, numbered by session.
std::string ticket_for(long session) {
  std::string number = std::to_string(session);
  if (number.size() < 12) number.insert(0, 12 - number.size(), '0');
  return "{5E551000-0000-4000-8000-" + number + "}";
}

}  // namespace

CompanySimulator::CompanySimulator(Company company) : company_(std::move(company)) {}

template <class Body>
decltype(auto) CompanySimulator::recorded(RecordedCall call, Body&& body) {
  calls_.push_back(std::move(call));
  const std::size_t index = calls_.size() - 1;
  try {
    return std::forward<Body>(body)();
  } catch (const Error& error) {
    calls_[index].error = error.number();
    throw;
  }
}

void CompanySimulator::OpenConnection(std::string_view app_id, std::string_view app_name) {
  recorded({"OpenConnection", {std::string(app_id), std::string(app_name)}, {}, 0}, [&] {
    if (state_ != State::Closed)
      raise_failure(com_failures::unexpected("a connection is already open."));
    if (company_.open_connection_failure) raise_failure(*company_.open_connection_failure);
    state_ = State::Connected;
  });
}

std::string CompanySimulator::BeginSession(std::string_view company_file, OpenMode mode) {
  RecordedCall call{
      "BeginSession", {std::string(company_file), std::to_string(static_cast<int>(mode))}, {}, 0};
  return recorded(std::move(call), [&] {
    if (state_ == State::Closed) raise_failure(com_failures::unexpected("no connection is open."));
    if (state_ == State::InSession) {
      raise_failure(com_failures::unexpected("a session is already in progress."));
    }
    if (company_.begin_session_failure) raise_failure(*company_.begin_session_failure);
    if (!names_company_file(company_, company_file)) {
      raise_failure(com_failures::different_company_file());
    }
    state_ = State::InSession;
    ticket_ = ticket_for(++sessions_begun_);
    return ticket_;
  });
}

void CompanySimulator::EndSession() {
  recorded({"EndSession", {}, {}, 0}, [&] {
    // Ending a session that never began (or has ended) is let go: a client's
    // teardown after a failed BeginSession must not hide why the session failed.
    if (state_ != State::InSession) return;
    state_ = State::Connected;
    ticket_.clear();
  });
}

void CompanySimulator::CloseConnection() {
  recorded({"CloseConnection", {}, {}, 0}, [&] {
    // Closing a connection that is not open is let go like ending a session that is
    // not in progress. Closing the connection ends a session still in progress.
    state_ = State::Closed;
    ticket_.clear();
  });
}

std::vector<std::string> CompanySimulator::QBXMLVersionsForSession() {
  return recorded({"QBXMLVersionsForSession", {}, {}, 0}, [&] {
    if (state_ != State::InSession) raise_failure(com_failures::invalid_ticket());
    return company_.qbxml_versions;
  });
}

ResponseSet CompanySimulator::DoRequests(const RequestSet& request_set) {
  return recorded({"DoRequests", {}, request_set, 0}, [&] {
    if (state_ != State::InSession) raise_failure(com_failures::invalid_ticket());
    // A request the schema does not allow (a field over its length) makes the whole
    // set unreadable to QuickBooks: nothing of it is answered.
    for (const Request& request : request_set.requests)
      if (field_limit_problem(request)) raise_failure(com_failures::parse_error());
    const CompanyEnds before = ends_of(company_);
    ResponseSet answers;
    for (const Request& request : request_set.requests) {
      answers.responses.push_back(answer_request(company_, request));
      if (answers.responses.back().status_severity != "Error") continue;
      // Stop leaves what the earlier requests did; rollback undoes it. Neither
      // answers the requests after the failed one.
      if (request_set.on_error == OnError::Continue) continue;
      if (request_set.on_error == OnError::Rollback) undo_additions_since(company_, before);
      break;
    }
    return answers;
  });
}

void CompanySimulator::check_ticket(std::string_view ticket) const {
  if (state_ != State::InSession || ticket != ticket_)
    raise_failure(com_failures::invalid_ticket());
}

std::vector<RequestSet> CompanySimulator::request_sets() const {
  std::vector<RequestSet> sets;
  for (const RecordedCall& call : calls_) {
    if (call.request_set) sets.push_back(*call.request_set);
  }
  return sets;
}

}  // namespace zorvat::quickbooks
