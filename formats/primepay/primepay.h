// PrimePay: the PrimeLink ".DAT" time import of the PrimePay payroll service. A
// header line for the pay period, then one fixed-width detail line for every hour
// type in which an employee has time, hours given in hundredths.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Validation errors: the first bad field of the settings string, 5001 plus its
// position.
enum class PrimePayErrorsEnum : long {
  errBatchSequenceNumber = 5001,
  errOT1 = 5002,
  errOT2 = 5003,
  errVAC = 5004,
  errHOL = 5005,
  errSIC = 5006,
  errOTH = 5007,
};

class PrimePay final : public ExportClass {
 public:
  // Positions in SetupData. Regular hours have a column of their own and no pay
  // code; other time goes out under the sick pay code, so the other pay code is kept
  // for the setup form only.
  enum Position : std::size_t {
    kBatchSequenceNumber = 0,
    kOvertime1PayCode = 1,
    kOvertime2PayCode = 2,
    kVacationPayCode = 3,
    kHolidayPayCode = 4,
    kSickPayCode = 5,
    kOtherPayCode = 6,
  };
  static constexpr std::size_t kFieldCount = 7;

  explicit PrimePay(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "PrimePay"; }

  // Writes the file; SetupData is left as it was.
  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Raises the error of the first bad field; returns when every field passes.
  void ValidateSetupData(std::string_view psSetup);

  void run_check() override { ValidateSetupData(SetupData()); }
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override { return {"Number"}; }

 private:
  void OutputHeader(std::string& output);
  void EmployeeRecord(const Variant& card, std::string& output);
  std::int32_t Min2HrsinHun(std::int32_t minutes);
  // Kept with the class; the file carries hundredths, not whole hours.
  std::int32_t Min2Hrs(std::int32_t minutes);

  // The pay-code and batch columns, formatted once per export on first use.
  const std::string& pay_code_column(std::size_t hour_type);
  const std::string& batch_column();

  // The export's time cards (OutputHeader reads their "PeriodEnd") and settings.
  Variant time_cards_;
  SettingsFields fields_;
  std::array<std::optional<std::string>, 7> pay_code_columns_;  // by hour type
  std::optional<std::string> batch_column_;

  // The sources of the procedures every card runs, built once with the object: a
  // record costs no allocation for them.
  const std::string employee_record_source_ = source_of("EmployeeRecord");
  const std::string min2hrsinhun_source_ = source_of("Min2HrsinHun");
  const std::string min2hrs_source_ = source_of("Min2Hrs");
};

}  // namespace zorvat::formats
