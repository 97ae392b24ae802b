#include "win32_form_controls.h"

#include <algorithm>

#include "raii.h"
#include "zorvat/error.h"

namespace zorvat::win32 {
namespace {

// A drop-down list shows this many items when it opens.
constexpr int kVisibleListItems = 8;

int screen_dpi() {
  static const int dpi = [] {
    HDC screen = GetDC(nullptr);
    const int value = screen != nullptr ? GetDeviceCaps(screen, LOGPIXELSX) : 96;
    if (screen != nullptr) ReleaseDC(nullptr, screen);
    return value > 0 ? value : 96;
  }();
  return dpi;
}

struct WindowKind {
  const wchar_t* window_class;
  DWORD style;
  DWORD extended_style;
};

WindowKind window_kind(const Control& control) {
  switch (control.type) {
    case ControlType::Label:
      return {L"STATIC", SS_LEFT, 0};
    case ControlType::TextBox:
      return {L"EDIT", ES_AUTOHSCROLL | ES_LEFT | WS_TABSTOP, WS_EX_CLIENTEDGE};
    case ControlType::CheckBox:
      // Not automatic: the model decides the value, the window shows it; 2 is greyed.
      return {L"BUTTON", BS_3STATE | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlType::OptionButton:
      return {L"BUTTON", BS_RADIOBUTTON | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlType::ComboBox:
      return {L"COMBOBOX",
              static_cast<DWORD>(
                  (control.editable ? CBS_DROPDOWN | CBS_AUTOHSCROLL : CBS_DROPDOWNLIST) |
                  WS_VSCROLL | WS_TABSTOP),
              0};
    case ControlType::Frame:
      return {L"BUTTON", BS_GROUPBOX, 0};
    case ControlType::CommandButton:
      return {L"BUTTON",
              static_cast<DWORD>((control.default_button ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) |
                                 BS_NOTIFY | WS_TABSTOP),
              0};
    case ControlType::Shape:
      break;
  }
  return {nullptr, 0, 0};
}

// A combo box window is as high as its closed box plus its open list.
int window_height(const Control& control) {
  const int height = twips_to_pixels(control.layout.height);
  if (control.type != ControlType::ComboBox) return height;
  return height + kVisibleListItems * std::max(height - 6, 12);
}

void set_caption(HWND window, const std::string& text) {
  SetWindowTextW(window, to_wide(text).c_str());
}

void replace_items(HWND combo, const std::vector<std::string>& items) {
  SendMessageW(combo, CB_RESETCONTENT, 0, 0);
  for (const std::string& item : items)
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(to_wide(item).c_str()));
}

int check_state(int value) {
  if (value == 1) return BST_CHECKED;
  if (value == 2) return BST_INDETERMINATE;
  return BST_UNCHECKED;
}

bool same_layout(const Layout& a, const Layout& b) {
  return a.left == b.left && a.top == b.top && a.width == b.width && a.height == b.height;
}

}  // namespace

int twips_to_pixels(int twips) {
  return MulDiv(twips, screen_dpi(), 1440);
}

std::vector<Control*> creation_order(const FormModel& form) {
  std::vector<Control*> frames;
  std::vector<std::pair<double, Control*>> keyed;
  const auto& controls = form.controls();
  for (std::size_t i = 0; i < controls.size(); ++i) {
    Control* control = controls[i].get();
    if (control->type == ControlType::Frame) {
      frames.push_back(control);
      continue;
    }
    if (control->tab_index >= 0) {
      keyed.emplace_back(control->tab_index, control);
      continue;
    }
    // Just before the next control of the model that has a place in the tab order.
    double key = 1e9 + static_cast<double>(i);
    for (std::size_t next = i + 1; next < controls.size(); ++next) {
      if (controls[next]->tab_index >= 0) {
        key = controls[next]->tab_index - 0.5;
        break;
      }
    }
    keyed.emplace_back(key, control);
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Control*> order = frames;
  for (const auto& [key, control] : keyed) order.push_back(control);
  return order;
}

HWND create_control_window(HWND form_window, const Control& control, int id, bool group_start,
                           HFONT font) {
  const WindowKind kind = window_kind(control);
  if (kind.window_class == nullptr) return nullptr;
  DWORD style = WS_CHILD | kind.style;
  if (control.visible) style |= WS_VISIBLE;
  if (!control.enabled) style |= WS_DISABLED;
  if (group_start) style |= WS_GROUP;
  const bool captioned =
      control.type != ControlType::TextBox && control.type != ControlType::ComboBox;
  const std::wstring caption = to_wide(captioned ? control.caption : control.text);
  HWND window = CreateWindowExW(
      kind.extended_style, kind.window_class, caption.c_str(), style,
      twips_to_pixels(control.layout.left), twips_to_pixels(control.layout.top),
      twips_to_pixels(control.layout.width), window_height(control), form_window,
      reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
  if (window == nullptr)
    raise(rt::kInvalidProcedureCall, kComponentSource,
          "The window of " + control.display_name() + " could not be created");
  SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
  SetPropW(window, kControlNameProperty,
           reinterpret_cast<HANDLE>(
               static_cast<ULONG_PTR>(GlobalAddAtomW(to_wide(control.display_name()).c_str()))));
  if (control.type == ControlType::TextBox && control.max_length != 0)
    SendMessageW(window, EM_LIMITTEXT, control.max_length, 0);
  return window;
}

bool apply_control_state(ControlWindow& control_window) {
  const Control& control = *control_window.control;
  AppliedState& applied = control_window.applied;
  HWND window = control_window.window;
  bool repaint = false;

  if (window == nullptr) {
    // A shape: painted by the form from the model.
    repaint = applied.fresh || applied.visible != control.visible ||
              !same_layout(applied.layout, control.layout);
    applied.visible = control.visible;
    applied.layout = control.layout;
    applied.fresh = false;
    return repaint;
  }

  switch (control.type) {
    case ControlType::TextBox:
      if (applied.fresh || applied.text != control.text) {
        if (window_text(window) != control.text) set_caption(window, control.text);
        applied.text = control.text;
      }
      break;
    case ControlType::ComboBox:
      if (applied.fresh || applied.items != control.items) {
        replace_items(window, control.items);
        applied.items = control.items;
        applied.list_index = -2;
      }
      if (applied.list_index != control.list_index || applied.text != control.text) {
        if (control.editable && control.list_index < 0) {
          if (window_text(window) != control.text) set_caption(window, control.text);
        } else {
          SendMessageW(window, CB_SETCURSEL, static_cast<WPARAM>(control.list_index), 0);
        }
        applied.list_index = control.list_index;
        applied.text = control.text;
      }
      break;
    case ControlType::CheckBox:
    case ControlType::OptionButton:
      if (applied.value != control.value) {
        SendMessageW(window, BM_SETCHECK, static_cast<WPARAM>(check_state(control.value)), 0);
        applied.value = control.value;
      }
      [[fallthrough]];
    default:
      if (!applied.fresh && applied.caption != control.caption) {
        set_caption(window, control.caption);
        repaint = repaint || control.type == ControlType::Label;
      }
      applied.caption = control.caption;
      break;
  }

  if (applied.fresh || applied.visible != control.visible) {
    ShowWindow(window, control.visible ? SW_SHOWNA : SW_HIDE);
    repaint = repaint || !applied.fresh;
    applied.visible = control.visible;
  }
  if (applied.fresh || applied.enabled != control.enabled) {
    EnableWindow(window, control.enabled ? TRUE : FALSE);
    applied.enabled = control.enabled;
  }
  if (!applied.fresh && !same_layout(applied.layout, control.layout)) {
    MoveWindow(window, twips_to_pixels(control.layout.left), twips_to_pixels(control.layout.top),
               twips_to_pixels(control.layout.width), window_height(control), TRUE);
    repaint = true;
  }
  applied.layout = control.layout;
  applied.fresh = false;
  return repaint;
}

std::string window_text(HWND window) {
  const int length = GetWindowTextLengthW(window);
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  const int copied = GetWindowTextW(window, text.data(), length + 1);
  text.resize(static_cast<std::size_t>(std::max(copied, 0)));
  return to_utf8(text);
}

}  // namespace zorvat::win32
