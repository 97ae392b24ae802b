// Generic: a plain delimited ASCII file, one line per time card, for any payroll
// system that reads such a file. Its twelve settings choose quoting, a title line,
// removal of blanks, employee columns, the field separator and the line terminator.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

class Generic final : public ExportClass {
 public:
  // Positions in SetupData.
  enum Position : std::size_t {
    kInsertQuotes = 0,
    kOutputFieldTitles = 1,
    kRemoveBlanks = 2,
    kIncludeEmployeeInformation = 3,
    kIncludeFullName = 4,
    kSeparatorTab = 5,
    kSeparatorComma = 6,
    kSeparatorSlash = 7,
    kSeparatorSemiColon = 8,
    kSeparatorCustom = 9,
    kCustomSeparatorText = 10,
    kLineTerminator = 11,
  };
  static constexpr std::size_t kFieldCount = 12;

  explicit Generic(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "Generic"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Accepts every property and value: nothing is checked, nothing changes.
  void Validate(std::string_view psProperty, Variant& pvValue);

  void run_check() override;
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override {
    return {"ExportID", "Number", "Shift", "FirstName", "MI", "LastName", "Badge"};
  }

  // The field separator and the line terminator that settings choose; what a
  // position holds is tested as the export tests it, raising the same errors. The
  // reader of written files works from the same two answers.
  static std::string separator_of(const SettingsFields& fields);
  static std::string terminator_of(const SettingsFields& fields);
  std::string_view check_method_name() const override { return "Validate"; }

 private:
  const std::string& GetSeperator();
  void CreateHeader(std::string& text);
  void EmployeeRecord(const Variant& card, std::string& text);
  double Min2Hrs(double minutes);
  const std::string& LineTerminator();

  // The settings tests a record makes, each worked out on first use.
  bool quoting();
  bool include_employee_information();
  bool include_full_name();
  void append_field(std::string& text, std::string_view field);

  SettingsFields settings_;
  // Separator, terminator and the record's settings tests depend only on SetupData,
  // which does not change while a file is built, so each is worked out on first use
  // (raising then, if it must) and kept for the rest of the export.
  std::optional<std::string> separator_;
  std::optional<std::string> terminator_;
  std::optional<bool> quoting_;
  std::optional<bool> include_employee_information_;
  std::optional<bool> include_full_name_;

  // The sources of the procedures every card runs, built once with the object: a
  // record costs no allocation for them.
  const std::string employee_record_source_ = source_of("EmployeeRecord");
  const std::string min2hrs_source_ = source_of("Min2Hrs");
};

}  // namespace zorvat::formats
