// Export throughput of every file-writing class over 1k to 1M cards.
//
//   BM_Core/<layout>/<cards>       the class alone: cards already loaded from JSON (as
//                                  the command holds them), the file built in memory;
//                                  reports the time per million cards (seconds per
//                                  million read as microseconds per card).
//   BM_EndToEnd/<layout>/<cards>   the `zorvat` command as a user runs it: JSON file in,
//                                  file out through the safe file step. Beside its wall
//                                  time it reports the I/O floor of the same run
//                                  (reading the input and writing as many bytes as the
//                                  export wrote, durably, as the file step does) and
//                                  their ratio, and its peak memory against input plus
//                                  output. Every file written is read back with
//                                  `zorvat reconcile`, which must account for every
//                                  minute of the cards.
//
//   BM_Core/QB2000/<cards>       the QuickBooks export through the simulated company, in
//                                  this process: the cards (with day records) already
//                                  loaded, every request set carried as a qbXML document
//                                  to a fresh simulator and answered, as the command
//                                  does; reports the time per million cards and the
//                                  request documents' bytes. The company must have
//                                  received an entry for every day and hour type with
//                                  minutes.
//   BM_EndToEnd/QB2000/<cards>   `zorvat export QB2000 --qb-company` as a user runs it,
//                                  with its peak memory.
//
// The command and its floor run three times each, taking turns, and the summary keeps
// the fastest of each (as the class alone keeps its fastest pass): on a shared machine
// a run is only ever slowed down by its neighbours, never sped up.
//
// Layouts: every class of the class list that writes a file, with each of its settings
// examples (today Generic, ADP7 EPIP and CSV, IntuitPAC full and Jr, PCPayLink,
// PCPreview, Peachtree, whose cards carry five day records, and PrimePay).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "export_classes.h"
#include "json_cards.h"
#include "zorvat/automation.h"
#include "zorvat/export_class.h"
#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/qbxml_session.h"
#include "zorvat/quickbooks/simulator.h"
#include "zorvat/time_card.h"

extern char** environ;
namespace fs = std::filesystem;
using namespace zorvat;

