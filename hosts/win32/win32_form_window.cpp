#include "win32_form_window.h"

#include <algorithm>
#include <cwchar>
#include <utility>

#include "raii.h"
#include "zorvat/error.h"

namespace zorvat::win32 {
namespace {

constexpr wchar_t kFormWindowProperty[] = L"zorvat.FormWindow";
constexpr wchar_t kEditProcedureProperty[] = L"zorvat.EditProcedure";
// The dialog font (Microsoft Sans Serif on Windows, Tahoma under Wine).
constexpr wchar_t kFormFont[] = L"MS Shell Dlg";
constexpr WORD kFormFontPoints = 8;

// An in-memory dialog template with no items: the controls are created from the model
// once the dialog exists.
std::vector<WORD> dialog_template(DWORD style, const std::wstring& caption) {
  std::vector<WORD> words(sizeof(DLGTEMPLATE) / sizeof(WORD), 0);
  auto* header = reinterpret_cast<DLGTEMPLATE*>(words.data());
  header->style = style | DS_SETFONT;
  words.push_back(0);  // no menu
  words.push_back(0);  // the standard dialog class
  for (wchar_t c : caption) words.push_back(static_cast<WORD>(c));
  words.push_back(0);
  words.push_back(kFormFontPoints);
  for (const wchar_t* c = kFormFont; *c != 0; ++c) words.push_back(static_cast<WORD>(*c));
  words.push_back(0);
  return words;
}

DWORD window_style(FormWindow::Mode mode) {
  DWORD style = WS_POPUP | WS_CAPTION | DS_MODALFRAME | WS_CLIPSIBLINGS;
  if (mode == FormWindow::Mode::Modal) style |= WS_SYSMENU;
  return style;
}

void set_name_property(HWND window, const std::string& name) {
  SetPropW(window, kControlNameProperty,
           reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(GlobalAddAtomW(to_wide(name).c_str()))));
}

void remove_name_property(HWND window) {
  const auto atom =
      static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(RemovePropW(window, kControlNameProperty)));
  if (atom != 0) GlobalDeleteAtom(atom);
}

RECT pixel_rect(const Layout& layout) {
  const int left = twips_to_pixels(layout.left);
  const int top = twips_to_pixels(layout.top);
  return {left, top, left + twips_to_pixels(layout.width), top + twips_to_pixels(layout.height)};
}

}  // namespace

FormWindow::FormWindow(FormModel& form, Mode mode, HWND owner) : form_(form), mode_(mode) {
  const std::vector<WORD> words = dialog_template(window_style(mode), to_wide(form.caption));
  window_ = CreateDialogIndirectParamW(
      GetModuleHandleW(nullptr), reinterpret_cast<const DLGTEMPLATE*>(words.data()), owner,
      &FormWindow::dialog_procedure, reinterpret_cast<LPARAM>(this));
  if (window_ == nullptr)
    raise(rt::kInvalidProcedureCall, kComponentSource,
          "The window of " + form.name() + " could not be created");
  set_name_property(window_, form.name());
  applied_caption_ = form.caption;
  form_font_ = reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0));
  try {
    place(owner);
    create_controls();
    refresh();
  } catch (...) {
    destroy();
    throw;
  }
}

FormWindow::~FormWindow() {
  destroy();
}

void FormWindow::destroy() {
  if (window_ == nullptr) return;
  for (ControlWindow& control : controls_)
    if (control.window != nullptr) remove_name_property(control.window);
  remove_name_property(window_);
  SetWindowLongPtrW(window_, DWLP_USER, 0);
  DestroyWindow(window_);
  window_ = nullptr;
  for (auto& [name, font] : fonts_) DeleteObject(font);
  fonts_.clear();
}

