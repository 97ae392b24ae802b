// zorvat_cli_tests: runs zorvat.exe as a Windows user does, under Wine.
//
//   zorvat_cli_tests --cli=C:\path\zorvat.exe --corpus=Z:\...\tests\corpus --work=C:\scratch
//                    [--screenshots=DIR]   (a PNG of the setup forms as zorvat.exe shows them)
//
// Every case of the conformance corpus through the command (the written bytes compared
// exactly), a cards file that starts with a UTF-8 byte-order mark, the file in the
// system's ANSI code page by default and in UTF-8 with --code-page utf-8, paths with drive
// letters, backslashes and relative folders, the safe file step over existing and
// read-only files, cards on standard input and the settings string in a file, reconcile
// and export --check, QB2000 against the simulated company, and on a console: the Save
// dialog answered by a user (typed name, Cancel) and the setup form worked by a user, its
// message boxes included.
//
// Prints one line per check, "ok - NAME" or "not ok - NAME" (then why), and "done".
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "dialog_driver.h"
#include "form_user.h"
#include "raii.h"

namespace fs = std::filesystem;
using nlohmann::json;
using zorvat::com::testing::DialogDriver;
using zorvat::com::testing::FormUser;
using zorvat::com::testing::SaveAnswer;
using zorvat::win32::to_utf8;
using zorvat::win32::to_wide;

namespace {

struct Config {
  fs::path cli;
  fs::path corpus;
  fs::path work;
  fs::path screenshots;  // where the forms are pictured; none when empty
} config;

int failures = 0;

void report(bool passed, const std::string& name, const std::string& why = {}) {
  if (passed) {
    std::printf("ok - %s\n", name.c_str());
  } else {
    ++failures;
    std::printf("not ok - %s\n", name.c_str());
    std::istringstream lines(why);
    for (std::string line; std::getline(lines, line);) std::printf("  %s\n", line.c_str());
  }
  std::fflush(stdout);
}

std::string read_bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void write_bytes(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

// Shows unprintable bytes, so a wrong CR or blank is visible in a failure.
std::string visible(const std::string& bytes) {
  std::string shown;
  for (unsigned char c : bytes) {
    if (c == '\r') {
      shown += "\\r";
    } else if (c == '\n') {
      shown += "\\n\n";
    } else if (c < 32 || c > 126) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      shown += hex;
    } else {
      shown.push_back(static_cast<char>(c));
    }
  }
  return shown;
}

// One argument as the C runtime of the started program splits the command line.
std::wstring quoted(const std::wstring& argument) {
  if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos)
    return argument;
  std::wstring result = L"\"";
  std::size_t backslashes = 0;
  for (wchar_t c : argument) {
    if (c == L'\\') {
      ++backslashes;
      continue;
    }
    result.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
    backslashes = 0;
    result.push_back(c);
  }
  result.append(backslashes * 2, L'\\');
  result.push_back(L'"');
  return result;
}

struct Run {
  DWORD exit = 0xFFFFFFFF;
  std::string out;
  std::string err;
  bool finished = false;
};

