// Answers the component's dialogs as a user would, from a second thread while the
// host's thread is inside a modal call: finds the Save dialog, types the path into the
// file name box and presses Save (or Cancel, or Save with the box left empty), and
// reads and dismisses message boxes with OK.
#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace zorvat::com::testing {

enum class SaveAnswer { File, Cancel, Empty, None };

struct SeenSaveDialog {
  std::wstring title;
  std::wstring proposed_name;
  std::vector<std::wstring> filters;  // the file type box's entries
};

struct SeenMessage {
  std::wstring caption;
  std::wstring text;
};

class DialogDriver {
 public:
  // `path` is typed into the Save dialog for SaveAnswer::File. The dialogs answered are
  // those of `process`: this one, or a program the test started (zorvat.exe).
  DialogDriver(SaveAnswer answer, std::wstring path, DWORD process = GetCurrentProcessId());
  ~DialogDriver();
  DialogDriver(const DialogDriver&) = delete;
  DialogDriver& operator=(const DialogDriver&) = delete;

  // Stops watching; what was seen stays readable.
  void stop();

  std::vector<SeenSaveDialog> save_dialogs() const;
  std::vector<SeenMessage> messages() const;
  std::vector<std::string> message_texts() const;  // UTF-8
  // When the first dialog was seen (steady clock); zero when none was.
  std::chrono::steady_clock::time_point first_dialog_time() const;

 private:
  void run();
  void handle(HWND window);
  void answer_save_dialog(HWND dialog);
  void answer_message_box(HWND box);

  SaveAnswer answer_;
  std::wstring path_;
  DWORD process_;
  std::atomic<bool> running_{true};
  std::set<HWND> handled_;
  mutable std::mutex mutex_;
  std::vector<SeenSaveDialog> save_dialogs_;
  std::vector<SeenMessage> messages_;
  std::chrono::steady_clock::time_point first_dialog_{};
  std::thread thread_;
};

// Closes every window of the process that is still open `limit` after it was started,
// so that a dialog nobody could answer fails its test instead of stopping the run.
class DialogWatchdog {
 public:
  explicit DialogWatchdog(std::chrono::milliseconds limit);
  ~DialogWatchdog();
  DialogWatchdog(const DialogWatchdog&) = delete;
  DialogWatchdog& operator=(const DialogWatchdog&) = delete;

  void stop();
  // Whether it had to close something.
  bool fired() const { return fired_; }

 private:
  std::mutex mutex_;
  std::condition_variable stopped_;
  bool stopping_ = false;
  std::atomic<bool> fired_{false};
  std::thread thread_;
};

}  // namespace zorvat::com::testing
