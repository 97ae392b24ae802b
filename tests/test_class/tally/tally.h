// Tally: a small export class that lives only in the test tree, to prove that a class
// is one folder plus one line in a class list. It writes a comma-separated file with
// one line per card: the export ID and the card's time in all categories together, in
// hours with two decimals, after an optional title line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorvat/export_class.h"

namespace zorvat::formats {

enum class TallyErrorsEnum : long {
  errTitles = 9001,
};

class Tally final : public ExportClass {
 public:
  enum Position : std::size_t {
    kOutputFieldTitles = 0,
  };
  static constexpr std::size_t kFieldCount = 1;

  explicit Tally(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "Tally"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  void ValidateSetupData(std::string_view psSetup);

  void run_check() override { ValidateSetupData(SetupData()); }
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override { return {"ExportID"}; }
};

}  // namespace zorvat::formats
