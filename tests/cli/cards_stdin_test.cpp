// `--cards -`: the time cards read from standard input, by the command run in this
// process with its standard input taken from a file, and once by the real binary
// through a pipe.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app.h"
#include "command_line_test.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kCards = std::string(ZORVAT_CORPUS_DIR) + "/cards/two-employees.json";
const std::string kGeneric = "0,0,0,0,0,False,True,False,False,False,,2";
// What Generic writes of the two employees with kGeneric.
const std::string kGenericFile =
    "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\n"
    "E101,000000316,02,8.00,0.00,0.00,8.00,0.00,0.50,0.00\n";
const std::string kPrimePay = "4,02,20,23,24,25,28";

struct InProcessRun {
  int status;
  std::string out;
  std::string err;
};

class CardsOnStandardInput : public zorvat::testing_support::CommandLineTest {
 protected:
  // Runs the command in this process with `input` as its standard input.
  InProcessRun run(const std::vector<std::string>& args, const std::string& input) {
    const std::string input_path = write("stdin.bytes", input);
    const int saved = ::dup(0);
    const int file = ::open(input_path.c_str(), O_RDONLY);
    EXPECT_GE(file, 0);
    ::dup2(file, 0);
    ::close(file);
    std::ostringstream out;
    std::ostringstream err;
    const int status = zorvat::cli::run(args, out, err, false);
    ::dup2(saved, 0);
    ::close(saved);
    fs::remove(input_path);
    return {status, out.str(), err.str()};
  }
};

TEST_F(CardsOnStandardInput, ExportReadsThem) {
  const std::string out = path_of("x.tab");
  const InProcessRun r =
      run({"export", "Generic", "--cards", "-", "--setup", kGeneric, "--out", out}, read(kCards));
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, kGeneric + "\n");
  EXPECT_EQ(read(out), kGenericFile);
}

TEST_F(CardsOnStandardInput, TheirBytesAreTakenAsTheyCome) {
  // CR LF between the values, a byte-order mark first, and a name beyond ASCII.
  const std::string cards =
      "\xEF\xBB\xBF{\"cards\": [\r\n{\"ExportID\": \"E1\", \"Number\": 7, \"Shift\": 1,\r\n"
      "\"REG\": 60, \"OT1\": 0, \"OT2\": 0, \"VAC\": 0, \"HOL\": 0, \"SIC\": 0, \"OTH\": 0,\r\n"
      "\"FirstName\": \"Jos\xC3\xA9\", \"MI\": \"\", \"LastName\": \"Pe\xC3\xB1"
      "a\",\r\n"
      "\"Badge\": \"9\"}]}\r\n";
  const std::string out = path_of("x.tab");
  const InProcessRun r = run({"export", "Generic", "--cards", "-", "--setup",
                              "0,0,0,1,0,False,True,False,False,False,,2", "--out", out},
                             cards);
  EXPECT_EQ(r.status, 0) << r.err;
  // The file in Windows-1252, the command's code page; unquoted, the last column is the
  // card's Number.
  EXPECT_EQ(read(out),
            "E1,000000007,01,1.00,0.00,0.00,0.00,0.00,0.00,0.00,Pe\xF1"
            "a,Jos\xE9,7\n");
}

TEST_F(CardsOnStandardInput, AFileThatIsNotJsonIsNamedStdin) {
  const InProcessRun r = run({"export", "Generic", "--cards", "-", "--setup", kGeneric},
                             "{\"cards\": [\n  {\"REG\": 60},\n]}\n");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_TRUE(r.err.starts_with("zorvat: cards file <stdin>: not valid JSON: ")) << r.err;
  EXPECT_NE(r.err.find("line 3"), std::string::npos) << r.err;
}

TEST_F(CardsOnStandardInput, NothingOnStandardInputIsAUsageError) {
  const InProcessRun r =
      run({"export", "Generic", "--cards", "-", "--setup", kGeneric, "--json"}, "");
  EXPECT_EQ(r.status, 2);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["error"]["number"], 0);
  EXPECT_TRUE(report["error"]["description"].get<std::string>().starts_with("cards file <stdin>: "))
      << r.out;
}

TEST_F(CardsOnStandardInput, AnErrorInACardNamesStdin) {
  json cards = json::parse(read(kCards));
  cards["cards"][1]["REG"] = "lots";
  const InProcessRun r =
      run({"export", "PrimePay", "--cards", "-", "--setup", kPrimePay, "--out", path_of("x.dat")},
          cards.dump());
  EXPECT_EQ(r.status, 3);
  EXPECT_EQ(r.err,
            "zorvat: error 13 in zorvat.PrimePay.Execute: Type mismatch\n"
            "zorvat: while reading card 1 of <stdin> (ExportID E101), property REG\n");
}

TEST_F(CardsOnStandardInput, ReconcileAndCheckReadThem) {
  const std::string written = path_of("period.dat");
  ASSERT_EQ(
      run({"export", "PrimePay", "--cards", kCards, "--setup", kPrimePay, "--out", written}, "")
          .status,
      0);
  const InProcessRun reconciled =
      run({"reconcile", "PrimePay", "--cards", "-", "--setup", kPrimePay, "--json", written},
          read(kCards));
  EXPECT_EQ(reconciled.status, 0) << reconciled.out << reconciled.err;
  EXPECT_EQ(json::parse(reconciled.out)["fileRead"], true);
  const InProcessRun checked =
      run({"export", "PrimePay", "--cards", "-", "--setup", kPrimePay, "--check"}, read(kCards));
  EXPECT_EQ(checked.status, 0) << checked.err;
  EXPECT_TRUE(checked.out.starts_with("Employee  Category")) << checked.out;
  const InProcessRun broken = run(
      {"reconcile", "PrimePay", "--cards", "-", "--setup", kPrimePay, written}, "{\"cards\": 5}");
  EXPECT_EQ(broken.status, 2);
  EXPECT_EQ(broken.err, "zorvat: cards file <stdin>: cards: expected an array of cards\n");
}

TEST_F(CardsOnStandardInput, AProgramPipesThemToTheCommand) {
  // Enough cards that the pipe is filled many times over before the command reads it.
  json cards = json::array();
  for (int i = 0; i < 3000; ++i)
    cards.push_back({{"ExportID", "E" + std::to_string(i)},
                     {"Number", i},
                     {"Shift", 1},
                     {"REG", 60},
                     {"OT1", 0},
                     {"OT2", 0},
                     {"VAC", 0},
                     {"HOL", 0},
                     {"SIC", 0},
                     {"OTH", 0},
                     {"Note", std::string(100, 'x')}});
  const std::string text = json{{"cards", cards}}.dump();
  ASSERT_GT(text.size(), 256u * 1024u);
  const std::string out = path_of("x.tab");
  const auto r = zorvat::testing_support::run_process(
      {ZORVAT_SHIPPED_CLI, "export", "Generic", "--cards", "-", "--setup", kGeneric, "--out", out},
      text);
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, kGeneric + "\n");
  const std::string written = read(out);
  EXPECT_TRUE(written.starts_with("E0,000000000,01,1.00,0.00,0.00,0.00,0.00,0.00,0.00\n"))
      << written.substr(0, 200);
  EXPECT_TRUE(written.ends_with("\nE2999,000002999,01,1.00,0.00,0.00,0.00,0.00,0.00,0.00\n"));
  EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 3000);
}

}  // namespace
