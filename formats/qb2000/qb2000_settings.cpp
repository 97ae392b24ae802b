// QB2000's settings string, field by field. The check raises the field's position
// itself (2 to 7) for a payroll item name that is too long; the company file and the
// regular item are not checked.
#include "qb2000/qb2000.h"
#include "qb2000/qb2000_form.h"
#include "zorvat/quickbooks/back_ends.h"

namespace zorvat::formats {

ClassDescription QB2000::describe() {
  constexpr const char* kItem = "QuickBooks payroll item name, at most 31 characters";
  auto by_position = [](long position) { return SettingGuard{position, {}}; };
  const std::string writes =
      "no file: time entries sent into a QuickBooks company file, after checking its payroll "
      "items and employees, through the first of these that is installed: " +
      quickbooks::session_back_end_names();
  return describe_settings(
      QB2000Form(), writes,
      {
          {"Company File", "path of the QuickBooks company file (.QBW)", {}, true},
          {"Regular Payroll Item", "QuickBooks payroll item name (not checked)"},
          {"Overtime Level 1 Payroll Item", kItem, by_position(2)},
          {"Overtime Level 2 Payroll Item", kItem, by_position(3)},
          {"Vacation Payroll Item", kItem, by_position(4)},
          {"Holiday Payroll Item", kItem, by_position(5)},
          {"Sick Payroll Item", kItem, by_position(6)},
          {"Other Payroll Item", kItem, by_position(7)},
      });
}

}  // namespace zorvat::formats
