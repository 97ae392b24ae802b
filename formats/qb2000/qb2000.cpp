#include "qb2000/qb2000.h"

#include <optional>

#include "qb2000/qb2000_dates.h"
#include "qb2000/qb2000_form.h"
#include "qb2000/qb2000_requests.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"
#include "zorvat/variant.h"

namespace zorvat::formats {
namespace {

// Creating the session manager fails with the classic error of a COM class that is
// not installed.
constexpr long kActiveXCannotCreateObject = 429;
constexpr std::string_view kActiveXCannotCreateObjectText = "ActiveX component can't create object";

// The host product names itself to QuickBooks as both application id and name.
constexpr std::string_view kApplicationName = "Horalis";

// The stages the progress window shows.
constexpr std::string_view kConnecting = "Connecting to QuickBooks...";
constexpr std::string_view kVerifyingItems = "Verifying Payroll Items...";
constexpr std::string_view kVerifyingEmployees = "Verifying Employee Names...";
constexpr std::string_view kAddingEmployees = "Adding Employee Names...";
constexpr std::string_view kExporting = "Exporting Data to QuickBooks...";

// Beyond the cards, the bar advances after the items, the employees and the adding.
constexpr double kStepsBesideCards = 3;

constexpr std::string_view kDeniedAccess = "denied access";
constexpr std::string_view kAccessDenied =
    "QuickBooks has denied Horalis access... Export Aborted.";

constexpr std::string_view kRetryTitle = "Retry Export";
constexpr std::string_view kRetryQuestion =
    "The Company File couldn't be found or QuickBooks will not allow Horalis to access File.\r\n"
    "You must launch QuickBooks and then return to Horalis and retry the export.\r\n"
    "\r\n"
    "Click 'Yes' to launch QuickBooks.";

constexpr std::string_view kMissingItemsTitle = "Missing Payroll Items";
constexpr std::string_view kMissingItemsHead =
    "The Following Payroll Items were not found in Quickbooks: \r\n\r\n";
constexpr std::string_view kMissingItemsTail =
    "\r\n\r\nThese items must be added to Quickbooks before export can continue";

constexpr std::string_view kAddEmployeesTitle =
    "Add Missing Employees to QuickBooks and Continue with Export?";
constexpr std::string_view kAddEmployeesHead =
    "The following employees were not found in QuickBooks: \r\n";
constexpr std::string_view kAddEmployeesTail =
    "\r\nDo you want to add these Employees to Quickbooks and continue with Export? ";

constexpr std::string_view kExportAborted = "Data Export Aborted.";

// "Paycode field must be 31 chars or less".
std::string item_length_message() {
  return "Paycode field must be " + std::to_string(QB2000::kItemNameLength) + " chars or less";
}

// The session's first qbXML version, "major.minor", as the pair of numbers every
// request set is created with. A first version that is not two numbers (a Canadian
// "CA3.0") is a type mismatch, raised with what QuickBooks offered.
QbxmlVersion first_version(const std::vector<std::string>& versions) {
  if (versions.empty()) raise_runtime(rt::kSubscriptOutOfRange);
  const std::vector<std::string> parts = qb2000::split_text(versions.front(), '.');
  if (parts.size() < 2) raise_runtime(rt::kSubscriptOutOfRange);
  const auto number = [&](const std::string& part) {
    const bool digits = !part.empty() && part.size() <= 4 &&
                        part.find_first_not_of("0123456789") == std::string::npos;
    if (!digits)
      raise(rt::kTypeMismatch, kComponentSource,
            "Type mismatch: QuickBooks offers qbXML version \"" + versions.front() +
                "\" first, which is not a version number major.minor; this export speaks the "
                "qbXML versions of the US editions");
    return to_integer(Variant(part));
  };
  return {number(parts[0]), number(parts[1])};
}

MessageBoxRequest foreground_box(std::string_view text, std::string_view title, MessageIcon icon) {
  MessageBoxRequest request;
  request.text = std::string(text);
  request.title = std::string(title);
  request.icon = icon;
  request.foreground = true;
  return request;
}

}  // namespace

QB2000::QB2000(ExportContext context) : ExportClass(context) {}

QB2000::~QB2000() {
  // A window left up by a failed export goes with the object that showed it.
  if (progress_open_) {
    try {
      progress_->Close();
    } catch (...) {
    }
  }
}

bool QB2000::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    try {
      return ExportToQuickBooks(pcTimeCards);
    } catch (...) {
      // The error path: end the session and close the connection (on a fresh manager
      // when it was released), release the manager and raise again. The progress
      // window stays up to show how far the export came. An error of the teardown
      // itself replaces the one that led here.
      EndSessionAndConnection();
      release_session_manager();
      throw;
    }
  });
}

