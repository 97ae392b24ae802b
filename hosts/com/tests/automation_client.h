// The client side as the time-and-attendance host does it: classes created by ProgID,
// members called late-bound through IDispatch::GetIDsOfNames and Invoke, raised errors
// read from the EXCEPINFO.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

#include "raii.h"

namespace zorvat::com::testing {

struct CallResult {
  HRESULT hr = S_OK;
  unique_variant value;
  // From the EXCEPINFO when hr is DISP_E_EXCEPTION.
  HRESULT scode = S_OK;
  long number = 0;  // the error number the client sees (0x800A0000 + n gives n)
  std::string source;
  std::string description;

  bool raised() const { return hr == DISP_E_EXCEPTION; }
  bool boolean() const { return V_VT(&value) == VT_BOOL && V_BOOL(&value) != VARIANT_FALSE; }
  std::string text() const;
};

// Creates "zorvat.<Class>" in process; `hr` receives the failure when it returns null.
ComPtr<IDispatch> create_object(const std::wstring& prog_id, HRESULT* hr = nullptr);

// The DISPID of a member name, or DISPID_UNKNOWN.
DISPID dispid_of(IDispatch* object, const std::wstring& name);

// Calls a member by name. `arguments` are in the member's order.
CallResult call(IDispatch* object, const std::wstring& name, WORD flags,
                std::vector<VARIANTARG> arguments = {});
CallResult get(IDispatch* object, const std::wstring& name);
CallResult put(IDispatch* object, const std::wstring& name, const std::string& text);

// VARIANT builders (the caller's VARIANTs are cleared by `call`).
VARIANT text_arg(const std::string& text);
VARIANT object_arg(IDispatch* object);
VARIANT long_arg(long value);

// Makes zorvat.dll (once loaded) take `date` as today: its import of GetLocalTime is
// pointed at a stand-in that returns that day.
bool set_component_today(const std::string& iso_date);

// Makes zorvat.dll (once loaded) take `path` from its Save dialog without showing it:
// its import of GetSaveFileNameW is pointed at a stand-in that returns `path` as
// chosen. An empty path puts the real dialog back.
bool set_component_save_answer(const std::wstring& path);

// The stand-in Save dialog of set_component_save_answer while it lives.
class SaveAnswerStandIn {
 public:
  explicit SaveAnswerStandIn(const std::wstring& path) { ok_ = set_component_save_answer(path); }
  ~SaveAnswerStandIn() { set_component_save_answer(L""); }
  SaveAnswerStandIn(const SaveAnswerStandIn&) = delete;
  SaveAnswerStandIn& operator=(const SaveAnswerStandIn&) = delete;
  bool ok() const { return ok_; }

 private:
  bool ok_ = false;
};

}  // namespace zorvat::com::testing
