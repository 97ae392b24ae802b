// The QuickBooks export through the DLL, end to end: zorvat.QB2000 created and called
// late-bound as the host does, QuickBooks' session manager played by qbsim.dll (the
// company simulator registered under the session manager's ProgID), and the
// export's message boxes answered as a user would. The message sets the simulator
// received are compared with the hand-written expectations of
// tests/qb2000/small_pay_period.json.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <mutex>
#include <set>
#include <thread>

#include "automation_client.h"
#include "host_objects.h"
#include "import_patch.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr wchar_t kSessionManagerProgId[] = L"QBFC2.QBSessionManager";
// The tests' handle on the simulated QuickBooks behind that session manager.
constexpr wchar_t kSimulatorControlProgId[] = L"QBSim.Control";
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
  // QBFCn's session manager under "QBFCn.QBSessionManager" (n from 1 to 16).
  bool register_generation(int generation) const {
    return generation_entry("RegisterSessionManager", generation) == S_OK;
  }
  bool unregister_generation(int generation) const {
    return generation_entry("UnregisterSessionManager", generation) == S_OK;
  }
  // The qbXML request processor, registered apart from the session manager.
  bool register_request_processor() const { return entry("RegisterRequestProcessor") == S_OK; }
  bool unregister_request_processor() const { return entry("UnregisterRequestProcessor") == S_OK; }

 private:
  HRESULT generation_entry(const char* name, int generation) const {
    using Entry = HRESULT(STDAPICALLTYPE*)(int);
    const auto function =
        reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    return function != nullptr ? function(generation) : E_NOTIMPL;
  }
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

constexpr int kNewestGeneration = 16;

// While it lives, the prefix has exactly the session managers of these QBFC
// generations registered (none for an empty list); afterwards QBFC2's alone, as the
// other tests expect.
class RegisteredSessionManagers {
 public:
  explicit RegisteredSessionManagers(std::initializer_list<int> generations) {
    for (int generation = 1; generation <= kNewestGeneration; ++generation)
      done_ = simulator_server().unregister_generation(generation) && done_;
    for (const int generation : generations)
      done_ = simulator_server().register_generation(generation) && done_;
  }
  ~RegisteredSessionManagers() {
    for (int generation = 1; generation <= kNewestGeneration; ++generation)
      simulator_server().unregister_generation(generation);
    simulator_server().register_generation(2);
  }
  RegisteredSessionManagers(const RegisteredSessionManagers&) = delete;
  RegisteredSessionManagers& operator=(const RegisteredSessionManagers&) = delete;
  bool done() const { return done_; }

 private:
  bool done_ = true;
};

std::string joined(std::initializer_list<const char*> lines) {
  std::string text;
  for (const char* line : lines) text += line;
  return text;
}

VARIANT bool_arg(bool value) {
  VARIANT argument;
  VariantInit(&argument);
  V_VT(&argument) = VT_BOOL;
  V_BOOL(&argument) = value ? VARIANT_TRUE : VARIANT_FALSE;
  return argument;
}

VARIANT short_arg(short value) {
  VARIANT argument;
  VariantInit(&argument);
  V_VT(&argument) = VT_I2;
  V_I2(&argument) = value;
  return argument;
}

ComPtr<IDispatch> object_of(const CallResult& result) {
  if (V_VT(&result.value) != VT_DISPATCH) return nullptr;
  return V_DISPATCH(&result.value);
}

// The message sets the small pay period sends, each as the expectation records it,
// with `change` applied to every recorded field call of every request.
template <class Change>
json with_each_field_call(json sets, Change&& change) {
  for (json& set : sets)
    for (json& request : set.at("requests"))
      for (json& field_call : request.at("set")) change(field_call);
  return sets;
}

// --- How the cases change the small pay period's company and cards --------------------
// Each takes the company and the pay period (whose "cards" the host hands the export).

// John Q Smith is missing from the company.
void company_without_smith(json& company, json&) {
  company["employees"] = {"Doe, Jane"};
}

// The company lacks the Other Hourly Rate payroll item.
void company_without_other_hourly_rate(json& company, json&) {
  company["payroll_items"] = {"Regular Hourly Rate",          "Overtime Hourly Rate",
                              "Premuim Overtime Hourly Rate", "Vacation Hourly Rate",
                              "Holiday Hourly Rate",          "Sick Hourly Rate"};
}

// The QuickBooks user denies the export access to the company.
void company_denying_access(json& company, json&) {
  company["begin_session_failure"] = {{"number", -2147220448},
                                      {"description", "The QuickBooks user has denied access."}};
}

// QuickBooks is not running and cannot be started for the session.
void quickbooks_not_started(json& company, json&) {
  company["begin_session_failure"] = {{"number", -2147220472},
                                      {"description", "Could not start QuickBooks."}};
}

// The company's time tracking preference is off.
void time_tracking_off(json& company, json&) {
  company["time_tracking"] = false;
}

class QB2000Com : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(simulator_server().loaded()) << "qbsim.dll is not beside the test host";
    ASSERT_TRUE(simulator_server().register_server());
    HRESULT created = S_OK;
    export_ = create_object(L"zorvat.QB2000", &created);
    ASSERT_TRUE(export_) << "zorvat.QB2000 cannot be created: 0x" << std::hex
                         << static_cast<unsigned long>(created);
    ASSERT_TRUE(create_object(kSessionManagerProgId, &created))
        << "the simulated session manager cannot be created";
    quickbooks_ = create_object(kSimulatorControlProgId, &created);
    ASSERT_TRUE(quickbooks_) << "the simulator's control cannot be created";
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
  // Nothing reached QuickBooks: no connection opened, no session begun, no message set
  // sent; the session manager saw only the error path's teardown.
  void expect_nothing_sent() const {
    EXPECT_TRUE(recorded_sets().empty());
    for (const json& session_call : session_calls()) {
      EXPECT_NE(session_call.at("operation"), "OpenConnection");
      EXPECT_NE(session_call.at("operation"), "BeginSession");
    }
  }
  // The export's last session calls ended the session and closed the connection.
  void expect_session_torn_down() const {
    const json calls = session_calls();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[calls.size() - 2].at("operation"), "EndSession");
    EXPECT_EQ(calls[calls.size() - 1].at("operation"), "CloseConnection");
  }
  // Opens a connection and a session of the current company on `manager`, as a client
  // of the session manager does before creating message sets.
  static void open_session(IDispatch* manager) {
    ASSERT_EQ(call(manager, L"OpenConnection", DISPATCH_METHOD,
                   {text_arg("Horalis"), text_arg("Horalis")})
                  .hr,
              S_OK);
    ASSERT_EQ(call(manager, L"BeginSession", DISPATCH_METHOD, {text_arg(""), long_arg(2)}).hr,
              S_OK);
  }
  // The ProgIDs of the session managers created since the company was loaded.
  json created_session_managers() const {
    return json::parse(get(quickbooks_.Get(), L"CreatedSessionManagers").text());
  }
  // The company as it stands: its employees and time entries.
  json company_now() const { return json::parse(get(quickbooks_.Get(), L"Company").text()); }
  std::vector<std::string> box_texts() const {
    std::vector<std::string> texts;
    for (const SeenBox& box : boxes_) texts.push_back(box.text);
    return texts;
  }

  // A pay period of one card for `first` `mi` `last` with `minutes` of regular time on
  // 2004-03-01 and `edit_regular` minutes of edit totals.
  void one_card(const std::string& first, const std::string& mi, const std::string& last,
                int minutes, int edit_regular = 0) {
    json card = period_.at("cards").at("cards").at(0);
    card["FirstName"] = first;
    card["MI"] = mi;
    card["LastName"] = last;
    card["REG"] = minutes;
    card["OT1"] = 0;
    card["EditREG"] = edit_regular;
    card["Days"] = json::array({{{"DayDate", "2004-03-01"},
                                 {"REG", minutes},
                                 {"OT1", 0},
                                 {"OT2", 0},
                                 {"VAC", 0},
                                 {"HOL", 0},
                                 {"SIC", 0},
                                 {"OTH", 0}}});
    period_["cards"]["cards"] = json::array({card});
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
  company_without_smith(missing_smith, period_);
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
  company_without_smith(missing_smith, period_);
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
  expect_session_torn_down();
}

