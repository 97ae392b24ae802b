#include "generic/generic_limits.h"

#include "generic/generic.h"

namespace zorvat::formats::generic {
namespace {

using namespace zorvat::reconcile;

std::vector<SettingsWarning> settings_warnings(const SettingsFields& fields) {
  std::vector<SettingsWarning> warnings;
  try {
    if (Generic::separator_of(fields).empty()) {
      const bool custom = field_is_true(fields.at(Generic::kSeparatorCustom));
      warnings.push_back(
          {custom ? Generic::kCustomSeparatorText : Generic::kSeparatorCustom,
           custom ? "the custom separator is empty: the fields of a line run together"
                  : "none of positions 5 to 9 is True, so no separator is chosen: the fields of "
                    "a line run together"});
    }
    if (Generic::terminator_of(fields).empty())
      warnings.push_back({Generic::kLineTerminator,
                          "\"" + fields.at(Generic::kLineTerminator) +
                              "\" is none of 0 to 3, so the lines have no line end: the file "
                              "is one line"});
  } catch (const Error&) {
    // Fields the export could not convert are reported as its error.
  }
  return warnings;
}

}  // namespace

const FileLimits kFileLimits{nullptr, nullptr, nullptr, nullptr, settings_warnings};

}  // namespace zorvat::formats::generic