void FormWindow::place(HWND owner) {
  RECT frame{0, 0, twips_to_pixels(form_.width()), twips_to_pixels(form_.height())};
  AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_EXSTYLE)));
  const int width = frame.right - frame.left;
  const int height = frame.bottom - frame.top;
  // Centred over the owner, or on the screen.
  RECT area{};
  if (owner == nullptr || !GetWindowRect(owner, &area))
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  const int left = std::max(0L, area.left + (area.right - area.left - width) / 2);
  const int top = std::max(0L, area.top + (area.bottom - area.top - height) / 2);
  SetWindowPos(window_, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void FormWindow::create_controls() {
  const auto& model_controls = form_.controls();
  const Control* previous_focusable = nullptr;
  for (Control* control : creation_order(form_)) {
    const auto position = std::find_if(model_controls.begin(), model_controls.end(),
                                       [&](const auto& c) { return c.get() == control; });
    const int id = kFirstControlId + static_cast<int>(position - model_controls.begin());
    // A run of option buttons of one frame is one group; everything else starts its own.
    bool group_start = control->type != ControlType::Label;
    if (control->type == ControlType::OptionButton && previous_focusable != nullptr &&
        previous_focusable->type == ControlType::OptionButton &&
        previous_focusable->container == control->container)
      group_start = false;
    if (control->tab_index >= 0) previous_focusable = control;

    HWND window = create_control_window(window_, *control, id, group_start, font_for(*control));
    controls_.push_back({control, window, id, {}});
    if (window == nullptr) continue;
    if (control->type == ControlType::TextBox) subclass_edit(window);
    if (control->type == ControlType::ComboBox && control->editable) {
      HWND edit = FindWindowExW(window, nullptr, L"Edit", nullptr);
      if (edit != nullptr) subclass_edit(edit);
    }
    if (control->default_button) SendMessageW(window_, DM_SETDEFID, static_cast<WPARAM>(id), 0);
  }
}

HFONT FormWindow::font_for(const Control& control) {
  if (control.font.empty() || form_font_ == nullptr) return form_font_;
  auto found = fonts_.find(control.font);
  if (found != fonts_.end()) return found->second;
  LOGFONTW description{};
  GetObjectW(form_font_, sizeof description, &description);
  const std::wstring face = to_wide(control.font);
  wcsncpy(description.lfFaceName, face.c_str(), LF_FACESIZE - 1);
  description.lfFaceName[LF_FACESIZE - 1] = L'\0';
  HFONT font = CreateFontIndirectW(&description);
  if (font == nullptr) return form_font_;
  fonts_.emplace(control.font, font);
  return font;
}

void FormWindow::subclass_edit(HWND edit) {
  SetPropW(edit, kFormWindowProperty, this);
  SetPropW(edit, kEditProcedureProperty,
           reinterpret_cast<HANDLE>(SetWindowLongPtrW(
               edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&FormWindow::edit_procedure))));
}

ControlWindow* FormWindow::find(int id) {
  for (ControlWindow& control : controls_)
    if (control.id == id) return &control;
  return nullptr;
}

ControlWindow* FormWindow::find(const Control* control) {
  for (ControlWindow& candidate : controls_)
    if (candidate.control == control) return &candidate;
  return nullptr;
}

ControlWindow* FormWindow::owning(HWND child) {
  // An edit box, or the edit inside a combo box.
  for (ControlWindow& control : controls_)
    if (control.window != nullptr && (control.window == child || IsChild(control.window, child)))
      return &control;
  return nullptr;
}

bool FormWindow::is_label(HWND child) const {
  for (const ControlWindow& control : controls_)
    if (control.window == child) return control.control->type == ControlType::Label;
  return false;
}

template <class Call>
void FormWindow::run_model(Call&& call) {
  if (failure_) return;
  try {
    call();
  } catch (...) {
    failure_ = std::current_exception();
  }
}

void FormWindow::refresh() {
  applying_ = true;
  bool repaint = false;
  for (ControlWindow& control : controls_) repaint = apply_control_state(control) || repaint;
  if (form_.caption != applied_caption_) {
    SetWindowTextW(window_, to_wide(form_.caption).c_str());
    applied_caption_ = form_.caption;
  }
  applying_ = false;
  if (repaint)
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
  // The modal loop waits for posted messages: wake it to see that the form is done.
  if (mode_ == Mode::Modal && (!form_.visible() || failure_)) PostMessageW(window_, WM_NULL, 0, 0);
}

