#include "tally/tally_limits.h"

namespace zorvat::formats::tally {
namespace {

using namespace zorvat::reconcile;

// Each line ends with CR LF, and the export ID is written as it stands before the
// hours: commas in it read back (the hours follow the last one), a CR LF does not.
constexpr std::string_view kLineEnd = "\r\n";

std::vector<CardNeed> card_needs() {
  return {{"ExportID",
           "written as it stands, before the hours and the last comma of its line; a CR LF in it "
           "ends the line"}};
}

std::optional<ValuePastLimit> value_past_limit(const Variant& card) {
  const std::optional<std::string> id = property_text(card, "ExportID");
  if (!id || id->find(kLineEnd) == std::string::npos) return std::nullopt;
  return ValuePastLimit{"ExportID", "the export ID holds a CR LF, which ends its line"};
}

}  // namespace

const FileLimits kFileLimits{card_needs, value_past_limit};

}  // namespace zorvat::formats::tally
