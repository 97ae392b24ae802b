// Generic export throughput over 1k to 1M cards, in this order:
//   BM_CliEndToEnd        the `zorvat` command as a user runs it, with its peak memory
//                         against the size of input plus output;
//   BM_GenericJsonToFile  JSON file in, cards loaded, exported, file written;
//   BM_GenericCore        the class alone, cards in memory, the file kept in memory.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "generic/generic.h"
#include "zorvat/automation.h"

#ifdef ZORVAT_CLI
#include "json_cards.h"
#include "posix_file_system.h"
#endif

extern char** environ;
namespace fs = std::filesystem;
using namespace zorvat;

namespace {

constexpr const char* kSetup = "0,1,0,1,0,False,True,False,False,False,,0";

// Cards as a host hands them: a flat property table per card, values as Variants.
class BenchCard final : public AutomationObject {
 public:
  explicit BenchCard(int i) {
    const std::int32_t reg = 2400 + i % 97, ot1 = i % 5 == 0 ? 90 : 0;
    values_ = {{"ExportID", Variant("E" + std::to_string(100000 + i))},
               {"Number", Variant(std::int32_t{i + 1})},
               {"Shift", Variant(std::int32_t{i % 3 + 1})},
               {"REG", Variant(reg)},
               {"OT1", Variant(ot1)},
               {"OT2", Variant(std::int32_t{0})},
               {"VAC", Variant(std::int32_t{i % 11 == 0 ? 480 : 0})},
               {"HOL", Variant(std::int32_t{0})},
               {"SIC", Variant(std::int32_t{i % 13 == 0 ? 240 : 0})},
               {"OTH", Variant(std::int32_t{0})},
               {"FirstName", Variant("Ann")},
               {"MI", Variant("")},
               {"LastName", Variant("Lee")},
               {"Badge", Variant(std::to_string(i + 1))}};
  }
  Variant get(std::string_view property) const override {
    for (const auto& [name, value] : values_)
      if (name == property) return value;
    raise_not_supported();
  }

 private:
  std::vector<std::pair<std::string, Variant>> values_;
};

class BenchCollection final : public AutomationObject {
 public:
  explicit BenchCollection(int n) {
    for (int i = 0; i < n; ++i) cards_.emplace_back(ObjectRef(std::make_shared<BenchCard>(i)));
  }
  Variant get(std::string_view) const override { raise_not_supported(); }
  std::unique_ptr<Enumerator> enumerate() const override {
    struct Each final : Enumerator {
      explicit Each(const std::vector<Variant>& all) : cards(all) {}
      bool next(Variant& out) override {
        if (at == cards.size()) return false;
        out = cards[at++];
        return true;
      }
      const std::vector<Variant>& cards;
      std::size_t at = 0;
    };
    return std::make_unique<Each>(cards_);
  }

 private:
  std::vector<Variant> cards_;
};

struct SaveTo final : UiServices {
  std::string path;
  SaveDialogResult save_dialog(const SaveDialogRequest&) override { return {false, path}; }
  void message_box(const MessageBoxRequest&) override {}
  Answer question(const MessageBoxRequest&, QuestionButtons) override { return Answer::No; }
  void show_help(std::string_view, std::string_view, unsigned long) override {}
};

struct KeepInMemory final : OutputFiles {
  std::string contents;
  void write_file(const std::string&, std::string_view text) override { contents = text; }
};

struct Today final : Clock {
  Date today() const override { return Date::from_civil(2004, 3, 8); }
};

void BM_GenericCore(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Variant cards(ObjectRef(std::make_shared<BenchCollection>(n)));
  SaveTo ui;
  ui.path = "memory";
  KeepInMemory files;
  Today today;
  for (auto _ : state) {
    formats::Generic generic({ui, files, today});
    generic.SetupData(kSetup);
    benchmark::DoNotOptimize(generic.Execute(cards));
  }
  state.SetItemsProcessed(state.iterations() * n);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(files.contents.size()));
  state.SetComplexityN(n);
}

