// Peachtree: a comma-separated file of time tickets for the Peachtree accounting
// system, one ticket for every day of every card and every hour type in which the
// day has time. Tickets are numbered from the batch sequence kept in SetupData,
// which advances with every ticket and is saved back once the file is written.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zorvat/date.h"
#include "zorvat/export_class.h"
#include "zorvat/settings.h"
#include "zorvat/time_card.h"

namespace zorvat::formats {

// Validation errors: the first bad field of the settings string, 4002 plus its
// position. 4001 is never raised.
enum class PeachtreeErrorsEnum : long {
  errPlaceHolder = 4001,
  errLevelReg = 4002,
  errLevelOT1 = 4003,
  errLevelOT2 = 4004,
  errLevelVAC = 4005,
  errLevelHOL = 4006,
  errLevelSIC = 4007,
  errLevelOTH = 4008,
  errCodeReg = 4009,
  errCodeOT1 = 4010,
  errCodeOT2 = 4011,
  errCodeVAC = 4012,
  errCodeHOL = 4013,
  errCodeSIC = 4014,
  errCodeOTH = 4015,
};

class Peachtree final : public ExportClass {
 public:
  // Positions in SetupData: seven pay levels and seven pay item codes, one of each
  // per hour type in the order REG, OT1, OT2, VAC, HOL, SIC, OTH.
  enum Position : std::size_t {
    kPayLevelReg = 0,
    kPayItemCodeReg = 7,
    kOutputFieldTitles = 14,
    kBatchSequence = 15,
  };
  static constexpr std::size_t kFieldCount = 16;

  explicit Peachtree(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "Peachtree"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Raises the error of the first bad field; returns when every field passes.
  void ValidateSetupData(std::string_view psSetup);

  void run_check() override { ValidateSetupData(SetupData()); }
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override { return {"ExportID"}; }

 private:
  void OutputHeader(std::string& output);
  // Advances the batch sequence (counting in `fields`) by one for every ticket written.
  void EmployeeRecord(const SettingsFields& fields, FieldCounter& batch_sequence,
                      const Variant& card, std::string& output);
  void DataRecord(std::string& output, const std::string& recorded_by, std::int32_t ticket_number,
                  Date ticket_date, const std::string& activity_item, std::int32_t level,
                  std::int32_t minutes, std::string_view description);
  double Min2Hrs(double minutes);
  // Kept with the class; the tickets carry hours and minutes, not hundredths.
  std::int32_t Min2HrsinHun(std::int32_t minutes);

  // What the tickets keep from card to card: each hour type's pay level, read at its
  // first ticket of the export, and the ticket dates of the days met last, each
  // formatted once.
  std::int32_t pay_level(const SettingsFields& fields, std::size_t type);
  const std::string& ticket_date_text(Date date);
  std::array<std::optional<std::int32_t>, time_card::kHourCategoryCount> pay_levels_{};
  struct TicketDate {
    Date date;
    std::optional<std::string> text;  // none: the slot is free
  };
  std::array<TicketDate, 16> ticket_dates_{};
  std::size_t next_ticket_date_ = 0;

  // The sources of the procedures every card and ticket runs, built once with the
  // object: a record costs no allocation for them.
  const std::string employee_record_source_ = source_of("EmployeeRecord");
  const std::string data_record_source_ = source_of("DataRecord");
  const std::string min2hrs_source_ = source_of("Min2Hrs");
  const std::string min2hrsinhun_source_ = source_of("Min2HrsinHun");
};

}  // namespace zorvat::formats
