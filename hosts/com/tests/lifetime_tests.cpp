// The server over a long session of the host: every creatable class created, used and
// released thousands of times, with exports answered and cancelled, raised errors and
// Setup. Afterwards no object is left (DllCanUnloadNow of the loaded DLL says S_OK),
// and the process holds no more handles or memory after 10,000 cycles than after the
// warm-up.
#include <gtest/gtest.h>

// windows.h comes before psapi.h, which builds on it.
#include <windows.h>

#include <commdlg.h>
#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "automation_client.h"
#include "dialog_driver.h"
#include "host_objects.h"
#include "listed_classes.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr int kWarmUpCycles = 500;
constexpr int kCycles = 10000;
// One round creates each class once. Each file class exports in every cycle, its Save
// dialog answered by a stand-in; every kDialogRound-th round shows the real dialog
// (answered with the file, or cancelled, in turn) and opens Setup.
constexpr int kDialogRound = 50;

// What the process may gain between the warm-up and the end without a leak: a few
// handles and pages of the system's own caches, nowhere near one object or handle per
// cycle (9,500 of each).
constexpr long kHandleSlack = 24;
constexpr long long kHeapSlack = 256 * 1024;
constexpr long long kPrivateSlack = 8 * 1024 * 1024;

// What a cycle does with each class of the list.
struct ClassCase {
  const char* class_name;
  const char* title;
  const char* setup;
  // A setting the check method rejects, and the number it raises (0: Generic's
  // Validate, which accepts everything).
  const char* bad_setup;
  long bad_number;
  bool writes_file;
};

const ClassCase kCases[] = {
    {"Generic", "Generic", "0,0,0,0,0,False,True,False,False,False,,0", "", 0, true},
    {"ADP7", "ADP",
     "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP",
     "ABC,5,1,H3,Hours 3,V,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP", 1006,
     true},
    {"IntuitPAC", "Intuit PC Access Import File V2.0", "ABCE12345,1,2,3,4,5,6,7,1,0,0,0",
     "ABC1234,1,2,3,100,5,6,7,0,0,0,0", 1005, true},
    {"PCPayLink", "PayLink", "7,A001,3,12,VA,HO,QS,R3", "7,A001,10,12,VA,HO,QS,R3", 2003, true},
    {"PCPreview", "Preview", "12,A,B,C,7,D,E,F,G,1,0,0,0", "10000,A,B,C,0,D,E,F,G,0,0,0,0", 3001,
     true},
    {"Peachtree", "Peachtree",
     "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,ADMN-"
     "02003,1,17",
     "1,2,3,21,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,ADMN-"
     "02003,0,17",
     4005, true},
    {"PrimePay", "PrimePay", "4,02,20,23,24,25,28", "128,02,20,23,24,25,28", 5001, true},
    // QB2000 talks to QuickBooks, not to a file: created, checked and released only.
    {"QB2000", "QuickBooks",
     "C:/Company.QBW,Hourly,Overtime,Double Time,Vacation,Holiday,Sick,Other",
     "C:/Company.QBW,Hourly,Overtime,Double Time Rate For Holidays Sundays,Vacation,Holiday,"
     "Sick,Other",
     3, false},
};

