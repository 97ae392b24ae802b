#include "form_user.h"

#include <objbase.h>
#include <wincodec.h>

#include <exception>

#include "raii.h"

namespace zorvat::com::testing {
namespace {

// The window property on which the component names its forms and controls.
constexpr wchar_t kNameProperty[] = L"zorvat.ControlName";
// What WinHelp sends the help viewer: WM_COPYDATA with this tag and the request.
constexpr ULONG_PTR kWinHelpTag = 0xA1DE505;
constexpr wchar_t kHelpViewerClass[] = L"MS_WINHELP";
// The static control that holds a message box's text.
constexpr int kMessageTextId = 0xFFFF;
// How long one action may take, message boxes answered on the way included.
constexpr UINT kActionTimeoutMs = 20000;

#pragma pack(push, 1)
struct WinHelpData {
  WORD size;
  WORD command;
  LONG data;
  LONG reserved;
  WORD file_offset;
  WORD data_offset;
};
#pragma pack(pop)

FormUser* the_user = nullptr;

LRESULT send(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR result = 0;
  SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kActionTimeoutMs, &result);
  return static_cast<LRESULT>(result);
}

std::string name_of(HWND window) {
  const auto atom = static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(GetPropW(window, kNameProperty)));
  if (atom == 0) return {};
  wchar_t name[256] = {};
  const UINT length = GlobalGetAtomNameW(atom, name, 256);
  return to_utf8(name, length);
}

std::wstring class_of(HWND window) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, 64);
  return name;
}

std::wstring text_of(HWND window) {
  const auto length = static_cast<int>(send(window, WM_GETTEXTLENGTH, 0, 0));
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  const auto copied = static_cast<int>(send(window, WM_GETTEXT, static_cast<WPARAM>(length + 1),
                                            reinterpret_cast<LPARAM>(text.data())));
  text.resize(static_cast<std::size_t>(copied));
  return text;
}

struct Search {
  std::string name;
  DWORD process = 0;
  HWND found = nullptr;
};

BOOL CALLBACK find_named(HWND window, LPARAM data) {
  auto* search = reinterpret_cast<Search*>(data);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process == search->process && name_of(window) == search->name) {
    search->found = window;
    return FALSE;
  }
  return TRUE;
}

// The visible dialogs of this process that are not forms: message boxes, Open dialogs.
struct DialogSearch {
  DWORD process = 0;
  std::vector<HWND> dialogs;
};

BOOL CALLBACK collect_dialogs(HWND window, LPARAM data) {
  auto* search = reinterpret_cast<DialogSearch*>(data);
  DWORD owner = 0;
  GetWindowThreadProcessId(window, &owner);
  if (owner == search->process && IsWindowVisible(window) && class_of(window) == L"#32770" &&
      name_of(window).empty())
    search->dialogs.push_back(window);
  return TRUE;
}

// The edit control that receives typing: the box itself, or the one inside a combo box.
HWND typing_target(HWND control) {
  if (class_of(control) == L"ComboBox") {
    HWND edit = FindWindowExW(control, nullptr, L"Edit", nullptr);
    if (edit != nullptr) return edit;
  }
  return control;
}

bool write_png(HBITMAP bitmap, const std::filesystem::path& path) {
  const HRESULT initialised = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  bool written = false;
  {
    ComPtr<IWICImagingFactory> factory;
    ComPtr<IWICBitmap> source;
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    written = SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                         IID_PPV_ARGS(factory.GetAddressOf()))) &&
              SUCCEEDED(factory->CreateBitmapFromHBITMAP(bitmap, nullptr, WICBitmapIgnoreAlpha,
                                                         source.GetAddressOf())) &&
              SUCCEEDED(factory->CreateStream(stream.GetAddressOf())) &&
              SUCCEEDED(stream->InitializeFromFilename(path.wstring().c_str(), GENERIC_WRITE)) &&
              SUCCEEDED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr,
                                               encoder.GetAddressOf())) &&
              SUCCEEDED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache)) &&
              SUCCEEDED(encoder->CreateNewFrame(frame.GetAddressOf(), nullptr)) &&
              SUCCEEDED(frame->Initialize(nullptr)) && SUCCEEDED(frame->SetPixelFormat(&format)) &&
              SUCCEEDED(frame->WriteSource(source.Get(), nullptr)) && SUCCEEDED(frame->Commit()) &&
              SUCCEEDED(encoder->Commit());
  }
  if (SUCCEEDED(initialised)) CoUninitialize();
  return written;
}

}  // namespace

