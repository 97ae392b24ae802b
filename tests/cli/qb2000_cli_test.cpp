// `zorvat export QB2000`: the export against a simulated company through qbXML, the
// answers given in advance, the progress lines, the request log and the usage errors.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command_line_test.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kExamples = std::string(ZORVAT_SOURCE_DIR) + "/examples";
const std::string kSampleCards = kExamples + "/sample-period.json";
const std::string kSampleCompany = kExamples + "/qb2000-company.json";
const std::string kSetup =
    "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,"
    "Premuim Overtime Hourly Rate,Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,"
    "Other Hourly Rate";

// Jane Doe worked 8 hours on 1 March 2004.
const std::string kJaneCards = R"({"cards": [{
  "FirstName": "Jane", "MI": "", "LastName": "Doe",
  "REG": 480, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0,
  "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-03-01",
  "Days": [{"DayDate": "2004-03-01", "Hours": 480, "REG": 480, "OT1": 0, "OT2": 0,
            "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]}]})";

std::string company_json(const std::string& extra = "") {
  return R"({"company_file": "C:\\Company\\Sample.QBW",
    "payroll_items": ["Regular Hourly Rate", "Overtime Hourly Rate",
      "Premuim Overtime Hourly Rate", "Vacation Hourly Rate", "Holiday Hourly Rate",
      "Sick Hourly Rate", "Other Hourly Rate"],
    "employees": ["Doe, Jane"])" +
         extra + "}";
}

// Jane Doe worked 8 hours on the last day of 2029 and 8 on the first of 2030.
const std::string kNewYearCards = R"({"cards": [{
  "FirstName": "Jane", "MI": "", "LastName": "Doe",
  "REG": 960, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0,
  "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2029-12-31",
  "Days": [{"DayDate": "2029-12-31", "Hours": 480, "REG": 480, "OT1": 0, "OT2": 0,
            "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0},
           {"DayDate": "2030-01-01", "Hours": 480, "REG": 480, "OT1": 0, "OT2": 0,
            "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]}]})";

// What the export and its check say of 1 January 2030 under the window ending in 2029.
const std::string kNewYearRefused =
    "The card at index 0 (Jane Doe) holds the day 1/1/2030, which QuickBooks would get as "
    "1/1/1930: two-digit years are read as 1930 to 2029. Set the Region setting \"When a "
    "two-digit year is entered, interpret it as a year between\" (--two-digit-year-max on the "
    "command line) to a range that holds 2030.";

// The number of times `what` occurs in `text`.
std::size_t occurrences(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
    ++count;
  return count;
}

class QuickBooksCommandLine : public zorvat::testing_support::CommandLineTest {
 protected:
  // Exports Jane's card to a company described by `company` (JSON text).
  zorvat::testing_support::ProcessResult export_jane(const std::string& company,
                                                     std::vector<std::string> more = {}) {
    std::vector<std::string> args = {
        "export",  "QB2000", "--cards",      write("cards.json", kJaneCards),
        "--setup", kSetup,   "--qb-company", write("company.json", company)};
    args.insert(args.end(), more.begin(), more.end());
    return zorvat(args);
  }
};

TEST_F(QuickBooksCommandLine, SamplePeriodIsExportedAfterAddingTheMissingEmployee) {
  const auto r = zorvat({"export", "QB2000", "--cards", kSampleCards, "--setup", kSetup,
                         "--qb-company", kSampleCompany, "--answer", "yes"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, kSetup + "\n");
  // The stages in order, the question with its answer between them.
  const std::vector<std::string> in_order = {
      "Connecting to QuickBooks...\n",
      "Verifying Payroll Items...\n",
      "Verifying Employee Names...\n",
      ("Add Missing Employees to QuickBooks and Continue with Export?: The following employees "
       "were not found in QuickBooks: \r\nLiam P Murphy\r\n"),
      "(answered yes)\n",
      "Adding Employee Names...\n",
      "Exporting Data to QuickBooks...\n"};
  std::size_t at = 0;
  for (const std::string& line : in_order) {
    const std::size_t found = r.err.find(line, at);
    ASSERT_NE(found, std::string::npos) << line << " in\n" << r.err;
    at = found + line.size();
  }
}

TEST_F(QuickBooksCommandLine, AMissingAnswerIsNoAndAbortsTheExport) {
  const auto r = zorvat({"export", "QB2000", "--cards", kSampleCards, "--setup", kSetup,
                         "--qb-company", kSampleCompany, "--json"});
  EXPECT_EQ(r.exit_code, 1) << r.err;
  const json report = json::parse(r.out);
  EXPECT_EQ(report["result"], false);
  EXPECT_EQ(report["setupData"], kSetup);
  EXPECT_TRUE(report["file"].is_null());
  EXPECT_TRUE(report["error"].is_null());
  EXPECT_EQ(report["messages"],
            json::array({"The following employees were not found in QuickBooks: \r\n"
                         "Liam P Murphy\r\n\r\n"
                         "Do you want to add these Employees to Quickbooks and continue with "
                         "Export? ",
                         "Data Export Aborted."}));
}

TEST_F(QuickBooksCommandLine, TheLogHoldsEveryRequestDocumentSent) {
  const std::string log = (dir_ / "requests.xml").string();
  const auto r = export_jane(company_json(), {"--qb-log", log});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::string text = read(log);
  // The item query, the employee query and Jane's day.
  std::size_t documents = 0;
  for (std::size_t at = text.find("<QBXML>"); at != std::string::npos;
       at = text.find("<QBXML>", at + 1))
    ++documents;
  EXPECT_EQ(documents, 3u);
  const std::size_t items = text.find("<PayrollItemWageQueryRq");
  const std::size_t employees = text.find("<EmployeeQueryRq");
  const std::size_t entry = text.find("<TimeTrackingAddRq");
  ASSERT_NE(items, std::string::npos);
  ASSERT_NE(employees, std::string::npos);
  ASSERT_NE(entry, std::string::npos);
  EXPECT_LT(items, employees);
  EXPECT_LT(employees, entry);
  EXPECT_NE(text.find("<MaxReturned>40</MaxReturned>"), std::string::npos);
  EXPECT_NE(text.find("<FullName>Doe, Jane</FullName>", entry), std::string::npos);
  EXPECT_NE(text.find("<TxnDate>2004-03-01</TxnDate>", entry), std::string::npos);
  EXPECT_NE(text.find("<Notes>HLS - Regular Hourly Rate</Notes>", entry), std::string::npos);
  EXPECT_NE(text.find("continueOnError"), std::string::npos);
}

TEST_F(QuickBooksCommandLine, TimeTrackingSwitchedOffIsARaisedError) {
  const auto r = export_jane(company_json(R"(, "time_tracking": false)"), {"--json"});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["result"], false);
  EXPECT_EQ(report["error"]["number"], 3250);
  EXPECT_EQ(report["error"]["source"], "zorvat.QB2000.Execute");
  EXPECT_EQ(report["error"]["description"],
            "The QuickBooks Time Tracking Preference is not available or disabled.\r\n"
            "Please enable Time Tracking under QuickBooks Company Preferences.");
}

TEST_F(QuickBooksCommandLine, NoToRetryExportEndsInARaisedError) {
  const auto r = export_jane(
      company_json(
          R"(, "begin_session_failure": {"number": -2147220472, "description": "Could not start QuickBooks."})"),
      {"--answer", "no"});
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_NE(r.err.find("Retry Export: The Company File couldn't be found or QuickBooks will not "
                       "allow Horalis to access File.\r\n"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("(answered no)\n"), std::string::npos);
  EXPECT_NE(r.err.find("zorvat: error -2147220467 in zorvat.QB2000.Execute: "), std::string::npos)
      << r.err;
}

TEST_F(QuickBooksCommandLine, YesToRetryExportReturnsFalse) {
  const auto r = export_jane(
      company_json(
          R"(, "begin_session_failure": {"number": -2147220472, "description": "Could not start QuickBooks."})"),
      {"--answer", "yes", "--json"});
  EXPECT_EQ(r.exit_code, 1);
  const json report = json::parse(r.out);
  ASSERT_EQ(report["messages"].size(), 1u);
  EXPECT_EQ(report["messages"][0],
            "The Company File couldn't be found or QuickBooks will not allow Horalis to access "
            "File.\r\nYou must launch QuickBooks and then return to Horalis and retry the "
            "export.\r\n\r\nClick 'Yes' to launch QuickBooks.");
}

TEST_F(QuickBooksCommandLine, WithoutACompanyTheExportIsAUsageError) {
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kJaneCards), "--setup",
                         kSetup, "--json"});
  EXPECT_EQ(r.exit_code, 2);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["error"]["number"], 0);
  EXPECT_NE(report["error"]["description"].get<std::string>().find("--qb-company"),
            std::string::npos);
}

TEST_F(QuickBooksCommandLine, ACompanyForAnotherClassIsAUsageError) {
  const auto r = zorvat({"export", "Generic", "--cards", write("cards.json", kJaneCards),
                         "--qb-company", write("company.json", company_json())});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("--qb-company"), std::string::npos) << r.err;
}

