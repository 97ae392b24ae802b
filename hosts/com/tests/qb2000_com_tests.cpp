// The QuickBooks export through the DLL, end to end: zorvat.QB2000 created and called
// late-bound as the host does, QuickBooks' session manager played by qbsim.dll (the
// company simulator registered under the session manager's ProgID), and the
// export's message boxes answered as a user would. The message sets the simulator
// received are compared with the hand-written expectations of
// tests/qb2000/small_pay_period.json.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <thread>

#include "automation_client.h"
#include "host_objects.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr wchar_t kSessionManagerProgId[] = L"QBFC2.QBSessionManager";
constexpr int kMessageTextId = 0xFFFF;  // the static control holding a message box's text

fs::path test_host_folder() {
  wchar_t path[MAX_PATH + 1] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return fs::path(path).parent_path();
}

json small_pay_period() {
  std::ifstream file(config().corpus.parent_path() / "qb2000" / "small_pay_period.json",
                     std::ios::binary);
  return json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
}

// --- Message boxes answered as a user would --------------------------------------

struct SeenBox {
  std::string caption;
  std::string text;
  bool yes_no = false;  // a question with Yes and No
};

std::wstring window_text(HWND window) {
  const int length = GetWindowTextLengthW(window);
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  GetWindowTextW(window, text.data(), length + 1);
  text.resize(static_cast<std::size_t>(length));
  return text;
}

// Watches this process's message boxes from a second thread while the host's thread
// is inside Execute: reads each one, answers a question with `answer` (IDYES or IDNO)
// and any other box with OK.
class MessageBoxAnswerer {
 public:
  explicit MessageBoxAnswerer(int answer) : answer_(answer), thread_([this] { run(); }) {}
  ~MessageBoxAnswerer() { stop(); }
  MessageBoxAnswerer(const MessageBoxAnswerer&) = delete;
  MessageBoxAnswerer& operator=(const MessageBoxAnswerer&) = delete;

  void stop() {
    running_ = false;
    if (thread_.joinable()) thread_.join();
  }
  std::vector<SeenBox> boxes() const {
    std::lock_guard lock(mutex_);
    return boxes_;
  }

 private:
  static BOOL CALLBACK collect(HWND window, LPARAM found) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t name[16] = {};
    GetClassNameW(window, name, 16);
    if (process == GetCurrentProcessId() && IsWindowVisible(window) &&
        std::wstring(name) == L"#32770" && GetDlgItem(window, kMessageTextId) != nullptr)
      reinterpret_cast<std::vector<HWND>*>(found)->push_back(window);
    return TRUE;
  }

  void run() {
    std::set<HWND> answered;
    while (running_) {
      std::vector<HWND> found;
      EnumWindows(&collect, reinterpret_cast<LPARAM>(&found));
      for (HWND box : found)
        if (answered.insert(box).second) answer(box);
      for (auto it = answered.begin(); it != answered.end();)
        it = IsWindow(*it) ? std::next(it) : answered.erase(it);
      Sleep(5);
    }
  }

  void answer(HWND box) {
    Sleep(20);  // let the box finish its initialisation
    SeenBox seen{to_utf8(window_text(box)), to_utf8(window_text(GetDlgItem(box, kMessageTextId))),
                 GetDlgItem(box, IDYES) != nullptr && GetDlgItem(box, IDNO) != nullptr};
    {
      std::lock_guard lock(mutex_);
      boxes_.push_back(seen);
    }
    const int button = seen.yes_no ? answer_ : IDOK;
    PostMessageW(GetDlgItem(box, button), BM_CLICK, 0, 0);
  }

  int answer_;
  std::atomic<bool> running_{true};
  mutable std::mutex mutex_;
  std::vector<SeenBox> boxes_;
  std::thread thread_;
};

// --- The simulated QuickBooks ----------------------------------------------------

// qbsim.dll beside the test host, registered in this throwaway prefix.
class SimulatorServer {
 public:
  SimulatorServer() : module_(LoadLibraryW((test_host_folder() / "qbsim.dll").c_str())) {}
  ~SimulatorServer() {
    // Kept loaded: the component holds its session managers until it releases them.
  }
  bool loaded() const { return module_ != nullptr; }
  bool register_server() const { return entry("DllRegisterServer") == S_OK; }
  bool unregister_server() const { return entry("DllUnregisterServer") == S_OK; }