TEST_F(QB2000Com, ReportsMissingPayrollItemsAndStops) {
  json without_other = company();
  company_without_other_hourly_rate(without_other, period_);
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
  company_denying_access(denying, period_);
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
  time_tracking_off(without_time_tracking, period_);
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
  expect_session_torn_down();
}

TEST_F(QB2000Com, RaisesAnErrorWhenTheUserWillNotLaunchQuickBooks) {
  json not_running = company();
  quickbooks_not_started(not_running, period_);
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
  quickbooks_not_started(not_running, period_);
  not_running["company_file"] = "";
  load_company(not_running);
  std::string setup = setup_data();
  const std::string file = to_utf8(company_file.wstring());
  setup.replace(0, setup.find(','), file);
  period_["setupData"] = setup;
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_FALSE(result.boolean());
  EXPECT_EQ(boxes_.size(), 1u);

  // A new process can take seconds to start on a busy machine: wait up to a minute.
  const ULONGLONG deadline = GetTickCount64() + 60000;
  while (!fs::exists(record) && GetTickCount64() < deadline) Sleep(10);
  ASSERT_TRUE(fs::exists(record)) << "the associated program did not start within a minute";
  std::ifstream written(record, std::ios::binary);
  const std::string launched(std::istreambuf_iterator<char>(written), {});
  EXPECT_EQ(launched, "command line: " + to_utf8(witness) + " \"" + file + "\"\n" +
                          "show window: " + std::to_string(SW_SHOWMINNOACTIVE) + "\n");
}

TEST_F(QB2000Com, RaisesActiveXCannotCreateWithoutASessionManager) {
  CallResult result;
  {
    const RegisteredSessionManagers none({});
    ASSERT_TRUE(none.done());
    result = execute();
  }
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 429);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "ActiveX component can't create object: no QuickBooks session manager is "
            "installed; install QuickBooks Desktop, or the QuickBooks SDK's QBFC runtime, to "
            "export to QuickBooks.");
  EXPECT_TRUE(boxes_.empty());
}

TEST_F(QB2000Com, CreatesTheMessageSetsOfQbxml13WithBillableStatus) {
  json newer = company();
  newer["qbxml_versions"] = {"13.0", "1.0"};
  load_company(newer);
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  // From qbXML 6.0 on, "not billable" is BillableStatus bsNotBillable (1).
  json expected = with_each_field_call(expected_sets(), [](json& field_call) {
    if (field_call.at(0) == "IsBillable") field_call = json::array({"BillableStatus", 1});
  });
  for (json& set : expected) set["version"] = "13.0";
  EXPECT_EQ(recorded_sets(), expected);
}

TEST_F(QB2000Com, ReadsTheVersionListHandedOutByReference) {
  load_company(company());
  ASSERT_EQ(
      call(quickbooks_.Get(), L"VersionsByReference", DISPATCH_PROPERTYPUT, {bool_arg(true)}).hr,
      S_OK);
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_EQ(recorded_sets(), expected_sets());
}

TEST_F(QB2000Com, RaisesAClearTypeMismatchForACanadianVersion) {
  json canadian = company();
  canadian["qbxml_versions"] = {"CA3.0"};
  load_company(canadian);
  const CallResult result = execute();
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 13);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "Type mismatch: QuickBooks offers qbXML version \"CA3.0\" first, which is not a "
            "version number major.minor; this export speaks the qbXML versions of the US "
            "editions");
  EXPECT_TRUE(recorded_sets().empty());
}

TEST_F(QB2000Com, SendsAnEditTotalOver48HoursAsDaysAndANegativeRest) {
  // 2430 minutes: Min2Hrs gives 40 (40.5 rounds to even), 40 / 24 rounds to 2 days,
  // so 24:00, 24:00 and 40 - 48 = -8 hours with the 30 minutes left.
  one_card("Jane", "", "Doe", 480, 2430);
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  json expected = json::array();
  expected.push_back(expected_sets().at(0));
  expected.push_back(expected_sets().at(1));
  expected.push_back(json::parse(R"({"version": "1.0", "onError": 1, "requests": [
    {"type": "TimeTrackingAdd", "set": [["EntityRef.FullName", "Doe, Jane"],
      ["Duration", [8, 0, 0]], ["TxnDate", "2004-03-01"],
      ["PayrollItemWageRef.FullName", "Regular Hourly Rate"], ["IsBillable", false],
      ["Notes", "HLS - Regular Hourly Rate"]]}]})"));
  for (const char* duration : {"[24, 0, 0]", "[24, 0, 0]", "[-8, 30, 0]"}) {
    json set = json::parse(R"({"version": "1.0", "onError": 1, "requests": [
      {"type": "TimeTrackingAdd", "set": [["TxnDate", "2004-03-01"],
        ["EntityRef.FullName", "Jane,,Doe"], ["Duration", null],
        ["PayrollItemWageRef.FullName", "Regular Hourly Rate"], ["IsBillable", false],
        ["Notes", "HLS - Edit Totals"]]}]})");
    set["requests"][0]["set"][2][1] = json::parse(duration);
    expected.push_back(set);
  }
  EXPECT_EQ(recorded_sets(), expected);
}

TEST_F(QB2000Com, SendsMarkupCharactersAndANameWithoutFirstNameAsTheyAre) {
  const std::string last = "O'Hara & \"Sons\" <Ltd>";
  one_card("", "", last, 60);
  json with_them = company();
  with_them["employees"] = {last};
  load_company(with_them);
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  // Without a first name the card's name is " " + last, which matches no QuickBooks
  // name: the employee is offered for adding (QuickBooks answers that the name is in
  // use, which is let go) and the entry names the employee trimmed.
  ASSERT_EQ(boxes_.size(), 1u);
  EXPECT_TRUE(boxes_[0].yes_no);
  const json sent = recorded_sets();
  ASSERT_EQ(sent.size(), 4u);
  EXPECT_EQ(sent[2].at("requests").at(0).at("set"),
            json::array({json::array({"FirstName", ""}), json::array({"MiddleName", ""}),
                         json::array({"LastName", last})}));
  json entry = json::parse(R"({"version": "1.0", "onError": 1, "requests": [
    {"type": "TimeTrackingAdd", "set": [["EntityRef.FullName", null],
      ["Duration", [1, 0, 0]], ["TxnDate", "2004-03-01"],
      ["PayrollItemWageRef.FullName", "Regular Hourly Rate"], ["IsBillable", false],
      ["Notes", "HLS - Regular Hourly Rate"]]}]})");
  entry["requests"][0]["set"][0][1] = last;
  EXPECT_EQ(sent[3], entry);
}

TEST_F(QB2000Com, AddsAnEmployeeWhoseNamePartsAreAtTheirLimits) {
  const std::string first(25, 'F');
  const std::string last(25, 'L');
  one_card(first, "MMMMM", last, 60);
  load_company(company());
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  const json sent = recorded_sets();
  ASSERT_EQ(sent.size(), 4u);
  EXPECT_EQ(sent[2].at("requests").at(0).at("set"),
            json::array({json::array({"FirstName", first}), json::array({"MiddleName", "MMMMM"}),
                         json::array({"LastName", last})}));
}

TEST_F(QB2000Com, StopsBeforeSendingANameOverItsLimit) {
  const std::string first(26, 'F');
  one_card(first, "Q", "Doe", 60);
  load_company(company());
  const CallResult result = execute(IDYES);
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 380);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description, "EmployeeAdd/FirstName of employee \"" + first +
                                    " Q Doe\" has 26 characters; QuickBooks takes at most 25. "
                                    "Nothing of this request set was sent.");
  // The two queries went out; of the add, nothing (not even an empty message set).
  const json sent = recorded_sets();
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0], expected_sets()[0]);
  EXPECT_EQ(sent[1], expected_sets()[1]);
  expect_session_torn_down();
}