TEST_F(QuickBooksCommandLine, AMalformedCompanyFileIsAUsageError) {
  const auto r = export_jane(R"({"employees": 5})");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("company.json"), std::string::npos) << r.err;
}

TEST_F(QuickBooksCommandLine, ALogWithoutACompanyIsAUsageError) {
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kJaneCards), "--qb-log",
                         (dir_ / "log.xml").string()});
  EXPECT_EQ(r.exit_code, 2);
}

TEST_F(QuickBooksCommandLine, AnswersAreYesOrNo) {
  const auto r = export_jane(company_json(), {"--answer", "maybe"});
  EXPECT_EQ(r.exit_code, 2);
}

// A card whose first name is one character over QuickBooks' 25, and one that fits.
const std::string kLongNameCards = R"({"cards": [{
  "FirstName": "Jane", "MI": "", "LastName": "Doe",
  "REG": 480, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0,
  "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-03-01",
  "Days": [{"DayDate": "2004-03-01", "Hours": 480, "REG": 480, "OT1": 0, "OT2": 0,
            "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]}, {"ExportID": "E101",
  "FirstName": "Maximilianaxxxxxxxxxxxxxxx", "MI": "", "LastName": "Roe",
  "REG": 60, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0,
  "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-03-01",
  "Days": [{"DayDate": "2004-03-01", "Hours": 60, "REG": 60, "OT1": 0, "OT2": 0,
            "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]}]})";

TEST_F(QuickBooksCommandLine, CheckListsTheCardsWhoseNamesAreTooLongWithoutASession) {
  // No company is named: the check opens no session.
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kLongNameCards),
                         "--setup", kSetup, "--check"});
  EXPECT_EQ(r.exit_code, 4) << r.err;
  EXPECT_EQ(r.out,
            "card 1 (ExportID E101): EmployeeAdd/FirstName of employee "
            "\"Maximilianaxxxxxxxxxxxxxxx Roe\" has 26 "
            "characters; QuickBooks takes at most 25.\n"
            "1 field is longer than QuickBooks takes; the export would stop there.\n");

  const auto as_json = zorvat({"export", "QB2000", "--cards", write("cards.json", kLongNameCards),
                               "--setup", kSetup, "--check", "--json"});
  EXPECT_EQ(as_json.exit_code, 4) << as_json.err;
  const json report = json::parse(as_json.out);
  EXPECT_EQ(report.at("problems"),
            json::parse(R"([{"card": 1, "id": "E101", "employee": "Maximilianaxxxxxxxxxxxxxxx Roe",
              "field": "EmployeeAdd/FirstName", "length": 26, "limit": 25,
              "description": "EmployeeAdd/FirstName of employee \"Maximilianaxxxxxxxxxxxxxxx Roe\" has 26 characters; QuickBooks takes at most 25."}])"));
  EXPECT_TRUE(report.at("error").is_null());
}

