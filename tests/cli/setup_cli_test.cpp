// `zorvat setup`: the form driven by a script on standard input (exit statuses, the
// settings on stdout, "message:" lines on stderr) and, through a pseudo-terminal, the
// interactive form a person uses.
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "process.h"
#include "test_folder.h"

namespace fs = std::filesystem;
using zorvat::testing_support::ProcessResult;
using zorvat::testing_support::run_process;

namespace {

class SetupCommand : public testing::Test {
 protected:
  void SetUp() override { dir_ = zorvat::testing_support::fresh_test_folder("zorvat-setup"); }
  void TearDown() override { fs::remove_all(dir_); }

  // Runs `zorvat setup ARGS...` with `script` as its standard input.
  ProcessResult setup(std::vector<std::string> args, const std::string& script) {
    const fs::path input = dir_ / "script.txt";
    std::ofstream(input, std::ios::binary) << script;
    std::vector<std::string> argv = {"/bin/sh", "-c", "exec \"$0\" setup \"$@\" < \"$INPUT\"",
                                     ZORVAT_CLI};
    argv.insert(argv.end(), args.begin(), args.end());
    ::setenv("INPUT", input.c_str(), 1);
    return run_process(argv);
  }

  fs::path dir_;
};

TEST_F(SetupCommand, SaveExitsZeroAndPrintsTheSettings) {
  const auto r = setup({"Generic"},
                       "check chkOutputOptions(1) 1\n"
                       "choose optFieldSeperators(1)\n"
                       "select cboLineTerminator LF\n"
                       "click cmdButton(0)\n");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "0,1,0,0,0,False,True,False,False,False,,2\n");
  EXPECT_EQ(r.err, "");
}

TEST_F(SetupCommand, CancelExitsOneAndStillPrintsTheEditedSettings) {
  const auto r = setup({"zorvat.Generic", "--setup", "0,0,0,0,0,False,True,False,False,False,,0"},
                       "check chkOutputOptions(0) 1\nclick cmdButton(1)\n");
  EXPECT_EQ(r.exit_code, 1) << r.err;
  EXPECT_EQ(r.out, "1,0,0,0,0,False,True,False,False,False,,0\n");
}

TEST_F(SetupCommand, EndOfInputClosesTheFormAsCancel) {
  const auto r = setup({"PrimePay"}, "");
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.out, "0,02,20,23,24,25,28\n");
}

TEST_F(SetupCommand, HelpIsReportedOnStderrAndTheFormStaysOpen) {
  const auto r = setup({"Peachtree"}, "click cmdButton(2)\nclick cmdButton(0)\n");
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.err, "help: HORALISHELP.HLP>Second, topic 1094\n");
}

TEST_F(SetupCommand, MessageBoxesArePrintedAsMessageLines) {
  const auto r = setup({"PrimePay"}, "clear txtBatchSequence\ntype txtBatchSequence 128\n");
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.err,
            "message: Batch Sequence must be a numberic value between 0 and 127\n"
            "message: Batch Sequence Field must be between 0 and 127\n");
  EXPECT_EQ(r.out, "128,02,20,23,24,25,28\n");
}

TEST_F(SetupCommand, RaisedCheckExitsThreeWithTheErrorLine) {
  const auto r = setup({"PrimePay"},
                       "clear txtBatchSequence\ntype txtBatchSequence 128\nclick cmdButton(0)\n");
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err,
            "message: Batch Sequence must be a numberic value between 0 and 127\n"
            "message: Batch Sequence Field must be between 0 and 127\n"
            "zorvat: error 5001 in zorvat.PrimePay.Setup: Batch Sequence Number invalid\n");
}

TEST_F(SetupCommand, KeyFiltersApplyToTypedText) {
  const auto r = setup({"PCPreview"},
                       "type txtClientNumber x\nclear txtPayCode(0)\ntype txtPayCode(0) x\n"
                       "click cmdButton(0)\n");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "0,X,B,C,0,D,E,F,G,0,0,0,0\n");
}