json few_cards() {
  return json::parse(R"({"PeriodEnd": "2004-03-06", "cards": [
      {"ExportID": "E100", "Number": 10315, "Shift": 1, "REG": 2400, "OT1": 90, "OT2": 0,
       "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0, "FirstName": "Ann", "MI": "", "LastName": "Lee",
       "Badge": "77", "PeriodStart": "2004-02-29",
       "Days": [{"DayDate": "2004-03-01", "Hours": 540, "REG": 480, "OT1": 60, "OT2": 0,
                 "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]},
      {"ExportID": "E101", "Number": 10316, "Shift": 2, "REG": 480, "OT1": 0, "OT2": 0,
       "VAC": 480, "HOL": 0, "SIC": 30, "OTH": 0, "FirstName": "Bob", "MI": "J",
       "LastName": "Ray", "Badge": "78", "PeriodStart": "2004-02-29",
       "Days": [{"DayDate": "2004-03-02", "Hours": 480, "REG": 480, "OT1": 0, "OT2": 0,
                 "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]},
      {"ExportID": "E102", "Number": 10317, "Shift": 3, "REG": 0, "OT1": 0, "OT2": 0,
       "VAC": 0, "HOL": 480, "SIC": 0, "OTH": 15, "FirstName": "Cy", "MI": "",
       "LastName": "Day", "Badge": "79", "PeriodStart": "2004-02-29", "Days": []}]})");
}

// A period whose one card has none of the properties the classes read: every export
// stops at its first read with 438, before the Save dialog.
json card_without_properties() {
  return json::parse(R"({"PeriodEnd": "2004-03-06", "cards": [{}]})");
}

struct Figures {
  DWORD handles = 0;
  SIZE_T private_bytes = 0;
  SIZE_T working_set = 0;
  long long heap_bytes = 0;  // busy blocks of every heap of the process
};

long long busy_heap_bytes() {
  HANDLE heaps[256] = {};
  const DWORD count = GetProcessHeaps(256, heaps);
  long long total = 0;
  for (DWORD index = 0; index < count && index < 256; ++index) {
    if (!HeapLock(heaps[index])) continue;
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heaps[index], &entry))
      if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) total += static_cast<long long>(entry.cbData);
    HeapUnlock(heaps[index]);
  }
  return total;
}

// One entry of the system's handle list (SystemHandleInformation).
struct SystemHandle {
  ULONG process;
  UCHAR object_type;
  UCHAR flags;
  USHORT handle;
  void* object;
  ACCESS_MASK access;
};

// The handles the process has open. Wine answers GetProcessHandleCount with 0, so
// there the process's entries in the system's handle list are counted.
DWORD handle_count() {
  DWORD count = 0;
  if (GetProcessHandleCount(GetCurrentProcess(), &count) && count > 0) return count;
  using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  if (query == nullptr) return 0;
  constexpr ULONG kSystemHandleInformation = 16;
  constexpr LONG kInfoLengthMismatch = static_cast<LONG>(0xC0000004);
  std::vector<char> buffer(1 << 20);
  ULONG needed = 0;
  LONG status = 0;
  while ((status = query(kSystemHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()),
                         &needed)) == kInfoLengthMismatch)
    buffer.resize(buffer.size() * 2);
  if (status != 0) return 0;
  ULONG entries = 0;
  std::memcpy(&entries, buffer.data(), sizeof entries);
  const auto* list = reinterpret_cast<const SystemHandle*>(buffer.data() + sizeof(void*));
  for (ULONG index = 0; index < entries; ++index)
    if (list[index].process == GetCurrentProcessId()) ++count;
  return count;
}

Figures measure() {
  Figures figures;
  figures.handles = handle_count();
  PROCESS_MEMORY_COUNTERS_EX memory{};
  memory.cb = sizeof memory;
  if (GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                           sizeof memory)) {
    // Wine leaves PrivateUsage at 0; the committed private memory is PagefileUsage too.
    figures.private_bytes = memory.PrivateUsage != 0 ? memory.PrivateUsage : memory.PagefileUsage;
    figures.working_set = memory.WorkingSetSize;
  }
  figures.heap_bytes = busy_heap_bytes();
  return figures;
}

void print(const char* when, const Figures& figures) {
  std::printf(
      "note: lifetime %s: %lu handles, private %llu KiB, working set %llu KiB, heap in use %lld "
      "KiB\n",
      when, static_cast<unsigned long>(figures.handles),
      static_cast<unsigned long long>(figures.private_bytes / 1024),
      static_cast<unsigned long long>(figures.working_set / 1024), figures.heap_bytes / 1024);
}

// The handles the system's own Save dialog keeps after `tries` files were chosen in it
// (Wine keeps one for each), so that they are not taken for the server's.
long handles_kept_by_the_system_dialog(const fs::path& path, int tries) {
  const auto choose = [&] {
    DialogDriver driver(SaveAnswer::File, path.wstring());
    std::wstring file(1024, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFile = file.data();
    dialog.nMaxFile = static_cast<DWORD>(file.size());
    dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    GetSaveFileNameW(&dialog);
    driver.stop();
  };
  choose();
  const DWORD before = handle_count();
  for (int index = 0; index < tries; ++index) choose();
  return static_cast<long>(handle_count()) - static_cast<long>(before);
}

using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();

// The DLL that CoCreateInstance loaded for `object`: the module holding its vtable.
HMODULE module_of(IUnknown* object) {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(*reinterpret_cast<void**>(object)), &module);
  return module;
}