// Only the 64-bit DLL has this case: the 32-bit one loads the 32-bit session manager.
#ifdef _WIN64
// `prog_id` names a class registered for 32-bit processes only, as the SDK's installer
// and QuickBooks register theirs; the destructor takes it away.
class ThirtyTwoBitOnlyClass {
 public:
  explicit ThirtyTwoBitOnlyClass(std::wstring prog_id) : prog_id_(std::move(prog_id)) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, (class_key_ + L"\\InprocServer32").c_str(), 0, nullptr,
                        0, KEY_WRITE | KEY_WOW64_32KEY, nullptr, &key, nullptr) != ERROR_SUCCESS)
      return;
    const std::wstring library = L"C:\\Program Files (x86)\\Common Files\\Intuit\\QBFC1.dll";
    RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(library.c_str()),
                   static_cast<DWORD>((library.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
    registered_ = RegSetValueW(HKEY_CLASSES_ROOT, (prog_id_ + L"\\CLSID").c_str(), REG_SZ, kClsid,
                               0) == ERROR_SUCCESS;
  }
  ~ThirtyTwoBitOnlyClass() {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, prog_id_.c_str());
    RegDeleteKeyW(HKEY_CLASSES_ROOT, prog_id_.c_str());
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, (class_key_ + L"\\InprocServer32").c_str(), KEY_WOW64_32KEY,
                    0);
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, class_key_.c_str(), KEY_WOW64_32KEY, 0);
  }
  ThirtyTwoBitOnlyClass(const ThirtyTwoBitOnlyClass&) = delete;
  ThirtyTwoBitOnlyClass& operator=(const ThirtyTwoBitOnlyClass&) = delete;
  bool registered() const { return registered_; }

 private:
  static constexpr wchar_t kClsid[] = L"{0D3C2E6A-5B8F-4A3E-9C1D-7E2F4A6B8C90}";
  std::wstring prog_id_;
  std::wstring class_key_ = std::wstring(L"Software\\Classes\\CLSID\\") + kClsid;
  bool registered_ = false;
};

TEST_F(QB2000Com, SaysTheSessionManagerIsThirtyTwoBitInTheSixtyFourBitDll) {
  // The SDK's installer registers its class for 32-bit processes only, whichever
  // generation it is.
  for (const std::wstring prog_id : {L"QBFC1.QBSessionManager", L"QBFC13.QBSessionManager"}) {
    SCOPED_TRACE(to_utf8(prog_id));
    CallResult result;
    {
      // No simulator registered, and the ProgID naming the 32-bit class.
      const RegisteredSessionManagers none({});
      ASSERT_TRUE(none.done());
      const ThirtyTwoBitOnlyClass thirty_two_bit(prog_id);
      ASSERT_TRUE(thirty_two_bit.registered());
      export_ = create_object(L"zorvat.QB2000");
      result = execute();
    }

    ASSERT_TRUE(result.raised()) << std::hex << result.hr;
    EXPECT_EQ(result.number, 429);
    EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
    EXPECT_EQ(result.description,
              "ActiveX component can't create object: QuickBooks' session manager " +
                  to_utf8(prog_id) +
                  " is a 32-bit library, which the 64-bit zorvat.dll cannot load. Export to "
                  "QuickBooks from a 32-bit host, which uses the 32-bit zorvat.dll.");
  }
}
#endif

// --- The newer QBFC generations and the order of the back ends ------------------------

// The message sets as a newer generation's session manager records them, from the
// record of the same export through QBFC2: created for `version`, and each duration
// set as its counts without sign and whether it is negative (negative as a whole when
// any count is).
json as_newer_generation(json sets, const std::string& version) {
  for (json& set : sets) {
    set["version"] = version;
    for (json& request : set.at("requests"))
      for (json& field_call : request.at("set")) {
        if (field_call.at(0) != "Duration") continue;
        const json counts = field_call.at(1);
        bool negative = false;
        json unsigned_counts = json::array();
        for (const json& count : counts) {
          negative = negative || count.get<int>() < 0;
          unsigned_counts.push_back(std::abs(count.get<int>()));
        }
        unsigned_counts.push_back(negative);
        field_call[1] = unsigned_counts;
      }
  }
  return sets;
}

TEST_F(QB2000Com, ANewerGenerationAloneSendsTheSampleAsQbfc2SendsIt) {
  load_company(company());
  const CallResult through_qbfc2 = execute();
  ASSERT_EQ(through_qbfc2.hr, S_OK) << through_qbfc2.number << " " << through_qbfc2.description;
  const json sets_through_qbfc2 = recorded_sets();
  const json calls_through_qbfc2 = session_calls();
  const json company_through_qbfc2 = company_now();
  const std::vector<SeenBox> boxes_through_qbfc2 = boxes_;

  const RegisteredSessionManagers only_qbfc13({13});
  ASSERT_TRUE(only_qbfc13.done());
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_EQ(created_session_managers(), json::array({"QBFC13.QBSessionManager"}));
  EXPECT_EQ(boxes_.size(), boxes_through_qbfc2.size());
  // QuickBooks lists 1.0 and 1.1, both of which QBFC13 builds: the highest serves.
  EXPECT_EQ(recorded_sets(), as_newer_generation(sets_through_qbfc2, "1.1"));
  EXPECT_EQ(session_calls(), calls_through_qbfc2);
  EXPECT_EQ(company_now(), company_through_qbfc2);
  // The five day entries; the edit totals name "Jane,,Doe" and "John,Q,Smith", whom the
  // company does not hold, and are refused on either path.
  EXPECT_EQ(company_now().at("timeEntries").size(), 5u);
}

TEST_F(QB2000Com, ANewerGenerationAddsAMissingEmployeeAsQbfc2Does) {
  json missing_smith = company();
  company_without_smith(missing_smith, period_);
  load_company(missing_smith);
  ASSERT_EQ(execute(IDYES).hr, S_OK);
  const json sets_through_qbfc2 = recorded_sets();
  const json company_through_qbfc2 = company_now();

  const RegisteredSessionManagers only_qbfc16({16});
  ASSERT_TRUE(only_qbfc16.done());
  load_company(missing_smith);
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  ASSERT_EQ(boxes_.size(), 1u);
  EXPECT_EQ(boxes_[0].caption, "Add Missing Employees to QuickBooks and Continue with Export?");
  EXPECT_EQ(recorded_sets(), as_newer_generation(sets_through_qbfc2, "1.1"));
  EXPECT_EQ(company_now(), company_through_qbfc2);
  EXPECT_EQ(company_now().at("employees"), json::array({"Doe, Jane", "John Q Smith"}));
}

TEST_F(QB2000Com, ANewerGenerationSendsANegativeDurationThroughTheSignArgument) {
  // The edit total leaves 24:00, 24:00 and -8 hours with 30 minutes: minus eight and a
  // half hours, which SetValue takes as 8, 30, 0 and negative.
  // The company holds the edit totals' name, so that it takes the entries.
  one_card("Jane", "", "Doe", 480, 2430);
  json with_edit_name = company();
  with_edit_name["employees"].push_back("Jane,,Doe");
  load_company(with_edit_name);
  ASSERT_EQ(execute().hr, S_OK);
  const json company_through_qbfc2 = company_now();

  const RegisteredSessionManagers only_qbfc13({13});
  ASSERT_TRUE(only_qbfc13.done());
  load_company(with_edit_name);
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  const json sent = recorded_sets();
  ASSERT_EQ(sent.size(), 6u);
  std::vector<json> durations;
  for (std::size_t index = 3; index < 6; ++index)
    durations.push_back(sent[index].at("requests").at(0).at("set").at(2));
  EXPECT_EQ(durations, (std::vector<json>{json::parse(R"(["Duration", [24, 0, 0, false]])"),
                                          json::parse(R"(["Duration", [24, 0, 0, false]])"),
                                          json::parse(R"(["Duration", [8, 30, 0, true]])")}));
  // QuickBooks takes the day and the two full days and refuses the negative interval,
  // on either path.
  const json entries = company_now().at("timeEntries");
  ASSERT_EQ(entries.size(), 3u);
  for (const std::size_t full_day : {1u, 2u}) {
    EXPECT_EQ(entries[full_day].at("hours"), 24);
    EXPECT_EQ(entries[full_day].at("minutes"), 0);
    EXPECT_EQ(entries[full_day].at("seconds"), 0);
  }
  EXPECT_EQ(company_now(), company_through_qbfc2);
}

