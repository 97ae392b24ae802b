#include "zorvat/progress.h"

#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/variant.h"

namespace zorvat {
namespace {

constexpr const char* kCaption = "Brantell Quickbooks Interface";
constexpr const char* kFont = "Arial Narrow";

}  // namespace

ProgressWindow::ProgressWindow(UiServices& ui)
    : FormModel("frmProgBar", {}, kCaption, 5295, 1335, 0),
      ui_(ui),
      outline_(shape("shpOutline", {120, 240, kOutlineWidth, 495}, false)),
      bar_(shape("shpBar", {120, 240, 0, 495}, true)),
      percent_(label("lblPercentComplete", -1, {}, {2280, 360, 615, 255})),
      message_(label("lblMessage", -1, {}, {360, 840, 4455, 255})) {
  bar_.visible = false;
  percent_.visible = false;
  percent_.font = kFont;
  message_.font = kFont;
}

void ProgressWindow::SetInterval(std::int32_t steps) {
  if (steps == 0) raise_runtime(rt::kDivisionByZero);
  interval_ = double_to_long(static_cast<double>(kOutlineWidth) / steps);
}

void ProgressWindow::UpdateProgress() {
  bar_.visible = true;
  percent_.visible = true;
  current_ += interval_;
  bar_.layout.width = current_;
  static const FormatPattern percent("##");
  std::string text;
  percent.append_to(text, static_cast<double>(current_) / kOutlineWidth * 100);
  text.push_back('%');
  percent_.caption = std::move(text);
  ui_.show_modeless(*this);
}

void ProgressWindow::UpdateMessage(std::string message) {
  message_.caption = std::move(message);
  ui_.show_modeless(*this);
}

void ProgressWindow::Close() {
  ui_.hide_modeless(*this);
}

const std::string& ProgressWindow::percent_text() const {
  return percent_.caption;
}
const std::string& ProgressWindow::message() const {
  return message_.caption;
}
std::int32_t ProgressWindow::bar_width() const {
  return bar_.layout.width;
}

}  // namespace zorvat