HANDLE inheritable(const wchar_t* name, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES security{sizeof security, nullptr, TRUE};
  return CreateFileW(name, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &security, disposition,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

// How a run meets its user: with a console (stdin is the console's input, as when a
// user types the command) or without (stdin is NUL, as in a script).
struct RunOptions {
  bool console = false;
  fs::path folder;  // the current folder; the work folder when empty
  // Called with the started (suspended) process before it runs; whatever it returns
  // (a dialog driver, a form user) lives until the process has ended.
  std::function<std::shared_ptr<void>(DWORD process)> attach;
  // Runs the process to its end; the form-driving tests wrap it.
  std::function<void(const std::function<void()>&)> around;
  fs::path input;  // a file whose bytes are the standard input, instead of NUL
};

Run run_cli(const std::vector<std::wstring>& args, const RunOptions& options = {}) {
  Run run;
  std::wstring command_line = quoted(config.cli.wstring());
  for (const auto& argument : args) command_line += L" " + quoted(argument);

  const fs::path out_path = config.work / "stdout.txt";
  const fs::path err_path = config.work / "stderr.txt";
  zorvat::win32::unique_handle out(inheritable(out_path.c_str(), GENERIC_WRITE, CREATE_ALWAYS));
  zorvat::win32::unique_handle err(inheritable(err_path.c_str(), GENERIC_WRITE, CREATE_ALWAYS));
  zorvat::win32::unique_handle in(
      options.console          ? inheritable(L"CONIN$", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING)
      : !options.input.empty() ? inheritable(options.input.c_str(), GENERIC_READ, OPEN_EXISTING)
                               : inheritable(L"NUL", GENERIC_READ, OPEN_EXISTING));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = in.get();
  startup.hStdOutput = out.get();
  startup.hStdError = err.get();
  PROCESS_INFORMATION process{};
  const fs::path folder = options.folder.empty() ? config.work : options.folder;
  if (!CreateProcessW(nullptr, command_line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                      nullptr, folder.c_str(), &startup, &process)) {
    run.err = "CreateProcess failed: " + std::to_string(GetLastError());
    return run;
  }
  zorvat::win32::unique_handle thread(process.hThread);
  zorvat::win32::unique_handle child(process.hProcess);
  std::shared_ptr<void> attached;
  if (options.attach) attached = options.attach(process.dwProcessId);
  const auto to_end = [&] {
    ResumeThread(thread.get());
    if (WaitForSingleObject(child.get(), 60000) != WAIT_OBJECT_0) {
      TerminateProcess(child.get(), 99);
      WaitForSingleObject(child.get(), 10000);
      return;
    }
    run.finished = true;
  };
  if (options.around)
    options.around(to_end);
  else
    to_end();
  GetExitCodeProcess(child.get(), &run.exit);
  attached.reset();
  out.close();
  err.close();
  run.out = read_bytes(out_path);
  run.err = read_bytes(err_path);
  return run;
}

std::string shown(const Run& run) {
  return "exit " + std::to_string(run.exit) + (run.finished ? "" : " (killed: did not end)") +
         "\nstdout: " + run.out + "\nstderr: " + run.err;
}

// The first line of the output, without its line end.
std::string first_line(const std::string& text) {
  std::string line = text.substr(0, text.find('\n'));
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

std::optional<json> report_of(const Run& run) {
  try {
    return json::parse(run.out);
  } catch (const json::exception&) {
    return std::nullopt;
  }
}

fs::path fresh_folder(const std::string& name) {
  const fs::path folder = config.work / name;
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder);
  return folder;
}

std::vector<std::string> names_in(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// --- The conformance corpus -------------------------------------------------------------

void corpus_case(const fs::path& dir) {
  const std::string name = "corpus " + fs::relative(dir, config.corpus).generic_string();
  const json test_case = json::parse(read_bytes(dir / "case.json"));
  const json& expect = test_case.at("expect");
  const std::string command = test_case.value("command", "export");
  const fs::path folder = fresh_folder("corpus");
  const fs::path written = folder / "export.out";

  std::vector<std::wstring> args = {
      to_wide(command), to_wide(test_case.at("class").get<std::string>()),
      L"--setup",       to_wide(test_case.value("setup", "")),
      L"--title",       to_wide(test_case.value("title", "")),
      L"--json"};
  if (command == "export") {
    args.insert(args.end(), {L"--cards", (dir / test_case.value("cards", "cards.json")).wstring(),
                             L"--today", to_wide(test_case.value("today", "2004-03-08"))});
    const std::string save = test_case.value("save", "file");
    if (save == "file")
      args.insert(args.end(), {L"--out", written.wstring()});
    else if (save == "empty")
      args.insert(args.end(), {L"--out", L""});
  }
  const Run run = run_cli(args);
  std::string why;
  const auto check = [&](bool condition, const std::string& what) {
    if (!condition) why += what + "\n";
  };
  check(run.exit == expect.at("exit").get<DWORD>(), "exit status");
  const auto answer = report_of(run);
  check(answer.has_value(), "no JSON report");
  if (answer) {
    check(answer->value("setupData", json()) == expect.at("setupData"), "setupData");
    check(answer->value("messages", json()) == expect.value("messages", json::array()), "messages");
    json error = answer->value("error", json());
    // Where the error belongs is the command's own addition, not the contract's.
    if (error.is_object())
      for (const char* place : {"card", "setting", "note"}) error.erase(place);
    check(error == expect.value("error", json()), "error");
    check(answer->value("missingLetters", json::array()) ==
              expect.value("missingLetters", json::array()),
          "missingLetters");
    // The prefix's ANSI code page, en-US: every expected file is Windows-1252.
    check(expect.at("file").is_null() || answer->value("codePage", json()) == "windows-1252",
          "codePage");
    const json& file = expect.at("file");
    if (file.is_null()) {
      check(answer->value("file", json()).is_null() && !fs::exists(written), "a file was written");
    } else {
      check(answer->value("file", json()) == to_utf8(written.wstring()), "file in the report");
      const std::string expected = read_bytes(dir / file.get<std::string>());
      const std::string actual = fs::exists(written) ? read_bytes(written) : "(none)";
      if (actual != expected)
        why += "--- written:\n" + visible(actual) + "\n--- expected:\n" + visible(expected) + "\n";
    }
  }
  report(why.empty(), name, why.empty() ? "" : why + shown(run));
}

void corpus_tests() {
  std::vector<fs::path> cases;
  for (const auto& entry : fs::recursive_directory_iterator(config.corpus))
    if (entry.is_regular_file() && entry.path().filename() == "case.json")
      cases.push_back(entry.path().parent_path());
  std::sort(cases.begin(), cases.end());
  report(cases.size() >= 20, "the corpus has its cases (" + std::to_string(cases.size()) + ")");
  for (const auto& dir : cases) corpus_case(dir);
}

// --- Cards and paths as Windows users have them ----------------------------------------------

// A case of the corpus serves the tests below: its cards and the bytes Generic must
// write from them with its settings (written by hand, see tests/corpus).
std::string kCards;
std::string kExpected;
constexpr char kSetup[] = "0,1,0,1,0,False,True,False,False,False,,0";

void load_sample() {
  kCards = read_bytes(config.corpus / "cards" / "two-employees.json");
  kExpected = read_bytes(config.corpus / "generic" / "comma-titles-names" / "expected.out");
}

void byte_order_mark_test() {
  const fs::path folder = fresh_folder("bom");
  write_bytes(folder / "cards.json", std::string("\xEF\xBB\xBF") + kCards);
  const Run run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(),
                           L"--setup", to_wide(kSetup), L"--out", (folder / "out.txt").wstring()});
  const std::string written = read_bytes(folder / "out.txt");
  report(run.exit == 0 && written == kExpected,
         "a cards file that starts with a UTF-8 byte-order mark is read",
         "written: " + visible(written) + "\n" + shown(run));
}

void path_tests() {
  const fs::path folder = fresh_folder("paths");
  fs::create_directories(folder / "in");
  fs::create_directories(folder / "out");
  write_bytes(folder / "in" / "cards.json", kCards);

  // Relative paths with backslashes, from the current folder.
  Run run = run_cli({L"export", L"Generic", L"--cards", L"in\\cards.json", L"--setup",
                     to_wide(kSetup), L"--out", L"out\\period.txt"},
                    {false, folder, {}, {}, {}});
  report(run.exit == 0 && read_bytes(folder / "out" / "period.txt") == kExpected,
         "relative paths with backslashes (in\\cards.json, out\\period.txt)", shown(run));

  // Drive-relative forms: "\folder\file" on the current drive, and forward slashes.
  const std::wstring absolute = (folder / "out").wstring();  // C:\...
  const std::wstring rooted = absolute.substr(2) + L"\\rooted.txt";
  run = run_cli({L"export", L"Generic", L"--cards", (folder / "in" / "cards.json").wstring(),
                 L"--setup", to_wide(kSetup), L"--out", rooted, L"--json"});
  const auto report_json = report_of(run);
  report(run.exit == 0 && read_bytes(folder / "out" / "rooted.txt") == kExpected && report_json &&
             report_json->value("file", json()) == to_utf8(rooted),
         "a path rooted on the current drive (\\folder\\file)", shown(run));

  std::wstring forward = absolute + L"/forward.txt";
  for (auto& c : forward)
    if (c == L'\\') c = L'/';
  run = run_cli({L"export", L"Generic", L"--cards", (folder / "in" / "cards.json").wstring(),
                 L"--setup", to_wide(kSetup), L"--out", forward});
  report(run.exit == 0 && read_bytes(folder / "out" / "forward.txt") == kExpected,
         "a drive-letter path with forward slashes", shown(run));

  // A drive letter other than C: (Wine maps Z: to the root of the Unix file system).
  run = run_cli({L"export", L"Generic", L"--cards", L"Z:\\no\\such\\cards.json", L"--setup",
                 to_wide(kSetup), L"--out", (folder / "out" / "z.txt").wstring()});
  report(run.exit == 2 && run.err.find("Z:\\no\\such\\cards.json") != std::string::npos,
         "a missing cards file on another drive is a usage error naming the path", shown(run));

  // Names beyond ASCII reach the file system as typed.
  const std::wstring accented = (folder / "out").wstring() + L"\\P\u00e9riode \u00e9t\u00e9.txt";
  run = run_cli({L"export", L"Generic", L"--cards", (folder / "in" / "cards.json").wstring(),
                 L"--setup", to_wide(kSetup), L"--out", accented});
  report(run.exit == 0 && read_bytes(fs::path(accented)) == kExpected,
         "an output name with accented letters", shown(run));
}

// --- The code page of the written file ------------------------------------------------------

// zorvat.exe writes in the system's ANSI code page (1252 in the en-US prefix) unless
// --code-page names another. The Windows-1252 bytes are the corpus case's, written by
// hand; the UTF-8 ones below are written by hand too (é C3 A9, ñ C3 B1, ü C3 BC, Ñ C3 91,
// ú C3 BA, ’ E2 80 99, á C3 A1, š C5 A1, Š C5 A0, í C3 AD, 王 E7 8E 8B).
void code_page_tests() {
  const fs::path folder = fresh_folder("code-page");
  const fs::path cards = config.corpus / "cards" / "accented-names.json";
  const fs::path case_folder = config.corpus / "generic" / "accented-full-name";
  const std::wstring setup = L"0,1,0,1,1,False,True,False,False,False,,0";

  report(GetACP() == 1252, "the prefix's ANSI code page is 1252 (en-US)",
         "GetACP() = " + std::to_string(GetACP()));

  Run run = run_cli({L"export", L"Generic", L"--cards", cards.wstring(), L"--setup", setup,
                     L"--out", (folder / "ansi.tab").wstring()});
  std::string written = read_bytes(folder / "ansi.tab");
  std::string expected = read_bytes(case_folder / "expected.out");
  report(run.exit == 0 && written == expected,
         "by default the file is in the system's ANSI code page: Windows-1252, one byte a letter",
         "--- written:\n" + visible(written) + "\n--- expected:\n" + visible(expected) + "\n" +
             shown(run));
  // One warning line, for the one card with a letter Windows-1252 lacks (王, card 5).
  std::size_t warnings = 0;
  for (std::size_t at = run.err.find("zorvat: warning: "); at != std::string::npos;
       at = run.err.find("zorvat: warning: ", at + 1))
    ++warnings;
  report(warnings == 1 && run.err.find("zorvat: warning: card 5 (ExportID E205)") == 0,
         "the plain export warns once, for the card with a letter the code page lacks", shown(run));

  run = run_cli({L"export", L"Generic", L"--cards", cards.wstring(), L"--setup", setup, L"--out",
                 (folder / "utf8.tab").wstring(), L"--code-page", L"utf-8", L"--json"});
  written = read_bytes(folder / "utf8.tab");
  expected =
      "EXPORT ID,EmployeeNumber,ShiftCode,RegularHours,FirstLevelOvertime,SecondLevelOvertime,"
      "VACATION,HOLIDAY,SICK,OTHER,FullName,BadgeNumber\r\n"
      "E200,000000201,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00,Jos\xC3\xA9  Pe\xC3\xB1"
      "a,201\r\n"
      "E201,000000202,02,8.00,0.00,0.00,8.00,0.00,0.00,0.00,Ren\xC3\xA9"
      "e A M\xC3\xBCller-\xC3\x91\xC3\xBA\xC3\xB1"
      "ez,202\r\n"
      "E202,000000203,01,10.00,0.00,0.00,0.00,0.00,0.00,0.00,Grace  O\xE2\x80\x99Neil,203\r\n"
      "E203,000000204,01,7.50,0.00,0.00,0.00,0.00,0.50,0.00,Tom\xC3\xA1\xC5\xA1  \xC5\xA0"
      "imek,204\r\n"
      "E204,000000205,01,40.00,0.00,0.00,0.00,0.00,0.00,0.00,Mar\xC3\xAD"
      "a Dolores  Guti\xC3\xA9rrez Ib\xC3\xA1\xC3\xB1"
      "ez,205\r\n"
      "E205,000000206,01,8.00,0.00,0.00,0.00,0.00,0.00,0.00,Lily  \xE7\x8E\x8B,206\r\n";
  const auto answer = report_of(run);
  report(run.exit == 0 && written == expected && answer &&
             answer->value("codePage", json()) == "utf-8" &&
             answer->value("missingLetters", json()) == json::array(),
         "--code-page utf-8 writes UTF-8, and every letter is in it",
         "--- written:\n" + visible(written) + "\n--- expected:\n" + visible(expected) + "\n" +
             shown(run));
}

// --- The safe file step ----------------------------------------------------------------------

void file_step_tests() {
  const fs::path folder = fresh_folder("file-step");
  write_bytes(folder / "cards.json", kCards);
  const fs::path target = folder / "period.txt";
  write_bytes(target, "previous contents\r\n");

  Run run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(),
                     L"--setup", to_wide(kSetup), L"--out", target.wstring()});
  report(run.exit == 0 && read_bytes(target) == kExpected &&
             names_in(folder) == std::vector<std::string>{"cards.json", "period.txt"},
         "an existing file is replaced whole, with no temporary file left beside it",
         shown(run) + "\nfolder: " + joined(names_in(folder)));

  const fs::path locked = folder / "locked.txt";
  write_bytes(locked, "keep me\r\n");
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_READONLY);
  run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(), L"--setup",
                 to_wide(kSetup), L"--out", locked.wstring(), L"--json"});
  auto report_json = report_of(run);
  // As the COM server reports it (file_failure_tests.cpp).
  const json expected_error = {
      {"number", 70}, {"source", "zorvat.Generic.Execute"}, {"description", "Permission denied"}};
  report(run.exit == 3 && report_json && report_json->value("error", json()) == expected_error &&
             read_bytes(locked) == "keep me\r\n" &&
             names_in(folder) == std::vector<std::string>{"cards.json", "locked.txt", "period.txt"},
         "a read-only file is kept: 70 Permission denied, no temporary file left",
         shown(run) + "\nfolder: " + joined(names_in(folder)));
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_NORMAL);

  run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(), L"--setup",
                 to_wide(kSetup), L"--out", (folder / "missing" / "period.txt").wstring()});
  report(run.exit == 3 &&
             first_line(run.err) == "zorvat: error 76 in zorvat.Generic.Execute: Path not found",
         "a missing folder raises 76 Path not found", shown(run));
}

