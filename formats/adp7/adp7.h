// ADP7: the payroll import of ADP PC/Payroll version 7, in one of two layouts chosen
// in the settings: the fixed-position EPIP batch (a header, one line per employee and
// a trailer with the batch totals) or the CSV layout (a title line and one line per
// employee). Cards without regular or overtime minutes are left out of both. Every
// successful export advances the batch sequence number kept in SetupData.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Validation errors: 1001 plus the position of the first bad field in SetupData.
enum class ADP7ErrorsEnum : long {
  errCompanyCode = 1001,
  errBatchSeqNum = 1002,
  errPayNumber = 1003,
  errOT2PayCode = 1004,
  errOT2CodeName = 1005,
  errVACPayCode = 1006,
  errVACCodeName = 1007,
  errHOLPayCode = 1008,
  errHOLCodeName = 1009,
  errSICPayCode = 1010,
  errSICCodeName = 1011,
  errOTHPayCode = 1012,
  errOTHCodeName = 1013,
};

class ADP7 final : public ExportClass {
 public:
  // Positions in SetupData.
  enum Position : std::size_t {
    kCompanyCode = 0,
    kBatchSeqNum = 1,
    kPayNumber = 2,
    kOT2PayCode = 3,
    kOT2CodeName = 4,
    kVACPayCode = 5,
    kVACCodeName = 6,
    kHOLPayCode = 7,
    kHOLCodeName = 8,
    kSICPayCode = 9,
    kSICCodeName = 10,
    kOTHPayCode = 11,
    kOTHCodeName = 12,
    kOutputFormat = 13,  // "EPIP"; anything else writes CSV
  };
  static constexpr std::size_t kFieldCount = 14;

  explicit ADP7(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "ADP7"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Checks the batch sequence number (0 to 99) and the five pay codes (at least two
  // characters); raises the first bad field's error.
  void ValidateSetupData(std::string_view psSetup);

  void run_check() override;
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override {
    return {"ExportID", "Shift"};
  }

 private:
  // The two layouts, each appending the whole file to `text`.
  void write_epip(const SettingsFields& settings, const Variant& cards, std::string& text);
  void write_csv(const SettingsFields& settings, const Variant& cards, std::string& text);
};

}  // namespace zorvat::formats
