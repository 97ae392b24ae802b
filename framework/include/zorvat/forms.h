// Forms as data: the setup forms (frm<Class>) and the progress window are models
// that any host can put on screen. A model lists its controls (type, name, index in
// its control array, caption, frame, layout in twips, tab order, limits, list items,
// current state) and carries its own event handlers (key press, change, validate on
// leaving, click). A host renders the controls, feeds the user's actions back
// through the action members of FormModel, and runs the modal loop until the form
// hides itself.
//
// A renderer builds its window from controls(): one child per control, placed by
// its layout (twips from the client area's top left), with its caption ("&" marks the
// access key), frame (container; option buttons of one frame are one group), tab
// order, length limit, list items and default/cancel button. It wires the events to
// the action members below: a typed character goes through filter_key before the edit
// control sees it, an edit control's new text is reported with set_text, a check box
// or option button with set_value, a list choice with select_item, a button with press,
// a focus change with set_focus (if that returns false the host puts the focus back on
// focused()), the close box with close_box. Handlers may change any control (a text,
// a caption, visibility) and show message boxes, so after each action the renderer
// reads every control's state back into its window; when visible() turns false the
// modal loop ends.
//
// Every setup form follows one pattern: OpenForm fills the controls from the
// settings string only when it has exactly the class's field count (otherwise the
// form keeps what it holds, the design defaults on first use), shows the form
// modally, rebuilds the whole string from the controls in field order however the
// form was closed, and returns the saved flag. The three buttons of cmdButton are
// Save (0), Cancel (1) and Help (2).
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/settings.h"
#include "zorvat/ui_services.h"

namespace zorvat {

enum class ControlType {
  Label,
  TextBox,
  CheckBox,
  OptionButton,
  ComboBox,
  Frame,
  CommandButton,
  Shape,
};
std::string_view control_type_name(ControlType type);

// Position and size in twips (1440 to the inch), from the top left of the form's
// client area, whatever frame the control lies in.
struct Layout {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

// How a control carries its settings field: check boxes as "0"/"1", option buttons
// as "True"/"False", text boxes and editable combo boxes as their text, drop-down
// lists as their list index in decimal.
enum class Binding { None, Text, CheckValue, OptionValue, ListIndex };

struct Control {
  ControlType type = ControlType::Label;
  std::string name;
  int index = -1;         // index in its control array; -1 when not in one
  std::string caption;    // labels, frames, buttons, check boxes, option buttons
  std::string container;  // the frame it lies in; empty for the form itself
  Layout layout;          // twips
  int tab_index = -1;     // place in the tab order; -1 for controls without focus
  bool visible = true;
  bool enabled = true;
  std::size_t max_length = 0;     // text boxes: most characters typed; 0 for no limit
  bool editable = true;           // combo boxes: false for a drop-down list
  bool causes_validation = true;  // taking the focus runs the losing control's Validate
  bool default_button = false;    // Enter presses it
  bool cancel_button = false;     // Esc presses it
  bool filled = false;            // shapes: drawn filled (the progress bar)
  std::string font;               // empty for the form's font

  // State. Text boxes and combo boxes: text; check boxes: value 0, 1 (or 2,
  // greyed); option buttons: value 0 or 1; combo boxes: items and list_index (-1
  // when the text matches no item).
  std::string text;
  int value = 0;
  std::vector<std::string> items;
  int list_index = -1;

  // The settings field the control carries, by the form's default fill and
  // write-back; -1 and Binding::None for none.
  int field = -1;
  Binding binding = Binding::None;

  // Events, each empty when the control has none.
  // KeyPress: may replace the typed character or drop it (set it to 0).
  std::function<void(int& key_ascii)> key_press;
  // Change: after every change of the text, typed or assigned.
  std::function<void()> change;
  // Validate: before the focus leaves the control; setting `cancel` keeps it there.
  std::function<void(bool& cancel)> validate;
  // Click: buttons pressed, check boxes and option buttons set, list items chosen.
  std::function<void()> click;

  // "txtPayCode(1)", or the plain name outside a control array.
  std::string display_name() const;
  bool takes_focus() const { return tab_index >= 0 && visible && enabled; }
};

// The keys the key filters know.
inline constexpr int kBackspace = 8;

class FormModel {
 public:
  // `name` "frmGeneric", `class_name` "Generic" (the class whose settings it edits;
  // empty for a window that edits none), the design caption, the client area in
  // twips and the number of settings fields.
  FormModel(std::string name, std::string class_name, std::string caption, int width, int height,
            std::size_t field_count);
  virtual ~FormModel();
  FormModel(const FormModel&) = delete;
  FormModel& operator=(const FormModel&) = delete;

  const std::string& name() const { return name_; }
  const std::string& class_name() const { return class_name_; }
  std::size_t field_count() const { return field_count_; }
  int width() const { return width_; }
  int height() const { return height_; }

  std::string caption;
  // The help topic of the form, set when it is opened (1089 to 1099).
  unsigned long help_context = 0;

  bool saved() const { return saved_; }
  bool visible() const { return visible_; }

  // The controls in the order they were laid out (which is also their tab order).
  const std::vector<std::unique_ptr<Control>>& controls() const { return controls_; }
  // The control `name` (index -1) or `name(index)`; nullptr / Error 9 when missing.
  Control* find(std::string_view control_name, int index = -1);
  const Control* find(std::string_view control_name, int index = -1) const;
  Control& control(std::string_view control_name, int index = -1);
  const Control& control(std::string_view control_name, int index = -1) const;
  // The controls that take the focus, in tab order.
  std::vector<Control*> tab_order() const;
  Control* focused() const { return focused_; }