TEST_F(SetupCommand, SettingsSeedTheFormWhenTheFieldCountIsExact) {
  const auto r = setup({"PCPayLink", "--setup", "12,AB,3,44,SA,HO,NS,99"},
                       "select cboOTH AV\nclick cmdButton(0)\n");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "12,AB,3,44,SA,HO,NS,AV\n");
}

TEST_F(SetupCommand, RefusedLeaveIsReportedAndTheScriptGoesOn) {
  const auto r = setup({"IntuitPAC", "--title", "QuikPay Import File V2.0"},
                       "type txtCompanyName ABCE12345\n"
                       "leave txtCompanyName\n"
                       "clear txtCompanyName\n"
                       "type txtCompanyName ABCQ12345\n"
                       "leave txtCompanyName\n"
                       "click cmdButton(1)\n");
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.err,
            "message: The Company Name for this export must be either 7 or 9 characters in "
            "length\r\nIf 9 character format, the fourth character must be a 'Q'.\n"
            "zorvat: script line 2: the focus stays in txtCompanyName\n");
  EXPECT_EQ(r.out, "ABCQ12345,,,,,,,,0,0,0,0\n");
}

TEST_F(SetupCommand, TitleDecidesTheLayout) {
  const auto r =
      setup({"IntuitPAC", "--title", "QuikPay Import File V2.0"}, "type txtPayCode(1) 5\n");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "zorvat: script line 1: txtPayCode(1) is not visible\n");
}

TEST_F(SetupCommand, InvalidScriptLineIsAUsageError) {
  const auto r = setup({"Generic"}, "# comments and blank lines are skipped\n\npress Save\n");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "zorvat: script line 3: unknown action \"press\"\n");
}

TEST_F(SetupCommand, UnknownClassIsAUsageError) {
  const auto r = setup({"Nonesuch"}, "");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("unknown export class \"Nonesuch\""), std::string::npos) << r.err;
}

TEST_F(SetupCommand, MissingClassIsAUsageError) {
  const auto r = setup({}, "");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
}

TEST_F(SetupCommand, BadSettingsFieldExitsThreeWithTheOpenFormError) {
  const auto r = setup({"Generic", "--setup", "x,0,0,0,0,False,True,False,False,False,,0"}, "");
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_EQ(r.err, "zorvat: error 13 in zorvat.Generic.Setup: Type mismatch\n");
}

// --- The interactive form, in a pseudo-terminal --------------------------------

struct TerminalResult {
  int exit_code = -1;
  std::string screen;  // what the terminal showed (stderr, with the echoed input)
  std::string out;     // standard output, kept off the terminal
};