TEST_F(QB2000Com, ANewerGenerationCreatesItsSetsWithTheHighestVersionItBuildsAndTheExportWrites) {
  json newest = company();
  newest["qbxml_versions"] = {"1.0", "2.0", "12.0", "13.0", "14.0", "16.0", "17.0"};
  // QBFC13 builds up to 13.0; QBFC16 up to 16.0, and the export writes no further.
  for (const auto& [generation, version] :
       {std::pair{13, std::string("13.0")}, std::pair{16, std::string("16.0")}}) {
    const RegisteredSessionManagers only({generation});
    ASSERT_TRUE(only.done());
    export_ = create_object(L"zorvat.QB2000");
    load_company(newest);
    const CallResult result = execute();
    ASSERT_EQ(result.hr, S_OK) << generation << ": " << result.number << " " << result.description;
    EXPECT_TRUE(result.boolean()) << generation;
    const json sent = recorded_sets();
    ASSERT_EQ(sent.size(), 8u) << generation;
    for (const json& set : sent) EXPECT_EQ(set.at("version"), version) << generation;
    // From 6.0 on, "not billable" is BillableStatus bsNotBillable (1).
    EXPECT_EQ(sent[2].at("requests").at(0).at("set").at(4), json::parse(R"(["BillableStatus", 1])"))
        << generation;
  }
}

TEST_F(QB2000Com, TheEarlyGenerationsServeBeforeANewerOne) {
  struct Case {
    std::initializer_list<int> registered;
    const char* serves;
    const char* version;
  };
  for (const Case& registered : {Case{{2, 13}, "QBFC2.QBSessionManager", "1.0"},
                                 Case{{1, 13}, "QBFC1.QBSessionManager", "1.0"},
                                 Case{{13, 16}, "QBFC16.QBSessionManager", "1.1"},
                                 Case{{3, 14}, "QBFC14.QBSessionManager", "1.1"}}) {
    const RegisteredSessionManagers prefix(registered.registered);
    ASSERT_TRUE(prefix.done());
    export_ = create_object(L"zorvat.QB2000");
    load_company(company());
    const CallResult result = execute();
    ASSERT_EQ(result.hr, S_OK) << registered.serves << ": " << result.description;
    EXPECT_EQ(created_session_managers(), json::array({registered.serves}));
    const json sent = recorded_sets();
    ASSERT_EQ(sent.size(), 8u) << registered.serves;
    EXPECT_EQ(sent[0].at("version"), registered.version) << registered.serves;
  }
}

TEST_F(QB2000Com, ANewerGenerationWithoutTypeInformationIsRefusedClearly) {
  const RegisteredSessionManagers only_qbfc13({13});
  ASSERT_TRUE(only_qbfc13.done());
  load_company(company());
  ASSERT_EQ(
      call(quickbooks_.Get(), L"HidesTypeInformation", DISPATCH_PROPERTYPUT, {bool_arg(true)}).hr,
      S_OK);
  const CallResult result = execute();
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 438);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "Object doesn't support this property or method: QuickBooks' session manager "
            "QBFC13.QBSessionManager gives no type information for CreateMsgSetRequest, so this "
            "export does not know how to call it");
  // Nothing was sent, and the session was torn down.
  EXPECT_TRUE(recorded_sets().empty());
  expect_session_torn_down();
}

TEST_F(QB2000Com, TheNewerFakeRefusesTheCallShapesItsLibraryRefuses) {
  const RegisteredSessionManagers only_qbfc13({13});
  ASSERT_TRUE(only_qbfc13.done());
  load_company(company());
  HRESULT created = S_OK;
  const ComPtr<IDispatch> manager = create_object(L"QBFC13.QBSessionManager", &created);
  ASSERT_TRUE(manager) << std::hex << created;
  ASSERT_NO_FATAL_FAILURE(open_session(manager.Get()));
  // The country code comes first: the version alone is one argument short.
  EXPECT_EQ(
      call(manager.Get(), L"CreateMsgSetRequest", DISPATCH_METHOD, {short_arg(13), short_arg(0)})
          .hr,
      DISP_E_BADPARAMCOUNT);
  auto refused_as_unsupported = [&](const std::string& country, short major) {
    const CallResult set = call(manager.Get(), L"CreateMsgSetRequest", DISPATCH_METHOD,
                                {text_arg(country), short_arg(major), short_arg(0)});
    EXPECT_TRUE(set.raised()) << country << " " << major;
    EXPECT_EQ(set.number, -2147220445) << country << " " << major;
    EXPECT_EQ(set.description,
              "The version of QBXML that was requested is not supported or is unknown.");
  };
  refused_as_unsupported("US", 14);  // above QBFC13's own generation
  refused_as_unsupported("CA", 13);  // another country's edition
  refused_as_unsupported("", 5);     // no country before qbXML 6.0
  EXPECT_EQ(call(manager.Get(), L"CreateMsgSetRequest", DISPATCH_METHOD,
                 {text_arg(""), short_arg(6), short_arg(0)})
                .hr,
            S_OK);

  const CallResult set = call(manager.Get(), L"CreateMsgSetRequest", DISPATCH_METHOD,
                              {text_arg("US"), short_arg(13), short_arg(0)});
  ASSERT_EQ(set.hr, S_OK);
  const CallResult entry = call(object_of(set).Get(), L"AppendTimeTrackingAddRq",
                                DISPATCH_METHOD | DISPATCH_PROPERTYGET);
  ASSERT_EQ(entry.hr, S_OK);
  const ComPtr<IDispatch> duration =
      object_of(call(object_of(entry).Get(), L"Duration", DISPATCH_METHOD | DISPATCH_PROPERTYGET));
  ASSERT_TRUE(duration);
  // SetValue(hour, minute, second, isNegative): three arguments are one short.
  EXPECT_EQ(
      call(duration.Get(), L"SetValue", DISPATCH_METHOD, {short_arg(8), short_arg(0), short_arg(0)})
          .hr,
      DISP_E_BADPARAMCOUNT);
  const CallResult signed_count =
      call(duration.Get(), L"SetValue", DISPATCH_METHOD,
           {short_arg(-8), short_arg(30), short_arg(0), bool_arg(false)});
  ASSERT_TRUE(signed_count.raised());
  EXPECT_EQ(signed_count.number, 380);
  EXPECT_EQ(signed_count.description,
            "Duration: the counts are -8, 30 and 0; a count takes no sign (the sign is the fourth "
            "argument).");
  EXPECT_EQ(call(duration.Get(), L"SetValue", DISPATCH_METHOD,
                 {short_arg(8), short_arg(30), short_arg(0), bool_arg(true)})
                .hr,
            S_OK);
  EXPECT_EQ(call(manager.Get(), L"EndSession", DISPATCH_METHOD).hr, S_OK);
  EXPECT_EQ(call(manager.Get(), L"CloseConnection", DISPATCH_METHOD).hr, S_OK);
}

// --- The fake's strictness: what its type library's dispatcher refuses -----------------

