// The forms of Win32Ui: each setup form is a dialog built from its model for the time
// it is shown; the progress window stays on the screen from its first show to its
// hide.
#include "win32_form_window.h"
#include "win32_services.h"

namespace zorvat::win32 {

Win32Ui::Win32Ui() = default;

Win32Ui::~Win32Ui() = default;

void Win32Ui::show_form(FormModel& form) {
  // Modal to the host's window that is active on this thread.
  FormWindow window(form, FormWindow::Mode::Modal, GetActiveWindow());
  window.run_modal();
}

void Win32Ui::show_modeless(FormModel& form) {
  auto& window = modeless_[&form];
  if (!window)
    window = std::make_unique<FormWindow>(form, FormWindow::Mode::Modeless, GetActiveWindow());
  window->show_now();
}

void Win32Ui::hide_modeless(FormModel& form) {
  modeless_.erase(&form);
}

}  // namespace zorvat::win32
