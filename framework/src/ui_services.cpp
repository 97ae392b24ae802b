#include <chrono>
#include <ctime>

#include "zorvat/export_class.h"
#include "zorvat/forms.h"
#include "zorvat/ui_services.h"

namespace zorvat {
namespace {

class SystemClock final : public Clock {
 public:
  Date today() const override {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return Date::from_civil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  }
};

}  // namespace

OpenDialogResult UiServices::open_dialog(const OpenDialogRequest&) {
  return {};
}

void UiServices::show_form(FormModel& form) {
  raise_form_not_available(std::string(kProgIdPrefix) + form.class_name());
}

void UiServices::show_modeless(FormModel&) {}

void UiServices::hide_modeless(FormModel&) {}

void UiServices::launch_associated_program(std::string_view) {}

const Clock& system_clock() {
  static const SystemClock clock;
  return clock;
}

}  // namespace zorvat