LRESULT CALLBACK help_viewer_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_COPYDATA && the_user != nullptr) {
    const auto* copy = reinterpret_cast<const COPYDATASTRUCT*>(lparam);
    if (copy != nullptr && copy->dwData == kWinHelpTag && copy->cbData >= sizeof(WinHelpData)) {
      const auto* request = static_cast<const WinHelpData*>(copy->lpData);
      const char* bytes = static_cast<const char*>(copy->lpData);
      HelpRequest seen;
      seen.command = request->command;
      seen.data = request->data;
      if (request->file_offset != 0 && request->file_offset < copy->cbData)
        seen.file.assign(
            bytes + request->file_offset,
            strnlen(bytes + request->file_offset, copy->cbData - request->file_offset));
      std::lock_guard lock(the_user->mutex_);
      the_user->help_requests_.push_back(seen);
    }
    return TRUE;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

FormUser::FormUser(DWORD process) : process_(process) {
  the_user = this;
  watcher_ = std::thread([this] { watch(); });
  while (!ready_) Sleep(1);
}

FormUser::~FormUser() {
  running_ = false;
  if (watcher_.joinable()) watcher_.join();
  the_user = nullptr;
}

void FormUser::watch() {
  WNDCLASSW viewer_class{};
  viewer_class.lpfnWndProc = &help_viewer_procedure;
  viewer_class.hInstance = GetModuleHandleW(nullptr);
  viewer_class.lpszClassName = kHelpViewerClass;
  RegisterClassW(&viewer_class);
  HWND viewer = CreateWindowExW(0, kHelpViewerClass, L"Help", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                nullptr, GetModuleHandleW(nullptr), nullptr);
  ready_ = true;
  const DWORD process = process_;
  while (running_) {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    DialogSearch found{process, {}};
    EnumWindows(&collect_dialogs, reinterpret_cast<LPARAM>(&found));
    for (HWND dialog : found.dialogs)
      if (handled_.insert(dialog).second) answer(dialog);
    for (auto it = handled_.begin(); it != handled_.end();)
      it = IsWindow(*it) ? std::next(it) : handled_.erase(it);
    Sleep(5);
  }
  DestroyWindow(viewer);
  UnregisterClassW(kHelpViewerClass, GetModuleHandleW(nullptr));
}

void FormUser::answer(HWND dialog) {
  // Let the dialog finish its initialisation before reading and answering it.
  Sleep(20);
  HWND text = GetDlgItem(dialog, kMessageTextId);
  if (text != nullptr) {
    {
      std::lock_guard lock(mutex_);
      messages_.push_back(to_utf8(text_of(text)));
    }
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, IDOK)));
    return;
  }
  PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
               reinterpret_cast<LPARAM>(GetDlgItem(dialog, IDCANCEL)));
}

HWND FormUser::wait_for_form(const std::string& form_name,
                             std::chrono::milliseconds timeout) const {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  do {
    Search search{form_name, process_, nullptr};
    EnumWindows(&find_named, reinterpret_cast<LPARAM>(&search));
    if (search.found != nullptr && IsWindowVisible(search.found)) {
      // The form is up once its thread answers.
      send(search.found, WM_NULL, 0, 0);
      return search.found;
    }
    Sleep(10);
  } while (std::chrono::steady_clock::now() < deadline);
  return nullptr;
}

