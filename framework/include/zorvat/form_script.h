// A form driven by a script of user actions, one per line. The command line reads
// such a script when no terminal is attached, and the test host runs them:
//
//   type NAME[(INDEX)] TEXT    types TEXT into the box, one key at a time, through
//                              its key filter and change check
//   clear NAME[(INDEX)]        deletes the box's text one backspace at a time
//   check NAME[(INDEX)] 0|1    sets a check box
//   choose NAME[(INDEX)]       selects an option button
//   select NAME ITEMTEXT       picks the list item ITEMTEXT of a combo box
//   leave NAME[(INDEX)]        moves the focus out of the box (runs its leave check)
//   click NAME[(INDEX)]        presses a button (cmdButton(0) Save, (1) Cancel,
//                              (2) Help)
//
// Blank lines and lines starting with "#" are skipped. Every action first moves the
// focus to its control, as a mouse click would; when the control losing the focus
// keeps it (its check failed), the action does not happen.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "zorvat/forms.h"

namespace zorvat {

struct ScriptOutcome {
  enum class Kind {
    Done,     // the action happened (or the line was blank)
    Refused,  // the focus stayed in another control: nothing happened
    Invalid,  // the line is not an action on this form
  };
  Kind kind = Kind::Done;
  std::string problem;  // what was wrong, for Refused and Invalid
};

// Runs one script line against `form`.
ScriptOutcome run_form_action(FormModel& form, std::string_view line);

// The parts of an action line: verb, control name, index (-1 for none), argument.
struct FormAction {
  std::string verb;
  std::string name;
  int index = -1;
  std::string argument;
};
// Parses a line; nullopt (with `problem` set) when it is malformed.
std::optional<FormAction> parse_form_action(std::string_view line, std::string& problem);

// Runs the form's script from `next_line` (nullopt at the end of input) while the form
// is shown; `report` hears of every refused or invalid line with its line number.
// When the input ends with the form still open, it is closed as by its close box. An
// invalid line closes the form the same way and makes the result false.
bool run_form_script(FormModel& form, const std::function<std::optional<std::string>()>& next_line,
                     const std::function<void(int line_number, const ScriptOutcome&)>& report);

}  // namespace zorvat