// Runs `zorvat setup ARGS...` with its standard input and error on a pseudo-terminal
// and its standard output on a pipe, answering each prompt with the next line.
TerminalResult run_in_terminal(std::vector<std::string> args,
                               const std::vector<std::string>& lines) {
  TerminalResult result;
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
    ADD_FAILURE() << "no pseudo-terminal";
    return result;
  }
  const std::string slave_name = ptsname(master);
  int out_pipe[2];
  if (pipe(out_pipe) != 0) return result;
  args.insert(args.begin(), {ZORVAT_CLI, "setup"});
  const pid_t pid = fork();
  if (pid == 0) {
    setsid();
    const int slave = open(slave_name.c_str(), O_RDWR);
    ioctl(slave, TIOCSCTTY, 0);
    dup2(slave, 0);
    dup2(slave, 2);
    dup2(out_pipe[1], 1);
    close(slave);
    close(master);
    close(out_pipe[0]);
    close(out_pipe[1]);
    std::vector<char*> argv;
    argv.reserve(args.size() + 1);
    for (auto& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(out_pipe[1]);

  // Reads what the terminal shows until a prompt waits for input (or the end).
  std::size_t seen = 0;
  auto wait_for_prompt = [&] {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
      const std::string fresh = result.screen.substr(seen);
      if (fresh.size() >= 2 &&
          (fresh.ends_with("> ") || fresh.ends_with("): ") || fresh.ends_with("it): ")))
        break;
      pollfd fd{master, POLLIN, 0};
      if (poll(&fd, 1, 200) <= 0) continue;
      char buffer[4096];
      const ssize_t n = read(master, buffer, sizeof buffer);
      if (n <= 0) return false;
      result.screen.append(buffer, static_cast<std::size_t>(n));
    }
    seen = result.screen.size();
    return true;
  };
  for (const std::string& line : lines) {
    if (!wait_for_prompt()) break;
    const std::string keys = line + "\n";
    if (write(master, keys.data(), keys.size()) < 0) break;
  }
  // Drain the terminal until the program is gone.
  while (true) {
    pollfd fd{master, POLLIN, 0};
    if (poll(&fd, 1, 5000) <= 0) break;
    char buffer[4096];
    const ssize_t n = read(master, buffer, sizeof buffer);
    if (n <= 0) break;
    result.screen.append(buffer, static_cast<std::size_t>(n));
  }
  char buffer[4096];
  for (ssize_t n; (n = read(out_pipe[0], buffer, sizeof buffer)) > 0;)
    result.out.append(buffer, static_cast<std::size_t>(n));
  close(out_pipe[0]);
  close(master);
  int status = 0;
  waitpid(pid, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

bool shows(const TerminalResult& result, const std::string& text) {
  return result.screen.find(text) != std::string::npos;
}

TEST(SetupInTerminal, PersonTicksPicksAndSaves) {
  // 2: Output Field Titles; 8: Comma; 6 then 3: the line terminator LF; S: Save.
  const auto r = run_in_terminal({"Generic"}, {"2", "8", "6", "3", "s"});
  EXPECT_EQ(r.exit_code, 0) << r.screen;
  EXPECT_EQ(r.out, "0,1,0,0,0,False,True,False,False,False,,2\n");
  EXPECT_TRUE(shows(r, "== Generic V2.0 ==")) << r.screen;
  EXPECT_TRUE(shows(r, "Generic Field Seperators")) << r.screen;
  EXPECT_TRUE(shows(r, "[x] Output Field Titles")) << r.screen;
  EXPECT_TRUE(shows(r, "(o) Comma (,)")) << r.screen;
  EXPECT_TRUE(shows(r, "Line Terminator [LF]")) << r.screen;
  EXPECT_TRUE(shows(r, "/S [Save]")) << r.screen;
}

TEST(SetupInTerminal, EditsGoThroughKeyFiltersAndChangeChecks) {
  // 1: the batch box, emptied with "-", then 12; C: Cancel.
  const auto r = run_in_terminal({"PrimePay"}, {"1", "-", "1", "1x2", "c"});
  EXPECT_EQ(r.exit_code, 1) << r.screen;
  EXPECT_EQ(r.out, "12,02,20,23,24,25,28\n");
  EXPECT_TRUE(shows(r, "message: Batch Sequence must be a numberic value between 0 and 127"))
      << r.screen;
  EXPECT_TRUE(shows(r, "Batch Sequence Number: [12]")) << r.screen;
}

TEST(SetupInTerminal, TextTypedOverAWholeBoxReplacesIt) {
  // The client number "0" is replaced by 15 without passing through an empty box.
  const auto r = run_in_terminal({"PCPayLink"}, {"1", "15", "s"});
  EXPECT_EQ(r.exit_code, 0) << r.screen;
  EXPECT_EQ(r.out, "15,A001,0,0,VA,HO,QS,R3\n");
  EXPECT_FALSE(shows(r, "message:")) << r.screen;
}

TEST(SetupInTerminal, HelpAndScriptActionsWorkToo) {
  const auto r = run_in_terminal({"PCPreview"}, {"h", "type txtClientNumber 7", "?", "S"});
  EXPECT_EQ(r.exit_code, 0) << r.screen;
  EXPECT_EQ(r.out, "07,A,B,C,0,D,E,F,G,0,0,0,0\n");
  EXPECT_TRUE(shows(r, "help: HORALISHELP.HLP>Second, topic 1097")) << r.screen;
}

TEST(SetupInTerminal, EndOfInputCancels) {
  const auto r = run_in_terminal({"Peachtree"}, {"\x04"});
  EXPECT_EQ(r.exit_code, 1) << r.screen;
}

}  // namespace