HWND FormUser::control(HWND form, const std::string& name) const {
  Search search{name, process_, nullptr};
  EnumChildWindows(form, &find_named, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

void FormUser::click(HWND form, const std::string& name) const {
  HWND target = control(form, name);
  if (target == nullptr) return;
  send(target, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
  send(target, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
}

void FormUser::type(HWND form, const std::string& name, const std::wstring& text) const {
  HWND target = control(form, name);
  if (target == nullptr) return;
  click(form, name);
  HWND edit = typing_target(target);
  const LRESULT end = send(edit, WM_GETTEXTLENGTH, 0, 0);
  send(edit, EM_SETSEL, static_cast<WPARAM>(end), end);
  for (wchar_t c : text) send(edit, WM_CHAR, static_cast<WPARAM>(c), 1);
}

void FormUser::clear(HWND form, const std::string& name) const {
  HWND target = control(form, name);
  if (target == nullptr) return;
  click(form, name);
  HWND edit = typing_target(target);
  const LRESULT length = send(edit, WM_GETTEXTLENGTH, 0, 0);
  send(edit, EM_SETSEL, static_cast<WPARAM>(length), length);
  for (LRESULT i = 0; i < length; ++i) send(edit, WM_CHAR, VK_BACK, 1);
}

void FormUser::select(HWND form, const std::string& name, const std::wstring& item) const {
  HWND combo = control(form, name);
  if (combo == nullptr) return;
  send(form, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(combo), TRUE);
  const LRESULT index = send(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                             reinterpret_cast<LPARAM>(item.c_str()));
  if (index < 0) return;
  send(combo, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  // What the list reports when the user picks an item.
  send(form, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(combo), CBN_SELCHANGE),
       reinterpret_cast<LPARAM>(combo));
}

void FormUser::press_key(HWND form, WORD virtual_key) const {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(form, nullptr), &info);
  HWND target = info.hwndFocus != nullptr ? info.hwndFocus : form;
  const UINT scan = MapVirtualKeyW(virtual_key, MAPVK_VK_TO_VSC);
  PostMessageW(target, WM_KEYDOWN, virtual_key, static_cast<LPARAM>(1 | (scan << 16)));
  PostMessageW(target, WM_KEYUP, virtual_key, static_cast<LPARAM>(1 | (scan << 16) | 0xC0000000u));
}

void FormUser::close_box(HWND form) const {
  send(form, WM_SYSCOMMAND, SC_CLOSE, 0);
}

std::wstring FormUser::text(HWND form, const std::string& name) const {
  HWND target = control(form, name);
  return target != nullptr ? text_of(target) : std::wstring();
}

std::wstring FormUser::caption(HWND window) const {
  return text_of(window);
}

int FormUser::check(HWND form, const std::string& name) const {
  HWND target = control(form, name);
  return target != nullptr ? static_cast<int>(send(target, BM_GETCHECK, 0, 0)) : -1;
}

bool FormUser::visible(HWND form, const std::string& name) const {
  HWND target = control(form, name);
  return target != nullptr && IsWindowVisible(target);
}

std::vector<std::wstring> FormUser::items(HWND form, const std::string& name) const {
  std::vector<std::wstring> list;
  HWND combo = control(form, name);
  if (combo == nullptr) return list;
  const LRESULT count = send(combo, CB_GETCOUNT, 0, 0);
  for (LRESULT index = 0; index < count; ++index) {
    const LRESULT length = send(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    std::wstring entry(static_cast<std::size_t>(length) + 1, L'\0');
    send(combo, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(entry.data()));
    entry.resize(static_cast<std::size_t>(length));
    list.push_back(entry);
  }
  return list;
}

int FormUser::list_index(HWND form, const std::string& name) const {
  HWND combo = control(form, name);
  return combo != nullptr ? static_cast<int>(send(combo, CB_GETCURSEL, 0, 0)) : -2;
}

std::string FormUser::focused(HWND form) const {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  if (!GetGUIThreadInfo(GetWindowThreadProcessId(form, nullptr), &info) ||
      info.hwndFocus == nullptr)
    return {};
  std::string name = name_of(info.hwndFocus);
  if (name.empty() && GetParent(info.hwndFocus) != nullptr)
    name = name_of(GetParent(info.hwndFocus));  // the edit inside a combo box
  return name;
}

bool FormUser::wait_closed(HWND form, std::chrono::milliseconds timeout) const {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (IsWindow(form) && IsWindowVisible(form)) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    Sleep(10);
  }
  return true;
}

std::vector<std::string> FormUser::messages() const {
  std::lock_guard lock(mutex_);
  return messages_;
}

std::vector<HelpRequest> FormUser::help_requests() const {
  std::lock_guard lock(mutex_);
  return help_requests_;
}

bool FormUser::screenshot(HWND window, const std::filesystem::path& folder,
                          const std::string& file_name) {
  if (folder.empty()) return true;
  std::filesystem::create_directories(folder);
  RedrawWindow(window, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_FRAME);
  send(window, WM_NULL, 0, 0);
  Sleep(300);  // the X server shows what was painted
  RECT rect{};
  GetWindowRect(window, &rect);
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  if (width <= 0 || height <= 0) return false;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
  HGDIOBJ previous = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY | CAPTUREBLT);
  SelectObject(memory, previous);
  const bool written = write_png(bitmap, folder / file_name);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return written;
}

void with_form(FormUser& user, const std::string& form_name,
               const std::function<void(HWND form)>& script,
               const std::function<void()>& host_call) {
  std::atomic<bool> host_done{false};
  std::thread person([&] {
    HWND form = nullptr;
    while (form == nullptr && !host_done)
      form = user.wait_for_form(form_name, std::chrono::milliseconds(200));
    if (form == nullptr) return;
    script(form);
    if (!user.wait_closed(form, std::chrono::seconds(2))) user.close_box(form);
  });
  std::exception_ptr failure;
  try {
    host_call();
  } catch (...) {
    failure = std::current_exception();
  }
  host_done = true;
  person.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace zorvat::com::testing
