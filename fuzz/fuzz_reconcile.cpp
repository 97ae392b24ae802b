// Reconciliation of written files over fuzzed settings, cards and files: the first
// byte picks a class that writes a file, the text up to the first line feed is
// SetupData, the next line the Title, then the cards file up to a NUL byte (which JSON
// never holds). With text after the NUL, that text is the written file, reconciled as
// it is: it reads as the layout or raises ReadError. Without it, the class exports the
// cards and the file it writes is reconciled: it must read as its layout. Either way
// the reconciliation and its report finish or raise a zorvat::Error; anything else is
// a finding.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "export_classes.h"
#include "json_cards.h"
#include "scripted_host.h"
#include "zorvat/error.h"
#include "zorvat/reconcile/reconcile.h"

namespace {

void reconcile_file(const zorvat::reconcile::ClassRules& rules, const zorvat::Variant& cards,
                    const std::string& setup, const std::string& title, const std::string& file) {
  const zorvat::reconcile::Reconciliation result =
      zorvat::reconcile::reconcile(rules, cards, setup, title, file);
  static_cast<void>(zorvat::reconcile::table_text(result));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  std::vector<const zorvat::reconcile::ClassRules*> classes;
  for (const zorvat::reconcile::ClassRules& rules : zorvat::formats::export_classes())
    if (rules.reads_files()) classes.push_back(&rules);
  const zorvat::reconcile::ClassRules& rules = *classes[data[0] % classes.size()];
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto setup_end = input.find('\n');
  if (setup_end == std::string::npos) return 0;
  const std::string setup = input.substr(0, setup_end);
  const auto title_end = input.find('\n', setup_end + 1);
  if (title_end == std::string::npos) return 0;
  const std::string title = input.substr(setup_end + 1, title_end - setup_end - 1);
  const auto cards_end = input.find('\0', title_end + 1);
  const std::string json = input.substr(title_end + 1, cards_end - title_end - 1);

  zorvat::Variant cards;
  try {
    cards = zorvat::cli::load_cards_json(json, "fuzz");
  } catch (const zorvat::cli::CardsFileError&) {
    return 0;
  }

  if (cards_end != std::string::npos) {
    try {
      reconcile_file(rules, cards, setup, title, input.substr(cards_end + 1));
    } catch (const zorvat::reconcile::ReadError&) {
    } catch (const zorvat::Error&) {
    }
    return 0;
  }

  zorvat::scripted::Host host;
  host.ui.answer_save("out");
  const auto instance = rules.create(host.context());
  instance->Title = title;
  instance->SetupData(setup);
  try {
    instance->run_check();
    if (!instance->Execute(cards)) return 0;
  } catch (const zorvat::Error&) {
    return 0;
  }
  if (!host.files.has("out")) return 0;
  try {
    reconcile_file(rules, cards, setup, title, host.files.at("out"));
  } catch (const zorvat::reconcile::ReadError& error) {
    // A file the class wrote is in its layout.
    std::fprintf(stderr, "the file the class wrote does not read back: %s\n", error.what());
    std::abort();
  } catch (const zorvat::Error&) {
  }
  return 0;
}