namespace {

// One layout: a class with settings a payroll office would use (each class's own
// examples, from the class list).
struct Layout {
  std::string label;
  std::string class_name;
  std::string setup;
  std::string title;
  bool days;  // cards carry day records (Peachtree reads them)
};

std::vector<Layout> layouts() {
  std::vector<Layout> all;
  for (const reconcile::ClassRules& rules : formats::export_classes())
    for (const reconcile::SettingsExample& example : rules.examples)
      all.push_back({std::string(example.label), std::string(rules.class_name),
                     std::string(example.setup), std::string(example.title),
                     example.cards_with_days});
  return all;
}

fs::path bench_dir() {
  fs::path dir = fs::temp_directory_path() / "zorvat-bench";
  fs::create_directories(dir);
  return dir;
}

// One card as a host hands it over: minute totals with a little variety, six-digit
// employee numbers (every layout's width; IntuitPAC needs at least four), names; with `days`, five
// day records that add up to the card.
void write_card(std::ofstream& out, int i, bool days) {
  const int reg = 2400 + i % 97, ot1 = i % 5 == 0 ? 90 : 0, vac = i % 11 == 0 ? 480 : 0,
            sic = i % 13 == 0 ? 240 : 0;
  out << "{\"ExportID\": \"E" << 100000 + i << "\", \"Number\": " << 100000 + i % 900000
      << ", \"Shift\": " << i % 3 + 1 << ", \"REG\": " << reg << ", \"OT1\": " << ot1
      << ", \"OT2\": 0, \"VAC\": " << vac << ", \"HOL\": 0, \"SIC\": " << sic
      << ", \"OTH\": 0, \"FirstName\": \"Ann\", \"MI\": \"\", \"LastName\": \"Lee\", "
         "\"Badge\": \""
      << i + 1
      << "\", \"EditREG\": 0, \"EditOT1\": 0, \"EditOT2\": 0, \"PeriodStart\": \"2004-02-29\", "
         "\"Days\": [";
  if (days) {
    // The card's time spread over Monday to Friday; the last day takes the remainder.
    const int per_day[] = {reg / 5, ot1 / 5, vac / 5, sic / 5};
    for (int d = 0; d < 5; ++d) {
      const bool last = d == 4;
      const int r = last ? reg - 4 * per_day[0] : per_day[0];
      const int o = last ? ot1 - 4 * per_day[1] : per_day[1];
      const int v = last ? vac - 4 * per_day[2] : per_day[2];
      const int s = last ? sic - 4 * per_day[3] : per_day[3];
      out << (d ? ", " : "") << "{\"DayDate\": \"2004-03-0" << d + 1
          << "\", \"Hours\": " << r + o + v + s << ", \"REG\": " << r << ", \"OT1\": " << o
          << ", \"OT2\": 0, \"VAC\": " << v << ", \"HOL\": 0, \"SIC\": " << s << ", \"OTH\": 0}";
    }
  }
  out << "]}";
}

// A cards file of n cards, written once per run.
const fs::path& cards_file(int n, bool days) {
  static std::map<std::pair<int, bool>, fs::path> files;
  auto& path = files[{n, days}];
  if (!path.empty()) return path;
  path = bench_dir() / ("cards-" + std::to_string(n) + (days ? "-days" : "") + ".json");
  std::ofstream out(path, std::ios::binary);
  out << "{\"PeriodEnd\": \"2004-03-06\", \"cards\": [\n";
  for (int i = 0; i < n; ++i) {
    if (i) out << ",\n";
    write_card(out, i, days);
  }
  out << "\n]}\n";
  return path;
}

// What the summary at the end of the run shows, per layout: the largest run of each.
struct Figures {
  int core_cards = 0;
  double core_us_per_card = 0;
  int end_to_end_cards = 0;
  double end_to_end_ms = 0, floor_ms = 0, peak_mib = 0, in_out_mib = 0;
};
std::map<std::string, Figures>& summary() {
  static std::map<std::string, Figures> figures;
  return figures;
}

// --- The class alone --------------------------------------------------------------

struct SaveTo final : UiServices {
  SaveDialogResult save_dialog(const SaveDialogRequest&) override { return {false, "memory"}; }
  void message_box(const MessageBoxRequest&) override {}
  Answer question(const MessageBoxRequest&, QuestionButtons) override { return Answer::No; }
  void show_help(std::string_view, std::string_view, unsigned long) override {}
};

// The class hands its whole file over in one piece; writing it is the end-to-end
// run's part, so here only its size is kept (a copy of hundreds of megabytes into
// fresh memory would be timed as the class's).
struct CountBytes final : OutputFiles {
  std::size_t bytes = 0;
  void write_file(const std::string&, std::string_view text) override { bytes = text.size(); }
};

struct Today final : Clock {
  Date today() const override { return Date::from_civil(2004, 3, 8); }
};

// CPU seconds of this thread so far.
double thread_cpu_seconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void bench_core(benchmark::State& state, const Layout& layout) {
  const int n = static_cast<int>(state.range(0));
  const Variant cards = cli::load_cards_file(cards_file(n, layout.days).string());
  SaveTo ui;
  CountBytes files;
  Today today;
  double fastest_pass = 0;
  for (auto _ : state) {
    const double pass_start = thread_cpu_seconds();
    auto export_class = formats::export_registry().create(layout.class_name, {ui, files, today});
    export_class->Title = layout.title;
    export_class->SetupData(layout.setup);
    if (!export_class->Execute(cards)) state.SkipWithError("Execute returned False");
    const double pass = thread_cpu_seconds() - pass_start;
    if (fastest_pass == 0 || pass < fastest_pass) fastest_pass = pass;
  }
  state.SetItemsProcessed(state.iterations() * n);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(files.bytes));
  state.counters["per_Mcard"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * n * 1e-6,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.SetComplexityN(n);
  Figures& figures = summary()[layout.label];
  if (n >= figures.core_cards && state.iterations() > 0) {
    figures.core_cards = n;
    figures.core_us_per_card = fastest_pass / static_cast<double>(n) * 1e6;
  }
}

// --- The command, end to end --------------------------------------------------------

struct Finished {
  int exit_code = -1;
  double peak_mib = 0;
};

Finished run(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  Finished finished;
  if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    finished.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    finished.peak_mib = static_cast<double>(usage.ru_maxrss) / 1024.0;
  }
  posix_spawn_file_actions_destroy(&actions);
  return finished;
}

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The I/O floor of an export: the input read in full and `output_bytes` written to a
// new file in the output's folder, synced and renamed over the target, as the safe
// file step writes. Returns seconds.
double io_floor(const fs::path& input, std::uintmax_t output_bytes, const fs::path& target) {
  const auto start = std::chrono::steady_clock::now();
  std::vector<char> buffer(1 << 20, 'x');
  const int in = open(input.c_str(), O_RDONLY);
  while (read(in, buffer.data(), buffer.size()) > 0) {
  }
  close(in);
  const fs::path temporary = target.string() + ".floor";
  const int out = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  for (std::uintmax_t left = output_bytes; left > 0;) {
    const auto chunk = static_cast<std::size_t>(std::min<std::uintmax_t>(left, buffer.size()));
    if (write(out, buffer.data(), chunk) != static_cast<ssize_t>(chunk)) break;
    left -= chunk;
  }
  fsync(out);
  close(out);
  fs::rename(temporary, target.string() + ".floor-done");
  const double seconds = seconds_since(start);
  fs::remove(target.string() + ".floor-done");
  return seconds;
}

