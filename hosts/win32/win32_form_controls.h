// The Win32 child windows of a form: one per control of the form's model (labels,
// text boxes, check boxes, option buttons, combo boxes, frames and command buttons),
// placed by the model's layout in twips, and the model's state written into them.
// Shapes have no window: the form paints them (win32_form_window.h).
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "zorvat/forms.h"

namespace zorvat::win32 {

// The window property that names a control's window after its control
// ("txtPayCode(1)"), and the form's window after its form ("frmGeneric"), as a global
// atom: automation tools and tests address the windows by the names of the design.
inline constexpr wchar_t kControlNameProperty[] = L"zorvat.ControlName";

// Twips to pixels of the screen (15 twips to a pixel at 96 dots per inch).
int twips_to_pixels(int twips);

// What was last written into a control's window, so that only changes are applied.
struct AppliedState {
  std::string caption;
  std::string text;
  int value = -1;
  std::vector<std::string> items;
  int list_index = -2;
  bool visible = false;
  bool enabled = false;
  Layout layout{-1, -1, -1, -1};
  bool fresh = true;
};

struct ControlWindow {
  Control* control = nullptr;
  HWND window = nullptr;  // null for shapes
  int id = 0;
  AppliedState applied;
};

// The first control id; control k of the model gets kFirstControlId + k.
inline constexpr int kFirstControlId = 1000;

// The order in which the controls' windows are created, which is the dialog's tab
// order: frames first (they only draw), then the controls that take the focus by their
// tab index, each control without focus (a label) just before the control it
// precedes in the model, so that its access key moves to that control.
std::vector<Control*> creation_order(const FormModel& form);

// Creates the window of `control` (none for a shape) as a child of `form_window`,
// hidden or shown as the model says, with the form's font or the control's own.
// `group_start` starts a new group of the dialog (arrow keys move inside a group: the
// option buttons of one frame). Raises when the window cannot be created.
HWND create_control_window(HWND form_window, const Control& control, int id, bool group_start,
                           HFONT font);

// Writes the model's state into the control's window where it changed: caption,
// text, check value, list items and selection, visibility, enabled, position. Returns
// true when the change needs the form repainted (a label's caption or a shape moved).
bool apply_control_state(ControlWindow& control_window);

// The text of an edit or combo box window, as UTF-8.
std::string window_text(HWND window);

}  // namespace zorvat::win32