// --- Cards on standard input, settings in a file -----------------------------------------

void standard_input_tests() {
  const fs::path folder = fresh_folder("stdin");
  std::string crlf_cards;  // the sample with CR LF line ends, as a Windows editor saves it
  for (char c : kCards) {
    if (c == '\n') crlf_cards += '\r';
    crlf_cards += c;
  }
  write_bytes(folder / "cards.json", crlf_cards);
  RunOptions piped;
  piped.input = folder / "cards.json";
  Run run = run_cli({L"export", L"Generic", L"--cards", L"-", L"--setup", to_wide(kSetup), L"--out",
                     (folder / "out.txt").wstring()},
                    piped);
  report(run.exit == 0 && read_bytes(folder / "out.txt") == kExpected,
         "--cards - reads the cards from standard input", shown(run));

  // Standard input is read in binary: a Ctrl-Z after the cards is a byte of the input, not
  // its end, and is refused as it is in a file.
  write_bytes(folder / "ctrl-z.json", crlf_cards + "\x1A");
  piped.input = folder / "ctrl-z.json";
  run = run_cli({L"export", L"Generic", L"--cards", L"-", L"--setup", to_wide(kSetup), L"--out",
                 (folder / "z.txt").wstring()},
                piped);
  const Run from_file =
      run_cli({L"export", L"Generic", L"--cards", (folder / "ctrl-z.json").wstring(), L"--setup",
               to_wide(kSetup), L"--out", (folder / "z.txt").wstring()});
  std::string named_stdin = from_file.err;
  const std::string file_name = to_utf8((folder / "ctrl-z.json").wstring());
  if (named_stdin.find(file_name) != std::string::npos)
    named_stdin.replace(named_stdin.find(file_name), file_name.size(), "<stdin>");
  report(run.exit == 2 && from_file.exit == 2 && run.err == named_stdin &&
             !fs::exists(folder / "z.txt"),
         "standard input is read in binary, byte for byte as a file is",
         shown(run) + "\nfrom the file: " + shown(from_file));
}

