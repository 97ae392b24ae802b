// PCPayLink: the Paychex PayLink import file. A header record, one "|"-tagged detail
// record per employee and hour category with time in it, and a trailer with control
// counts. Records end with LF alone, the trailer with nothing. The client's file
// sequence number, kept in SetupData, advances with every file written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Validation errors: 2001 plus the position of the first bad field in SetupData.
enum class PCPayLinkErrorsEnum : long {
  errOfficeNumber = 2001,
  errClientID = 2002,
  errSiteNumber = 2003,
  errSeqNumber = 2004,
};

class PCPayLink final : public ExportClass {
 public:
  // Positions in SetupData.
  enum Position : std::size_t {
    kOfficeNumber = 0,  // 0 to 1295
    kClientID = 1,      // at most 4 characters
    kSiteNumber = 2,    // 0 to 9
    kSeqNumber = 3,     // 0 to 46655, advanced by each export
    kVACPayCode = 4,    // earning codes of the miscellaneous categories
    kHOLPayCode = 5,
    kSICPayCode = 6,
    kOTHPayCode = 7,
  };
  static constexpr std::size_t kFieldCount = 8;

  explicit PCPayLink(ExportContext context) : ExportClass(context) {}

  std::string_view class_name() const override { return "PCPayLink"; }

  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Checks office, client, site and sequence numbers; raises the first bad field's
  // error.
  void ValidateSetupData(std::string_view psSetup);

  void run_check() override;
  ClassDescription describe() override;
  std::vector<std::string_view> written_text_properties() const override { return {"Number"}; }

 private:
  // Appends one card's detail records to `text` and counts them.
  void EmployeeRecord(const Variant& card, std::string& text);
  double Min2Hrs(double minutes);

  SettingsFields settings_;
  // The trailer's control counts, reset by each export: records (the header counts),
  // fields, employees (raised by regular-time records only) and details.
  std::int32_t record_count_ = 1;
  std::int32_t field_count_ = 2;
  std::int32_t employee_count_ = 0;
  std::int32_t detail_count_ = 0;
  std::string records_;  // one employee's records, reused from card to card

  // The sources of the procedures every card runs, built once with the object: a
  // record costs no allocation for them.
  const std::string employee_record_source_ = source_of("EmployeeRecord");
  const std::string min2hrs_source_ = source_of("Min2Hrs");
};

}  // namespace zorvat::formats