TEST_F(QB2000Com, TheFakeRefusesTheCallShapesTheRealLibraryRefuses) {
  load_company(company());
  HRESULT created = S_OK;
  const ComPtr<IDispatch> manager = create_object(kSessionManagerProgId, &created);
  ASSERT_TRUE(manager);
  ASSERT_NO_FATAL_FAILURE(open_session(manager.Get()));

  // QBXMLVersionsForSession is an array of strings, not an object with Count.
  const CallResult versions =
      call(manager.Get(), L"QBXMLVersionsForSession", DISPATCH_METHOD | DISPATCH_PROPERTYGET);
  ASSERT_EQ(versions.hr, S_OK);
  EXPECT_EQ(V_VT(&versions.value), VT_ARRAY | VT_BSTR);
  // EndSession is a method: reading it as a property is no member.
  EXPECT_EQ(call(manager.Get(), L"EndSession", DISPATCH_PROPERTYGET).hr, DISP_E_MEMBERNOTFOUND);

  const CallResult set =
      call(manager.Get(), L"CreateMsgSetRequest", DISPATCH_METHOD, {short_arg(1), short_arg(0)});
  ASSERT_EQ(set.hr, S_OK);
  const ComPtr<IDispatch> message_set = object_of(set);
  ASSERT_TRUE(message_set);
  // Append...Rq are methods: DISPATCH_PROPERTYGET alone does not reach them.
  EXPECT_EQ(call(message_set.Get(), L"AppendTimeTrackingAddRq", DISPATCH_PROPERTYGET).hr,
            DISP_E_MEMBERNOTFOUND);
  const CallResult entry =
      call(message_set.Get(), L"AppendTimeTrackingAddRq", DISPATCH_METHOD | DISPATCH_PROPERTYGET);
  ASSERT_EQ(entry.hr, S_OK);
  const ComPtr<IDispatch> duration =
      object_of(call(object_of(entry).Get(), L"Duration", DISPATCH_METHOD | DISPATCH_PROPERTYGET));
  ASSERT_TRUE(duration);
  // SetValue(hour, minute, second): a fourth argument, or a second missing, is refused.
  EXPECT_EQ(call(duration.Get(), L"SetValue", DISPATCH_METHOD,
                 {short_arg(8), short_arg(0), short_arg(0), bool_arg(false)})
                .hr,
            DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(call(duration.Get(), L"SetValue", DISPATCH_METHOD, {short_arg(8), short_arg(0)}).hr,
            DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(call(duration.Get(), L"SetValue", DISPATCH_METHOD,
                 {text_arg("eight"), short_arg(0), short_arg(0)})
                .hr,
            DISP_E_TYPEMISMATCH);
  EXPECT_EQ(
      call(duration.Get(), L"SetValue", DISPATCH_METHOD, {short_arg(8), short_arg(0), short_arg(0)})
          .hr,
      S_OK);
  // Notes takes 4095 characters; SetValue refuses more.
  const ComPtr<IDispatch> notes =
      object_of(call(object_of(entry).Get(), L"Notes", DISPATCH_METHOD | DISPATCH_PROPERTYGET));
  ASSERT_TRUE(notes);
  const CallResult too_long =
      call(notes.Get(), L"SetValue", DISPATCH_METHOD, {text_arg(std::string(4096, 'n'))});
  ASSERT_TRUE(too_long.raised());
  EXPECT_EQ(too_long.number, 380);
  EXPECT_EQ(too_long.description,
            "Notes: the value has 4096 characters; the field takes at most 4095.");
  EXPECT_EQ(call(manager.Get(), L"EndSession", DISPATCH_METHOD).hr, S_OK);
  EXPECT_EQ(call(manager.Get(), L"CloseConnection", DISPATCH_METHOD).hr, S_OK);
}

TEST_F(QB2000Com, TheFakeRefusesAWholeSetWithTheOtherVersionsBillableElement) {
  load_company(company());
  HRESULT created = S_OK;
  const ComPtr<IDispatch> manager = create_object(kSessionManagerProgId, &created);
  ASSERT_TRUE(manager);
  call(manager.Get(), L"OpenConnection", DISPATCH_METHOD, {text_arg("Horalis"), text_arg("H")});
  call(manager.Get(), L"BeginSession", DISPATCH_METHOD, {text_arg(""), long_arg(2)});
  const ComPtr<IDispatch> message_set = object_of(
      call(manager.Get(), L"CreateMsgSetRequest", DISPATCH_METHOD, {short_arg(13), short_arg(0)}));
  ASSERT_TRUE(message_set);
  const ComPtr<IDispatch> entry = object_of(
      call(message_set.Get(), L"AppendTimeTrackingAddRq", DISPATCH_METHOD | DISPATCH_PROPERTYGET));
  ASSERT_TRUE(entry);
  const ComPtr<IDispatch> billable =
      object_of(call(entry.Get(), L"IsBillable", DISPATCH_METHOD | DISPATCH_PROPERTYGET));
  ASSERT_EQ(call(billable.Get(), L"SetValue", DISPATCH_METHOD, {bool_arg(false)}).hr, S_OK);
  const CallResult sent =
      call(manager.Get(), L"DoRequests", DISPATCH_METHOD, {object_arg(message_set.Get())});
  ASSERT_TRUE(sent.raised()) << std::hex << sent.hr;
  EXPECT_EQ(sent.number, -2147220480);
  EXPECT_EQ(sent.description,
            "QuickBooks found an error when parsing the provided XML text stream.");
  call(manager.Get(), L"EndSession", DISPATCH_METHOD);
  call(manager.Get(), L"CloseConnection", DISPATCH_METHOD);
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

// --- Dates with two-digit years, names beyond ASCII --------------------------------

// The user's two-digit-year setting as the DLL reads it. Wine answers the window of
// its locale data (2049 for en-US) and does not read the setting a user can change
// (HKCU\Control Panel\International\Calendars\TwoDigitYearMax); the window of 2029,
// as older Windows sets it, is given to the DLL by answering its GetCalendarInfoW
// call (UserSettingOf2029 below).
int users_two_digit_year_max() {
  DWORD year = 0;
  GetCalendarInfoW(LOCALE_USER_DEFAULT, CAL_GREGORIAN, CAL_ITWODIGITYEARMAX | CAL_RETURN_NUMBER,
                   nullptr, 0, &year);
  return static_cast<int>(year);
}

// A card of `first` `last` with an hour of `type` on each of `dates` (ISO).
json card_on(const json& model, const std::string& first, const std::string& last,
             std::initializer_list<const char*> dates, const std::string& type = "REG") {
  json card = model;
  card["FirstName"] = first;
  card["MI"] = "";
  card["LastName"] = last;
  for (const char* category : {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"}) card[category] = 0;
  card[type] = 60 * static_cast<int>(dates.size());
  card["EditREG"] = 0;
  card["EditOT1"] = 0;
  card["EditOT2"] = 0;
  card["Days"] = json::array();
  for (const char* date : dates) {
    json day = {{"DayDate", date}, {"REG", 0}, {"OT1", 0}, {"OT2", 0},
                {"VAC", 0},        {"HOL", 0}, {"SIC", 0}, {"OTH", 0}};
    day[type] = 60;
    card["Days"].push_back(day);
  }
  return card;
}

// The dates and employee names of the time entries QuickBooks received.
std::vector<std::string> sent_fields(const json& sets, const std::string& field) {
  std::vector<std::string> values;
  for (const json& set : sets)
    for (const json& request : set.at("requests"))
      if (request.at("type") == "TimeTrackingAdd")
        for (const json& field_call : request.at("set"))
          if (field_call.at(0) == field) values.push_back(field_call.at(1).get<std::string>());
  return values;
}

TEST_F(QB2000Com, ReadsTwoDigitYearsThroughTheUsersWindow) {
  ASSERT_EQ(users_two_digit_year_max(), 2049) << "the expectations are for 1950 to 2049";
  const json model = period_.at("cards").at("cards").at(0);
  period_["cards"]["cards"] =
      json::array({card_on(model, "Jane", "Doe", {"2029-12-31", "2030-01-01"})});
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_EQ(sent_fields(recorded_sets(), "TxnDate"),
            (std::vector<std::string>{"2029-12-31", "2030-01-01"}));
}

TEST_F(QB2000Com, RefusesADateTheWindowGivesBackACenturyOffBeforeAnythingIsSent) {
  ASSERT_EQ(users_two_digit_year_max(), 2049) << "the expectations are for 1950 to 2049";
  const json model = period_.at("cards").at("cards").at(0);
  period_["cards"]["cards"] =
      json::array({card_on(model, "Jane", "Doe", {"2049-12-31"}),
                   card_on(model, "José", "Peña", {"2049-12-31", "2050-01-01"})});
  load_company(company());
  const CallResult result = execute();
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 5);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "The card at index 1 (José Peña) holds the day 1/1/2050, which QuickBooks would get "
            "as 1/1/1950: two-digit years are read as 1950 to 2049. Set the Region setting "
            "\"When a two-digit year is entered, interpret it as a year between\" "
            "(--two-digit-year-max on the command line) to a range that holds 2050. Nothing was "
            "sent to QuickBooks.");
  EXPECT_TRUE(boxes_.empty());
  expect_nothing_sent();
}

// GetCalendarInfoW as a user who set the two-digit-year window to 1930 to 2029 sees it;
// every other question goes to Windows.
int WINAPI calendar_info_of_2029(LCID locale, CALID calendar, CALTYPE type, LPWSTR text, int length,
                                 LPDWORD value) {
  if ((type & ~CAL_RETURN_NUMBER) == CAL_ITWODIGITYEARMAX && (type & CAL_RETURN_NUMBER) &&
      value != nullptr) {
    *value = 2029;
    return sizeof(DWORD) / sizeof(WCHAR);
  }
  return GetCalendarInfoW(locale, calendar, type, text, length, value);
}

// The DLL's GetCalendarInfoW answered as above while the patch lives.
class UserSettingOf2029 {
 public:
  UserSettingOf2029()
      : patch_(GetModuleHandleW(L"zorvat.dll"), "kernel32.dll", "GetCalendarInfoW",
               reinterpret_cast<void*>(&calendar_info_of_2029)) {}
  bool in_force() const { return patch_.patched(); }

 private:
  ImportPatch patch_;
};

TEST_F(QB2000Com, UnderTheWindowOf2029TheLastDayOf2029IsSentAsItIs) {
  const UserSettingOf2029 setting;
  ASSERT_TRUE(setting.in_force()) << "zorvat.dll imports no GetCalendarInfoW from kernel32";
  const json model = period_.at("cards").at("cards").at(0);
  period_["cards"]["cards"] = json::array({card_on(model, "Jane", "Doe", {"2029-12-31"})});
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_EQ(sent_fields(recorded_sets(), "TxnDate"), (std::vector<std::string>{"2029-12-31"}));
}

TEST_F(QB2000Com, UnderTheWindowOf2029TheFirstDayOf2030IsRefusedBeforeAnythingIsSent) {
  const UserSettingOf2029 setting;
  ASSERT_TRUE(setting.in_force()) << "zorvat.dll imports no GetCalendarInfoW from kernel32";
  const json model = period_.at("cards").at("cards").at(0);
  period_["cards"]["cards"] =
      json::array({card_on(model, "Jane", "Doe", {"2029-12-31", "2030-01-01"})});
  load_company(company());
  const CallResult result = execute();
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 5);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "The card at index 0 (Jane Doe) holds the day 1/1/2030, which QuickBooks would get "
            "as 1/1/1930: two-digit years are read as 1930 to 2029. Set the Region setting "
            "\"When a two-digit year is entered, interpret it as a year between\" "
            "(--two-digit-year-max on the command line) to a range that holds 2030. Nothing was "
            "sent to QuickBooks.");
  expect_nothing_sent();
}

TEST_F(QB2000Com, TheWindowIsReadAgainAtEveryCall) {
  const json model = period_.at("cards").at("cards").at(0);
  period_["cards"]["cards"] = json::array({card_on(model, "Jane", "Doe", {"2030-01-01"})});
  load_company(company());
  {
    const UserSettingOf2029 setting;
    ASSERT_TRUE(setting.in_force());
    EXPECT_TRUE(execute().raised());
  }
  // The user moved the window back to 1950 to 2049: the same object sends the day.
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_EQ(sent_fields(recorded_sets(), "TxnDate"), (std::vector<std::string>{"2030-01-01"}));
}

// Three cards of accented names, two of whom the company holds.
void accented_names(json& company, json& period) {
  const json model = period.at("cards").at("cards").at(0);
  period["cards"]["cards"] =
      json::array({card_on(model, "José", "Peña", {"2004-03-01"}),
                   card_on(model, "Renée", "Müller-Ñúñez", {"2004-03-01"}, "VAC"),
                   card_on(model, "Grace", "O\u2019Neil", {"2004-03-01"}, "SIC")});
  company["employees"] = {"Peña, José", "Müller-Ñúñez, Renée"};
}

TEST_F(QB2000Com, SendsAccentedNamesAsTheyAre) {
  json accented = company();
  accented_names(accented, period_);
  load_company(accented);
  const CallResult result = execute(IDYES);
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  ASSERT_EQ(boxes_.size(), 1u);
  EXPECT_NE(boxes_[0].text.find("Grace  O’Neil\r\n"), std::string::npos) << boxes_[0].text;
  const json sent = recorded_sets();
  ASSERT_EQ(sent.size(), 6u);
  EXPECT_EQ(sent[2].at("requests").at(0).at("set"),
            json::array({json::array({"FirstName", "Grace"}), json::array({"MiddleName", ""}),
                         json::array({"LastName", "O’Neil"})}));
  EXPECT_EQ(sent_fields(sent, "EntityRef.FullName"),
            (std::vector<std::string>{"Peña, José", "Müller-Ñúñez, Renée", "O’Neil, Grace"}));
}

// --- The qbXML request processor ------------------------------------------------------

constexpr wchar_t kRequestProcessorProgId[] = L"QBXMLRP2.RequestProcessor";

// What QuickBooks answers a document it cannot parse (and the request processor's
// simulator a document that breaks the qbXML schema).
constexpr long kParseError = -2147220480;

// A machine with QuickBooks' request processor and no QBFC of any generation: qbsim.dll's
// session manager unregistered, its request processor registered.
class QB2000RequestProcessor : public QB2000Com {
 protected:
  void SetUp() override {
    QB2000Com::SetUp();
    if (HasFatalFailure()) return;
    ASSERT_TRUE(simulator_server().unregister_server());
    ASSERT_TRUE(simulator_server().register_request_processor());
  }
  void TearDown() override {
    simulator_server().unregister_request_processor();
    simulator_server().register_server();
  }

  // The documents the request processor received, each with the schema check's finding.
  json documents() const {
    return json::parse(get(quickbooks_.Get(), L"RecordedRequestDocuments").text());
  }
  std::vector<std::string> document_texts() const {
    std::vector<std::string> texts;
    for (const json& document : documents()) texts.push_back(document.at("document"));
    return texts;
  }
  // Every document received was valid under the qbXML schema.
  void expect_every_document_valid() const {
    const json received = documents();
    EXPECT_FALSE(received.empty());
    for (const json& document : received)
      EXPECT_TRUE(document.at("valid").get<bool>())
          << document.at("problem").get<std::string>() << " in\n"
          << document.at("document").get<std::string>();
  }
  json time_entries() const { return company_now().at("timeEntries"); }
};

// The small pay period's company lists qbXML 1.0 and 1.1. The request processor builds
// no message sets, so the export writes the highest version listed that it writes: 1.1.
//
// A request set of one TimeTrackingAdd of Jane Doe's edit totals, as the qbXML writer
// lays it out (qbXML 1.1: IsBillable).
std::string edit_total_document(const std::string& duration) {
  return "<?xml version=\"1.0\"?>\n"
         "<?qbxml version=\"1.1\"?>\n"
         "<QBXML>\n"
         "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
         "    <TimeTrackingAddRq requestID=\"1\">\n"
         "      <TimeTrackingAdd>\n"
         "        <TxnDate>2004-03-01</TxnDate>\n"
         "        <EntityRef>\n"
         "          <FullName>Jane,,Doe</FullName>\n"
         "        </EntityRef>\n"
         "        <Duration>" +
         duration +
         "</Duration>\n"
         "        <PayrollItemWageRef>\n"
         "          <FullName>Regular Hourly Rate</FullName>\n"
         "        </PayrollItemWageRef>\n"
         "        <Notes>HLS - Edit Totals</Notes>\n"
         "        <IsBillable>false</IsBillable>\n"
         "      </TimeTrackingAdd>\n"
         "    </TimeTrackingAddRq>\n"
         "  </QBXMLMsgsRq>\n"
         "</QBXML>\n";
}

// The same export through QBFC2 and through the request processor is compared case by
// case in QB2000BackEnds below.
TEST_F(QB2000RequestProcessor, ExportsTheSmallPayPeriodInADocumentForEachRequestSet) {
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.source << ": " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_TRUE(boxes_.empty()) << boxes_.front().text;
  // Nothing went through a QBFC message set; one document per request set.
  EXPECT_TRUE(recorded_sets().empty());
  EXPECT_EQ(documents().size(), expected_sets().size());
  expect_every_document_valid();
  EXPECT_EQ(session_calls(), period_.at("expect").at("sessionCalls"));
  // The five day entries; the edit totals name "Jane,,Doe" and "John,Q,Smith", whom the
  // company does not hold, and are refused.
  EXPECT_EQ(time_entries().size(), 5u);
}

TEST_F(QB2000RequestProcessor, ComesAfterQbfcWhenBothAreRegistered) {
  ASSERT_TRUE(simulator_server().register_server());
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_EQ(recorded_sets(), expected_sets());
  EXPECT_TRUE(documents().empty());
}

// Every QBFC generation comes before the request processor: the early ones and the
// newer ones alike serve the export while the request processor is registered too.
TEST_F(QB2000RequestProcessor, ComesAfterEveryQbfcGeneration) {
  for (const int generation : {1, 3, 13, 16}) {
    const RegisteredSessionManagers prefix({generation});
    ASSERT_TRUE(prefix.done());
    export_ = create_object(L"zorvat.QB2000");
    load_company(company());
    const CallResult result = execute();
    const std::string prog_id = "QBFC" + std::to_string(generation) + ".QBSessionManager";
    ASSERT_EQ(result.hr, S_OK) << prog_id << ": " << result.description;
    EXPECT_EQ(created_session_managers(), json::array({prog_id}));
    EXPECT_EQ(recorded_sets().size(), 8u) << prog_id;
    EXPECT_TRUE(documents().empty()) << prog_id;
  }
}

TEST_F(QB2000RequestProcessor, SendsTheFirstRequestsAsTheQbxmlSchemaLaysThemOut) {
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  const std::vector<std::string> sent = document_texts();
  ASSERT_GE(sent.size(), 3u);
  EXPECT_EQ(sent[0],
            joined({"<?xml version=\"1.0\"?>\n", "<?qbxml version=\"1.1\"?>\n", "<QBXML>\n",
                    "  <QBXMLMsgsRq onError=\"continueOnError\">\n",
                    "    <PayrollItemWageQueryRq requestID=\"1\">\n",
                    "      <MaxReturned>40</MaxReturned>\n", "    </PayrollItemWageQueryRq>\n",
                    "  </QBXMLMsgsRq>\n", "</QBXML>\n"}));
  EXPECT_EQ(sent[1], joined({"<?xml version=\"1.0\"?>\n", "<?qbxml version=\"1.1\"?>\n",
                             "<QBXML>\n", "  <QBXMLMsgsRq onError=\"continueOnError\">\n",
                             "    <EmployeeQueryRq requestID=\"1\"/>\n", "  </QBXMLMsgsRq>\n",
                             "</QBXML>\n"}));
}

TEST_F(QB2000RequestProcessor, SendsANegativeDurationWithItsSignInFront) {
  // 2430 minutes of edit totals: 24:00, 24:00 and -8 hours with 30 minutes.
  one_card("Jane", "", "Doe", 480, 2430);
  load_company(company());
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  const std::vector<std::string> sent = document_texts();
  ASSERT_EQ(sent.size(), 6u);
  EXPECT_EQ(sent[3], edit_total_document("PT24H0M0S"));
  EXPECT_EQ(sent[4], edit_total_document("PT24H0M0S"));
  EXPECT_EQ(sent[5], edit_total_document("-PT8H30M0S"));
  expect_every_document_valid();
  // The day's 8 hours are the one entry the company keeps (the edit totals name the
  // card's key, which is no employee of the company).
  EXPECT_EQ(time_entries(), json::parse(R"([{"date": "2004-03-01", "entity": "Doe, Jane",
    "hours": 8, "minutes": 0, "seconds": 0, "payrollItem": "Regular Hourly Rate",
    "notes": "HLS - Regular Hourly Rate", "billable": false}])"));
}

