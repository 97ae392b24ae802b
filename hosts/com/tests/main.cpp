// zorvat_com_tests: a stand-in for the time-and-attendance host, run under Wine.
//
//   zorvat_com_tests --dll=C:\path\zorvat.dll --corpus=Z:\...\tests\corpus
//                    --work=C:\scratch [GoogleTest options]
//   zorvat_com_tests --dll=... --work=... --bench[=cards]
//   zorvat_com_tests --dll=... --list-classes
//
// --list-classes prints "class: <name>" for each coclass of the DLL's type library, in
// its order, for the scripts that go through every class.
//
// The DLL must have been registered with regsvr32. The host runs on one thread in a
// single-threaded apartment, as the real host does; the dialog driver answers the
// component's dialogs from a second thread.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>

#include "automation_client.h"
#include "dialog_driver.h"
#include "host_objects.h"
#include "listed_classes.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

TestConfig the_config;

double seconds_since(std::chrono::steady_clock::time_point start,
                     std::chrono::steady_clock::time_point end) {
  return std::chrono::duration<double>(end - start).count();
}

}  // namespace

const TestConfig& config() {
  return the_config;
}

int run_benchmark(int cards, int reads) {
  using clock = std::chrono::steady_clock;
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  if (!object) {
    std::printf("bench: zorvat.Generic cannot be created\n");
    return 1;
  }

  // Late-bound reads of a property of the component, as a host makes them.
  put(object.Get(), L"Title", "Benchmark");
  std::wstring name = L"Title";
  LPOLESTR names[] = {name.data()};
  DISPPARAMS none{nullptr, nullptr, 0, 0};
  auto start = clock::now();
  for (int index = 0; index < reads; ++index) {
    DISPID id = 0;
    object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    unique_variant value;
    object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                   value.addressof(), nullptr, nullptr);
  }
  const double by_name = seconds_since(start, clock::now());
  DISPID title = dispid_of(object.Get(), L"Title");
  start = clock::now();
  for (int index = 0; index < reads; ++index) {
    unique_variant value;
    object->Invoke(title, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                   value.addressof(), nullptr, nullptr);
  }
  const double by_id = seconds_since(start, clock::now());
  std::printf(
      "bench: %d reads of Title from the host, GetIDsOfNames+Invoke: %.3f s (%.2f us/read)\n",
      reads, by_name, by_name * 1e6 / reads);
  std::printf(
      "bench: %d reads of Title from the host, cached DISPID Invoke: %.3f s (%.2f us/read)\n",
      reads, by_id, by_id * 1e6 / reads);

  // A Generic export of `cards` cards through Execute, the Save dialog answered.
  nlohmann::json document;
  document["PeriodEnd"] = "2004-03-06";
  nlohmann::json& list = document["cards"];
  for (int index = 0; index < cards; ++index) {
    list.push_back({{"ExportID", "E" + std::to_string(index)},
                    {"Number", 100000 + index},
                    {"Shift", 1 + index % 3},
                    {"REG", 2400 + index % 60},
                    {"OT1", index % 120},
                    {"OT2", 0},
                    {"VAC", 480},
                    {"HOL", 0},
                    {"SIC", index % 2 == 0 ? 0 : 240},
                    {"OTH", 15},
                    {"FirstName", "First"},
                    {"MI", "M"},
                    {"LastName", "Last"},
                    {"Badge", std::to_string(index)}});
  }
  ComPtr<IDispatch> collection = make_collection(document);

  // The host's own share: the same for-each and reads, made by the host itself.
  {
    const wchar_t* properties[] = {L"ExportID", L"Number", L"Shift", L"REG", L"OT1",
                                   L"OT2",      L"VAC",    L"HOL",   L"SIC", L"OTH"};
    start = clock::now();
    unique_variant enumerator_value;
    collection->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT,
                       DISPATCH_PROPERTYGET | DISPATCH_METHOD, &none, enumerator_value.addressof(),
                       nullptr, nullptr);
    ComPtr<IEnumVARIANT> enumerator;
    V_UNKNOWN(&enumerator_value)->QueryInterface(IID_PPV_ARGS(&enumerator));
    DISPID ids[10] = {};
    bool resolved = false;
    for (;;) {
      unique_variant card;
      ULONG fetched = 0;
      if (enumerator->Next(1, card.addressof(), &fetched) != S_OK) break;
      IDispatch* dispatch = V_DISPATCH(&card);
      if (!resolved) {
        for (int index = 0; index < 10; ++index)
          ids[index] = dispid_of(dispatch, properties[index]);
        resolved = true;
      }
      for (DISPID id : ids) {
        unique_variant value;
        dispatch->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                         &none, value.addressof(), nullptr, nullptr);
      }
    }
    std::printf("bench: the host's own for-each and %d reads of the cards: %.3f s\n", cards * 10,
                seconds_since(start, clock::now()));
  }
  put(object.Get(), L"SetupData", "0,0,0,0,0,False,True,False,False,False,,0");
  const std::filesystem::path output = config().work / "bench.tab";

  // Time from Execute to the Save dialog: building the text, plus the dialog's own
  // start-up, which an export of no cards measures alone.
  const std::filesystem::path empty_output = config().work / "bench-empty.tab";
  auto time_to_dialog = [&](IDispatch* cards_collection, CallResult& result) {
    DialogDriver driver(SaveAnswer::File,
                        (cards_collection == collection.Get() ? output : empty_output).wstring());
    const auto begin = clock::now();
    result = call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(cards_collection)});
    const auto finish = clock::now();
    driver.stop();
    if (driver.save_dialogs().empty()) return std::make_pair(-1.0, 0.0);
    return std::make_pair(seconds_since(begin, driver.first_dialog_time()),
                          seconds_since(begin, finish));
  };
  nlohmann::json no_cards;
  no_cards["cards"] = nlohmann::json::array();
  ComPtr<IDispatch> empty = make_collection(no_cards);
  CallResult result;
  time_to_dialog(empty.Get(), result);  // the first dialog of a process loads the shell
  const double dialog_before = time_to_dialog(empty.Get(), result).first;
  const long long reads_before = HostObject::reads();
  const auto [to_dialog, total] = time_to_dialog(collection.Get(), result);
  const long long card_reads = HostObject::reads() - reads_before;
  CallResult empty_result;
  const double dialog_after = time_to_dialog(empty.Get(), empty_result).first;
  const double dialog_only = (dialog_before + dialog_after) / 2;
  if (result.hr != S_OK || !result.boolean() || to_dialog < 0 || dialog_before < 0 ||
      dialog_after < 0) {
    std::printf("bench: the export failed (0x%08lx %ld %s)\n",
                static_cast<unsigned long>(result.hr), result.number, result.description.c_str());
    return 1;
  }
  const double build = to_dialog - dialog_only;
  std::printf(
      "bench: Generic export of %d cards through COM: %.3f s until the Save dialog (%.3f s of "
      "it the dialog's start-up), %.3f s in all with the write\n",
      cards, to_dialog, dialog_only, total);
  std::printf(
      "bench: %lld late-bound reads by the component; %.3f s to build the text (%.2f us "
      "per card)\n",
      card_reads, build, build * 1e6 / cards);
  std::printf("bench: %.0f cards/s through COM (target 500000)\n", cards / build);
  std::printf("bench: file of %llu bytes\n",
              static_cast<unsigned long long>(std::filesystem::file_size(output)));
  return 0;
}