void FormWindow::run_modal() {
  HWND owner = GetWindow(window_, GW_OWNER);
  const bool owner_was_enabled = owner != nullptr && IsWindowEnabled(owner);
  if (owner_was_enabled) EnableWindow(owner, FALSE);

  ShowWindow(window_, SW_SHOW);
  SetForegroundWindow(window_);
  if (ControlWindow* first = find(form_.focused()); first != nullptr && first->window != nullptr) {
    changing_focus_ = true;
    SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(first->window), TRUE);
    changing_focus_ = false;
  }

  MSG message{};
  bool quit = false;
  while (form_.visible() && !failure_) {
    const BOOL got = GetMessageW(&message, nullptr, 0, 0);
    if (got == 0) {
      quit = true;
      break;
    }
    if (got == -1) break;
    // A new click or key starts afresh after a refused focus move.
    if (message.message == WM_KEYDOWN || message.message == WM_LBUTTONDOWN ||
        message.message == WM_SYSKEYDOWN)
      refused_ = nullptr;
    if (!IsDialogMessageW(window_, &message)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
  // The application is closing: the form closes as with its close box.
  if (form_.visible()) run_model([&] { form_.close_box(); });

  if (owner_was_enabled) EnableWindow(owner, TRUE);
  ShowWindow(window_, SW_HIDE);
  if (quit) PostQuitMessage(static_cast<int>(message.wParam));
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void FormWindow::show_now() {
  refresh();
  ShowWindow(window_, SW_SHOW);
  BringWindowToTop(window_);
  RedrawWindow(window_, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_ERASENOW);
}

INT_PTR CALLBACK FormWindow::dialog_procedure(HWND window, UINT message, WPARAM wparam,
                                              LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, lparam);
    return FALSE;  // the focus is set from the model
  }
  auto* self = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(window, DWLP_USER));
  if (self == nullptr) return FALSE;
  return self->handle(message, wparam, lparam);
}

INT_PTR FormWindow::handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND: {
      const int id = LOWORD(wparam);
      if (id == IDCANCEL && lparam == 0) {
        press_cancel_button();
        return TRUE;
      }
      if (ControlWindow* control = find(id); control != nullptr && !applying_)
        on_command(*control, HIWORD(wparam));
      return TRUE;
    }
    case WM_CLOSE:
      if (mode_ == Mode::Modal) {
        run_model([&] { form_.close_box(); });
        refresh();
      }
      return TRUE;
    case WM_PAINT: {
      PAINTSTRUCT paint{};
      HDC dc = BeginPaint(window_, &paint);
      paint_shapes(dc);
      EndPaint(window_, &paint);
      return TRUE;
    }
    case WM_CTLCOLORSTATIC:
      // Labels are drawn over the form, and over the shapes (the progress bar).
      if (is_label(reinterpret_cast<HWND>(lparam))) {
        SetBkMode(reinterpret_cast<HDC>(wparam), TRANSPARENT);
        return reinterpret_cast<INT_PTR>(GetStockObject(NULL_BRUSH));
      }
      return FALSE;
    default:
      return FALSE;
  }
}

void FormWindow::on_command(ControlWindow& control, int notification) {
  switch (notification) {
    case EN_SETFOCUS:
    case CBN_SETFOCUS:
    case BN_SETFOCUS:
      on_focus(control);
      break;
    case EN_CHANGE:
    case CBN_EDITCHANGE:
      on_text_changed(control);
      break;
    case BN_CLICKED:
      on_click(control);
      break;
    case CBN_SELCHANGE: {
      const auto index = static_cast<int>(SendMessageW(control.window, CB_GETCURSEL, 0, 0));
      run_model([&] { form_.select_item(*control.control, index); });
      refresh();
      break;
    }
    default:
      break;
  }
}