TEST_F(QB2000RequestProcessor, WritesTheNewestVersionItWritesWhenQuickBooksListsANewerOne) {
  json newer = company();
  newer["qbxml_versions"] = {"17.0", "16.0"};
  load_company(newer);
  const CallResult result = execute();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  const std::vector<std::string> sent = document_texts();
  ASSERT_EQ(sent.size(), expected_sets().size());
  for (const std::string& document : sent) {
    EXPECT_EQ(document.substr(0, 47), "<?xml version=\"1.0\"?>\n<?qbxml version=\"16.0\"?>\n")
        << document;
    EXPECT_EQ(document.find("IsBillable"), std::string::npos) << document;
  }
  EXPECT_NE(sent.back().find("        <BillableStatus>NotBillable</BillableStatus>\n"),
            std::string::npos)
      << sent.back();
  expect_every_document_valid();
}

TEST_F(QB2000RequestProcessor, AnswersADocumentThatBreaksTheSchemaAsOneQuickBooksCannotParse) {
  load_company(company());
  HRESULT created = S_OK;
  const ComPtr<IDispatch> processor = create_object(kRequestProcessorProgId, &created);
  ASSERT_TRUE(processor) << std::hex << created;
  ASSERT_EQ(call(processor.Get(), L"OpenConnection2", DISPATCH_METHOD,
                 {text_arg(""), text_arg("test"), long_arg(1)})
                .hr,
            S_OK);
  const CallResult ticket = call(processor.Get(), L"BeginSession", DISPATCH_METHOD,
                                 {text_arg("C:\\Company\\Horalis Test.QBW"), long_arg(2)});
  ASSERT_EQ(ticket.hr, S_OK) << ticket.description;
  // The duration in words is no ISO 8601 interval.
  std::string broken = edit_total_document("PT24H0M0S");
  broken.replace(broken.find("PT24H0M0S"), 9, "24 hours");
  const CallResult refused = call(processor.Get(), L"ProcessRequest", DISPATCH_METHOD,
                                  {text_arg(ticket.text()), text_arg(broken)});
  EXPECT_TRUE(refused.raised()) << std::hex << refused.hr;
  EXPECT_EQ(refused.number, kParseError);
  EXPECT_EQ(refused.description,
            "QuickBooks found an error when parsing the provided XML text stream.");
  // The same document with the interval written as qbXML writes it is answered.
  const CallResult answered =
      call(processor.Get(), L"ProcessRequest", DISPATCH_METHOD,
           {text_arg(ticket.text()), text_arg(edit_total_document("PT24H0M0S"))});
  ASSERT_EQ(answered.hr, S_OK) << answered.description;
  EXPECT_NE(answered.text().find("<TimeTrackingAddRs requestID=\"1\""), std::string::npos)
      << answered.text();
  const json received = documents();
  ASSERT_EQ(received.size(), 2u);
  EXPECT_FALSE(received[0].at("valid").get<bool>());
  EXPECT_NE(received[0].at("problem").get<std::string>(), "");
  EXPECT_TRUE(received[1].at("valid").get<bool>()) << received[1].at("problem");
  call(processor.Get(), L"EndSession", DISPATCH_METHOD, {text_arg(ticket.text())});
  call(processor.Get(), L"CloseConnection", DISPATCH_METHOD);
}

