// What the simulated company answers to each request, and how a request set's
// OnError attribute decides which requests are answered.
#include <gtest/gtest.h>

#include "zorvat/quickbooks/simulator.h"

namespace zorvat::quickbooks {
namespace {

const std::string kOk = "Status OK";
const std::string kNoMatch = "A query request did not find a matching object in QuickBooks";

std::vector<ReturnedObject> named(std::initializer_list<std::string> names) {
  std::vector<ReturnedObject> objects;
  for (const std::string& name : names) objects.push_back(ReturnedObject{name});
  return objects;
}

TimeTrackingAdd entry(std::string employee, Duration duration, std::string item) {
  TimeTrackingAdd add;
  add.entity_full_name = std::move(employee);
  add.duration = duration;
  add.txn_date = Date::from_civil(2004, 3, 1);
  add.payroll_item_wage_full_name = std::move(item);
  add.notes = "HLS - " + add.payroll_item_wage_full_name;
  return add;
}

class SimulatorRequests : public testing::Test {
 protected:
  SimulatorRequests() {
    company.payroll_items = {"Regular Hourly Rate", "Overtime Hourly Rate", "Sick Hourly Rate"};
    company.employees = {"Doe, Jane", "John Q Public"};
  }

  // Sends the requests as one set in a session of their own and returns the answers.
  ResponseSet send(std::vector<Request> requests, OnError on_error = OnError::Continue) {
    if (!simulator) {
      simulator.emplace(company);
      simulator->OpenConnection("Horalis", "Horalis");
      simulator->BeginSession("", OpenMode::DoNotCare);
    }
    return simulator->DoRequests(RequestSet{1, 0, on_error, std::move(requests)});
  }
  Response send_one(Request request) {
    const ResponseSet answers = send({std::move(request)});
    EXPECT_EQ(answers.responses.size(), 1u);
    return answers.responses.at(0);
  }