void settings_file_tests() {
  const fs::path folder = fresh_folder("settings-file");
  write_bytes(folder / "cards.json", kCards);
  // ADP7's CSV layout advances its batch number, 7 to 8, with each export.
  const std::string batch7 =
      "ACM,7,01,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV";
  const std::string batch8 =
      "ACM,8,01,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV";
  const fs::path settings = folder / "adp7.setup";
  write_bytes(settings, batch7 + "\r\n");
  const std::vector<std::wstring> export_adp7 = {
      L"export",       L"ADP7",
      L"--cards",      (folder / "cards.json").wstring(),
      L"--setup-file", settings.wstring(),
      L"--out",        (folder / "EPIACM07.CSV").wstring()};
  Run run = run_cli(export_adp7);
  report(
      run.exit == 0 && first_line(run.out) == batch8 && read_bytes(settings) == batch8 + "\r\n" &&
          names_in(folder) == std::vector<std::string>{"EPIACM07.CSV", "adp7.setup", "cards.json"},
      "--setup-file: the new settings string replaces the file's, its CR LF kept",
      shown(run) + "\nsettings file: " + visible(read_bytes(settings)) +
          "\nfolder: " + joined(names_in(folder)));

  write_bytes(settings, batch7 + "\r\n");
  SetFileAttributesW(settings.c_str(), FILE_ATTRIBUTE_READONLY);
  run = run_cli(export_adp7);
  report(
      run.exit == 3 && first_line(run.out) == batch8 &&
          first_line(run.err) == "zorvat: settings file " + to_utf8(settings.wstring()) +
                                     ": not updated (Permission denied); it still holds the "
                                     "settings string it was read with" &&
          read_bytes(settings) == batch7 + "\r\n" &&
          names_in(folder) == std::vector<std::string>{"EPIACM07.CSV", "adp7.setup", "cards.json"},
      "--setup-file: a read-only settings file is kept, and the export still reported",
      shown(run) + "\nsettings file: " + visible(read_bytes(settings)));
  SetFileAttributesW(settings.c_str(), FILE_ATTRIBUTE_NORMAL);

  write_bytes(settings, batch7 + "\r\nsecond line\r\n");
  run = run_cli(export_adp7);
  report(run.exit == 2 && first_line(run.err).find("adp7.setup: line 2: ") != std::string::npos &&
             read_bytes(settings) == batch7 + "\r\nsecond line\r\n",
         "--setup-file: a second line is refused", shown(run));
}

