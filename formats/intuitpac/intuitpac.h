// IntuitPAC: the 80-column ".clk" import file of Intuit PC Access and of the
// bank-branded editions that read the same file. The edition, named by Title, picks
// the layout: the full editions write two records per employee with signed overpunch
// amounts and a pay code for every category; the "Jr" editions write one record with
// plain hundredths of hours. Every record is filled with blanks to 80 columns and
// ends with CR LF.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Validation errors: the company name code, then the seven pay codes (1001 plus the
// field's position).
enum class IntuitPACErrorsEnum : long {
  errCompanyName = 1001,
  errPayCode0 = 1002,
  errPayCode1 = 1003,
  errPayCode2 = 1004,
  errVAC = 1005,
  errHOL = 1006,
  errSIC = 1007,
  errOTH = 1008,
};

class IntuitPAC final : public ExportClass {
 public:
  // Positions in SetupData.
  enum Position : std::size_t {
    kCompanyName = 0,  // 7 or 9 characters; its last four start every record
    kPayCode0 = 1,     // regular
    kPayCode1 = 2,     // overtime level 1
    kPayCode2 = 3,     // overtime level 2
    kVACPayCode = 4,
    kHOLPayCode = 5,
    kSICPayCode = 6,
    kOTHPayCode = 7,
    kVACDeduct = 8,  // "1": vacation is exported as a deduction (full layout)
    kHOLDeduct = 9,
    kSICDeduct = 10,
    kOTHDeduct = 11,
  };
  static constexpr std::size_t kFieldCount = 12;

  explicit IntuitPAC(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "IntuitPAC"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Checks the company name code against the edition in Title and the seven pay
  // codes (0 to 99); raises the first bad field's error.
  void ValidateSetupData(std::string_view psSetup);
  // True for the editions that take the short one-record layout.
  bool IsJr(std::string_view psTitle) const;

  void run_check() override;
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override {
    return {"Number", "Shift"};
  }

 private:
  // Appends one card's record (Jr) or records (full layout) to `text`.
  void EmployeeRecord(const Variant& card, std::string& text);
  // Appends to `record` a signed amount of `length` characters: hundredths of hours,
  // zero-filled, the last digit replaced by a character carrying it and the sign.
  void OverPunch(std::int16_t length, std::int32_t minutes, std::string& record) const;

  // The parts every record takes from SetupData, formatted on first use in an export
  // (inside EmployeeRecord, so a missing field fails there) and kept for the rest.
  const std::string& company_part();
  const std::string& pay_code(Position position);
  bool deduction(Position flag);

  SettingsFields settings_;
  bool jr_ = false;
  std::optional<std::string> company_part_;
  std::array<std::optional<std::string>, kFieldCount> pay_codes_;
  std::array<std::optional<bool>, kFieldCount> deductions_;

  // The sources of the procedures every card runs, built once with the object: a
  // record costs no allocation for them.
  const std::string employee_record_source_ = source_of("EmployeeRecord");
  const std::string over_punch_source_ = source_of("OverPunch");
};

}  // namespace zorvat::formats