 private:
  HRESULT entry(const char* name) const {
    using Entry = HRESULT(STDAPICALLTYPE*)();
    const auto function =
        reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    return function != nullptr ? function() : E_NOTIMPL;
  }

  HMODULE module_;
};

SimulatorServer& simulator_server() {
  static SimulatorServer server;
  return server;
}

std::string joined(std::initializer_list<const char*> lines) {
  std::string text;
  for (const char* line : lines) text += line;
  return text;
}

class QB2000Com : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(simulator_server().loaded()) << "qbsim.dll is not beside the test host";
    ASSERT_TRUE(simulator_server().register_server());
    HRESULT created = S_OK;
    export_ = create_object(L"zorvat.QB2000", &created);
    if (!export_) GTEST_SKIP() << "zorvat.QB2000 is not available in this DLL";
    quickbooks_ = create_object(kSessionManagerProgId, &created);
    ASSERT_TRUE(quickbooks_) << "the simulated session manager cannot be created";
    period_ = small_pay_period();
  }

  // Starts QuickBooks afresh with `company` and nothing recorded.
  void load_company(const json& company) {
    const CallResult loaded =
        call(quickbooks_.Get(), L"LoadCompany", DISPATCH_METHOD, {text_arg(company.dump())});
    ASSERT_EQ(loaded.hr, S_OK) << loaded.description;
  }

  // Runs the host's export of the pay period's cards, answering questions with
  // `answer`.
  CallResult execute(int answer = IDYES) {
    EXPECT_EQ(put(export_.Get(), L"SetupData", setup_data()).hr, S_OK);
    ComPtr<IDispatch> cards = make_collection(period_.at("cards"));
    MessageBoxAnswerer answerer(answer);
    CallResult result = call(export_.Get(), L"Execute", DISPATCH_METHOD, {object_arg(cards.Get())});
    answerer.stop();
    boxes_ = answerer.boxes();
    return result;
  }

  std::string setup_data() const { return period_.at("setupData").get<std::string>(); }
  json company() const { return period_.at("company"); }
  const json& expected_sets() const { return period_.at("expect").at("requestSets"); }

  json recorded_sets() const {
    return json::parse(get(quickbooks_.Get(), L"RecordedRequestSets").text());
  }
  // The session calls QuickBooks received, without the message sets.
  json session_calls() const {
    json calls = json::array();
    for (const json& recorded : json::parse(get(quickbooks_.Get(), L"RecordedCalls").text()))
      if (recorded.at("operation") != "DoRequests")
        calls.push_back(
            {{"operation", recorded.at("operation")}, {"arguments", recorded.at("arguments")}});
    return calls;
  }
  std::vector<std::string> box_texts() const {
    std::vector<std::string> texts;
    for (const SeenBox& box : boxes_) texts.push_back(box.text);
    return texts;
  }

  ComPtr<IDispatch> export_;
  ComPtr<IDispatch> quickbooks_;
  json period_;
  std::vector<SeenBox> boxes_;
};

TEST_F(QB2000Com, SendsTheSmallPayPeriodAsItsMessageSets) {
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.source << ": " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_TRUE(boxes_.empty()) << boxes_.front().text;
  EXPECT_EQ(recorded_sets(), expected_sets());
  EXPECT_EQ(session_calls(), period_.at("expect").at("sessionCalls"));
}

TEST_F(QB2000Com, CreatesEveryMessageSetForTheSessionsFirstVersion) {
  json newer = company();
  newer["qbxml_versions"] = {"1.1", "1.0"};
  load_company(newer);
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  json expected = expected_sets();
  for (json& set : expected) set["version"] = "1.1";
  EXPECT_EQ(recorded_sets(), expected);
}

