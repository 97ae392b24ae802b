// A setup form in a terminal, line by line: the form is listed with a number for
// every control that takes the focus (its caption, value, list items), and the user
// answers with a number to edit, tick or pick that control, the first letter of a
// button, or an action line of the form script. Edits go key by key through the
// form's key filters and change checks; the focus moves as it would with the mouse,
// so a leave check runs when the user turns to another control.
#pragma once

#include <iosfwd>

#include "zorvat/forms.h"

namespace zorvat::cli {

// Runs the shown `form` until it hides itself, reading the user's answers from `in`
// and drawing on `screen`. The end of input closes the form as with its close box.
void run_terminal_form(FormModel& form, std::istream& in, std::ostream& screen);

// The form as listed on the terminal (for the listing after every answer).
void print_terminal_form(const FormModel& form, std::ostream& screen);

}  // namespace zorvat::cli
