#include "request_schema.h"

#include <windows.h>

#include <msxml2.h>

#include "automation.h"

namespace zorvat::qbsim {
namespace {

// MSXML 6.0's classes and the interfaces used here (msxml6.idl).
constexpr CLSID kDomDocument60 = {
    0x88d96a05, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
constexpr CLSID kXmlSchemaCache60 = {
    0x88d96a07, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
constexpr IID kIXMLDOMDocument2 = {
    0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
constexpr IID kIXMLDOMSchemaCollection = {
    0x373984c8, 0xb845, 0x449b, {0x91, 0xe7, 0x45, 0xac, 0x83, 0x03, 0x6a, 0xde}};

// The schema's text, resource QBXML_REQUESTS_XSD of qbsim.dll.
std::string schema_text() {
  HRSRC found = FindResourceW(server_module(), L"QBXML_REQUESTS_XSD", MAKEINTRESOURCEW(10));
  HGLOBAL loaded = found != nullptr ? LoadResource(server_module(), found) : nullptr;
  const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
  if (bytes == nullptr) return {};
  return std::string(static_cast<const char*>(bytes), SizeofResource(server_module(), found));
}

std::string reason_of(IXMLDOMParseError* error) {
  if (error == nullptr) return "no reason given";
  long code = 0;
  error->get_errorCode(&code);
  BSTR reason = nullptr;
  error->get_reason(&reason);
  const com::unique_bstr owned(reason);
  std::string text = reason != nullptr ? com::bstr_to_utf8(reason) : std::string();
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
    text.pop_back();
  return text.empty() ? "error " + std::to_string(code) : text;
}

ComPtr<IXMLDOMDocument2> new_document() {
  ComPtr<IXMLDOMDocument2> document;
  if (FAILED(CoCreateInstance(kDomDocument60, nullptr, CLSCTX_INPROC_SERVER, kIXMLDOMDocument2,
                              reinterpret_cast<void**>(document.GetAddressOf()))))
    return nullptr;
  document->put_async(VARIANT_FALSE);
  return document;
}

// Loads `text` into `document`; the parse error's reason when it does not load.
std::string load(IXMLDOMDocument2* document, std::string_view text) {
  const com::unique_bstr xml(com::make_bstr(text));
  VARIANT_BOOL loaded = VARIANT_FALSE;
  if (SUCCEEDED(document->loadXML(xml.get(), &loaded)) && loaded == VARIANT_TRUE) return {};
  ComPtr<IXMLDOMParseError> error;
  document->get_parseError(&error);
  return reason_of(error.Get());
}

// The schema cache holding qbxml_requests.xsd for documents without a namespace, made
// once; null when it cannot be made (`why` says why).
IXMLDOMSchemaCollection* schema_cache(std::string& why) {
  static std::string failure;
  static ComPtr<IXMLDOMSchemaCollection> cache = []() -> ComPtr<IXMLDOMSchemaCollection> {
    const std::string text = schema_text();
    if (text.empty()) {
      failure = "qbsim.dll holds no QBXML_REQUESTS_XSD resource";
      return nullptr;
    }
    ComPtr<IXMLDOMDocument2> schema = new_document();
    ComPtr<IXMLDOMSchemaCollection> made;
    if (!schema || FAILED(CoCreateInstance(kXmlSchemaCache60, nullptr, CLSCTX_INPROC_SERVER,
                                           kIXMLDOMSchemaCollection,
                                           reinterpret_cast<void**>(made.GetAddressOf())))) {
      failure = "MSXML 6.0 (DOMDocument60, XMLSchemaCache60) cannot be created";
      return nullptr;
    }
    if (const std::string problem = load(schema.Get(), text); !problem.empty()) {
      failure = "qbxml_requests.xsd does not load: " + problem;
      return nullptr;
    }
    VARIANT held;
    VariantInit(&held);
    V_VT(&held) = VT_DISPATCH;
    V_DISPATCH(&held) = schema.Get();
    const com::unique_bstr no_namespace(SysAllocString(L""));
    if (const HRESULT hr = made->add(no_namespace.get(), held); FAILED(hr)) {
      failure = "the schema cache refuses qbxml_requests.xsd (HRESULT " + std::to_string(hr) + ")";
      return nullptr;
    }
    return made;
  }();
  why = failure;
  return cache.Get();
}

}  // namespace

std::string request_schema_problem(std::string_view document) {
  std::string why;
  IXMLDOMSchemaCollection* cache = schema_cache(why);
  if (cache == nullptr) return "the schema check cannot run: " + why;
  ComPtr<IXMLDOMDocument2> checked = new_document();
  if (!checked) return "the schema check cannot run: DOMDocument60 cannot be created";
  VARIANT schemas;
  VariantInit(&schemas);
  V_VT(&schemas) = VT_DISPATCH;
  V_DISPATCH(&schemas) = cache;
  if (FAILED(checked->putref_schemas(schemas)))
    return "the schema check cannot run: the document refuses the schema cache";
  // Validated as it loads; validate() again, for a library that checks only on request.
  if (std::string problem = load(checked.Get(), document); !problem.empty()) return problem;
  ComPtr<IXMLDOMParseError> error;
  const HRESULT validated = checked->validate(&error);
  if (validated == S_OK) return {};
  return reason_of(error.Get());
}

}  // namespace zorvat::qbsim
