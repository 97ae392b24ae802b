// A form model (zorvat/forms.h) on the Windows screen: a dialog window built from the
// model's controls (one renderer for every setup form and the progress window), the
// user's actions fed back into the model, and the model's state written back into the
// windows after each of them.
//
// What the user does reaches the model as the classic controls report it: a typed
// character passes the box's key filter before the edit control sees it; an edit's new
// text, a ticked check box, a chosen option button or list item, a pressed button; the
// focus moving to another control runs the check of the control losing it, and when
// that check keeps the focus, the focus goes back and the click that moved it does
// nothing. Enter presses the default button, Esc the cancel button, the close box
// closes the form as Cancel does.
#pragma once

#include <windows.h>

#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "win32_form_controls.h"
#include "zorvat/forms.h"

namespace zorvat::win32 {

class FormWindow {
 public:
  enum class Mode {
    Modal,     // a setup form: close box, shown until the form hides itself
    Modeless,  // the progress window: no close box, shown while the caller works
  };

  // Creates the window (hidden) and its controls from the model's current state.
  // The window belongs to `owner` (may be null).
  FormWindow(FormModel& form, Mode mode, HWND owner);
  ~FormWindow();
  FormWindow(const FormWindow&) = delete;
  FormWindow& operator=(const FormWindow&) = delete;

  HWND window() const { return window_; }

  // Shows the form modally over its owner (disabled meanwhile) and runs the messages
  // until the form hides itself; an error raised by one of the form's handlers ends
  // the form and is raised again here.
  void run_modal();

  // Brings the window up to date with the model, shows it in front of the others and
  // paints it at once: the caller keeps working without running a message loop.
  void show_now();

  // Writes the model's state into the windows.
  void refresh();

 private:
  static INT_PTR CALLBACK dialog_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK edit_procedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam);

  INT_PTR handle(UINT message, WPARAM wparam, LPARAM lparam);
  void destroy();
  void create_controls();
  void subclass_edit(HWND edit);
  HFONT font_for(const Control& control);
  void place(HWND owner);

  ControlWindow* find(int id);
  ControlWindow* find(const Control* control);
  ControlWindow* owning(HWND child);

  void on_command(ControlWindow& control, int notification);
  void on_focus(ControlWindow& target);
  bool focus_for_action(ControlWindow& target);
  void on_click(ControlWindow& control);
  void on_text_changed(ControlWindow& control);
  void press_cancel_button();
  int filter_key(HWND edit, WPARAM typed);
  void paint_shapes(HDC dc);
  bool is_label(HWND child) const;

  // Runs a call into the model; an error it raises is kept to be raised by run_modal.
  template <class Call>
  void run_model(Call&& call);

  FormModel& form_;
  Mode mode_;
  HWND window_ = nullptr;
  HFONT form_font_ = nullptr;
  std::map<std::string, HFONT> fonts_;
  std::vector<ControlWindow> controls_;
  std::exception_ptr failure_;
  bool applying_ = false;        // writing the model into the windows
  bool changing_focus_ = false;  // moving the focus on the model's behalf
  Control* refused_ = nullptr;   // the control the last focus move was refused to
  std::string applied_caption_;
};

}  // namespace zorvat::win32
