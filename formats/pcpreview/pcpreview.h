// PCPreview: the time-and-attendance import of the Paychex Preview payroll system.
// The file is named by the client number ("0012_TA.txt") and holds one earnings
// record per hour type in which an employee has time, the records run together with
// no line break between them.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Validation errors: the first bad field of the settings string, 3001 plus its
// position.
enum class PCPreviewErrorsEnum : long {
  errClientNumber = 3001,
  errPayCode0 = 3002,
  errPayCode1 = 3003,
  errPayCode2 = 3004,
  errSequence = 3005,
  errVAC = 3006,
  errHOL = 3007,
  errSIC = 3008,
  errOTH = 3009,
};

class PCPreview final : public ExportClass {
 public:
  // Positions in SetupData. The four deduction flags are kept for the setup form
  // only: every record is an earnings record ("E") whatever they hold.
  enum Position : std::size_t {
    kClientNumber = 0,
    kRegularPayCode = 1,
    kOvertime1PayCode = 2,
    kOvertime2PayCode = 3,
    kSequence = 4,
    kVacationPayCode = 5,
    kHolidayPayCode = 6,
    kSickPayCode = 7,
    kOtherPayCode = 8,
    kVacationDeduct = 9,
    kHolidayDeduct = 10,
    kSickDeduct = 11,
    kOtherDeduct = 12,
  };
  static constexpr std::size_t kFieldCount = 13;

  explicit PCPreview(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "PCPreview"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Raises the error of the first bad field; returns when every field passes.
  void ValidateSetupData(std::string_view psSetup);

  void run_check() override { ValidateSetupData(SetupData()); }
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override {
    return {"Number", "FirstName", "LastName"};
  }

 private:
  void EmployeeRecord(const Variant& card, std::string& output);
  double Min2Hrs(double minutes);

  // The pay-code column of an hour type, formatted once per export on first use.
  const std::string& pay_code_column(std::size_t hour_type);
  const std::string& sequence_column();

  SettingsFields fields_;
  std::array<std::optional<std::string>, 7> pay_code_columns_;  // by hour type
  std::optional<std::string> sequence_column_;
  std::string hours_text_;  // the hours of one record, before they are right-justified

  // The sources of the procedures every card runs, built once with the object: a
  // record costs no allocation for them.
  const std::string employee_record_source_ = source_of("EmployeeRecord");
  const std::string min2hrs_source_ = source_of("Min2Hrs");
};

}  // namespace zorvat::formats