TEST_F(QB2000Com, AddsAMissingEmployeeWhenTheUserSaysYes) {
  json missing_smith = company();
  missing_smith["employees"] = {"Doe, Jane"};
  load_company(missing_smith);
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());

  ASSERT_EQ(boxes_.size(), 1u);
  EXPECT_TRUE(boxes_[0].yes_no);
  EXPECT_EQ(boxes_[0].caption, "Add Missing Employees to QuickBooks and Continue with Export?");
  EXPECT_EQ(
      boxes_[0].text,
      joined({"The following employees were not found in QuickBooks: \r\n", "John Q Smith\r\n",
              "\r\n",
              "Do you want to add these Employees to Quickbooks and continue with Export? "}));

  // The add comes right after the employee query, in a message set of its own.
  json expected = expected_sets();
  expected.insert(expected.begin() + 2,
                  json::parse(R"({"version": "1.0", "onError": 1, "requests": [
                    {"type": "EmployeeAdd", "set": [["FirstName", "John"],
                      ["MiddleName", "Q"], ["LastName", "Smith"]]}]})"));
  EXPECT_EQ(recorded_sets(), expected);
}

TEST_F(QB2000Com, StopsWithDataExportAbortedWhenTheUserSaysNo) {
  json missing_smith = company();
  missing_smith["employees"] = {"Doe, Jane"};
  load_company(missing_smith);
  const CallResult result = execute(IDNO);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_FALSE(result.boolean());
  ASSERT_EQ(boxes_.size(), 2u);
  EXPECT_TRUE(boxes_[0].yes_no);
  EXPECT_EQ(boxes_[1].text, "Data Export Aborted.");
  EXPECT_EQ(boxes_[1].caption, "zorvat");
  EXPECT_FALSE(boxes_[1].yes_no);

  // Only the two verification queries went out; the session was ended and closed.
  const json sent = recorded_sets();
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0], expected_sets()[0]);
  EXPECT_EQ(sent[1], expected_sets()[1]);
  const json calls = session_calls();
  ASSERT_GE(calls.size(), 2u);
  EXPECT_EQ(calls[calls.size() - 2].at("operation"), "EndSession");
  EXPECT_EQ(calls[calls.size() - 1].at("operation"), "CloseConnection");
}

TEST_F(QB2000Com, ReportsMissingPayrollItemsAndStops) {
  json without_other = company();
  without_other["payroll_items"] = {"Regular Hourly Rate",          "Overtime Hourly Rate",
                                    "Premuim Overtime Hourly Rate", "Vacation Hourly Rate",
                                    "Holiday Hourly Rate",          "Sick Hourly Rate"};
  load_company(without_other);
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_FALSE(result.boolean());
  ASSERT_EQ(boxes_.size(), 1u);
  EXPECT_EQ(boxes_[0].caption, "Missing Payroll Items");
  EXPECT_EQ(boxes_[0].text,
            joined({"The Following Payroll Items were not found in Quickbooks: \r\n\r\n",
                    "Other Hourly Rate\r\n", "\r\n\r\n",
                    "These items must be added to Quickbooks before export can continue"}));
  EXPECT_EQ(recorded_sets().size(), 1u);
}

TEST_F(QB2000Com, ReturnsFalseWhenQuickBooksDeniesAccess) {
  json denying = company();
  denying["begin_session_failure"] = {{"number", -2147220448},
                                      {"description", "The QuickBooks user has denied access."}};
  load_company(denying);
  // Ending the session that never began passes quietly, so the denial stays the last
  // error the export caught.
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_FALSE(result.boolean());
  EXPECT_EQ(box_texts(),
            std::vector<std::string>{"QuickBooks has denied Horalis access... Export Aborted."});
  EXPECT_TRUE(recorded_sets().empty());
}

TEST_F(QB2000Com, RaisesTheTimeTrackingPreferenceError) {
  json without_time_tracking = company();
  without_time_tracking["time_tracking"] = false;
  load_company(without_time_tracking);
  const CallResult result = execute();
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 3250);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "The QuickBooks Time Tracking Preference is not available or disabled.\r\n"
            "Please enable Time Tracking under QuickBooks Company Preferences.");
  // The first day's message set was the last one sent; the session was torn down.
  EXPECT_EQ(recorded_sets().size(), 3u);
  const json calls = session_calls();
  ASSERT_GE(calls.size(), 2u);
  EXPECT_EQ(calls[calls.size() - 2].at("operation"), "EndSession");
  EXPECT_EQ(calls[calls.size() - 1].at("operation"), "CloseConnection");
}

