#include "automation_client.h"

#include <commdlg.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace zorvat::com::testing {

std::string CallResult::text() const {
  if (V_VT(&value) != VT_BSTR) return {};
  return bstr_to_utf8(V_BSTR(&value));
}

ComPtr<IDispatch> create_object(const std::wstring& prog_id, HRESULT* hr) {
  CLSID clsid{};
  HRESULT result = CLSIDFromProgID(prog_id.c_str(), &clsid);
  ComPtr<IDispatch> object;
  if (SUCCEEDED(result))
    result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                              reinterpret_cast<void**>(object.GetAddressOf()));
  if (hr != nullptr) *hr = result;
  return object;
}

DISPID dispid_of(IDispatch* object, const std::wstring& name) {
  std::wstring copy = name;
  LPOLESTR names[] = {copy.data()};
  DISPID id = DISPID_UNKNOWN;
  if (FAILED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)))
    return DISPID_UNKNOWN;
  return id;
}

CallResult call(IDispatch* object, const std::wstring& name, WORD flags,
                std::vector<VARIANTARG> arguments) {
  CallResult result;
  const DISPID id = dispid_of(object, name);
  if (id == DISPID_UNKNOWN) {
    result.hr = DISP_E_UNKNOWNNAME;
  } else {
    std::reverse(arguments.begin(), arguments.end());
    DISPID put_id = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
      parameters.rgdispidNamedArgs = &put_id;
      parameters.cNamedArgs = 1;
    }
    EXCEPINFO exception{};
    UINT argument_error = 0;
    result.hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                               (flags & DISPATCH_PROPERTYPUT) ? nullptr : result.value.addressof(),
                               &exception, &argument_error);
    if (result.hr == DISP_E_EXCEPTION) {
      if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
      result.scode = exception.scode;
      result.number = HRESULT_FACILITY(exception.scode) == FACILITY_CONTROL
                          ? HRESULT_CODE(exception.scode)
                          : static_cast<long>(exception.scode);
      if (exception.scode == 0) result.number = exception.wCode;
      result.source = bstr_to_utf8(exception.bstrSource);
      result.description = bstr_to_utf8(exception.bstrDescription);
      SysFreeString(exception.bstrSource);
      SysFreeString(exception.bstrDescription);
      SysFreeString(exception.bstrHelpFile);
    }
  }
  for (VARIANTARG& argument : arguments) VariantClear(&argument);
  return result;
}

CallResult get(IDispatch* object, const std::wstring& name) {
  return call(object, name, DISPATCH_PROPERTYGET);
}

CallResult put(IDispatch* object, const std::wstring& name, const std::string& text) {
  return call(object, name, DISPATCH_PROPERTYPUT, {text_arg(text)});
}

VARIANT text_arg(const std::string& text) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = make_bstr(text);
  return value;
}

VARIANT object_arg(IDispatch* object) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_DISPATCH;
  V_DISPATCH(&value) = object;
  if (object != nullptr) object->AddRef();
  return value;
}

VARIANT long_arg(long value) {
  VARIANT result;
  VariantInit(&result);
  V_VT(&result) = VT_I4;
  V_I4(&result) = value;
  return result;
}

namespace {

SYSTEMTIME component_today{};

void WINAPI stand_in_local_time(SYSTEMTIME* time) {
  *time = component_today;
}

// Points the module's import of `function` from `dll` at `replacement`.
bool patch_import(HMODULE module, const char* dll, const char* function, void* replacement) {
  auto* base = reinterpret_cast<BYTE*>(module);
  auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
  auto* nt = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (directory.VirtualAddress == 0) return false;
  for (auto* import = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
       import->Name != 0; ++import) {
    if (_stricmp(reinterpret_cast<const char*>(base + import->Name), dll) != 0) continue;
    auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
    auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++slots) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      auto* by_name = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (std::strcmp(reinterpret_cast<const char*>(by_name->Name), function) != 0) continue;
      DWORD protection = 0;
      VirtualProtect(&slots->u1.Function, sizeof slots->u1.Function, PAGE_READWRITE, &protection);
      slots->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
      VirtualProtect(&slots->u1.Function, sizeof slots->u1.Function, protection, &protection);
      return true;
    }
  }
  return false;
}

}  // namespace

bool set_component_today(const std::string& iso_date) {
  int year = 0, month = 0, day = 0;
  if (std::sscanf(iso_date.c_str(), "%d-%d-%d", &year, &month, &day) != 3) return false;
  component_today = SYSTEMTIME{};
  component_today.wYear = static_cast<WORD>(year);
  component_today.wMonth = static_cast<WORD>(month);
  component_today.wDay = static_cast<WORD>(day);
  HMODULE module = GetModuleHandleW(L"zorvat.dll");
  if (module == nullptr) return false;
  return patch_import(module, "kernel32.dll", "GetLocalTime",
                      reinterpret_cast<void*>(&stand_in_local_time));
}

namespace {

std::wstring save_answer;

BOOL WINAPI stand_in_save_dialog(OPENFILENAMEW* dialog) {
  if (dialog->lpstrFile == nullptr || dialog->nMaxFile <= save_answer.size()) return FALSE;
  const std::size_t length = save_answer.copy(dialog->lpstrFile, save_answer.size());
  dialog->lpstrFile[length] = L'\0';
  return TRUE;
}

}  // namespace

bool set_component_save_answer(const std::wstring& path) {
  HMODULE module = GetModuleHandleW(L"zorvat.dll");
  if (module == nullptr) return false;
  save_answer = path;
  void* function = path.empty() ? reinterpret_cast<void*>(&GetSaveFileNameW)
                                : reinterpret_cast<void*>(&stand_in_save_dialog);
  return patch_import(module, "comdlg32.dll", "GetSaveFileNameW", function);
}

}  // namespace zorvat::com::testing