class LifetimeCycles : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = config().work / "lifetime";
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
    fs::create_directories(folder_);
    cards_ = make_collection(few_cards());
    failing_cards_ = make_collection(card_without_properties());

    // The classes of the list, each with its case; a class without one fails the test.
    for (const ClassInfo& info : kListedClasses) {
      const std::string name = to_utf8(info.name);
      const auto found =
          std::find_if(std::begin(kCases), std::end(kCases),
                       [&](const ClassCase& each) { return name == each.class_name; });
      ASSERT_NE(found, std::end(kCases)) << "no lifetime case for the listed class " << name;
      classes_.push_back(found);
    }
    ASSERT_EQ(classes_.size(), std::size(kCases)) << "a lifetime case for a class not in the list";
  }

  // One class created, used and released; the dialog round exports through the Save
  // dialog and opens Setup as well.
  void run_cycle(int cycle) {
    const ClassCase& info = *classes_[static_cast<std::size_t>(cycle) % classes_.size()];
    const int round = cycle / static_cast<int>(classes_.size());
    const std::string name = std::string("zorvat.") + info.class_name;
    SCOPED_TRACE(name + " in cycle " + std::to_string(cycle));
    HRESULT created = S_OK;
    ComPtr<IDispatch> object = create_object(to_wide(name), &created);
    ASSERT_TRUE(object) << "0x" << std::hex << static_cast<unsigned long>(created);
    ASSERT_EQ(put(object.Get(), L"Title", info.title).hr, S_OK);
    ASSERT_EQ(put(object.Get(), L"SetupData", info.setup).hr, S_OK);
    ASSERT_EQ(get(object.Get(), L"SetupData").text(), info.setup);

    // The host's check before an export, here with a bad setting.
    CallResult check;
    if (info.bad_number == 0) {
      check = call(object.Get(), L"Validate", DISPATCH_METHOD, {text_arg("Shift"), text_arg("")});
      ASSERT_EQ(check.hr, S_OK);
    } else {
      check = call(object.Get(), L"ValidateSetupData", DISPATCH_METHOD, {text_arg(info.bad_setup)});
      ASSERT_TRUE(check.raised());
      ASSERT_EQ(check.number, info.bad_number);
      ASSERT_EQ(check.source.rfind(name + ".", 0), 0u) << check.source;
      ASSERT_FALSE(check.description.empty());
    }

    if (info.writes_file) {
      // A card the host cannot answer for: 438 from the card view.
      const CallResult failed =
          call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(failing_cards_.Get())});
      ASSERT_TRUE(failed.raised());
      ASSERT_EQ(failed.number, 438);
      ASSERT_EQ(failed.source, name + ".Execute");
    }
    const fs::path output = folder_ / (name + ".out");
    if (round % kDialogRound != 0) {
      if (!info.writes_file) return;
      // The export through the file step, its Save dialog answered by a stand-in.
      SaveAnswerStandIn dialog(output.wstring());
      ASSERT_TRUE(dialog.ok());
      const CallResult exported =
          call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(cards_.Get())});
      ASSERT_EQ(exported.hr, S_OK)
          << exported.number << " " << exported.source << ": " << exported.description;
      ASSERT_TRUE(exported.boolean());
      ++files_written_;
      return;
    }

    if (info.writes_file) {
      // The real Save dialog, answered with the file or cancelled in turn.
      const bool save = (round / kDialogRound) % 2 == 0;
      std::error_code ignored;
      fs::remove(output, ignored);
      DialogDriver driver(save ? SaveAnswer::File : SaveAnswer::Cancel, output.wstring());
      DialogWatchdog watchdog(std::chrono::seconds(30));
      const CallResult exported =
          call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(cards_.Get())});
      watchdog.stop();
      driver.stop();
      ASSERT_FALSE(watchdog.fired()) << "the Save dialog was left open";
      ASSERT_EQ(exported.hr, S_OK)
          << exported.number << " " << exported.source << ": " << exported.description;
      ASSERT_EQ(exported.boolean(), save);
      ASSERT_EQ(driver.save_dialogs().size(), 1u);
      ASSERT_EQ(fs::exists(output), save);
      ++(save ? files_written_by_dialog_ : exports_cancelled_);
    }

    // Setup with the form cancelled; a host without forms raises 5 instead.
    DialogDriver driver(SaveAnswer::Cancel, L"");
    DialogWatchdog watchdog(std::chrono::seconds(30));
    const CallResult setup = call(object.Get(), L"Setup", DISPATCH_METHOD);
    watchdog.stop();
    driver.stop();
    ASSERT_FALSE(watchdog.fired()) << "the setup form was left open";
    if (setup.raised()) {
      ASSERT_EQ(setup.number, 5) << setup.description;
      ASSERT_EQ(setup.source, name + ".Setup");
      ++setups_raised_;
    } else {
      ASSERT_EQ(setup.hr, S_OK);
      ASSERT_FALSE(setup.boolean()) << "the form was cancelled";
      ++setups_cancelled_;
    }
  }

  fs::path folder_;
  std::vector<const ClassCase*> classes_;  // the list's order
  ComPtr<IDispatch> cards_;
  ComPtr<IDispatch> failing_cards_;
  int files_written_ = 0;
  int files_written_by_dialog_ = 0;
  int exports_cancelled_ = 0;
  int setups_raised_ = 0;
  int setups_cancelled_ = 0;
};

