#include "dialog_driver.h"

#include <commdlg.h>
#include <dlgs.h>

#include "raii.h"

namespace zorvat::com::testing {
namespace {

// The static control that holds a message box's text.
constexpr int kMessageTextId = 0xFFFF;

std::wstring class_name(HWND window) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, 64);
  return name;
}

std::wstring window_text(HWND window) {
  const int length = GetWindowTextLengthW(window);
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  GetWindowTextW(window, text.data(), length + 1);
  text.resize(static_cast<std::size_t>(length));
  return text;
}

// The edit control of the Save dialog's file name box.
HWND file_name_edit(HWND dialog) {
  HWND box = GetDlgItem(dialog, cmb13);
  if (box == nullptr) return GetDlgItem(dialog, edt1);
  if (class_name(box) == L"Edit") return box;
  HWND edit = FindWindowExW(box, nullptr, L"Edit", nullptr);
  if (edit == nullptr) {
    HWND inner = FindWindowExW(box, nullptr, L"ComboBox", nullptr);
    if (inner != nullptr) edit = FindWindowExW(inner, nullptr, L"Edit", nullptr);
  }
  return edit != nullptr ? edit : box;
}

void press(HWND dialog, int button_id) {
  HWND button = GetDlgItem(dialog, button_id);
  if (button != nullptr)
    PostMessageW(button, BM_CLICK, 0, 0);
  else
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(button_id, BN_CLICKED), 0);
}

void type_text(HWND edit, const std::wstring& text) {
  SendMessageW(edit, EM_SETSEL, 0, -1);
  SendMessageW(edit, WM_CHAR, VK_BACK, 0);
  for (wchar_t c : text) SendMessageW(edit, WM_CHAR, static_cast<WPARAM>(c), 0);
}

struct Search {
  DWORD process;
  std::vector<HWND> found;
};

BOOL CALLBACK collect(HWND window, LPARAM data) {
  auto* search = reinterpret_cast<Search*>(data);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process == search->process && IsWindowVisible(window) && class_name(window) == L"#32770")
    search->found.push_back(window);
  return TRUE;
}

// Every visible top-level window of the process, whatever its class.
BOOL CALLBACK collect_any(HWND window, LPARAM data) {
  auto* search = reinterpret_cast<Search*>(data);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process == search->process && IsWindowVisible(window)) search->found.push_back(window);
  return TRUE;
}

}  // namespace

DialogDriver::DialogDriver(SaveAnswer answer, std::wstring path, DWORD process)
    : answer_(answer), path_(std::move(path)), process_(process), thread_([this] { run(); }) {}

DialogDriver::~DialogDriver() {
  stop();
}

void DialogDriver::stop() {
  running_ = false;
  if (thread_.joinable()) thread_.join();
}

void DialogDriver::run() {
  while (running_) {
    Search search{process_, {}};
    EnumWindows(&collect, reinterpret_cast<LPARAM>(&search));
    for (HWND window : search.found)
      if (handled_.insert(window).second) handle(window);
    // Forget windows that are gone: a handle may come back for a new dialog.
    for (auto it = handled_.begin(); it != handled_.end();)
      it = IsWindow(*it) ? std::next(it) : handled_.erase(it);
    Sleep(5);
  }
}

void DialogDriver::handle(HWND window) {
  {
    std::lock_guard lock(mutex_);
    if (first_dialog_ == std::chrono::steady_clock::time_point{})
      first_dialog_ = std::chrono::steady_clock::now();
  }
  // Let the dialog finish its initialisation before reading and answering it.
  Sleep(20);
  if (GetDlgItem(window, kMessageTextId) != nullptr)
    answer_message_box(window);
  else if (GetDlgItem(window, cmb13) != nullptr || GetDlgItem(window, edt1) != nullptr)
    answer_save_dialog(window);
  else
    press(window, IDCANCEL);
}

void DialogDriver::answer_save_dialog(HWND dialog) {
  SeenSaveDialog seen;
  seen.title = window_text(dialog);
  HWND edit = file_name_edit(dialog);
  seen.proposed_name = window_text(edit);
  HWND types = GetDlgItem(dialog, cmb1);
  const LRESULT count = types != nullptr ? SendMessageW(types, CB_GETCOUNT, 0, 0) : 0;
  for (LRESULT index = 0; index < count; ++index) {
    const LRESULT length = SendMessageW(types, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    std::wstring entry(static_cast<std::size_t>(length) + 1, L'\0');
    SendMessageW(types, CB_GETLBTEXT, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(entry.data()));
    entry.resize(static_cast<std::size_t>(length));
    seen.filters.push_back(entry);
  }
  {
    std::lock_guard lock(mutex_);
    save_dialogs_.push_back(seen);
  }
  switch (answer_) {
    case SaveAnswer::File:
      type_text(edit, path_);
      press(dialog, IDOK);
      break;
    case SaveAnswer::Empty:
      type_text(edit, L"");
      press(dialog, IDOK);
      break;
    case SaveAnswer::Cancel:
    case SaveAnswer::None:
      press(dialog, IDCANCEL);
      break;
  }
}

void DialogDriver::answer_message_box(HWND box) {
  SeenMessage seen{window_text(box), window_text(GetDlgItem(box, kMessageTextId))};
  {
    std::lock_guard lock(mutex_);
    messages_.push_back(seen);
  }
  press(box, GetDlgItem(box, IDOK) != nullptr ? IDOK : IDCANCEL);
}

std::vector<SeenSaveDialog> DialogDriver::save_dialogs() const {
  std::lock_guard lock(mutex_);
  return save_dialogs_;
}

std::vector<SeenMessage> DialogDriver::messages() const {
  std::lock_guard lock(mutex_);
  return messages_;
}

std::vector<std::string> DialogDriver::message_texts() const {
  std::vector<std::string> texts;
  for (const SeenMessage& message : messages()) texts.push_back(to_utf8(message.text));
  return texts;
}

std::chrono::steady_clock::time_point DialogDriver::first_dialog_time() const {
  std::lock_guard lock(mutex_);
  return first_dialog_;
}

DialogWatchdog::DialogWatchdog(std::chrono::milliseconds limit)
    : thread_([this, limit] {
        std::unique_lock lock(mutex_);
        if (stopped_.wait_for(lock, limit, [this] { return stopping_; })) return;
        // A message box may sit on a dialog: close windows until none is left.
        while (!stopping_) {
          Search search{GetCurrentProcessId(), {}};
          EnumWindows(&collect_any, reinterpret_cast<LPARAM>(&search));
          for (HWND window : search.found) {
            fired_ = true;
            PostMessageW(window, WM_CLOSE, 0, 0);
          }
          stopped_.wait_for(lock, std::chrono::milliseconds(200), [this] { return stopping_; });
        }
      }) {}

DialogWatchdog::~DialogWatchdog() {
  stop();
}

void DialogWatchdog::stop() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  stopped_.notify_all();
  if (thread_.joinable()) thread_.join();
}

}  // namespace zorvat::com::testing