TEST_F(QuickBooksCommandLine, CheckSaysSoWhenEveryFieldFits) {
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kJaneCards), "--setup",
                         kSetup, "--check"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "Every name, payroll item and note of the cards fits QuickBooks' fields.\n");
}

TEST_F(QuickBooksCommandLine, CheckRunsTheClassCheckOfTheSettingsFirst) {
  const std::string long_item(32, 'O');
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kJaneCards), "--setup",
                         "C:\\a.QBW,Regular Hourly Rate," + long_item + ",c,d,e,f,g", "--check"});
  EXPECT_EQ(r.exit_code, 3) << r.err;
  EXPECT_EQ(r.err,
            "zorvat: error 2 in zorvat.QB2000.ValidateSetupData: Paycode field must be 31 chars "
            "or less\n");
}

TEST_F(QuickBooksCommandLine, UnderTheWindowEndingIn2029TheFirstDayOf2030IsRefusedUnsent) {
  const std::string log = (dir_ / "requests.xml").string();
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kNewYearCards),
                         "--setup", kSetup, "--qb-company", write("company.json", company_json()),
                         "--qb-log", log, "--two-digit-year-max", "2029"});
  EXPECT_EQ(r.exit_code, 3) << r.err;
  EXPECT_EQ(r.out, "");
  // Refused before the connection: no stage was shown, no document sent.
  EXPECT_EQ(r.err, "zorvat: error 5 in zorvat.QB2000.Execute: " + kNewYearRefused +
                       " Nothing was sent to QuickBooks.\n"
                       "zorvat: while reading card 0 of " +
                       (dir_ / "cards.json").string() + ", property Days[1].DayDate\n");
  const std::string sent = fs::exists(log) ? read(log) : std::string();
  EXPECT_EQ(occurrences(sent, "<QBXML>"), 0u) << sent;
  EXPECT_EQ(occurrences(sent, "TimeTrackingAdd"), 0u) << sent;
}