bool QB2000::ExportToQuickBooks(const Variant& pcTimeCards) {
  ValidateSetupData(SetupData());
  VerifyTxnDates(pcTimeCards);

  const double cards = get_number(pcTimeCards, time_card::kCount);
  OpenProgressWindow(double_to_long(cards + kStepsBesideCards));
  progress_->UpdateMessage(std::string(kConnecting));

  session_manager().OpenConnection(kApplicationName, kApplicationName);
  if (!BeginSessionOrAsk()) return false;

  progress_->UpdateMessage(std::string(kVerifyingItems));
  const QbxmlVersion version = first_version(session_manager().QBXMLVersionsForSession());
  const std::string missing_items = VerifyPayrollItemsInQB(session_manager(), version);
  progress_->UpdateProgress();
  if (!missing_items.empty()) {
    context().ui.message_box(foreground_box(
        std::string(kMissingItemsHead) + missing_items + std::string(kMissingItemsTail),
        kMissingItemsTitle, MessageIcon::Exclamation));
    EndSessionAndConnection();
    CloseProgressWindow();
    return false;
  }

  progress_->UpdateMessage(std::string(kVerifyingEmployees));
  const std::string missing_employees = VerifyEmpsInQB(pcTimeCards, session_manager(), version);
  progress_->UpdateProgress();
  if (!missing_employees.empty()) {
    if (!AskToAddEmployees(missing_employees)) {
      EndSessionAndConnection();
      CloseProgressWindow();
      context().ui.message_box(foreground_box(kExportAborted, {}, MessageIcon::Exclamation));
      return false;
    }
    progress_->UpdateMessage(std::string(kAddingEmployees));
    AddEmps(missing_employees, session_manager(), version);
  }

  progress_->UpdateProgress();
  progress_->UpdateMessage(std::string(kExporting));
  for_each(pcTimeCards, [&](const Variant& card) {
    ExportTimeCard(card, session_manager(), version);
    progress_->UpdateProgress();
  });

  EndSessionAndConnection();
  release_session_manager();
  CloseProgressWindow();
  return true;
}

void QB2000::VerifyTxnDates(const Variant& pcTimeCards) {
  const std::string source = source_of("VerifyTxnDates");
  guarded(source, [&] {
    // Raised inside the walk, so that the card and its date are the last ones read.
    qb2000::for_each_century_shifted_date(pcTimeCards, [&](const qb2000::CenturyShiftedDate& date) {
      raise(rt::kInvalidProcedureCall, source,
            date.description() + " Nothing was sent to QuickBooks.");
    });
  });
}

bool QB2000::BeginSessionOrAsk() {
  // The session's failures are caught and kept here, not raised: the last one decides
  // what the user is told.
  std::optional<Error> last_error;
  auto keep_failure = [&](auto&& call) {
    try {
      call();
    } catch (const Error& error) {
      last_error = error;
    }
  };
  keep_failure([&] {
    session_manager().BeginSession(SettingsFields(setup_data()).at(kCompanyFile),
                                   quickbooks::OpenMode::DoNotCare);
  });
  // Only a failure of the session manager itself (negative, as every COM failure
  // is) means there is no session.
  if (!last_error || last_error->number() >= 0) return true;

  keep_failure([&] { session_manager().EndSession(); });
  keep_failure([&] { session_manager().CloseConnection(); });
  release_session_manager();

  const std::string description = last_error->description();
  if (description.find(kDeniedAccess) != std::string::npos) {
    progress_->UpdateMessage(description);
    context().ui.message_box(foreground_box(kAccessDenied, {}, MessageIcon::Information));
    CloseProgressWindow();
    return false;
  }

  const Answer answer = context().ui.question(
      foreground_box(kRetryQuestion, kRetryTitle, MessageIcon::None), QuestionButtons::YesNo);
  if (answer == Answer::Yes) {
    context().ui.launch_associated_program(SettingsFields(setup_data()).at(kCompanyFile));
    CloseProgressWindow();
    return false;
  }
  // No: the export goes on without a session, and its next call to QuickBooks fails
  // and is reported as the export's error.
  return true;
}

bool QB2000::AskToAddEmployees(const std::string& missing_employees) {
  std::string text(kAddEmployeesHead);
  for (const std::string& entry : qb2000::split_text(missing_employees, ',')) {
    const qb2000::NameParts employee = qb2000::name_parts(entry, ':');
    // An empty middle initial leaves two spaces.
    text += employee.first + " " + employee.middle + " " + employee.last + "\r\n";
  }
  text += kAddEmployeesTail;

  MessageBoxRequest request;
  request.text = std::move(text);
  request.title = std::string(kAddEmployeesTitle);
  request.system_modal = true;
  return context().ui.question(request, QuestionButtons::YesNo) == Answer::Yes;
}

void QB2000::EndSessionAndConnection() {
  session_manager().EndSession();
  session_manager().CloseConnection();
}

void QB2000::OpenProgressWindow(std::int32_t steps) {
  // A window left up by an earlier failed export makes way for the new one.
  if (progress_open_) CloseProgressWindow();
  progress_ = std::make_unique<ProgressWindow>(context().ui);
  progress_->SetInterval(steps);
  context().ui.show_modeless(*progress_);
  progress_open_ = true;
}

void QB2000::CloseProgressWindow() {
  progress_open_ = false;
  progress_->Close();
}

quickbooks::SessionManager& QB2000::session_manager() {
  if (!session_manager_) {
    if (context().quickbooks == nullptr)
      raise(kActiveXCannotCreateObject, kComponentSource, kActiveXCannotCreateObjectText);
    session_manager_ = context().quickbooks->create();
  }
  return *session_manager_;
}

bool QB2000::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmQB2000());
    // A saved string is checked at once, so that a bad item is raised from Setup.
    if (saved) ValidateSetupData(SetupData());
    return saved;
  });
}

void QB2000::ValidateSetupData(std::string_view psSetup) {
  guarded(source_of("ValidateSetupData"), [&] {
    const SettingsFields fields(psSetup);
    // The company file and, as always, the regular item are not checked; the error
    // number is the field's position.
    for (std::size_t position = kOvertime1Item; position <= kOtherItem && position < fields.size();
         ++position) {
      if (text_length(fields.at(position)) > kItemNameLength)
        raise(static_cast<long>(position), source_of("Validate"), item_length_message());
    }
  });
}

}  // namespace zorvat::formats