#ifdef ZORVAT_CLI

fs::path bench_dir() {
  const fs::path dir = fs::temp_directory_path() / "zorvat-bench";
  fs::create_directories(dir);
  return dir;
}

// A cards file of n cards, written once per run.
const fs::path& cards_file(int n) {
  static std::map<int, fs::path> files;
  auto& path = files[n];
  if (!path.empty()) return path;
  path = bench_dir() / ("cards-" + std::to_string(n) + ".json");
  std::ofstream out(path, std::ios::binary);
  out << "{\"PeriodEnd\": \"2004-03-06\", \"cards\": [\n";
  for (int i = 0; i < n; ++i) {
    out << (i ? ",\n" : "") << "{\"ExportID\": \"E" << 100000 + i << "\", \"Number\": " << i + 1
        << ", \"Shift\": " << i % 3 + 1 << ", \"REG\": " << 2400 + i % 97
        << ", \"OT1\": " << (i % 5 == 0 ? 90 : 0)
        << ", \"OT2\": 0, \"VAC\": " << (i % 11 == 0 ? 480 : 0)
        << ", \"HOL\": 0, \"SIC\": " << (i % 13 == 0 ? 240 : 0)
        << ", \"OTH\": 0, \"FirstName\": \"Ann\", \"MI\": \"\", \"LastName\": \"Lee\", \"Badge\": "
           "\""
        << i + 1
        << "\", \"EditREG\": 0, \"EditOT1\": 0, \"EditOT2\": 0, \"PeriodStart\": \"2004-02-29\", "
        << "\"Days\": []}";
  }
  out << "\n]}\n";
  return path;
}

void BM_GenericJsonToFile(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const fs::path input = cards_file(n);
  SaveTo ui;
  ui.path = (bench_dir() / "out.tab").string();
  Today today;
  for (auto _ : state) {
    const Variant cards = cli::load_cards_file(input.string());
    formats::Generic generic({ui, cli::safe_output_files(), today});
    generic.SetupData(kSetup);
    benchmark::DoNotOptimize(generic.Execute(cards));
  }
  state.SetItemsProcessed(state.iterations() * n);
  state.SetComplexityN(n);
}

void BM_CliEndToEnd(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const std::string input = cards_file(n).string();
  const std::string output = (bench_dir() / "cli.tab").string();
  std::vector<std::string> argv = {ZORVAT_CLI, "export", "Generic", "--cards", input,
                                   "--setup",  kSetup,   "--out",   output};
  std::vector<char*> args;
  for (auto& arg : argv) args.push_back(arg.data());
  args.push_back(nullptr);
  long peak_kib = 0;
  for (auto _ : state) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    if (posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ) != 0) {
      state.SkipWithError("cannot start zorvat");
      break;
    }
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      state.SkipWithError("zorvat failed");
      break;
    }
    peak_kib = std::max(peak_kib, usage.ru_maxrss);
  }
  const double in_out = static_cast<double>(fs::file_size(input) + fs::file_size(output));
  state.counters["peak_MiB"] = static_cast<double>(peak_kib) / 1024.0;
  state.counters["peak_per_in+out"] = static_cast<double>(peak_kib) * 1024.0 / in_out;
  state.counters["in+out_MiB"] = in_out / 1048576.0;
  state.SetItemsProcessed(state.iterations() * n);
  state.SetComplexityN(n);
}

// The command first, while this process is small (see below), then the in-process
// JSON path.
BENCHMARK(BM_CliEndToEnd)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Complexity(benchmark::oN);
BENCHMARK(BM_GenericJsonToFile)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
#endif

// Registered last: the in-memory cards make this process large, and a child process
// started after that would inherit its peak memory figure.
BENCHMARK(BM_GenericCore)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace

BENCHMARK_MAIN();