TEST_F(QuickBooksCommandLine, UnderTheWindowEndingIn2029TheLastDayOf2029IsSent) {
  const std::string log = (dir_ / "requests.xml").string();
  const auto r = export_jane(company_json(), {"--qb-log", log, "--two-digit-year-max", "2029"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(occurrences(read(log), "<TxnDate>2004-03-01</TxnDate>"), 1u);
  const auto last_day =
      zorvat({"export", "QB2000", "--cards",
              write("cards.json", R"({"cards": [{"FirstName": "Jane", "MI": "", "LastName": "Doe",
         "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2029-12-31",
         "Days": [{"DayDate": "2029-12-31", "REG": 480, "OT1": 0, "OT2": 0, "VAC": 0,
                   "HOL": 0, "SIC": 0, "OTH": 0}]}]})"),
              "--setup", kSetup, "--qb-company", write("company.json", company_json()), "--qb-log",
              log, "--two-digit-year-max", "2029"});
  ASSERT_EQ(last_day.exit_code, 0) << last_day.err;
  const std::string sent = read(log);
  EXPECT_EQ(occurrences(sent, "<TimeTrackingAddRq"), 1u) << sent;
  EXPECT_EQ(occurrences(sent, "<TxnDate>2029-12-31</TxnDate>"), 1u) << sent;
}