TEST_F(QB2000Com, RaisesAnErrorWhenTheUserWillNotLaunchQuickBooks) {
  json not_running = company();
  not_running["begin_session_failure"] = {{"number", -2147220472},
                                          {"description", "Could not start QuickBooks."}};
  load_company(not_running);
  const CallResult result = execute(IDNO);
  ASSERT_EQ(boxes_.size(), 1u);
  EXPECT_EQ(boxes_[0].caption, "Retry Export");
  EXPECT_EQ(boxes_[0].text,
            joined({"The Company File couldn't be found or QuickBooks will not allow Horalis to "
                    "access File.\r\n",
                    "You must launch QuickBooks and then return to Horalis and retry the "
                    "export.\r\n\r\n",
                    "Click 'Yes' to launch QuickBooks."}));
  // With no session the next call fails, and so does the teardown's EndSession,
  // whose error is the one the host receives.
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.number, -2147220467);
  EXPECT_EQ(result.description, "The ticket parameter is invalid.");
  EXPECT_TRUE(recorded_sets().empty());
}

TEST_F(QB2000Com, LaunchesTheCompanyFilesProgramMinimisedWhenTheUserSaysYes) {
  // A company file whose type is associated with the launch witness.
  const fs::path company_file = config().work / "qb2000" / "Horalis Test.qbwtest";
  fs::create_directories(company_file.parent_path());
  std::ofstream(company_file) << "company";
  const fs::path record = company_file.wstring() + L".launched";
  std::error_code ignored;
  fs::remove(record, ignored);
  const std::wstring witness = (test_host_folder() / "launch_witness.exe").wstring();
  const std::wstring command = L"\"" + witness + L"\" \"%1\"";
  ASSERT_EQ(RegSetValueW(HKEY_CLASSES_ROOT, L".qbwtest", REG_SZ, L"zorvat.TestCompanyFile", 0),
            ERROR_SUCCESS);
  ASSERT_EQ(RegSetValueW(HKEY_CLASSES_ROOT, L"zorvat.TestCompanyFile\\shell\\open\\command", REG_SZ,
                         command.c_str(), 0),
            ERROR_SUCCESS);

  json not_running = company();
  not_running["company_file"] = "";
  not_running["begin_session_failure"] = {{"number", -2147220472},
                                          {"description", "Could not start QuickBooks."}};
  load_company(not_running);
  std::string setup = setup_data();
  const std::string file = to_utf8(company_file.wstring());
  setup.replace(0, setup.find(','), file);
  period_["setupData"] = setup;
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_FALSE(result.boolean());
  EXPECT_EQ(boxes_.size(), 1u);

  for (int waited = 0; waited < 1000 && !fs::exists(record); ++waited) Sleep(10);
  ASSERT_TRUE(fs::exists(record)) << "the associated program was not started";
  std::ifstream written(record, std::ios::binary);
  const std::string launched(std::istreambuf_iterator<char>(written), {});
  EXPECT_EQ(launched, "command line: " + to_utf8(witness) + " \"" + file + "\"\n" +
                          "show window: " + std::to_string(SW_SHOWMINNOACTIVE) + "\n");
}

TEST_F(QB2000Com, RaisesActiveXCannotCreateWithoutASessionManager) {
  ASSERT_TRUE(simulator_server().unregister_server());
  const CallResult result = execute();
  ASSERT_TRUE(simulator_server().register_server());
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 429);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description, "ActiveX component can't create object");
  EXPECT_TRUE(boxes_.empty());
}

TEST_F(QB2000Com, FormatsQuickBooksNamesThroughDispatch) {
  auto format = [&](const std::string& name) {
    const CallResult result = call(export_.Get(), L"FormatName", DISPATCH_METHOD, {text_arg(name)});
    EXPECT_EQ(result.hr, S_OK);
    return result.text();
  };
  EXPECT_EQ(format("Doe, Jane"), "Jane Doe");
  EXPECT_EQ(format("Doe, Jane, Q"), "Jane  Q Doe");
  EXPECT_EQ(format("Smith, John"), "John Smith");
  EXPECT_EQ(format("Jane Doe"), "Jane Doe");
  EXPECT_EQ(format(""), "");
  EXPECT_EQ(format("a,b,c,d"), "");
}

}  // namespace
}  // namespace zorvat::com::testing