void bench_end_to_end(benchmark::State& state, const Layout& layout) {
  const int n = static_cast<int>(state.range(0));
  const fs::path& input = cards_file(n, layout.days);
  const fs::path output = bench_dir() / (layout.label + ".out");
  const std::vector<std::string> command = {ZORVAT_CLI,     "export",  layout.class_name, "--cards",
                                            input.string(), "--setup", layout.setup,      "--title",
                                            layout.title,   "--out",   output.string(),   "--today",
                                            "2004-03-08"};
  double peak = 0, fastest_export = 0, fastest_floor = 0;
  auto keep_fastest = [](double& fastest, double seconds) {
    if (fastest == 0 || seconds < fastest) fastest = seconds;
  };
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const Finished finished = run(command);
    const double seconds = seconds_since(start);
    if (finished.exit_code != 0) {
      state.SkipWithError("the export failed");
      break;
    }
    state.SetIterationTime(seconds);
    keep_fastest(fastest_export, seconds);
    peak = std::max(peak, finished.peak_mib);
    state.PauseTiming();
    keep_fastest(fastest_floor, io_floor(input, fs::file_size(output), output));
    state.ResumeTiming();
  }
  if (state.error_occurred()) return;
  // What was written must account for every minute of the cards.
  const Finished reconciled =
      run({ZORVAT_CLI, "reconcile", layout.class_name, "--cards", input.string(), "--setup",
           layout.setup, "--title", layout.title, output.string()});
  if (reconciled.exit_code != 0) state.SkipWithError("the written file does not reconcile");
  const double in_out_mib =
      static_cast<double>(fs::file_size(input) + fs::file_size(output)) / (1024.0 * 1024.0);
  state.counters["in+out_MiB"] = in_out_mib;
  state.counters["peak_MiB"] = peak;
  state.counters["peak_per_in+out"] = peak / in_out_mib;
  state.counters["fastest_ms"] = fastest_export * 1e3;
  state.counters["floor_ms"] = fastest_floor * 1e3;
  state.counters["x_floor"] = fastest_export / fastest_floor;
  state.SetItemsProcessed(state.iterations() * n);
  state.SetComplexityN(n);
  fs::remove(output);
  Figures& figures = summary()[layout.label];
  if (n >= figures.end_to_end_cards) {
    figures.end_to_end_cards = n;
    figures.end_to_end_ms = fastest_export * 1e3;
    figures.floor_ms = fastest_floor * 1e3;
    figures.peak_mib = peak;
    figures.in_out_mib = in_out_mib;
  }
}

// --- QB2000 through the simulated company --------------------------------------------

// The company every card's employee ("Ann Lee", named last name first) and every
// payroll item of the settings belong to, so that nothing is asked and every entry is
// accepted.
constexpr std::string_view kQuickBooksSetup =
    "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,Premium Overtime "
    "Hourly Rate,Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,Other Hourly Rate";
constexpr std::string_view kQuickBooksCompany = R"({
  "company_file": "C:\\Company\\Sample.QBW",
  "payroll_items": ["Regular Hourly Rate", "Overtime Hourly Rate",
                    "Premium Overtime Hourly Rate", "Vacation Hourly Rate",
                    "Holiday Hourly Rate", "Sick Hourly Rate", "Other Hourly Rate"],
  "employees": ["Lee, Ann"],
  "employee_names_last_first": true
})";

const fs::path& quickbooks_company_file() {
  static const fs::path path = [] {
    fs::path file = bench_dir() / "qb2000-company.json";
    std::ofstream(file, std::ios::binary) << kQuickBooksCompany;
    return file;
  }();
  return path;
}

// One time entry per day of a card and hour type with minutes (the cards carry no
// edit totals).
std::size_t day_entries(const Variant& cards) {
  std::size_t entries = 0;
  for_each(cards, [&](const Variant& card) {
    for_each(get_property(card, time_card::kDays), [&](const Variant& day) {
      for (const PropertyName& type : time_card::kHourCategories)
        if (get_number(day, type) > 0) ++entries;
    });
  });
  return entries;
}