TEST_F(QuickBooksCommandLine, UnderTheWindowEndingIn2049TheFirstDayOf2030ArrivesAs2030) {
  for (const std::vector<std::string>& window :
       {std::vector<std::string>{}, std::vector<std::string>{"--two-digit-year-max", "2049"}}) {
    const std::string log = (dir_ / "requests.xml").string();
    std::vector<std::string> args = {
        "export",   "QB2000", "--cards",      write("cards.json", kNewYearCards),
        "--setup",  kSetup,   "--qb-company", write("company.json", company_json()),
        "--qb-log", log};
    args.insert(args.end(), window.begin(), window.end());
    const auto r = zorvat(args);
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const std::string sent = read(log);
    EXPECT_EQ(occurrences(sent, "<TimeTrackingAddRq"), 2u) << sent;
    const std::size_t last_day = sent.find("<TxnDate>2029-12-31</TxnDate>");
    const std::size_t first_day = sent.find("<TxnDate>2030-01-01</TxnDate>");
    ASSERT_NE(last_day, std::string::npos) << sent;
    ASSERT_NE(first_day, std::string::npos) << sent;
    EXPECT_LT(last_day, first_day);
  }
}

TEST_F(QuickBooksCommandLine, TheRefusalIsTheErrorOfTheJsonReport) {
  const auto r = zorvat({"export", "QB2000", "--cards", write("cards.json", kNewYearCards),
                         "--setup", kSetup, "--qb-company", write("company.json", company_json()),
                         "--two-digit-year-max", "2029", "--json"});
  EXPECT_EQ(r.exit_code, 3) << r.err;
  const json report = json::parse(r.out);
  EXPECT_EQ(report.at("result"), false);
  EXPECT_EQ(report.at("messages"), json::array());
  EXPECT_EQ(report.at("error").at("number"), 5);
  EXPECT_EQ(report.at("error").at("source"), "zorvat.QB2000.Execute");
  EXPECT_EQ(report.at("error").at("description"),
            kNewYearRefused + " Nothing was sent to QuickBooks.");
  EXPECT_EQ(report.at("error").at("card").at("property"), "Days[1].DayDate");
}

TEST_F(QuickBooksCommandLine, CheckListsTheCenturyShiftedDatesFirst) {
  // Jane's 2030 day, and a second card whose first name is one letter too long.
  std::string cards = kNewYearCards;
  cards.replace(cards.rfind("]}"), 2,
                R"(, {"FirstName": ")" + std::string(26, 'F') +
                    R"(", "MI": "", "LastName": "Roe",
    "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-03-01",
    "Days": [{"DayDate": "2004-03-01", "REG": 60, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0,
              "SIC": 0, "OTH": 0}]}]})");
  const std::string path = write("cards.json", cards);
  const auto r = zorvat({"export", "QB2000", "--cards", path, "--setup", kSetup, "--check",
                         "--two-digit-year-max", "2029"});
  EXPECT_EQ(r.exit_code, 4) << r.err;
  EXPECT_EQ(r.out, kNewYearRefused +
                       "\n1 card holds a date QuickBooks would get a century off; the export "
                       "would stop before sending anything.\n"
                       "card 1: EmployeeAdd/FirstName of employee \"" +
                       std::string(26, 'F') +
                       " Roe\" has 26 characters; QuickBooks takes at most 25.\n"
                       "1 field is longer than QuickBooks takes; the export would stop there.\n");

  const auto as_json = zorvat({"export", "QB2000", "--cards", path, "--setup", kSetup, "--check",
                               "--two-digit-year-max", "2029", "--json"});
  EXPECT_EQ(as_json.exit_code, 4) << as_json.err;
  const json report = json::parse(as_json.out);
  EXPECT_EQ(report.at("dates"), json::array({{{"index", 0},
                                              {"employee", "Jane Doe"},
                                              {"property", "DayDate"},
                                              {"date", "2030-01-01"},
                                              {"sent", "1930-01-01"},
                                              {"description", kNewYearRefused}}}));
  EXPECT_EQ(report.at("problems").size(), 1u);

  // Under the window ending in 2049 the dates go as they are.
  const auto wide = zorvat({"export", "QB2000", "--cards", path, "--setup", kSetup, "--check"});
  EXPECT_EQ(wide.exit_code, 4) << wide.err;
  EXPECT_EQ(wide.out.find("index 0"), std::string::npos) << wide.out;
}