  Company company;
  std::optional<CompanySimulator> simulator;
};

TEST_F(SimulatorRequests, PayrollItemsUpToMaxReturnedInCompanyOrder) {
  EXPECT_EQ(send_one(PayrollItemWageQuery{2}),
            (Response{0, "Info", kOk, named({"Regular Hourly Rate", "Overtime Hourly Rate"})}));
}

TEST_F(SimulatorRequests, PayrollItemsWithoutALimitAreAllReturned) {
  EXPECT_EQ(send_one(PayrollItemWageQuery{0}),
            (Response{0, "Info", kOk,
                      named({"Regular Hourly Rate", "Overtime Hourly Rate", "Sick Hourly Rate"})}));
  EXPECT_EQ(send_one(PayrollItemWageQuery{40}).detail->size(), 3u);
}

TEST_F(SimulatorRequests, NoPayrollItemsIsANoMatchWithoutObjects) {
  company.payroll_items.clear();
  EXPECT_EQ(send_one(PayrollItemWageQuery{40}), (Response{1, "Info", kNoMatch, std::nullopt}));
}

TEST_F(SimulatorRequests, ANegativeMaxReturnedIsAnInvalidValue) {
  EXPECT_EQ(send_one(PayrollItemWageQuery{-1}),
            (Response{3210, "Error", "The \"MaxReturned\" field has an invalid value \"-1\".",
                      std::nullopt}));
}

TEST_F(SimulatorRequests, EmployeesAreAllReturnedAsTheCompanyHoldsThem) {
  EXPECT_EQ(send_one(EmployeeQuery{}),
            (Response{0, "Info", kOk, named({"Doe, Jane", "John Q Public"})}));
}

TEST_F(SimulatorRequests, NoEmployeesIsANoMatchWithoutObjects) {
  company.employees.clear();
  EXPECT_EQ(send_one(EmployeeQuery{}), (Response{1, "Info", kNoMatch, std::nullopt}));
}

TEST_F(SimulatorRequests, AnAddedEmployeeIsNamedFirstMiddleLast) {
  EXPECT_EQ(send_one(EmployeeAdd{"Mary", "K", "Smith"}),
            (Response{0, "Info", kOk, named({"Mary K Smith"})}));
  EXPECT_EQ(send_one(EmployeeAdd{"Bob", "", "Jones"}),
            (Response{0, "Info", kOk, named({"Bob Jones"})}));
  EXPECT_EQ(simulator->company().employees,
            (std::vector<std::string>{"Doe, Jane", "John Q Public", "Mary K Smith", "Bob Jones"}));
  EXPECT_EQ(send_one(EmployeeQuery{}).detail->back(), ReturnedObject{"Bob Jones"});
}

TEST_F(SimulatorRequests, ALastFirstCompanyNamesAddedEmployeesLastFirst) {
  company.employee_names_last_first = true;
  EXPECT_EQ(send_one(EmployeeAdd{"Mary", "K", "Smith"}).detail, named({"Smith, Mary K"}));
  EXPECT_EQ(send_one(EmployeeAdd{"Bob", "", "Jones"}).detail, named({"Jones, Bob"}));
}

TEST_F(SimulatorRequests, AnEmployeeNameInUseIsRefusedWithoutObjects) {
  EXPECT_EQ(
      send_one(EmployeeAdd{"JOHN", "q", "public"}),
      (Response{3100, "Error", "The name \"JOHN q public\" of the list element is already in use.",
                std::nullopt}));
  EXPECT_EQ(simulator->company().employees.size(), 2u);
}

TEST_F(SimulatorRequests, AnEmployeeWithoutANameIsRefused) {
  EXPECT_EQ(send_one(EmployeeAdd{}),
            (Response{3150, "Error", "There is a missing element: \"Name\".", std::nullopt}));
}

TEST_F(SimulatorRequests, ATimeEntryForAKnownEmployeeAndItemIsAccepted) {
  const TimeTrackingAdd add = entry("doe, jane", {8, 30, 0}, "Regular Hourly Rate");
  EXPECT_EQ(send_one(add), (Response{0, "Info", kOk, named({""})}));
  EXPECT_EQ(simulator->company().time_entries, std::vector<TimeTrackingAdd>{add});
}

TEST_F(SimulatorRequests, TimeTrackingOffRefusesEveryEntryWith3250) {
  company.time_tracking = false;
  const Response expected{
      3250, "Error", "This feature is not enabled or not available in this version of QuickBooks.",
      std::nullopt};
  EXPECT_EQ(send_one(entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate")), expected);
  // Even an entry that would fail for other reasons.
  EXPECT_EQ(send_one(entry("Nobody", {-8, 0, 0}, "Nothing")), expected);
  EXPECT_TRUE(simulator->company().time_entries.empty());
}

TEST_F(SimulatorRequests, AnUnknownEmployeeIsAnInvalidReference) {
  EXPECT_EQ(
      send_one(entry("Jane,,Doe", {8, 0, 0}, "Regular Hourly Rate")),
      (Response{3140, "Error",
                "There is an invalid reference to QuickBooks Entity \"Jane,,Doe\" in the time "
                "tracking transaction.",
                std::nullopt}));
}

TEST_F(SimulatorRequests, AnUnknownPayrollItemIsAnInvalidReference) {
  EXPECT_EQ(
      send_one(entry("Doe, Jane", {8, 0, 0}, "Bonus")),
      (Response{3140, "Error",
                "There is an invalid reference to QuickBooks PayrollItemWage \"Bonus\" in the "
                "time tracking transaction.",
                std::nullopt}));
}

TEST_F(SimulatorRequests, ANegativeHourCountCannotBeConverted) {
  EXPECT_EQ(send_one(entry("Doe, Jane", {-8, 30, 0}, "Regular Hourly Rate")),
            (Response{3035, "Error",
                      "There was an error when converting the time interval \"-PT8H30M0S\" in the "
                      "field \"Duration\".",
                      std::nullopt}));
}

TEST_F(SimulatorRequests, AZeroDurationCannotBeSaved) {
  EXPECT_EQ(send_one(entry("Doe, Jane", {0, 0, 0}, "Regular Hourly Rate")),
            (Response{3180, "Error",
                      "There was an error when saving a time tracking transaction: its duration is "
                      "zero.",
                      std::nullopt}));
  // Zero hours with minutes is time worked.
  EXPECT_EQ(send_one(entry("Doe, Jane", {0, 45, 0}, "Regular Hourly Rate")).status_code, 0);
}

TEST_F(SimulatorRequests, BillableTimeNeedsACustomer) {
  TimeTrackingAdd add = entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate");
  add.is_billable = true;
  EXPECT_EQ(send_one(add), (Response{3150, "Error", "There is a missing element: \"CustomerRef\".",
                                     std::nullopt}));
}

TEST_F(SimulatorRequests, ContinueOnErrorAnswersEveryRequest) {
  const ResponseSet answers =
      send({entry("Nobody", {8, 0, 0}, "Regular Hourly Rate"),
            entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate"), EmployeeAdd{"Ann", "", "Lee"}},
           OnError::Continue);
  ASSERT_EQ(answers.responses.size(), 3u);
  EXPECT_EQ(answers.responses[0].status_code, 3140);
  EXPECT_EQ(answers.responses[1].status_code, 0);
  EXPECT_EQ(answers.responses[2].status_code, 0);
  EXPECT_EQ(simulator->company().time_entries.size(), 1u);
}

TEST_F(SimulatorRequests, StopOnErrorAnswersUpToTheFirstFailure) {
  const ResponseSet answers =
      send({EmployeeAdd{"Ann", "", "Lee"}, entry("Nobody", {8, 0, 0}, "Regular Hourly Rate"),
            EmployeeAdd{"Tom", "", "Ray"}},
           OnError::Stop);
  ASSERT_EQ(answers.responses.size(), 2u);
  EXPECT_EQ(answers.responses[1].status_code, 3140);
  // What came before the failure stays.
  EXPECT_EQ(simulator->company().employees.back(), "Ann Lee");
  EXPECT_EQ(simulator->company().employees.size(), 3u);
}

TEST_F(SimulatorRequests, RollbackOnErrorUndoesTheWholeSet) {
  const ResponseSet answers =
      send({EmployeeAdd{"Ann", "", "Lee"}, entry("Ann Lee", {8, 0, 0}, "Regular Hourly Rate"),
            entry("Nobody", {8, 0, 0}, "Regular Hourly Rate"), EmployeeAdd{"Tom", "", "Ray"}},
           OnError::Rollback);
  ASSERT_EQ(answers.responses.size(), 3u);
  EXPECT_EQ(answers.responses[0].status_code, 0);
  EXPECT_EQ(answers.responses[1].status_code, 0);
  EXPECT_EQ(answers.responses[2].status_code, 3140);
  EXPECT_EQ(simulator->company().employees,
            (std::vector<std::string>{"Doe, Jane", "John Q Public"}));
  EXPECT_TRUE(simulator->company().time_entries.empty());
}

TEST_F(SimulatorRequests, RollbackKeepsWhatEarlierSetsAdded) {
  send({EmployeeAdd{"Ann", "", "Lee"}, entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate")});
  const ResponseSet answers =
      send({EmployeeAdd{"Tom", "", "Ray"}, entry("Tom Ray", {4, 30, 0}, "Overtime Hourly Rate"),
            entry("Nobody", {8, 0, 0}, "Regular Hourly Rate")},
           OnError::Rollback);
  ASSERT_EQ(answers.responses.size(), 3u);
  EXPECT_EQ(answers.responses[0], (Response{0, "Info", kOk, named({"Tom Ray"})}));
  EXPECT_EQ(answers.responses[1], (Response{0, "Info", kOk, named({""})}));
  EXPECT_EQ(answers.responses[2].status_code, 3140);
  // The company is as the first set left it: its employee and its entry stay, the
  // rolled-back set's employee and entry are gone.
  EXPECT_EQ(simulator->company().employees,
            (std::vector<std::string>{"Doe, Jane", "John Q Public", "Ann Lee"}));
  EXPECT_EQ(simulator->company().time_entries,
            std::vector<TimeTrackingAdd>{entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate")});
}

TEST_F(SimulatorRequests, WhatARolledBackSetAddedIsUnknownToTheNextSet) {
  send({EmployeeAdd{"Tom", "", "Ray"}, entry("Nobody", {8, 0, 0}, "Regular Hourly Rate")},
       OnError::Rollback);
  // The employee it added is no longer there to refer to, and its name is free again.
  EXPECT_EQ(send_one(entry("Tom Ray", {8, 0, 0}, "Regular Hourly Rate")),
            (Response{3140, "Error",
                      "There is an invalid reference to QuickBooks Entity \"Tom Ray\" in the time "
                      "tracking transaction.",
                      std::nullopt}));
  EXPECT_EQ(send_one(EmployeeAdd{"Tom", "", "Ray"}),
            (Response{0, "Info", kOk, named({"Tom Ray"})}));
  EXPECT_EQ(send_one(EmployeeQuery{}),
            (Response{0, "Info", kOk, named({"Doe, Jane", "John Q Public", "Tom Ray"})}));
}

TEST_F(SimulatorRequests, WhatASetAddedIsSeenByTheNextSet) {
  send({EmployeeAdd{"Ann", "", "Lee"}}, OnError::Stop);
  // Names compare without regard to case.
  EXPECT_EQ(send_one(entry("ANN LEE", {7, 15, 0}, "Sick Hourly Rate")),
            (Response{0, "Info", kOk, named({""})}));
  EXPECT_EQ(send_one(EmployeeAdd{"ann", "", "lee"}),
            (Response{3100, "Error", "The name \"ann lee\" of the list element is already in use.",
                      std::nullopt}));
  EXPECT_EQ(send_one(EmployeeQuery{}),
            (Response{0, "Info", kOk, named({"Doe, Jane", "John Q Public", "Ann Lee"})}));
  EXPECT_EQ(simulator->company().time_entries,
            std::vector<TimeTrackingAdd>{entry("ANN LEE", {7, 15, 0}, "Sick Hourly Rate")});
}

TEST_F(SimulatorRequests, EntriesKeepTheirOrderAroundARolledBackSet) {
  const TimeTrackingAdd first = entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate");
  const TimeTrackingAdd undone = entry("John Q Public", {2, 0, 0}, "Overtime Hourly Rate");
  const TimeTrackingAdd last = entry("John Q Public", {6, 45, 0}, "Sick Hourly Rate");
  send({first}, OnError::Rollback);
  send({undone, undone, entry("Doe, Jane", {0, 0, 0}, "Regular Hourly Rate")}, OnError::Rollback);
  send({last}, OnError::Rollback);
  EXPECT_EQ(simulator->company().time_entries, (std::vector<TimeTrackingAdd>{first, last}));
}

TEST_F(SimulatorRequests, ARollbackSetWithoutAFailureKeepsEverything) {
  const ResponseSet answers =
      send({EmployeeAdd{"Ann", "", "Lee"}, entry("Ann Lee", {8, 0, 0}, "Regular Hourly Rate")},
           OnError::Rollback);
  ASSERT_EQ(answers.responses.size(), 2u);
  EXPECT_EQ(simulator->company().employees,
            (std::vector<std::string>{"Doe, Jane", "John Q Public", "Ann Lee"}));
  EXPECT_EQ(simulator->company().time_entries,
            std::vector<TimeTrackingAdd>{entry("Ann Lee", {8, 0, 0}, "Regular Hourly Rate")});
}

TEST_F(SimulatorRequests, ARollbackSetFailingFirstChangesNothingAndAnswersOnlyThatRequest) {
  send({entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate")});
  const ResponseSet answers =
      send({EmployeeAdd{"", "", ""}, EmployeeAdd{"Ann", "", "Lee"}}, OnError::Rollback);
  EXPECT_EQ(answers.responses,
            (std::vector<Response>{
                {3150, "Error", "There is a missing element: \"Name\".", std::nullopt}}));
  EXPECT_EQ(simulator->company().employees,
            (std::vector<std::string>{"Doe, Jane", "John Q Public"}));
  EXPECT_EQ(simulator->company().time_entries,
            std::vector<TimeTrackingAdd>{entry("Doe, Jane", {8, 0, 0}, "Regular Hourly Rate")});
}

TEST_F(SimulatorRequests, AnEmptySetIsAnsweredWithNoResponses) {
  EXPECT_TRUE(send({}).responses.empty());
}

TEST_F(SimulatorRequests, RequestSetsAreRecordedInOrder) {
  send({PayrollItemWageQuery{40}});
  send({EmployeeQuery{}}, OnError::Stop);
  const std::vector<RequestSet> expected = {
      RequestSet{1, 0, OnError::Continue, {PayrollItemWageQuery{40}}},
      RequestSet{1, 0, OnError::Stop, {EmployeeQuery{}}},
  };
  EXPECT_EQ(simulator->request_sets(), expected);
}

}  // namespace
}  // namespace zorvat::quickbooks
