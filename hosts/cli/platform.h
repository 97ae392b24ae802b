// What the command takes from the system it runs on: the safe file step over its file
// system, whether a user is at the keyboard, and the system's own dialogs for that user.
//
// On Windows a user at a console gets the real dialogs: the common Save dialog, the
// setup forms as Win32 windows and the message boxes they raise (hosts/win32), as the
// COM server shows them. Elsewhere the terminal stands in for them (cli_ui.h,
// terminal_form.h).
#pragma once

#include <string>

#include "zorvat/file_step.h"
#include "zorvat/ui_services.h"

namespace zorvat::cli {

// The system's file system, which the command writes through the safe file step.
FileSystem& system_file_system();

// The safe file step over the system's file system, writing in the default code page
// (code_page_option.h).
OutputFiles& safe_output_files();

// Appends standard input, read to its end, to `bytes`: the bytes as they come, with no
// line-end conversion (on Windows standard input is switched to binary first, so CR LF
// stays CR LF and Ctrl-Z is a byte like any other). False when a read failed.
bool read_standard_input(std::string& bytes);

// Whether a user can answer: on POSIX, standard input and standard error are a
// terminal; on Windows, standard input is a console (the dialogs need no stderr).
bool interactive_session();

// The system's dialogs and forms for an interactive user; null where the terminal
// stands in for them.
UiServices* desktop_ui();

// The latest year a two-digit year stands for when --two-digit-year-max is not given:
// on Windows the user's own calendar setting, elsewhere 2049, as current Windows.
int default_two_digit_year_max();

}  // namespace zorvat::cli
