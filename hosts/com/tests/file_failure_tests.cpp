// Output files that cannot be written, through the DLL as the host meets them: the
// Save dialog is answered with a path in a missing folder, a read-only file, a folder
// or a name too long for the file system. Each failure reaches the host as the classic
// file error with the source of Execute; the folder is left as it was (no temporary
// file, the previous file byte for byte) and the batch, sequence or ticket number in
// SetupData is not used up.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "automation_client.h"
#include "dialog_driver.h"
#include "host_objects.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr char kGenericSetup[] = "0,0,0,0,0,False,True,False,False,False,,0";
constexpr char kADP7Setup[] =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";
constexpr char kPayLinkSetup[] = "7,A001,3,12,VA,HO,QS,R3";
constexpr char kPeachtreeSetup[] =
    "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,ADMN-"
    "02003,1,17";
constexpr char kPreviousFile[] = "the previous export\r\n";

json two_cards() {
  return json::parse(R"({"PeriodEnd": "2004-03-06", "cards": [
      {"ExportID": "E100", "Number": 315, "Shift": 1, "REG": 2400, "OT1": 90, "OT2": 0,
       "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0, "FirstName": "Ann", "MI": "", "LastName": "Lee",
       "Badge": "77", "PeriodStart": "2004-02-29",
       "Days": [{"DayDate": "2004-03-01", "Hours": 540, "REG": 480, "OT1": 60, "OT2": 0,
                 "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]},
      {"ExportID": "E101", "Number": 316, "Shift": 2, "REG": 480, "OT1": 0, "OT2": 0,
       "VAC": 0, "HOL": 0, "SIC": 30, "OTH": 0, "FirstName": "Bob", "MI": "J",
       "LastName": "Ray", "Badge": "78", "PeriodStart": "2004-02-29",
       "Days": [{"DayDate": "2004-03-02", "Hours": 480, "REG": 480, "OT1": 0, "OT2": 0,
                 "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]}]})");
}

std::string read_bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void write_bytes(const fs::path& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
}

// Read-only files and folders left by an earlier run are made writable first, or
// they could not be removed.
void make_writable(const fs::path& folder) {
  std::error_code ignored;
  if (!fs::exists(folder, ignored)) return;
  SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_NORMAL);
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, ignored))
    SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
}

fs::path fresh_folder(const std::string& name) {
  const fs::path folder = config().work / "file-failures" / name;
  make_writable(folder);
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder);
  return folder;
}

// The names in a folder, sorted; sub-folders end in "/".
std::vector<std::string> listing(const fs::path& folder) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    names.push_back(entry.path().filename().string() + (entry.is_directory() ? "/" : ""));
  std::sort(names.begin(), names.end());
  return names;
}

struct ExportRun {
  CallResult result;
  std::vector<std::string> messages;
  std::size_t save_dialogs = 0;
  bool left_open = false;  // a dialog had to be closed by the watchdog
};

// Execute of `object` on two cards, the Save dialog answered with `path`.
ExportRun export_to(IDispatch* object, const std::wstring& path) {
  ComPtr<IDispatch> collection = make_collection(two_cards());
  DialogDriver driver(SaveAnswer::File, path);
  DialogWatchdog watchdog(std::chrono::seconds(30));
  ExportRun run;
  run.result = call(object, L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  watchdog.stop();
  driver.stop();
  run.left_open = watchdog.fired();
  run.messages = driver.message_texts();
  run.save_dialogs = driver.save_dialogs().size();
  return run;
}

ComPtr<IDispatch> object_with(const wchar_t* prog_id, const char* setup) {
  ComPtr<IDispatch> object = create_object(prog_id);
  if (object) {
    EXPECT_EQ(put(object.Get(), L"SetupData", setup).hr, S_OK);
  }
  return object;
}

void expect_raised(const ExportRun& run, long number, const std::string& source,
                   const std::string& description) {
  ASSERT_FALSE(run.left_open) << "the Save dialog did not take the path";
  ASSERT_EQ(run.result.hr, DISP_E_EXCEPTION)
      << "returned " << (run.result.boolean() ? "True" : "False");
  EXPECT_EQ(run.result.number, number);
  EXPECT_EQ(run.result.scode, static_cast<HRESULT>(0x800A0000 + number));
  EXPECT_EQ(run.result.source, source);
  EXPECT_EQ(run.result.description, description);
  EXPECT_EQ(run.save_dialogs, 1u);
  EXPECT_TRUE(run.messages.empty()) << "a failed write shows no message of its own";
}

// --- A folder on the way is missing: 76 ---------------------------------------------------

TEST(FileFailure, MissingFolderRaises76AndKeepsTheBatchNumber) {
  ComPtr<IDispatch> object = object_with(L"zorvat.ADP7", kADP7Setup);
  if (!object) GTEST_SKIP() << "zorvat.ADP7 not available in this DLL";
  const fs::path folder = fresh_folder("missing-folder-adp7");
  const ExportRun run = export_to(object.Get(), (folder / "no-such-folder" / "EPI.CSV").wstring());
  expect_raised(run, 76, "zorvat.ADP7.Execute", "Path not found");
  EXPECT_EQ(listing(folder), std::vector<std::string>{});
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kADP7Setup) << "batch 5 not used up";
}

TEST(FileFailure, MissingFolderRaises76FromGeneric) {
  ComPtr<IDispatch> object = object_with(L"zorvat.Generic", kGenericSetup);
  ASSERT_TRUE(object);
  const fs::path folder = fresh_folder("missing-folder-generic");
  const ExportRun run =
      export_to(object.Get(), (folder / "gone" / "deeper" / "payroll.tab").wstring());
  expect_raised(run, 76, "zorvat.Generic.Execute", "Path not found");
  EXPECT_EQ(listing(folder), std::vector<std::string>{});
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kGenericSetup);
}

