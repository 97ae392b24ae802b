// The test host's own automation objects, as the time-and-attendance host hands them
// to Execute: a time-card collection (Count, PeriodEnd, for-each through _NewEnum),
// cards and days with named properties. Names match without regard to case; a name
// the object lacks is unknown to GetIDsOfNames, as on the real host.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "raii.h"

namespace zorvat::com::testing {

// An object with named properties and, for a collection, elements. Build it, then
// hand it out through `dispatch()` (the creator's reference is dropped with it).
class HostObject final : public IDispatch {
 public:
  HostObject();

  // Adds a property; the VARIANT is taken over.
  void set(const std::wstring& name, VARIANT value);
  void add_element(VARIANT value);
  void make_collection() { collection_ = true; }
  std::size_t element_count() const { return elements_->size(); }

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO*, UINT*) override;

  // Invoke calls and names looked up by GetIDsOfNames, over all host objects.
  static long long reads();
  static long long name_lookups();

 private:
  ~HostObject();

  LONG references_ = 1;
  // Indexed by DISPID - 1. DISPIDs are given out per name across all objects, as
  // objects of one host class share their DISPIDs; VT_ERROR marks a name this object
  // does not have.
  std::vector<VARIANT> values_;
  std::shared_ptr<std::vector<VARIANT>> elements_;
  bool collection_ = false;
};

// Builds the host's time-card collection from the corpus's cards JSON:
// {"PeriodEnd": "2004-03-06", "cards": [{"ExportID": "E100", ..., "Days": [...]}]}.
// Numbers are VT_I4 when whole and in range, else VT_R8; text is VT_BSTR; PeriodEnd,
// PeriodStart and DayDate are VT_DATE; absent properties stay absent.
ComPtr<IDispatch> make_collection(const nlohmann::json& document);

// A property value whose reading fails on the host's side with `failure`, the source
// kFailureSource and the description kFailureDescription.
inline constexpr wchar_t kFailureSource[] = L"TimeCards.Card";
inline constexpr wchar_t kFailureDescription[] = L"The card is locked by another user";
VARIANT failing_value(HRESULT failure);

// The VARIANT of one JSON value under a property name.
VARIANT json_value(const std::string& name, const nlohmann::json& value);

// A date from "YYYY-MM-DD".
double iso_date(const std::string& text);

}  // namespace zorvat::com::testing