// --- Reconciliation and QuickBooks, as on Linux ------------------------------------------

void reconcile_tests() {
  const fs::path folder = fresh_folder("reconcile");
  write_bytes(folder / "cards.json", kCards);
  write_bytes(folder / "period.txt", kExpected);
  Run run = run_cli({L"reconcile", L"Generic", L"--cards", (folder / "cards.json").wstring(),
                     L"--setup", to_wide(kSetup), (folder / "period.txt").wstring()});
  report(run.exit == 0, "zorvat reconcile accounts for every minute of a written file", shown(run));

  // Ann Lee's 40.00 regular hours made 41.00: a difference with no reason.
  std::string altered = kExpected;
  const auto at = altered.find(",40.00,");
  if (at != std::string::npos) altered.replace(at, 7, ",41.00,");
  write_bytes(folder / "altered.txt", altered);
  run = run_cli({L"reconcile", L"Generic", L"--cards", (folder / "cards.json").wstring(),
                 L"--setup", to_wide(kSetup), (folder / "altered.txt").wstring()});
  report(at != std::string::npos && run.exit == 4,
         "zorvat reconcile finds an hour changed in the file (exit 4)", shown(run));

  run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(), L"--setup",
                 to_wide(kSetup), L"--check"});
  report(run.exit == 0 && names_in(folder).size() == 3,
         "zorvat export --check writes nothing and finds no unexplained difference", shown(run));
}