TEST(FileFailure, FileInThePlaceOfAFolderRaises76) {
  ComPtr<IDispatch> object = object_with(L"zorvat.Generic", kGenericSetup);
  ASSERT_TRUE(object);
  const fs::path folder = fresh_folder("file-on-the-way");
  write_bytes(folder / "exports", kPreviousFile);
  const ExportRun run = export_to(object.Get(), (folder / "exports" / "payroll.tab").wstring());
  expect_raised(run, 76, "zorvat.Generic.Execute", "Path not found");
  EXPECT_EQ(listing(folder), std::vector<std::string>{"exports"});
  EXPECT_EQ(read_bytes(folder / "exports"), kPreviousFile);
}

// --- A read-only target: 70 ---------------------------------------------------------------

TEST(FileFailure, ReadOnlyFileRaises70AndKeepsThePreviousFileAndSequence) {
  ComPtr<IDispatch> object = object_with(L"zorvat.PCPayLink", kPayLinkSetup);
  if (!object) GTEST_SKIP() << "zorvat.PCPayLink not available in this DLL";
  const fs::path folder = fresh_folder("read-only-paylink");
  const fs::path target = folder / "JJA001I3.012";
  write_bytes(target, kPreviousFile);
  ASSERT_TRUE(SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_READONLY));
  const ExportRun run = export_to(object.Get(), target.wstring());
  expect_raised(run, 70, "zorvat.PCPayLink.Execute", "Permission denied");
  EXPECT_EQ(read_bytes(target), kPreviousFile);
  EXPECT_EQ(listing(folder), std::vector<std::string>{"JJA001I3.012"}) << "no temporary file";
  EXPECT_TRUE(GetFileAttributesW(target.c_str()) & FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kPayLinkSetup) << "sequence 12 not used up";
}

TEST(FileFailure, ReadOnlyFileRaises70AndKeepsTheTicketNumber) {
  ComPtr<IDispatch> object = object_with(L"zorvat.Peachtree", kPeachtreeSetup);
  if (!object) GTEST_SKIP() << "zorvat.Peachtree not available in this DLL";
  const fs::path folder = fresh_folder("read-only-peachtree");
  const fs::path target = folder / "tickets.csv";
  write_bytes(target, kPreviousFile);
  write_bytes(folder / "other.csv", "left alone");
  ASSERT_TRUE(SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_READONLY));
  const ExportRun run = export_to(object.Get(), target.wstring());
  expect_raised(run, 70, "zorvat.Peachtree.Execute", "Permission denied");
  EXPECT_EQ(read_bytes(target), kPreviousFile);
  EXPECT_EQ(read_bytes(folder / "other.csv"), "left alone");
  EXPECT_EQ(listing(folder), (std::vector<std::string>{"other.csv", "tickets.csv"}));
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kPeachtreeSetup) << "ticket 17 not used up";
}