int list_classes() {
  std::vector<LibraryClass> classes;
  const HRESULT hr = library_classes(config().dll, classes);
  if (FAILED(hr)) {
    std::printf("zorvat_com_tests: cannot read the type library of %s (0x%08lx)\n",
                config().dll.string().c_str(), static_cast<unsigned long>(hr));
    return 1;
  }
  for (const LibraryClass& coclass : classes)
    std::printf("class: %s\n", to_utf8(coclass.name).c_str());
  return 0;
}

}  // namespace zorvat::com::testing

int main(int argc, char** argv) {
  using namespace zorvat::com::testing;
  ::testing::InitGoogleTest(&argc, argv);
  int bench_cards = 0;
  bool list = false;
  for (int index = 1; index < argc; ++index) {
    const char* argument = argv[index];
    if (std::strncmp(argument, "--dll=", 6) == 0) the_config.dll = argument + 6;
    if (std::strncmp(argument, "--corpus=", 9) == 0) the_config.corpus = argument + 9;
    if (std::strncmp(argument, "--work=", 7) == 0) the_config.work = argument + 7;
    if (std::strcmp(argument, "--bench") == 0) bench_cards = 100000;
    if (std::strncmp(argument, "--bench=", 8) == 0) bench_cards = std::atoi(argument + 8);
    if (std::strcmp(argument, "--list-classes") == 0) list = true;
  }
  if (the_config.work.empty()) the_config.work = std::filesystem::temp_directory_path() / "zorvat";
  std::filesystem::create_directories(the_config.work);

  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
    std::printf("zorvat_com_tests: CoInitializeEx failed\n");
    return 2;
  }
  int result = 0;
  if (list) {
    result = list_classes();
  } else if (bench_cards > 0) {
    result = run_benchmark(bench_cards, 1000000);
  } else {
    register_corpus_tests();
    result = RUN_ALL_TESTS();
  }
  CoUninitialize();
  std::printf("zorvat_com_tests: finished with exit code %d\n", result);
  std::fflush(stdout);
  return result;
}