// The request processor QuickBooks registers for 32-bit processes only: the 64-bit DLL's
// 429 names it, as it names a 32-bit QBFC.
#ifdef _WIN64
TEST_F(QB2000RequestProcessor, SaysTheRequestProcessorIsThirtyTwoBitInTheSixtyFourBitDll) {
  load_company(company());
  ASSERT_TRUE(simulator_server().unregister_request_processor());
  CallResult result;
  {
    const ThirtyTwoBitOnlyClass processor(kRequestProcessorProgId);
    ASSERT_TRUE(processor.registered());
    result = execute();
  }
  ASSERT_TRUE(result.raised()) << std::hex << result.hr;
  EXPECT_EQ(result.number, 429);
  EXPECT_EQ(result.source, "zorvat.QB2000.Execute");
  EXPECT_EQ(result.description,
            "ActiveX component can't create object: QuickBooks' request processor "
            "QBXMLRP2.RequestProcessor is a 32-bit library, which the 64-bit zorvat.dll cannot "
            "load. Export to QuickBooks from a 32-bit host, which uses the 32-bit zorvat.dll.");
  EXPECT_TRUE(documents().empty());
}
#endif

// --- The same export through every back end ---------------------------------------------

// A case of the QB2000 suite: how it changes the small pay period's company and cards,
// how the user answers the export's questions, the version a newer generation creates
// its message sets with (the highest one QuickBooks lists that it builds and the export
// writes), and whether QuickBooks hands its version list out by reference.
struct BackEndCase {
  const char* name;
  void (*prepare)(json& company, json& period);
  int answer = IDYES;
  const char* newer_version = "1.1";
  bool versions_by_reference = false;
};

// A failure names the case.
void PrintTo(const BackEndCase& tried, std::ostream* out) {
  *out << tried.name;
}

// The one back end a prefix has for a run.
enum class BackEnd { kQbfc2, kQbfc13, kRequestProcessor };

// What a host, its user and QuickBooks see of one export.
struct ExportOutcome {
  HRESULT hr = S_OK;
  long number = 0;
  std::string source;
  std::string description;
  bool result = false;
  std::vector<std::string> boxes;  // caption, text and whether it asked, of each box
  json requests;                   // the request sets the company received
  json company;                    // the company's employees and time entries afterwards
  json created;                    // the ProgIDs of the session managers created
  json sets;                       // the message sets a QBFC session manager recorded
  json calls;                      // the session calls
  json documents;                  // the request processor's documents
};