void bench_quickbooks_core(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Variant cards = cli::load_cards_file(cards_file(n, true).string());
  const quickbooks::Company company =
      quickbooks::parse_company_json(kQuickBooksCompany, "qb2000-company.json");
  SaveTo ui;
  CountBytes files;
  Today today;
  double fastest_pass = 0;
  std::size_t document_bytes = 0;
  std::size_t entries_received = 0;
  for (auto _ : state) {
    const double pass_start = thread_cpu_seconds();
    quickbooks::CompanySimulator simulator(company);
    document_bytes = 0;
    quickbooks::SimulatorQbxmlSessionFactory sessions(
        simulator, [&](std::string_view document) { document_bytes += document.size(); });
    auto export_class = formats::export_registry().create("QB2000", {ui, files, today, &sessions});
    export_class->SetupData(std::string(kQuickBooksSetup));
    if (!export_class->Execute(cards)) state.SkipWithError("Execute returned False");
    const double pass = thread_cpu_seconds() - pass_start;
    if (fastest_pass == 0 || pass < fastest_pass) fastest_pass = pass;
    state.PauseTiming();
    entries_received = simulator.company().time_entries.size();
    state.ResumeTiming();
  }
  if (state.error_occurred()) return;
  if (entries_received != day_entries(cards))
    state.SkipWithError("the company did not receive an entry for every day and hour type");
  state.SetItemsProcessed(state.iterations() * n);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document_bytes));
  state.counters["per_Mcard"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * n * 1e-6,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["fastest_ms"] = fastest_pass * 1e3;
  state.SetComplexityN(n);
}

void bench_quickbooks_end_to_end(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const fs::path& input = cards_file(n, true);
  const std::vector<std::string> command = {ZORVAT_CLI,
                                            "export",
                                            "QB2000",
                                            "--cards",
                                            input.string(),
                                            "--setup",
                                            std::string(kQuickBooksSetup),
                                            "--qb-company",
                                            quickbooks_company_file().string(),
                                            "--today",
                                            "2004-03-08"};
  double peak = 0, fastest = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const Finished finished = run(command);
    const double seconds = seconds_since(start);
    if (finished.exit_code != 0) {
      state.SkipWithError("the export failed");
      break;
    }
    state.SetIterationTime(seconds);
    if (fastest == 0 || seconds < fastest) fastest = seconds;
    peak = std::max(peak, finished.peak_mib);
  }
  if (state.error_occurred()) return;
  state.counters["fastest_ms"] = fastest * 1e3;
  state.counters["peak_MiB"] = peak;
  state.counters["in_MiB"] = static_cast<double>(fs::file_size(input)) / (1024.0 * 1024.0);
  state.SetItemsProcessed(state.iterations() * n);
  state.SetComplexityN(n);
}

// Every end-to-end run is registered, and so runs, before any class-alone run: a child
// started with posix_spawn inherits the high-water mark of this process's memory at
// exec (Linux carries it into the child's peak), so this process must not have held
// loaded cards yet when the command's peak memory is measured.
const bool registered = [] {
  const std::vector<Layout> all = layouts();
  for (const Layout& layout : all)
    benchmark::RegisterBenchmark((std::string("BM_EndToEnd/") + layout.label).c_str(),
                                 bench_end_to_end, layout)
        ->RangeMultiplier(10)
        ->Range(1000, 1000000)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(3)
        ->Complexity(benchmark::oN);
  benchmark::RegisterBenchmark("BM_EndToEnd/QB2000", bench_quickbooks_end_to_end)
      ->RangeMultiplier(10)
      ->Range(1000, 100000)
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime()
      ->Iterations(3)
      ->Complexity(benchmark::oN);
  for (const Layout& layout : all)
    benchmark::RegisterBenchmark((std::string("BM_Core/") + layout.label).c_str(), bench_core,
                                 layout)
        ->RangeMultiplier(10)
        ->Range(1000, 1000000)
        ->Unit(benchmark::kMillisecond)
        ->Complexity(benchmark::oN);
  benchmark::RegisterBenchmark("BM_Core/QB2000", bench_quickbooks_core)
      ->RangeMultiplier(10)
      ->Range(1000, 100000)
      ->Unit(benchmark::kMillisecond)
      ->Complexity(benchmark::oN);
  return true;
}();

// One line per layout after the run: the largest end-to-end run (its fastest of three)
// against the I/O floor of the same run (also its fastest), the class alone per card
// (its fastest pass), and peak memory against input + output.
void print_summary() {
  if (summary().empty()) return;
  std::printf("\n%-13s %9s %10s %9s %7s %9s %9s %8s %8s %9s\n", "layout", "cards", "export ms",
              "floor ms", "x floor", "peak MiB", "in+out", "x in+out", "cards", "core us");
  for (const auto& [label, f] : summary()) {
    std::printf("%-13s %9d %10.0f %9.0f %7.2f %9.0f %9.0f %8.2f %8d %9.3f\n", label.c_str(),
                f.end_to_end_cards, f.end_to_end_ms, f.floor_ms,
                f.floor_ms > 0 ? f.end_to_end_ms / f.floor_ms : 0.0, f.peak_mib, f.in_out_mib,
                f.in_out_mib > 0 ? f.peak_mib / f.in_out_mib : 0.0, f.core_cards,
                f.core_us_per_card);
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  print_summary();
  return 0;
}
