// The check before writing (`zorvat export --check`) over fuzzed settings and cards:
// the first byte picks a class that writes a file, the text up to the first line feed
// is SetupData, the next line the Title, the rest the cards file. The check and its
// report either finish or raise a zorvat::Error; anything else (an exception of
// another kind, a crash, a sanitizer's report) is a finding.
#include <cstdint>
#include <string>
#include <vector>

#include "export_classes.h"
#include "json_cards.h"
#include "zorvat/error.h"
#include "zorvat/reconcile/reconcile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  std::vector<const zorvat::reconcile::ClassRules*> classes;
  for (const zorvat::reconcile::ClassRules& rules : zorvat::formats::export_classes())
    if (rules.reads_files()) classes.push_back(&rules);
  const zorvat::reconcile::ClassRules& rules = *classes[data[0] % classes.size()];
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto setup_end = input.find('\n');
  const std::string setup = input.substr(0, setup_end);
  const auto title_end =
      setup_end == std::string::npos ? std::string::npos : input.find('\n', setup_end + 1);
  const std::string title = setup_end == std::string::npos
                                ? std::string()
                                : input.substr(setup_end + 1, title_end - setup_end - 1);
  const std::string json =
      title_end == std::string::npos ? std::string() : input.substr(title_end + 1);

  zorvat::Variant cards;
  try {
    cards = zorvat::cli::load_cards_json(json, "fuzz");
  } catch (const zorvat::cli::CardsFileError&) {
    return 0;
  }
  try {
    const zorvat::reconcile::Reconciliation result =
        zorvat::reconcile::check(rules, cards, setup, title);
    static_cast<void>(zorvat::reconcile::table_text(result));
  } catch (const zorvat::Error&) {
  }
  return 0;
}
