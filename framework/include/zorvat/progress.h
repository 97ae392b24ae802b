// frmProgBar: the small modeless window that shows a one-line message and a growing
// bar with its percentage while a long export works. The bar is measured in twips
// against the outline's width: each step adds the interval set for the number of
// steps, so rounding can end the bar slightly past 100%.
#pragma once

#include <cstdint>
#include <string>

#include "zorvat/forms.h"
#include "zorvat/ui_services.h"

namespace zorvat {

class ProgressWindow final : public FormModel {
 public:
  static constexpr std::int32_t kOutlineWidth = 4935;

  // Loads the window (bar width 0); `ui` shows it.
  explicit ProgressWindow(UiServices& ui);

  // interval = 4935 / steps, rounded to the nearest (ties to even); 11 Division by
  // zero for no steps.
  void SetInterval(std::int32_t steps);
  // Shows the bar and the percentage and advances both by one interval.
  void UpdateProgress();
  // Replaces the message line and shows the window again (modeless, to the front).
  void UpdateMessage(std::string message);
  // Takes the window off the screen.
  void Close();

  std::int32_t current() const { return current_; }
  std::int32_t interval() const { return interval_; }
  const std::string& percent_text() const;
  const std::string& message() const;
  std::int32_t bar_width() const;

 private:
  UiServices& ui_;
  std::int32_t current_ = 0;
  std::int32_t interval_ = 0;
  Control& outline_;
  Control& bar_;
  Control& percent_;
  Control& message_;
};

}  // namespace zorvat