  // OpenForm: seeds the controls from `settings` when it has exactly field_count()
  // fields, shows the form modally through the host, writes every control back into
  // `settings` (after Save and Cancel alike) and returns the saved flag. `title` is
  // the class's Title, for the forms that show it. Errors leave with the source
  // "zorvat.<form>.OpenForm".
  bool OpenForm(std::string& settings, const ExportContext& context, std::string_view title = {});

  // The settings string the form proposes to a new user: OpenForm's steps on an
  // empty string, without showing the form. Meant for a fresh instance (not the
  // shared one, which keeps what its user typed).
  std::string design_settings(const ExportContext& context, std::string_view title = {});

  // The button handler: 0 Save, 1 Cancel, 2 Help; other indexes are the form's own.
  virtual void cmdButton_Click(int index);

  // --- What the user does, as a host reports it -------------------------------
  // Moves the focus to `target`. The control that loses it runs its Validate first;
  // false (focus unchanged) when that check cancels the move.
  bool set_focus(Control& target);
  // Moves the focus from `control` to the next control of the tab order.
  bool leave(Control& control);
  // The KeyPress filter alone: the key the box receives, 0 when it is dropped.
  int filter_key(Control& box, int key_ascii);
  // One key typed into a text or combo box (`key_ascii` is the letter's code point):
  // filter, then the edit (a character is
  // appended within the length limit, backspace deletes the last one; with
  // `replace_all` the character replaces the selected whole text), then Change.
  // False when the key was dropped (by the filter or the length limit).
  bool type_key(Control& box, int key_ascii, bool replace_all = false);
  // The text of a box changed (assigned, or edited by a host's own edit control):
  // Change runs when it differs from the old text.
  void set_text(Control& box, std::string text);
  // Check box or option button set to `value` (an option button set to 1 clears the
  // others of its frame); Click runs when the value changes.
  void set_value(Control& button, int value);
  // A list item chosen in a combo box (-1 for none); Click runs.
  void select_item(Control& combo, int list_index);
  // A command button pressed: its Click.
  void press(Control& button);
  // The window's close box: the form closes as with Cancel.
  void close_box();

 protected:
  // Layout helpers: each adds a control (tab stops in the order added) and returns it.
  Control& add(Control control);
  // Adds a control of `type` with what every control has: name, index, caption, place
  // and frame.
  Control& add(ControlType type, std::string control_name, int index, std::string control_caption,
               Layout layout, std::string container = {});
  Control& label(std::string control_name, int index, std::string caption, Layout layout,
                 std::string container = {});
  Control& frame(std::string control_name, std::string caption, Layout layout);
  Control& text_box(std::string control_name, int index, std::string text, Layout layout,
                    std::size_t max_length = 0, std::string container = {});
  Control& check_box(std::string control_name, int index, std::string caption, Layout layout,
                     std::string container = {});
  Control& option_button(std::string control_name, int index, std::string caption, Layout layout,
                         std::string container = {});
  Control& combo_box(std::string control_name, std::vector<std::string> items, bool editable,
                     Layout layout, std::string container = {});
  Control& shape(std::string control_name, Layout layout, bool filled);
  // The Save, Cancel and Help buttons of cmdButton, left to right from `left`.
  void standard_buttons(int left, int top);
  Control& command_button(std::string control_name, int index, std::string caption, Layout layout);
  void bind(Control& control, int field, Binding binding);

  // Key filters of the setup forms.
  static void upper_case_key(int& key_ascii);
  static void digits_only_key(int& key_ascii);

  // OpenForm's steps a form may replace: what happens before the fill (help context,
  // caption from the title), the fill from an exact-count split, and the rebuilt
  // string. The defaults use the controls' bindings.
  virtual void prepare(std::string_view title);
  virtual void fill(const SettingsFields& fields);
  // After the fill step (whether it filled or not), before the form is shown.
  virtual void seeded();
  virtual std::string write_back() const;

  // Assignments from a settings field, as the classic controls take them: a check
  // box the field as an integer, an option button as a Boolean, a drop-down list as
  // its list index (13 Type mismatch, 380 Invalid property value when they do not).
  void assign_field(Control& control, const std::string& field);
  std::string field_text(const Control& control) const;
  // The field_count() fields as the bound controls hold them (empty where none is
  // bound), and fields joined into a settings string.
  std::vector<std::string> bound_fields() const;
  static std::string join_fields(const std::vector<std::string>& fields);

  // The services of the host showing the form (valid while it is open).
  UiServices& ui() const;
  const ExportContext& context() const;
  void show_message(std::string text);

  // Save and Cancel: set the flag and hide the form.
  void hide(bool saved);

 private:
  std::string name_;
  std::string class_name_;
  int width_;
  int height_;
  std::size_t field_count_;
  std::vector<std::unique_ptr<Control>> controls_;
  int next_tab_index_ = 0;
  Control* focused_ = nullptr;
  bool saved_ = false;
  bool visible_ = false;
  const ExportContext* context_ = nullptr;
};

// The classic error of a property assignment the control refuses.
inline constexpr long kInvalidPropertyValue = 380;

// --- Shared form instances ----------------------------------------------------
// Every form is one instance per thread, created on first use and kept (hidden) with
// its controls' state until it is unloaded. Hosts and tests unload them all with
// unload_forms(); the next use then starts again from the design defaults.
namespace detail {
void on_unload(std::function<void()> unload);
}

template <class Form>
Form& shared_form() {
  thread_local std::unique_ptr<Form> instance;
  if (!instance) {
    instance = std::make_unique<Form>();
    detail::on_unload([] { instance.reset(); });
  }
  return *instance;
}

void unload_forms();

// The error a host that cannot show forms raises for `prog_id`'s setup form.
[[noreturn]] void raise_form_not_available(std::string_view prog_id);

}  // namespace zorvat