// --- A folder where the file should go: 75 -------------------------------------------------

// The Save dialog opens a folder whose name is typed instead of returning it, so a
// stand-in dialog answers with the folder's path, as a path that became a folder
// between the dialog and the write would reach the class.
TEST(FileFailure, FolderInThePlaceOfTheFileRaises75AndKeepsTheTicketNumber) {
  ComPtr<IDispatch> object = object_with(L"zorvat.Peachtree", kPeachtreeSetup);
  if (!object) GTEST_SKIP() << "zorvat.Peachtree not available in this DLL";
  const fs::path folder = fresh_folder("folder-in-the-way");
  fs::create_directory(folder / "tickets.csv");
  write_bytes(folder / "tickets.csv" / "inside.txt", kPreviousFile);
  ComPtr<IDispatch> collection = make_collection(two_cards());
  CallResult result;
  {
    SaveAnswerStandIn dialog((folder / "tickets.csv").wstring());
    ASSERT_TRUE(dialog.ok());
    result = call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  }
  ASSERT_TRUE(result.raised()) << "returned " << (result.boolean() ? "True" : "False");
  EXPECT_EQ(result.number, 75);
  EXPECT_EQ(result.source, "zorvat.Peachtree.Execute");
  EXPECT_EQ(result.description, "Path/File access error");
  EXPECT_EQ(listing(folder), std::vector<std::string>{"tickets.csv/"});
  EXPECT_EQ(listing(folder / "tickets.csv"), std::vector<std::string>{"inside.txt"});
  EXPECT_EQ(read_bytes(folder / "tickets.csv" / "inside.txt"), kPreviousFile);
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kPeachtreeSetup) << "ticket 17 not used up";
}

// --- A name longer than a file system allows: 52 ---------------------------------------

// The Save dialog takes paths of up to MAX_PATH characters, so the name is made
// too long in the root folder: 256 characters, where a file system allows 255.
TEST(FileFailure, NameTooLongRaises52AndKeepsTheBatchNumber) {
  ComPtr<IDispatch> object = object_with(L"zorvat.ADP7", kADP7Setup);
  if (!object) GTEST_SKIP() << "zorvat.ADP7 not available in this DLL";
  const fs::path root = config().work.root_path();
  const std::vector<std::string> before = listing(root);
  const std::wstring name = std::wstring(252, L'n') + L".CSV";
  const ExportRun run = export_to(object.Get(), (root / name).wstring());
  expect_raised(run, 52, "zorvat.ADP7.Execute", "Bad file name or number");
  EXPECT_EQ(listing(root), before) << "no file and no temporary file";
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kADP7Setup);
}

// The same export into a writable copy of the folder works, so the failures above are
// the target's and not the export's.
TEST(FileFailure, WritableTargetIsReplacedAndTheSequenceAdvances) {
  ComPtr<IDispatch> object = object_with(L"zorvat.PCPayLink", kPayLinkSetup);
  if (!object) GTEST_SKIP() << "zorvat.PCPayLink not available in this DLL";
  const fs::path folder = fresh_folder("writable-paylink");
  const fs::path target = folder / "JJA001I3.012";
  write_bytes(target, kPreviousFile);
  const ExportRun run = export_to(object.Get(), target.wstring());
  ASSERT_EQ(run.result.hr, S_OK) << run.result.number << " " << run.result.description;
  EXPECT_TRUE(run.result.boolean());
  EXPECT_NE(read_bytes(target), kPreviousFile);
  EXPECT_NE(read_bytes(target).find("0007A001|"), std::string::npos) << "office 7, client A001";
  EXPECT_EQ(listing(folder), std::vector<std::string>{"JJA001I3.012"});
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), "7,A001,3,13,VA,HO,QS,R3");
}

}  // namespace
}  // namespace zorvat::com::testing
