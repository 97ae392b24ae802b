// QB2000: the QuickBooks export. It writes no file: it opens a session on the
// company file named in its settings, checks that the seven payroll items and every
// employee on the time cards exist there (offering to add the missing employees),
// and sends one time entry per day and hour type, plus the cards' edit totals.
//
// The progress window shows each stage. The session is ended and the connection
// closed on every path before Execute returns or raises.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "zorvat/export_class.h"
#include "zorvat/progress.h"
#include "zorvat/quickbooks/session.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

// Declared with the class's interface; no check raises it.
enum class QB2000ErrorsEnum : long {
  errCompanyName = 6001,
};

// The qbXML version every request set is created for: the session's first version
// ("1.0") split at ".".
struct QbxmlVersion {
  std::int32_t major = 0;
  std::int32_t minor = 0;
};

class QB2000 final : public ExportClass {
 public:
  // Positions in SetupData: the company file, then the payroll items of the seven
  // hour types in their usual order.
  enum Position : std::size_t {
    kCompanyFile = 0,
    kRegularItem = 1,
    kOvertime1Item = 2,
    kOvertime2Item = 3,
    kVacationItem = 4,
    kHolidayItem = 5,
    kSickItem = 6,
    kOtherItem = 7,
  };
  static constexpr std::size_t kFieldCount = 8;
  // QuickBooks names its payroll items with at most 31 characters.
  static constexpr std::size_t kItemNameLength = 31;

  explicit QB2000(ExportContext context);
  ~QB2000() override;

  std::string_view class_name() const override { return "QB2000"; }

  // Sends the time cards to QuickBooks; True only when every card was sent.
  bool Execute(const Variant& pcTimeCards) override;
  bool Setup() override;
  // Raises the error of the first payroll item (OT1 to OTH) longer than 31
  // characters, numbered by its position.
  void ValidateSetupData(std::string_view psSetup);
  // A QuickBooks employee name as first name first: "Doe, Jane" gives "Jane Doe",
  // "Doe, Jane, Q" gives "Jane  Q Doe"; a name without a comma stays as it is.
  std::string FormatName(std::string_view sName);

  void run_check() override { ValidateSetupData(SetupData()); }
  ClassDescription describe() override;

  // The progress window of the last export: still on screen after a failed one.
  const ProgressWindow* progress_window() const { return progress_.get(); }

 private:
  // Execute's steps.
  bool ExportToQuickBooks(const Variant& pcTimeCards);
  // Raises 5 for the first card with a date that a two-digit year does not carry,
  // before anything is sent (qb2000_dates.h).
  void VerifyTxnDates(const Variant& pcTimeCards);
  // Begins the session on the company file. False when the export stops here (access
  // denied, or the user chose to launch QuickBooks); true when it goes on, with or
  // without a session.
  bool BeginSessionOrAsk();
  // Ends the session and closes the connection: the teardown of every path.
  void EndSessionAndConnection();
  void OpenProgressWindow(std::int32_t steps);
  void CloseProgressWindow();
  bool AskToAddEmployees(const std::string& missing_employees);

  // Verification.
  std::string VerifyPayrollItemsInQB(quickbooks::SessionManager& session,
                                     const QbxmlVersion& version);
  std::string VerifyEmpsInQB(const Variant& pcTimeCards, quickbooks::SessionManager& session,
                             const QbxmlVersion& version);
  void AddEmps(const std::string& missing_employees, quickbooks::SessionManager& session,
               const QbxmlVersion& version);

  // The time export.
  void ExportTimeCard(const Variant& time_card, quickbooks::SessionManager& session,
                      const QbxmlVersion& version);
  void ExportTCData(const std::string& employee_key, const Variant& day,
                    quickbooks::SessionManager& session, const QbxmlVersion& version);
  void ExportEditTotals(const std::string& employee_key, std::int32_t minutes, const Variant& date,
                        const std::string& payroll_item, quickbooks::SessionManager& session,
                        const QbxmlVersion& version);
  std::int32_t Min2Hrs(std::int32_t minutes);
  // Kept with the class; its entries carry hours and minutes, not hundredths.
  std::int32_t Min2HrsinHun(std::int32_t minutes);

  // The session manager, created on first use: a call made while it is released
  // gets a fresh one.
  quickbooks::SessionManager& session_manager();
  void release_session_manager() { session_manager_.reset(); }

  std::unique_ptr<quickbooks::SessionManager> session_manager_;
  std::unique_ptr<ProgressWindow> progress_;
  bool progress_open_ = false;
  // QuickBooks was seen naming employees last name first ("Doe, Jane").
  bool names_last_first_ = false;

  // The sources of the procedures every card, day or employee name runs, built once
  // with the object: the time export costs no allocation for them.
  const std::string export_time_card_source_ = source_of("ExportTimeCard");
  const std::string export_tc_data_source_ = source_of("ExportTCData");
  const std::string export_edit_totals_source_ = source_of("ExportEditTotals");
  const std::string min2hrs_source_ = source_of("Min2Hrs");
  const std::string min2hrsinhun_source_ = source_of("Min2HrsinHun");
  const std::string format_name_source_ = source_of("FormatName");
};

}  // namespace zorvat::formats