void FormWindow::on_focus(ControlWindow& target) {
  if (changing_focus_ || failure_) return;
  Control* from = form_.focused();
  if (from == target.control) {
    refused_ = nullptr;
    return;
  }
  changing_focus_ = true;
  // The losing control's check runs with the focus still in it, as the classic
  // Validate does, so that a message box it shows gives the focus back there.
  ControlWindow* from_window = find(from);
  const bool checks = from != nullptr && from->validate && target.control->causes_validation;
  if (checks && from_window != nullptr && from_window->window != nullptr)
    SetFocus(from_window->window);
  bool moved = false;
  run_model([&] { moved = form_.set_focus(*target.control); });
  if (moved) {
    refused_ = nullptr;
    if (checks) SetFocus(target.window);
  } else {
    refused_ = target.control;
  }
  changing_focus_ = false;
  refresh();
}

bool FormWindow::focus_for_action(ControlWindow& target) {
  if (refused_ == target.control) {
    // The click whose focus move was just refused.
    refused_ = nullptr;
    return false;
  }
  if (form_.focused() == target.control || !target.control->takes_focus()) return true;
  // Enter, Esc and access keys press a button without the focus passing through it.
  on_focus(target);
  if (form_.focused() != target.control) {
    refused_ = nullptr;
    return false;
  }
  changing_focus_ = true;
  SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(target.window), TRUE);
  changing_focus_ = false;
  return true;
}

void FormWindow::on_click(ControlWindow& control) {
  Control& model = *control.control;
  if (model.type != ControlType::CommandButton && model.type != ControlType::CheckBox &&
      model.type != ControlType::OptionButton)
    return;
  if (!focus_for_action(control)) return;
  run_model([&] {
    if (model.type == ControlType::CommandButton)
      form_.press(model);
    else if (model.type == ControlType::CheckBox)
      form_.set_value(model, model.value == 1 ? 0 : 1);
    else
      form_.set_value(model, 1);
  });
  refresh();
}

void FormWindow::on_text_changed(ControlWindow& control) {
  std::string text = window_text(control.window);
  run_model([&] { form_.set_text(*control.control, std::move(text)); });
  refresh();
}

void FormWindow::press_cancel_button() {
  for (ControlWindow& control : controls_)
    if (control.control->cancel_button && control.control->visible && control.control->enabled) {
      on_click(control);
      return;
    }
}

int FormWindow::filter_key(HWND edit, WPARAM typed) {
  ControlWindow* control = owning(edit);
  if (control == nullptr || !control->control->key_press || failure_)
    return static_cast<int>(typed);
  // The key filters know the classic character codes 0 to 255; a character beyond them
  // is offered as "?" and passes unchanged unless the filter drops it.
  const int offered = typed < 256 ? static_cast<int>(typed) : '?';
  int key = offered;
  run_model([&] { key = form_.filter_key(*control->control, offered); });
  refresh();
  if (key == 0) return 0;
  return typed >= 256 && key == offered ? static_cast<int>(typed) : key;
}

LRESULT CALLBACK FormWindow::edit_procedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* self = static_cast<FormWindow*>(GetPropW(edit, kFormWindowProperty));
  auto original = reinterpret_cast<WNDPROC>(GetPropW(edit, kEditProcedureProperty));
  if (original == nullptr) return DefWindowProcW(edit, message, wparam, lparam);
  if (message == WM_CHAR && self != nullptr) {
    const int key = self->filter_key(edit, wparam);
    if (key == 0) return 0;
    wparam = static_cast<WPARAM>(key);
  }
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(original));
    RemovePropW(edit, kFormWindowProperty);
    RemovePropW(edit, kEditProcedureProperty);
  }
  return CallWindowProcW(original, edit, message, wparam, lparam);
}

void FormWindow::paint_shapes(HDC dc) {
  for (const ControlWindow& control : controls_) {
    const Control& shape = *control.control;
    if (shape.type != ControlType::Shape || !shape.visible) continue;
    const RECT rect = pixel_rect(shape.layout);
    if (rect.right <= rect.left || rect.bottom <= rect.top) continue;
    if (shape.filled)
      FillRect(dc, &rect, GetSysColorBrush(COLOR_HIGHLIGHT));
    else
      FrameRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
  }
}

}  // namespace zorvat::win32
