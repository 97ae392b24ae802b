// The person in front of the component's forms, for tests under Wine. While the host's
// thread is inside Setup (a modal form), a test script runs on a thread of its own and
// works the form through its windows as a user does: clicks a control (the focus moves
// to it, running the check of the control that loses it), types characters one at a
// time, picks a list item, presses a key, and reads back what the windows show.
// Controls are found by their design names ("txtPayCode(1)"), which the component
// puts on its windows.
//
// Meanwhile a watcher thread answers every message box with OK and records its text,
// cancels any other dialog that is not a form (an Open dialog), and stands in for the
// help viewer: it receives what WinHelp sends (the file, command and context).
#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace zorvat::com::testing {

struct HelpRequest {
  std::string file;  // as WinHelpA received it, "path>window"
  unsigned command = 0;
  long data = 0;  // the context number for HELP_CONTEXT
};

class FormUser {
 public:
  // Works the forms and answers the dialogs of `process`: this one, or a program the
  // test started (zorvat.exe).
  explicit FormUser(DWORD process = GetCurrentProcessId());
  ~FormUser();
  FormUser(const FormUser&) = delete;
  FormUser& operator=(const FormUser&) = delete;

  // The form's window once it is on the screen (its design name, "frmGeneric"); null
  // when it did not appear within the time.
  HWND wait_for_form(const std::string& form_name,
                     std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;
  // The window of a control of `form` by its design name; null when there is none.
  HWND control(HWND form, const std::string& name) const;

  // A mouse click on the control (a button is pressed, a box takes the focus).
  void click(HWND form, const std::string& name) const;
  // Clicks the box, puts the caret at the end and types `text` one character at a time.
  void type(HWND form, const std::string& name, const std::wstring& text) const;
  // Clicks the box and deletes its text with backspace, one character at a time.
  void clear(HWND form, const std::string& name) const;
  // Moves the focus to the combo box and picks the list item `item`.
  void select(HWND form, const std::string& name, const std::wstring& item) const;
  // A key pressed in the focused control (Enter, Esc); the form's loop handles it.
  void press_key(HWND form, WORD virtual_key) const;
  // The close box of the window's caption.
  void close_box(HWND form) const;

  // What the windows show.
  std::wstring text(HWND form, const std::string& name) const;
  std::wstring caption(HWND window) const;
  int check(HWND form, const std::string& name) const;
  bool visible(HWND form, const std::string& name) const;
  std::vector<std::wstring> items(HWND form, const std::string& name) const;
  int list_index(HWND form, const std::string& name) const;
  // The control that has the focus on the form's thread, by design name.
  std::string focused(HWND form) const;
  // Waits until the window is gone or hidden; false on time-out.
  bool wait_closed(HWND form, std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;

  // Message boxes answered so far (text only), and the help requests received.
  std::vector<std::string> messages() const;
  std::vector<HelpRequest> help_requests() const;

  // Writes a PNG of the window as the screen shows it into `folder`/`file_name`;
  // does nothing when `folder` is empty. False when it could not be written.
  static bool screenshot(HWND window, const std::filesystem::path& folder,
                         const std::string& file_name);

 private:
  void watch();
  void answer(HWND dialog);

  DWORD process_;
  std::atomic<bool> running_{true};
  std::atomic<bool> ready_{false};
  mutable std::mutex mutex_;
  std::vector<std::string> messages_;
  std::vector<HelpRequest> help_requests_;
  std::set<HWND> handled_;
  std::thread watcher_;

  friend LRESULT CALLBACK help_viewer_procedure(HWND, UINT, WPARAM, LPARAM);
};

// Runs `host_call` (which shows the form `form_name` modally) on this thread while
// `script` works the form from another; when the script is done and the form is
// still up, it is closed with its close box so that the call returns.
void with_form(FormUser& user, const std::string& form_name,
               const std::function<void(HWND form)>& script,
               const std::function<void()>& host_call);

}  // namespace zorvat::com::testing