void quickbooks_tests() {
  const fs::path examples = config.corpus.parent_path().parent_path() / "examples";
  const std::string setup = first_line(read_bytes(examples / "qb2000.setup"));
  Run run = run_cli({L"export", L"QB2000", L"--cards", (examples / "sample-period.json").wstring(),
                     L"--setup", to_wide(setup), L"--qb-company",
                     (examples / "qb2000-company.json").wstring(), L"--answer", L"yes", L"--json"});
  const auto answer = report_of(run);
  const json question =
      "The following employees were not found in QuickBooks: \r\nLiam P Murphy\r\n\r\n"
      "Do you want to add these Employees to Quickbooks and continue with Export? ";
  report(run.exit == 0 && answer && answer->value("result", false) &&
             answer->value("setupData", json()) == setup &&
             answer->value("messages", json()) == json::array({question}),
         "export QB2000 to the simulated company adds the missing employee when answered yes",
         shown(run));

  // The request log: Jane Doe, known to the company as "Doe, Jane", worked 8 hours and 90
  // minutes of overtime on 1 March 2004, and has 40 hours of regular edit totals. Every
  // request set is one document. The day is one set of two entries under the company's
  // "Last, First" name; 90 minutes are sent as 2 hours 30 (hours rounded, ties to even).
  // The edit totals go under the card's own key, 40 hours as 24, 24 and -8.
  const fs::path log_folder = fresh_folder("qb-log");
  write_bytes(log_folder / "cards.json", R"({"cards": [{"FirstName": "Jane", "MI": "",
    "LastName": "Doe", "EditREG": 2400, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-03-01",
    "Days": [{"DayDate": "2004-03-01", "REG": 480, "OT1": 90, "OT2": 0, "VAC": 0, "HOL": 0,
              "SIC": 0, "OTH": 0}]}]})");
  write_bytes(log_folder / "company.json", R"({"company_file": "C:\\Company\\Sample.QBW",
    "payroll_items": ["Regular Hourly Rate", "Overtime Hourly Rate",
      "Premuim Overtime Hourly Rate", "Vacation Hourly Rate", "Holiday Hourly Rate",
      "Sick Hourly Rate", "Other Hourly Rate"],
    "employees": ["Doe, Jane"]})");
  const auto edit_total = [](const std::string& duration) {
    return "<?xml version=\"1.0\"?>\n"
           "<?qbxml version=\"1.0\"?>\n"
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
  };
  const std::string expected_log =
      "<?xml version=\"1.0\"?>\n"
      "<?qbxml version=\"1.0\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
      "    <PayrollItemWageQueryRq requestID=\"1\">\n"
      "      <MaxReturned>40</MaxReturned>\n"
      "    </PayrollItemWageQueryRq>\n"
      "  </QBXMLMsgsRq>\n"
      "</QBXML>\n"
      "<?xml version=\"1.0\"?>\n"
      "<?qbxml version=\"1.0\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
      "    <EmployeeQueryRq requestID=\"1\"/>\n"
      "  </QBXMLMsgsRq>\n"
      "</QBXML>\n"
      "<?xml version=\"1.0\"?>\n"
      "<?qbxml version=\"1.0\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
      "    <TimeTrackingAddRq requestID=\"1\">\n"
      "      <TimeTrackingAdd>\n"
      "        <TxnDate>2004-03-01</TxnDate>\n"
      "        <EntityRef>\n"
      "          <FullName>Doe, Jane</FullName>\n"
      "        </EntityRef>\n"
      "        <Duration>PT8H0M0S</Duration>\n"
      "        <PayrollItemWageRef>\n"
      "          <FullName>Regular Hourly Rate</FullName>\n"
      "        </PayrollItemWageRef>\n"
      "        <Notes>HLS - Regular Hourly Rate</Notes>\n"
      "        <IsBillable>false</IsBillable>\n"
      "      </TimeTrackingAdd>\n"
      "    </TimeTrackingAddRq>\n"
      "    <TimeTrackingAddRq requestID=\"2\">\n"
      "      <TimeTrackingAdd>\n"
      "        <TxnDate>2004-03-01</TxnDate>\n"
      "        <EntityRef>\n"
      "          <FullName>Doe, Jane</FullName>\n"
      "        </EntityRef>\n"
      "        <Duration>PT2H30M0S</Duration>\n"
      "        <PayrollItemWageRef>\n"
      "          <FullName>Overtime Hourly Rate</FullName>\n"
      "        </PayrollItemWageRef>\n"
      "        <Notes>HLS - Overtime Hourly Rate</Notes>\n"
      "        <IsBillable>false</IsBillable>\n"
      "      </TimeTrackingAdd>\n"
      "    </TimeTrackingAddRq>\n"
      "  </QBXMLMsgsRq>\n"
      "</QBXML>\n" +
      edit_total("PT24H0M0S") + edit_total("PT24H0M0S") + edit_total("-PT8H0M0S");
  run =
      run_cli({L"export", L"QB2000", L"--cards", (log_folder / "cards.json").wstring(), L"--setup",
               to_wide(setup), L"--qb-company", (log_folder / "company.json").wstring(),
               L"--qb-log", (log_folder / "requests.xml").wstring()});
  const std::string logged = read_bytes(log_folder / "requests.xml");
  report(run.exit == 0 && logged == expected_log,
         "--qb-log writes every qbXML request document sent to the simulated company",
         shown(run) + "\nlog:\n" + visible(logged));

  // Two-digit years: zorvat.exe reads them through the window Windows answers (Wine's
  // en-US locale: 2049), or through --two-digit-year-max.
  const fs::path folder = fresh_folder("two-digit-years");
  write_bytes(folder / "cards.json", R"({"cards": [{"FirstName": "Jane", "MI": "",
    "LastName": "Doe", "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2030-01-01",
    "Days": [{"DayDate": "2030-01-01", "REG": 60, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0,
              "SIC": 0, "OTH": 0},
             {"DayDate": "2050-01-01", "REG": 60, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0,
              "SIC": 0, "OTH": 0}]}]})");
  const std::vector<std::wstring> check = {
      L"export",  L"QB2000",      L"--cards", (folder / "cards.json").wstring(),
      L"--setup", to_wide(setup), L"--check"};
  run = run_cli(check);
  report(run.exit == 4 &&
             run.out.find("The card at index 0 (Jane Doe) holds the day 1/1/2050, which "
                          "QuickBooks would get as 1/1/1950: two-digit years are read as 1950 "
                          "to 2049.") == 0,
         "export QB2000 --check reads two-digit years through the window Windows answers",
         shown(run));
  std::vector<std::wstring> narrow = check;
  narrow.insert(narrow.end(), {L"--two-digit-year-max", L"2029"});
  run = run_cli(narrow);
  report(run.exit == 4 &&
             run.out.find("holds the day 1/1/2030, which QuickBooks would get as 1/1/1930: "
                          "two-digit years are read as 1930 to 2029.") != std::string::npos,
         "--two-digit-year-max 2029 moves the window", shown(run));
  std::vector<std::wstring> refused = check;
  refused.insert(refused.end(), {L"--two-digit-year-max", L"98"});
  run = run_cli(refused);
  report(run.exit == 2 && run.err.find("\"98\" is not a year from 99 to 9999") != std::string::npos,
         "--two-digit-year-max 98 is a usage error", shown(run));
}

