// Company files in JSON: every key read, and every mistake named with file and place.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "zorvat/error.h"
#include "zorvat/quickbooks/company.h"

namespace zorvat::quickbooks {
namespace {

std::string error_description(std::string_view json) {
  try {
    parse_company_json(json, "company.json");
  } catch (const Error& error) {
    return error.description();
  }
  return "(no error)";
}

TEST(CompanyJson, ReadsEveryKey) {
  const Company company = parse_company_json(R"({
    "company_file": "C:\\Company\\Sample.QBW",
    "qbxml_versions": ["2.0", "1.1"],
    "time_tracking": false,
    "payroll_items": ["Regular Hourly Rate", "Überstunden"],
    "employees": ["Doe, Jane"],
    "employee_names_last_first": true,
    "session_manager_installed": false,
    "open_connection_failure": {"number": -2147220472, "description": "Could not start QuickBooks."},
    "begin_session_failure": {"number": -2147220448, "description": "The QuickBooks user has denied access."}
  })",
                                             "company.json");
  EXPECT_EQ(company.company_file, "C:\\Company\\Sample.QBW");
  EXPECT_EQ(company.qbxml_versions, (std::vector<std::string>{"2.0", "1.1"}));
  EXPECT_FALSE(company.time_tracking);
  EXPECT_EQ(company.payroll_items, (std::vector<std::string>{"Regular Hourly Rate",
                                                             "\xC3\x9C"
                                                             "berstunden"}));
  EXPECT_EQ(company.employees, std::vector<std::string>{"Doe, Jane"});
  EXPECT_TRUE(company.employee_names_last_first);
  EXPECT_FALSE(company.session_manager_installed);
  EXPECT_EQ(company.open_connection_failure,
            (ComFailure{-2147220472, "Could not start QuickBooks."}));
  EXPECT_EQ(company.begin_session_failure,
            (ComFailure{-2147220448, "The QuickBooks user has denied access."}));
}

TEST(CompanyJson, AnEmptyObjectIsTheDefaultCompany) {
  const Company company = parse_company_json("{}", "company.json");
  EXPECT_EQ(company.company_file, "");
  EXPECT_EQ(company.qbxml_versions, std::vector<std::string>{"1.0"});
  EXPECT_TRUE(company.time_tracking);
  EXPECT_TRUE(company.session_manager_installed);
  EXPECT_FALSE(company.begin_session_failure.has_value());
}

TEST(CompanyJson, AFailureWithoutDescriptionHasAnEmptyOne) {
  const Company company =
      parse_company_json(R"({"begin_session_failure": {"number": -1}})", "company.json");
  EXPECT_EQ(company.begin_session_failure, (ComFailure{-1, ""}));
}

TEST(CompanyJson, UnknownKeysAreRefusedWithTheKnownOnes) {
  EXPECT_EQ(error_description(R"({"employes": []})"),
            "company.json: \"employes\": unknown key (known: begin_session_failure, company_file, "
            "employee_names_last_first, employees, open_connection_failure, payroll_items, "
            "qbxml_versions, session_manager_installed, time_tracking)");
  EXPECT_EQ(error_description(R"({"begin_session_failure": {"number": -1, "text": "x"}})"),
            "company.json: \"begin_session_failure\".text: unknown key (known: number, "
            "description)");
}

TEST(CompanyJson, WrongTypesAreNamedWithTheirPlace) {
  EXPECT_EQ(error_description(R"({"company_file": 7})"),
            "company.json: \"company_file\": expected a string, found a number");
  EXPECT_EQ(error_description(R"({"time_tracking": "yes"})"),
            "company.json: \"time_tracking\": expected true or false, found a string");
  EXPECT_EQ(error_description(R"({"employees": "Doe, Jane"})"),
            "company.json: \"employees\": expected a list of strings, found a string");
  EXPECT_EQ(error_description(R"({"payroll_items": ["a", null]})"),
            "company.json: \"payroll_items\"[1]: expected a string, found a null");
  EXPECT_EQ(error_description(R"({"begin_session_failure": "denied"})"),
            "company.json: \"begin_session_failure\": expected an object, found a string");
  EXPECT_EQ(error_description(R"({"begin_session_failure": {"number": 1.5}})"),
            "company.json: \"begin_session_failure\".number: expected a whole number, found a "
            "number");
}

TEST(CompanyJson, FailureNumbersAreNegative32BitNumbers) {
  EXPECT_EQ(error_description(R"({"open_connection_failure": {"number": 5}})"),
            "company.json: \"open_connection_failure\".number: a session-manager failure has a "
            "negative 32-bit number");
  EXPECT_EQ(error_description(R"({"open_connection_failure": {"number": -2147483649}})"),
            "company.json: \"open_connection_failure\".number: a session-manager failure has a "
            "negative 32-bit number");
  EXPECT_EQ(error_description(R"({"open_connection_failure": {"description": "x"}})"),
            "company.json: \"open_connection_failure\": \"number\" is missing");
}

TEST(CompanyJson, TheDocumentMustBeAnObjectOfValidJson) {
  EXPECT_EQ(error_description("[]"), "company.json: expected an object, found an array");
  const std::string broken = error_description(R"({"employees": [})");
  EXPECT_TRUE(broken.starts_with("company.json: not valid JSON (")) << broken;
  EXPECT_NE(broken.find("line 1, column 16"), std::string::npos) << broken;
}

TEST(CompanyJson, ErrorsCarryTheCompanySource) {
  try {
    parse_company_json("1", "x.json");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 5);
    EXPECT_EQ(error.source(), "zorvat.QuickBooksCompany");
  }
}

TEST(CompanyJson, LoadsAFileAndNamesItInErrors) {
  const std::string path = testing::TempDir() + "qb_company_test.json";
  {
    std::ofstream file(path, std::ios::binary);
    file << R"({"employees": ["Doe, Jane"], "time_tracking": 0})";
  }
  try {
    load_company_file(path);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.description(),
              path + ": \"time_tracking\": expected true or false, found a number");
  }
  {
    std::ofstream file(path, std::ios::binary);
    file << R"({"employees": ["Doe, Jane"]})";
  }
  EXPECT_EQ(load_company_file(path).employees, std::vector<std::string>{"Doe, Jane"});
  std::remove(path.c_str());
}

TEST(CompanyJson, AMissingFileIsFileNotFound) {
  try {
    load_company_file("/nonexistent/company.json");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 53);
    EXPECT_EQ(error.description(), "/nonexistent/company.json: the company file cannot be opened");
  }
}

}  // namespace
}  // namespace zorvat::quickbooks
