// Every export class over fuzzed settings and cards: the first byte picks the class,
// the text up to the first line feed is SetupData, the rest is the cards file. The
// check method and Execute either finish or raise a zorvat::Error; the file, when
// written, is written once.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "export_classes.h"
#include "json_cards.h"
#include "scripted_host.h"
#include "zorvat/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const auto& registry = zorvat::formats::export_registry();
  auto names = registry.class_names();
  std::sort(names.begin(), names.end());  // the seeds number the classes in this order
  const std::string& name = names[data[0] % names.size()];
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto line_end = input.find('\n');
  const std::string setup = input.substr(0, line_end);
  const std::string json =
      line_end == std::string::npos ? std::string() : input.substr(line_end + 1);

  zorvat::Variant cards;
  try {
    cards = zorvat::cli::load_cards_json(json, "fuzz");
  } catch (const zorvat::cli::CardsFileError&) {
    return 0;
  }
  zorvat::scripted::Host host;
  host.ui.answer_save("out");
  auto instance = registry.create(name, host.context());
  instance->SetupData(setup);
  instance->Title = setup.size() % 2 ? "PC Access Jr" : "";
  try {
    instance->run_check();
  } catch (const zorvat::Error&) {
  }
  try {
    instance->Execute(cards);
  } catch (const zorvat::Error& error) {
    if (error.source().rfind("zorvat." + name + ".", 0) != 0) std::abort();
  }
  if (host.files.writes > 1) std::abort();
  return 0;
}