// --- The Save dialog and the setup form on a console --------------------------------------

void save_dialog_tests() {
  const fs::path folder = fresh_folder("dialog");
  write_bytes(folder / "cards.json", kCards);
  const fs::path typed = folder / "typed.txt";

  std::shared_ptr<DialogDriver> driver;
  RunOptions options;
  options.console = true;
  options.attach = [&](DWORD process) {
    driver = std::make_shared<DialogDriver>(SaveAnswer::File, typed.wstring(), process);
    return driver;
  };
  Run run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(),
                     L"--setup", to_wide(kSetup)},
                    options);
  driver->stop();
  const auto dialogs = driver->save_dialogs();
  report(run.exit == 0 && dialogs.size() == 1 && read_bytes(typed) == kExpected &&
             first_line(run.out) == kSetup,
         "on a console without --out the Windows Save dialog asks, and the typed name is written",
         shown(run) + "\nSave dialogs seen: " + std::to_string(dialogs.size()));
  if (!dialogs.empty())
    report(!dialogs[0].filters.empty() && !dialogs[0].title.empty(),
           "the Save dialog shows its title and the class's file types (" +
               to_utf8(dialogs[0].title) + ")");

  options.attach = [&](DWORD process) {
    driver = std::make_shared<DialogDriver>(SaveAnswer::Cancel, std::wstring(), process);
    return driver;
  };
  run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(), L"--setup",
                 to_wide(kSetup), L"--json"},
                options);
  driver->stop();
  // --json asks no one: the dialog is cancelled without being shown.
  report(run.exit == 1 && driver->save_dialogs().empty(),
         "with --json the Save dialog is not shown and counts as cancelled", shown(run));

  run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(), L"--setup",
                 to_wide(kSetup)},
                options);
  driver->stop();
  report(run.exit == 1 && driver->save_dialogs().size() == 1 &&
             names_in(folder) == std::vector<std::string>{"cards.json", "typed.txt"},
         "Cancel in the Save dialog: Execute returns False and nothing is written", shown(run));

  options.console = false;
  run = run_cli({L"export", L"Generic", L"--cards", (folder / "cards.json").wstring(), L"--setup",
                 to_wide(kSetup)},
                options);
  driver->stop();
  report(run.exit == 1 && driver->save_dialogs().empty(),
         "without a console no dialog is shown and the Save counts as cancelled", shown(run));
}