TEST_F(QuickBooksCommandLine, TheWindowMustEndInAYearWindowsTakes) {
  const std::string cards = write("cards.json", kJaneCards);
  for (const std::string year : {"98", "10000", "-2049", "2049.5", "abc", ""}) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"export", "QB2000", "--cards", cards, "--setup", kSetup,
                                   "--check"},
          std::vector<std::string>{"validate", "QB2000", "--setup", kSetup},
          std::vector<std::string>{"reconcile", "Generic", "--cards", cards, cards}}) {
      std::vector<std::string> args = command;
      args.insert(args.end(), {"--two-digit-year-max", year});
      const auto r = zorvat(args);
      EXPECT_EQ(r.exit_code, 2) << year << ": " << r.err;
      EXPECT_NE(r.err.find("--two-digit-year-max"), std::string::npos) << r.err;
      if (!year.empty()) {
        EXPECT_NE(r.err.find("\"" + year + "\" is not a year from 99 to 9999"), std::string::npos)
            << r.err;
      }
    }
  }
  for (const std::string year : {"99", "2029", "9999"}) {
    const auto r = zorvat({"validate", "QB2000", "--setup", kSetup, "--two-digit-year-max", year});
    EXPECT_EQ(r.exit_code, 0) << year << ": " << r.err;
  }
}

TEST_F(QuickBooksCommandLine, AccentedNamesReachTheCompanyAsTheyAre) {
  const std::string cards = write("cards.json", R"({"cards": [
    {"FirstName": "José", "MI": "", "LastName": "Peña", "EditREG": 0, "EditOT1": 0,
     "EditOT2": 0, "PeriodStart": "2004-03-01", "Days": [{"DayDate": "2004-03-01", "REG": 480,
     "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]},
    {"FirstName": "Renée", "MI": "", "LastName": "Müller-Ñúñez", "EditREG": 0, "EditOT1": 0,
     "EditOT2": 0, "PeriodStart": "2004-03-01", "Days": [{"DayDate": "2004-03-01", "REG": 0,
     "OT1": 0, "OT2": 0, "VAC": 240, "HOL": 0, "SIC": 0, "OTH": 0}]},
    {"FirstName": "Grace", "MI": "", "LastName": "O’Neil", "EditREG": 0, "EditOT1": 0,
     "EditOT2": 0, "PeriodStart": "2004-03-01", "Days": [{"DayDate": "2004-03-01", "REG": 0,
     "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 60, "OTH": 0}]}]})");
  std::string company = company_json();
  company.replace(company.find(R"("Doe, Jane")"), 11, R"("Peña, José", "Müller-Ñúñez, Renée")");
  const std::string log = (dir_ / "requests.xml").string();
  const auto r = zorvat({"export", "QB2000", "--cards", cards, "--setup", kSetup, "--qb-company",
                         write("company.json", company), "--qb-log", log, "--answer", "yes"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.err.find("Grace  O’Neil\r\n"), std::string::npos) << r.err;
  const std::string sent = read(log);
  EXPECT_EQ(occurrences(sent, "<FirstName>Grace</FirstName>"), 1u) << sent;
  EXPECT_EQ(occurrences(sent, "<LastName>O’Neil</LastName>"), 1u) << sent;
  EXPECT_EQ(occurrences(sent, "<FullName>Peña, José</FullName>"), 1u) << sent;
  EXPECT_EQ(occurrences(sent, "<FullName>Müller-Ñúñez, Renée</FullName>"), 1u) << sent;
  EXPECT_EQ(occurrences(sent, "<FullName>O’Neil, Grace</FullName>"), 1u) << sent;
}

}  // namespace
