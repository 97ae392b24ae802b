// The Save dialog on a terminal: the command shows the filter and the proposed name
// and reads the path the user types. Driven through a pseudo-terminal, as a person
// at a keyboard would answer it.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "test_folder.h"

namespace fs = std::filesystem;

namespace {

const std::string kCards = std::string(ZORVAT_CORPUS_DIR) + "/cards/two-employees.json";

class Terminal {
 public:
  Terminal(const std::vector<std::string>& args, const fs::path& directory) {
    pid_ = forkpty(&master_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
      if (chdir(directory.c_str()) != 0) _exit(125);
      std::vector<char*> argv;
      argv.reserve(args.size() + 1);
      for (const auto& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
      argv.push_back(nullptr);
      execv(argv[0], argv.data());
      _exit(127);
    }
  }
  ~Terminal() {
    if (master_ >= 0) close(master_);
    if (pid_ > 0 && !waited_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
  }

  // Reads until `text` has appeared on the screen (or five seconds passed).
  bool wait_for(const std::string& text) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (screen_.find(text) == std::string::npos) {
      if (std::chrono::steady_clock::now() > deadline || !read_some(100)) return false;
    }
    return true;
  }
  void type(const std::string& keys) {
    ASSERT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  int exit_status() {
    while (read_some(100)) {
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    waited_ = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  const std::string& screen() const { return screen_; }

 private:
  bool read_some(int timeout_ms) {
    pollfd fd{master_, POLLIN, 0};
    if (poll(&fd, 1, timeout_ms) <= 0) return true;  // nothing yet, still running
    char buffer[4096];
    const ssize_t n = read(master_, buffer, sizeof buffer);
    if (n <= 0) return false;  // the program closed the terminal
    screen_.append(buffer, static_cast<std::size_t>(n));
    return true;
  }

  int master_ = -1;
  pid_t pid_ = -1;
  bool waited_ = false;
  std::string screen_;
};

class SaveDialogOnATerminal : public testing::Test {
 protected:
  void SetUp() override { dir_ = zorvat::testing_support::fresh_test_folder("zorvat-tty"); }
  void TearDown() override { fs::remove_all(dir_); }
  std::string read(const fs::path& path) { return zorvat::testing_support::read_file(path); }
  fs::path dir_;
};

TEST_F(SaveDialogOnATerminal, ShowsTheFilterAndWritesTheTypedPath) {
  Terminal terminal({ZORVAT_CLI, "export", "Generic", "--cards", kCards, "--setup",
                     "0,0,0,0,0,False,True,False,False,False,,2"},
                    dir_);
  ASSERT_TRUE(terminal.wait_for("File name")) << terminal.screen();
  EXPECT_NE(terminal.screen().find("Generic ASCII (*.TAB) | *.TAB"), std::string::npos);
  terminal.type("typed.tab\n");
  EXPECT_EQ(terminal.exit_status(), 0) << terminal.screen();
  EXPECT_EQ(read(dir_ / "typed.tab"),
            "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\n"
            "E101,000000316,02,8.00,0.00,0.00,8.00,0.00,0.50,0.00\n");
}

TEST_F(SaveDialogOnATerminal, AnEmptyAnswerKeepsTheProposedName) {
  // ADP7 in CSV layout proposes "EPI" + company + batch + ".CSV".
  Terminal terminal(
      {ZORVAT_CLI, "export", "ADP7", "--cards", kCards, "--setup",
       "ACM,7,01,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV"},
      dir_);
  ASSERT_TRUE(terminal.wait_for("File name")) << terminal.screen();
  EXPECT_NE(terminal.screen().find("[EPIACM07.CSV]"), std::string::npos) << terminal.screen();
  terminal.type("\n");
  EXPECT_EQ(terminal.exit_status(), 0) << terminal.screen();
  EXPECT_TRUE(fs::exists(dir_ / "EPIACM07.CSV"));
}

TEST_F(SaveDialogOnATerminal, EndOfInputCancels) {
  Terminal terminal({ZORVAT_CLI, "export", "Generic", "--cards", kCards, "--setup",
                     "0,0,0,0,0,False,True,False,False,False,,2"},
                    dir_);
  ASSERT_TRUE(terminal.wait_for("File name")) << terminal.screen();
  terminal.type("\x04");  // Ctrl-D
  EXPECT_EQ(terminal.exit_status(), 1) << terminal.screen();
  EXPECT_TRUE(fs::is_empty(dir_));
}

}  // namespace