struct FormRun {
  Run run;
  std::vector<std::string> messages;
};

FormRun setup_on_console(const std::vector<std::wstring>& args, const std::string& form_name,
                         const std::function<void(FormUser&, HWND)>& script) {
  FormRun outcome;
  std::shared_ptr<FormUser> user;
  RunOptions options;
  options.console = true;
  options.attach = [&](DWORD process) {
    user = std::make_shared<FormUser>(process);
    return user;
  };
  options.around = [&](const std::function<void()>& to_end) {
    zorvat::com::testing::with_form(
        *user, form_name, [&](HWND form) { script(*user, form); }, to_end);
  };
  outcome.run = run_cli(args, options);
  outcome.messages = user->messages();
  return outcome;
}

void setup_form_tests() {
  bool caption_right = false;
  FormRun outcome = setup_on_console(
      {L"setup", L"Generic", L"--setup", L"0,0,0,0,0,False,True,False,False,False,,0"},
      "frmGeneric", [&](FormUser& user, HWND form) {
        caption_right = user.caption(form) == L"Generic V2.0";
        user.click(form, "chkOutputOptions(2)");
        FormUser::screenshot(form, config.screenshots, "setup-generic.png");
        user.click(form, "cmdButton(0)");
      });
  report(outcome.run.exit == 0 && caption_right &&
             first_line(outcome.run.out) == "0,0,1,0,0,False,True,False,False,False,,0",
         "zorvat setup on a console opens the Windows form; Save prints the ticked option",
         shown(outcome.run));

  outcome = setup_on_console({L"setup", L"PrimePay", L"--setup", L"5,02,20,23,24,25,28"},
                             "frmPrimePay", [&](FormUser& user, HWND form) {
                               user.type(form, "txtBatchSequence", L"00");
                               user.click(form, "cmdButton(0)");
                             });
  report(outcome.run.exit == 3 &&
             outcome.messages ==
                 std::vector<std::string>{"Batch Sequence Field must be between 0 and 127"} &&
             first_line(outcome.run.err) ==
                 "zorvat: error 5001 in zorvat.PrimePay.Setup: Batch Sequence Number invalid",
         "the form's checks show Windows message boxes; Setup's error is reported as on Linux",
         shown(outcome.run) + "\nmessages: " + joined(outcome.messages));

  outcome =
      setup_on_console({L"setup", L"PCPreview", L"--setup", L"0,A,B,C,0,D,E,F,G,0,0,0,0"},
                       "frmPCPreview", [&](FormUser& user, HWND form) {
                         user.type(form, "txtPayCode(1)", L"x");
                         FormUser::screenshot(form, config.screenshots, "setup-pcpreview.png");
                         user.click(form, "cmdButton(1)");
                       });
  report(outcome.run.exit == 1 && first_line(outcome.run.out) == "0,A,BX,C,0,D,E,F,G,0,0,0,0",
         "Cancel on the form: exit 1 and the settings as the form left them", shown(outcome.run));
}

bool parse_arguments(int argc, wchar_t** argv) {
  for (int index = 1; index < argc; ++index) {
    const std::wstring argument = argv[index];
    const auto value = [&](const wchar_t* prefix) -> std::optional<std::wstring> {
      const std::wstring start = prefix;
      if (argument.rfind(start, 0) != 0) return std::nullopt;
      return argument.substr(start.size());
    };
    if (auto cli = value(L"--cli="))
      config.cli = *cli;
    else if (auto corpus = value(L"--corpus="))
      config.corpus = *corpus;
    else if (auto work = value(L"--work="))
      config.work = *work;
    else if (auto screenshots = value(L"--screenshots="))
      config.screenshots = *screenshots;
    else
      return false;
  }
  return !config.cli.empty() && !config.corpus.empty() && !config.work.empty();
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (!parse_arguments(argc, argv)) {
    std::fprintf(stderr,
                 "usage: zorvat_cli_tests --cli=EXE --corpus=DIR --work=DIR [--screenshots=DIR]\n");
    return 2;
  }
  fs::create_directories(config.work);
  // The console a user types in: zorvat.exe started "on a console" inherits this one.
  // Started from a shell without a terminal, Wine gives the process none that works.
  FreeConsole();
  if (!AllocConsole()) {
    std::printf("not ok - a console for the interactive tests (error %lu)\n", GetLastError());
    return 1;
  }
  load_sample();
  corpus_tests();
  byte_order_mark_test();
  code_page_tests();
  path_tests();
  file_step_tests();
  standard_input_tests();
  settings_file_tests();
  reconcile_tests();
  quickbooks_tests();
  save_dialog_tests();
  setup_form_tests();
  std::printf("done\n");
  return failures == 0 ? 0 : 1;
}