// Each case runs through QBFC2's session manager alone, through QBFC13's alone and
// through the request processor alone, on the same company: the host, the user and
// QuickBooks must see the same export.
class QB2000BackEnds : public QB2000RequestProcessor,
                       public ::testing::WithParamInterface<BackEndCase> {
 protected:
  ExportOutcome run(BackEnd back_end) {
    const bool through_request_processor = back_end == BackEnd::kRequestProcessor;
    if (through_request_processor)
      EXPECT_TRUE(simulator_server().register_request_processor());
    else
      EXPECT_TRUE(simulator_server().unregister_request_processor());
    const RegisteredSessionManagers prefix(
        back_end == BackEnd::kQbfc2    ? std::initializer_list<int>{2}
        : back_end == BackEnd::kQbfc13 ? std::initializer_list<int>{13}
                                       : std::initializer_list<int>{});
    EXPECT_TRUE(prefix.done());
    // A fresh export object: one that ended an export early keeps its session manager.
    export_ = create_object(L"zorvat.QB2000");
    EXPECT_TRUE(export_);
    json changed = company();
    json period = period_;
    GetParam().prepare(changed, period);
    const json kept = period_;
    period_ = period;
    load_company(changed);
    if (GetParam().versions_by_reference) {
      EXPECT_EQ(
          call(quickbooks_.Get(), L"VersionsByReference", DISPATCH_PROPERTYPUT, {bool_arg(true)})
              .hr,
          S_OK);
    }
    const CallResult result = execute(GetParam().answer);
    period_ = kept;
    ExportOutcome outcome;
    outcome.hr = result.hr;
    outcome.number = result.number;
    outcome.source = result.source;
    outcome.description = result.description;
    outcome.result = result.boolean();
    for (const SeenBox& box : boxes_)
      outcome.boxes.push_back(box.caption + "|" + box.text + (box.yes_no ? "|yes/no" : ""));
    outcome.requests = json::parse(get(quickbooks_.Get(), L"ReceivedRequests").text());
    outcome.company = company_now();
    outcome.created = created_session_managers();
    outcome.sets = recorded_sets();
    outcome.calls = session_calls();
    outcome.documents = documents();
    return outcome;
  }
};

TEST_P(QB2000BackEnds, EveryBackEndAloneExportsAsQbfc2Does) {
  const ExportOutcome qbfc2 = run(BackEnd::kQbfc2);
  const ExportOutcome qbfc13 = run(BackEnd::kQbfc13);
  const ExportOutcome processor = run(BackEnd::kRequestProcessor);
  for (const auto& [name, other] :
       {std::pair{"QBFC13", &qbfc13}, std::pair{"the request processor", &processor}}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(other->hr, qbfc2.hr);
    EXPECT_EQ(other->number, qbfc2.number);
    EXPECT_EQ(other->source, qbfc2.source);
    EXPECT_EQ(other->description, qbfc2.description);
    EXPECT_EQ(other->result, qbfc2.result);
    EXPECT_EQ(other->boxes, qbfc2.boxes);
    EXPECT_EQ(other->requests, qbfc2.requests);
    EXPECT_EQ(other->company, qbfc2.company);
  }
  // QBFC2's session manager is created for the export, and as often QBFC13's; the
  // request processor is no session manager.
  ASSERT_FALSE(qbfc2.created.empty());
  EXPECT_EQ(qbfc2.created, json(qbfc2.created.size(), json("QBFC2.QBSessionManager")));
  EXPECT_EQ(qbfc13.created, json(qbfc2.created.size(), json("QBFC13.QBSessionManager")));
  EXPECT_TRUE(processor.created.empty()) << processor.created;
  // QBFC13 creates its message sets for the case's version, with a duration's sign as
  // an argument of its own, and makes the same session calls.
  EXPECT_EQ(qbfc13.sets, as_newer_generation(qbfc2.sets, GetParam().newer_version));
  EXPECT_EQ(qbfc13.calls, qbfc2.calls);
  // Neither session manager reached the request processor; the request processor
  // built no message sets and sent every request set as a document of its own, every
  // one valid under the qbXML schema.
  EXPECT_TRUE(qbfc2.documents.empty());
  EXPECT_TRUE(qbfc13.documents.empty());
  EXPECT_TRUE(processor.sets.empty());
  EXPECT_EQ(processor.documents.size(), processor.requests.size());
  for (const json& document : processor.documents)
    EXPECT_TRUE(document.at("valid").get<bool>())
        << document.at("problem").get<std::string>() << " in\n"
        << document.at("document").get<std::string>();
}

INSTANTIATE_TEST_SUITE_P(
    Cases, QB2000BackEnds,
    ::testing::Values(
        BackEndCase{"SmallPayPeriod", [](json&, json&) {}},
        BackEndCase{"SessionOffering11First",
                    [](json& company, json&) {
                      company["qbxml_versions"] = {"1.1", "1.0"};
                    }},
        BackEndCase{"SessionOffering13",
                    [](json& company, json&) {
                      company["qbxml_versions"] = {"13.0", "1.0"};
                    },
                    IDYES, "13.0"},
        BackEndCase{"VersionsHandedOutByReference", [](json&, json&) {}, IDYES, "1.1", true},
        BackEndCase{"CanadianVersion",
                    [](json& company, json&) { company["qbxml_versions"] = {"CA3.0"}; }, IDYES,
                    "CA3.0"},
        BackEndCase{"MissingEmployeeAdded", company_without_smith, IDYES},
        BackEndCase{"MissingEmployeeRefused", company_without_smith, IDNO},
        BackEndCase{"MissingPayrollItem", company_without_other_hourly_rate},
        BackEndCase{"AccessDenied", company_denying_access},
        BackEndCase{"TimeTrackingOff", time_tracking_off},
        // The edit totals name the card's key, "Jane,,Doe", which the company does not
        // hold: QuickBooks refuses them.
        BackEndCase{"EditTotalsWithANegativeRest",
                    [](json&, json& period) {
                      json& card = period["cards"]["cards"][0];
                      card["EditREG"] = 2430;
                    }},
        // The company holds the edit totals' name: QuickBooks takes the two full days
        // and refuses the negative rest.
        BackEndCase{"EditTotalsOfANameTheCompanyHolds",
                    [](json& company, json& period) {
                      json card =
                          card_on(period["cards"]["cards"][0], "Jane", "Doe", {"2004-03-01"});
                      card["REG"] = 480;
                      card["Days"][0]["REG"] = 480;
                      card["EditREG"] = 2430;
                      period["cards"]["cards"] = json::array({card});
                      company["employees"].push_back("Jane,,Doe");
                    }},
        BackEndCase{"MarkupCharactersWithoutFirstName",
                    [](json& company, json& period) {
                      const std::string last = "O'Hara & \"Sons\" <Ltd>";
                      period["cards"]["cards"] = json::array(
                          {card_on(period["cards"]["cards"][0], "", last, {"2004-03-01"})});
                      company["employees"] = {last};
                    }},
        BackEndCase{"AccentedNames", accented_names},
        BackEndCase{"QuickBooksNotStartedAndNotLaunched", quickbooks_not_started, IDNO},
        BackEndCase{"NamePartsAtTheirLimits",
                    [](json&, json& period) {
                      json card = card_on(period["cards"]["cards"][0], std::string(25, 'F'),
                                          std::string(25, 'L'), {"2004-03-01"});
                      card["MI"] = "MMMMM";
                      period["cards"]["cards"] = json::array({card});
                    }},
        BackEndCase{"NameOverItsLimit",
                    [](json&, json& period) {
                      json card = card_on(period["cards"]["cards"][0], std::string(26, 'F'), "Doe",
                                          {"2004-03-01"});
                      card["MI"] = "Q";
                      period["cards"]["cards"] = json::array({card});
                    }},
        BackEndCase{"TwoDigitYearsAcrossTheWindow",
                    [](json&, json& period) {
                      period["cards"]["cards"] =
                          json::array({card_on(period["cards"]["cards"][0], "Jane", "Doe",
                                               {"2029-12-31", "2030-01-01"})});
                    }},
        BackEndCase{"NoTimeCards",
                    [](json&, json& period) { period["cards"]["cards"] = json::array(); }}),
    [](const ::testing::TestParamInfo<BackEndCase>& tried) { return tried.param.name; });

}  // namespace
}  // namespace zorvat::com::testing