TEST_F(LifetimeCycles, NoObjectHandleOrMemoryOutlivesTenThousandCycles) {
  // The server as loaded by CoCreateInstance, and its DllCanUnloadNow.
  HMODULE module = nullptr;
  {
    ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
    ASSERT_TRUE(object);
    module = module_of(object.Get());
    ASSERT_NE(module, nullptr);
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(module, path, MAX_PATH);
    EXPECT_EQ(lstrcmpiW(path, config().dll.c_str()), 0) << to_utf8(path);
  }
  const auto can_unload_now = reinterpret_cast<CanUnloadNow>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
  ASSERT_NE(can_unload_now, nullptr);
  EXPECT_EQ(can_unload_now(), S_OK);

  constexpr int kSystemDialogTries = 10;
  const long system_dialog_handles =
      handles_kept_by_the_system_dialog(folder_ / "system-dialog.out", kSystemDialogTries);
  std::printf("note: lifetime: the system's Save dialog alone keeps %ld handles per %d files\n",
              system_dialog_handles, kSystemDialogTries);

  const auto start = std::chrono::steady_clock::now();
  const Figures before = measure();
  print("before", before);
  Figures warm;
  int dialog_files_at_warm = 0;
  for (int cycle = 0; cycle < kCycles; ++cycle) {
    run_cycle(cycle);
    if (HasFatalFailure()) return;
    if (cycle + 1 == kWarmUpCycles) {
      // One object held across the measurement keeps the server from unloading.
      ComPtr<IDispatch> held = create_object(L"zorvat.PrimePay");
      ASSERT_TRUE(held);
      EXPECT_EQ(can_unload_now(), S_FALSE);
      held.Reset();
      EXPECT_EQ(can_unload_now(), S_OK);
      warm = measure();
      dialog_files_at_warm = files_written_by_dialog_;
      print("after the warm-up of 500 cycles", warm);
    }
  }
  const Figures after = measure();
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  print("after 10000 cycles", after);
  std::printf(
      "note: lifetime: %d cycles in %.1f s; %d files written (%d through the Save dialog), %d "
      "exports cancelled, %d Setup forms cancelled, %d Setup calls raised 5\n",
      kCycles, seconds, files_written_ + files_written_by_dialog_, files_written_by_dialog_,
      exports_cancelled_, setups_cancelled_, setups_raised_);

  EXPECT_EQ(can_unload_now(), S_OK) << "an object or a lock outlived its release";
  EXPECT_GT(files_written_, 0);
  EXPECT_GT(files_written_by_dialog_, 0);
  EXPECT_GT(exports_cancelled_, 0);
  const long dialog_files = files_written_by_dialog_ - dialog_files_at_warm;
  const long system_allowance =
      (std::max(system_dialog_handles, 0L) * dialog_files + kSystemDialogTries - 1) /
      kSystemDialogTries;
  EXPECT_LE(static_cast<long>(after.handles) - static_cast<long>(warm.handles),
            kHandleSlack + system_allowance)
      << system_allowance << " of them allowed for " << dialog_files
      << " files chosen in the system's Save dialog";
  EXPECT_LE(after.heap_bytes - warm.heap_bytes, kHeapSlack);
  EXPECT_LE(
      static_cast<long long>(after.private_bytes) - static_cast<long long>(warm.private_bytes),
      kPrivateSlack);
}

}  // namespace
}  // namespace zorvat::com::testing
