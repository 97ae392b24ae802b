// The server as its host meets it: registration, the type library, dispatch by name
// with the published DISPIDs, raised errors, the Save dialog and the server's lifetime.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "automation_client.h"
#include "dialog_driver.h"
#include "host_objects.h"
#include "listed_classes.h"
#include "test_config.h"
#include "zorvat.h"
#include "zorvat/version.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::wstring guid_text(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return text;
}

std::wstring registry_text(const std::wstring& key, const wchar_t* value = nullptr) {
  wchar_t data[1024] = {};
  DWORD size = sizeof data;
  if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), value, RRF_RT_REG_SZ, nullptr, data, &size) !=
      ERROR_SUCCESS)
    return L"<missing>";
  return data;
}

bool key_exists(const std::wstring& key) {
  unique_hkey handle;
  return RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, handle.put()) == ERROR_SUCCESS;
}

std::string narrow(const std::wstring& text) {
  return to_utf8(text);
}

ComPtr<IDispatch> create_listed(const ClassInfo& info) {
  HRESULT hr = S_OK;
  ComPtr<IDispatch> object = create_object(prog_id(info), &hr);
  EXPECT_TRUE(object) << narrow(prog_id(info)) << " cannot be created: 0x" << std::hex
                      << static_cast<unsigned long>(hr);
  return object;
}

const char kCommaSetup[] = "0,0,0,0,0,False,True,False,False,False,,0";

json one_card() {
  return json::parse(R"({"PeriodEnd": "2004-03-06", "cards": [
      {"ExportID": "E100", "Number": 315, "Shift": 1, "REG": 2400, "OT1": 90, "OT2": 0,
       "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0, "FirstName": "Ann", "MI": "", "LastName": "Lee",
       "Badge": "77", "PeriodStart": "2004-02-29", "Days": []}]})");
}

const char kOneCardLine[] = "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\r\n";

std::string read_bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

fs::path fresh_folder(const std::string& name) {
  const fs::path folder = config().work / name;
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder);
  return folder;
}

// --- Registration and the type library -------------------------------------------

TEST(Registration, EveryProgIdNamesItsClassAndTheServer) {
  for (const ClassInfo& info : kListedClasses) {
    const std::wstring clsid = guid_text(*info.clsid);
    const std::wstring key = L"CLSID\\" + clsid;
    EXPECT_EQ(registry_text(prog_id(info) + L"\\Clsid"), clsid) << narrow(prog_id(info));
    EXPECT_EQ(registry_text(key + L"\\ProgID"), prog_id(info));
    EXPECT_EQ(registry_text(key + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    const std::wstring server = registry_text(key + L"\\InprocServer32");
    EXPECT_EQ(lstrcmpiW(server.c_str(), config().dll.wstring().c_str()), 0)
        << narrow(server) << " vs " << narrow(config().dll.wstring());
    EXPECT_EQ(registry_text(key + L"\\TypeLib"), guid_text(LIBID_zorvat));
    CLSID from_prog_id{};
    ASSERT_EQ(CLSIDFromProgID(prog_id(info).c_str(), &from_prog_id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(from_prog_id, *info.clsid));
  }
}

TEST(TypeLibrary, IsRegisteredAsZorvat2WithItsHelpFile) {
  ComPtr<ITypeLib> library;
  ASSERT_EQ(LoadRegTypeLib(LIBID_zorvat, 2, 0, LOCALE_NEUTRAL, &library), S_OK);
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
  // The project's version, which the command prints and the installers carry.
  EXPECT_EQ(attributes->wMajorVerNum, ZORVAT_VERSION_MAJOR);
  EXPECT_EQ(attributes->wMinorVerNum, ZORVAT_VERSION_MINOR);
  library->ReleaseTLibAttr(attributes);
  unique_bstr name, help_file;
  ASSERT_EQ(library->GetDocumentation(-1, name.put(), nullptr, nullptr, help_file.put()), S_OK);
  EXPECT_EQ(bstr_to_utf8(name.get()), "zorvat");
  EXPECT_NE(bstr_to_utf8(help_file.get()).find("HORALISHELP.HLP"), std::string::npos);
}

// The DLL serves exactly the classes its type library declares, and they are the
// classes of the list: each coclass is created by its CLSID and by its ProgID, answers
// its default interface, and its name is a listed class; each listed class is a coclass.
TEST(TypeLibrary, EveryCoclassIsCreatableAndTheCoclassesAreTheListedClasses) {
  std::vector<LibraryClass> coclasses;
  ASSERT_EQ(library_classes(config().dll, coclasses), S_OK) << config().dll.string();
  std::set<std::string> coclass_names;
  for (const LibraryClass& coclass : coclasses) {
    const std::string name = narrow(coclass.name);
    SCOPED_TRACE(name);
    EXPECT_TRUE(coclass_names.insert(name).second) << "two coclasses of one name";

    ComPtr<IDispatch> by_clsid;
    EXPECT_EQ(CoCreateInstance(coclass.clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                               reinterpret_cast<void**>(by_clsid.GetAddressOf())),
              S_OK)
        << "CoCreateInstance of " << narrow(guid_text(coclass.clsid));
    EXPECT_FALSE(IsEqualIID(coclass.default_interface, IID_NULL)) << "no default interface";
    if (by_clsid) {
      ComPtr<IUnknown> interface_pointer;
      EXPECT_EQ(
          by_clsid->QueryInterface(coclass.default_interface,
                                   reinterpret_cast<void**>(interface_pointer.GetAddressOf())),
          S_OK)
          << "the default interface " << narrow(guid_text(coclass.default_interface));
    }

    const std::wstring class_prog_id = L"zorvat." + coclass.name;
    CLSID from_prog_id{};
    EXPECT_EQ(CLSIDFromProgID(class_prog_id.c_str(), &from_prog_id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(from_prog_id, coclass.clsid));
    HRESULT hr = S_OK;
    EXPECT_TRUE(create_object(class_prog_id, &hr))
        << narrow(class_prog_id) << ": 0x" << std::hex << static_cast<unsigned long>(hr);

    // The listed class of that name has the coclass's CLSID and default interface.
    for (const ClassInfo& info : kListedClasses) {
      if (narrow(info.name) != name) continue;
      EXPECT_TRUE(IsEqualCLSID(*info.clsid, coclass.clsid));
      EXPECT_TRUE(IsEqualIID(*info.iid, coclass.default_interface));
    }
  }
  EXPECT_FALSE(coclasses.empty());

  std::set<std::string> listed_names;
  for (const ClassInfo& info : kListedClasses) listed_names.insert(narrow(info.name));
  EXPECT_EQ(coclass_names, listed_names)
      << "the type library's coclasses and the class list name different classes";
}

struct Member {
  const wchar_t* name;
  DISPID id;
  INVOKEKIND kind;
  std::vector<VARTYPE> parameters;  // without the retval
  VARTYPE result;                   // VT_EMPTY when none
};

std::vector<Member> expected_members(const std::wstring& class_name) {
  const DISPID title = class_name == L"QB2000" ? 0x40030004 : 0x40030003;
  std::vector<Member> members = {
      {L"Title", title, INVOKE_PROPERTYGET, {}, VT_BSTR},
      {L"Title", title, INVOKE_PROPERTYPUT, {VT_BSTR}, VT_EMPTY},
      {L"SetupData", 0x68030000, INVOKE_PROPERTYGET, {}, VT_BSTR},
      {L"SetupData", 0x68030000, INVOKE_PROPERTYPUT, {VT_BSTR}, VT_EMPTY},
      {L"Execute", 0x60030001, INVOKE_FUNC, {VT_DISPATCH}, VT_BOOL},
      {L"Setup", 0x60030002, INVOKE_FUNC, {}, VT_BOOL},
  };
  if (class_name == L"Generic")
    members.push_back(
        {L"Validate", 0x60030003, INVOKE_FUNC, {VT_BSTR, VT_VARIANT | VT_BYREF}, VT_EMPTY});
  else
    members.push_back({L"ValidateSetupData", 0x60030003, INVOKE_FUNC, {VT_BSTR}, VT_EMPTY});
  if (class_name == L"IntuitPAC")
    members.push_back({L"IsJr", 0x60030006, INVOKE_FUNC, {VT_BSTR}, VT_BOOL});
  if (class_name == L"QB2000")
    members.push_back({L"FormatName", 0x6003000C, INVOKE_FUNC, {VT_BSTR}, VT_BSTR});
  return members;
}

VARTYPE vartype_of(const TYPEDESC& type) {
  if (type.vt == VT_PTR) return static_cast<VARTYPE>(type.lptdesc->vt | VT_BYREF);
  return type.vt;
}

TEST(TypeLibrary, InterfacesHaveTheMembersSlotsAndDispids) {
  ComPtr<ITypeLib> library;
  ASSERT_EQ(LoadRegTypeLib(LIBID_zorvat, 2, 0, LOCALE_NEUTRAL, &library), S_OK);
  for (const ClassInfo& info : kListedClasses) {
    SCOPED_TRACE(narrow(info.name));
    ComPtr<ITypeInfo> coclass;
    ASSERT_EQ(library->GetTypeInfoOfGuid(*info.clsid, &coclass), S_OK);
    unique_bstr coclass_name;
    coclass->GetDocumentation(MEMBERID_NIL, coclass_name.put(), nullptr, nullptr, nullptr);
    EXPECT_EQ(narrow(coclass_name.get()), narrow(info.name));

    ComPtr<ITypeInfo> dispatch;
    ASSERT_EQ(library->GetTypeInfoOfGuid(*info.iid, &dispatch), S_OK);
    unique_bstr interface_name;
    dispatch->GetDocumentation(MEMBERID_NIL, interface_name.put(), nullptr, nullptr, nullptr);
    EXPECT_EQ(narrow(interface_name.get()), "_" + narrow(info.name));
    // The vtable side of the dual interface gives the slot order.
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> vtable;
    ASSERT_EQ(dispatch->GetRefTypeOfImplType(-1, &reference), S_OK);
    ASSERT_EQ(dispatch->GetRefTypeInfo(reference, &vtable), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(vtable->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    EXPECT_TRUE(attributes->wTypeFlags & TYPEFLAG_FDUAL);
    const WORD function_count = attributes->cFuncs;
    vtable->ReleaseTypeAttr(attributes);

    const std::vector<Member> members = expected_members(info.name);
    ASSERT_EQ(function_count, members.size());
    SHORT previous_offset = -1;
    for (UINT index = 0; index < function_count; ++index) {
      FUNCDESC* function = nullptr;
      ASSERT_EQ(vtable->GetFuncDesc(index, &function), S_OK);
      const Member& member = members[index];
      unique_bstr name;
      UINT got = 0;
      vtable->GetNames(function->memid, name.put(), 1, &got);
      EXPECT_EQ(narrow(name.get()), narrow(member.name)) << "slot " << index + 1;
      EXPECT_EQ(function->memid, member.id) << narrow(member.name);
      EXPECT_EQ(function->invkind, member.kind) << narrow(member.name);
      EXPECT_GT(function->oVft, previous_offset) << "slot order";
      previous_offset = function->oVft;
      std::vector<VARTYPE> parameters;
      VARTYPE result = VT_EMPTY;
      for (SHORT parameter = 0; parameter < function->cParams; ++parameter) {
        const ELEMDESC& element = function->lprgelemdescParam[parameter];
        if (element.paramdesc.wParamFlags & PARAMFLAG_FRETVAL)
          result = element.tdesc.lptdesc->vt;
        else
          parameters.push_back(vartype_of(element.tdesc));
      }
      EXPECT_EQ(parameters, member.parameters) << narrow(member.name);
      EXPECT_EQ(result, member.result) << narrow(member.name);
      vtable->ReleaseFuncDesc(function);
    }
  }
}

TEST(TypeLibrary, PublishesTheSevenErrorEnumerations) {
  const std::map<std::string, std::vector<std::pair<std::string, long>>> expected = {
      {"ADP7ErrorsEnum",
       {{"errCompanyCode", 1001},
        {"errBatchSeqNum", 1002},
        {"errPayNumber", 1003},
        {"errOT2PayCode", 1004},
        {"errOT2CodeName", 1005},
        {"errVACPayCode", 1006},
        {"errVACCodeName", 1007},
        {"errHOLPayCode", 1008},
        {"errHOLCodeName", 1009},
        {"errSICPayCode", 1010},
        {"errSICCodeName", 1011},
        {"errOTHPayCode", 1012},
        {"errOTHCodeName", 1013}}},
      {"IntuitPACErrorsEnum",
       {{"errCompanyName", 1001},
        {"errPayCode0", 1002},
        {"errPayCode1", 1003},
        {"errPayCode2", 1004},
        {"errVAC", 1005},
        {"errHOL", 1006},
        {"errSIC", 1007},
        {"errOTH", 1008}}},
      {"PCPayLinkErrorsEnum",
       {{"errOfficeNumber", 2001},
        {"errClientID", 2002},
        {"errSiteNumber", 2003},
        {"errSeqNumber", 2004}}},
      {"PCPreviewErrorsEnum",
       {{"errClientNumber", 3001},
        {"errPayCode0", 3002},
        {"errPayCode1", 3003},
        {"errPayCode2", 3004},
        {"errSequence", 3005},
        {"errVAC", 3006},
        {"errHOL", 3007},
        {"errSIC", 3008},
        {"errOTH", 3009}}},
      {"PeachtreeErrorsEnum",
       {{"errPlaceHolder", 4001},
        {"errLevelReg", 4002},
        {"errLevelOT1", 4003},
        {"errLevelOT2", 4004},
        {"errLevelVAC", 4005},
        {"errLevelHOL", 4006},
        {"errLevelSIC", 4007},
        {"errLevelOTH", 4008},
        {"errCodeReg", 4009},
        {"errCodeOT1", 4010},
        {"errCodeOT2", 4011},
        {"errCodeVAC", 4012},
        {"errCodeHOL", 4013},
        {"errCodeSIC", 4014},
        {"errCodeOTH", 4015}}},
      {"PrimePayErrorsEnum",
       {{"errBatchSequenceNumber", 5001},
        {"errOT1", 5002},
        {"errOT2", 5003},
        {"errVAC", 5004},
        {"errHOL", 5005},
        {"errSIC", 5006},
        {"errOTH", 5007}}},
      {"QB2000ErrorsEnum", {{"errCompanyName", 6001}}},
  };
  ComPtr<ITypeLib> library;
  ASSERT_EQ(LoadRegTypeLib(LIBID_zorvat, 2, 0, LOCALE_NEUTRAL, &library), S_OK);
  std::map<std::string, std::vector<std::pair<std::string, long>>> found;
  for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
    TYPEKIND kind;
    library->GetTypeInfoType(index, &kind);
    if (kind != TKIND_ENUM) continue;
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(library->GetTypeInfo(index, &info), S_OK);
    unique_bstr name;
    info->GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    auto& values = found[narrow(name.get())];
    for (WORD variable = 0; variable < attributes->cVars; ++variable) {
      VARDESC* description = nullptr;
      ASSERT_EQ(info->GetVarDesc(variable, &description), S_OK);
      unique_bstr member;
      UINT got = 0;
      info->GetNames(description->memid, member.put(), 1, &got);
      values.emplace_back(narrow(member.get()), V_I4(description->lpvarValue));
      info->ReleaseVarDesc(description);
    }
    info->ReleaseTypeAttr(attributes);
  }
  EXPECT_EQ(found, expected);
}

// --- Dispatch ------------------------------------------------------------------------

TEST(Dispatch, NamesResolveToThePublishedDispids) {
  for (const ClassInfo& info : kListedClasses) {
    SCOPED_TRACE(narrow(info.name));
    ComPtr<IDispatch> object = create_listed(info);
    if (!object) continue;
    for (const Member& member : expected_members(info.name))
      EXPECT_EQ(dispid_of(object.Get(), member.name), member.id) << narrow(member.name);
    // Names match without regard to case, as the host writes them.
    EXPECT_EQ(dispid_of(object.Get(), L"setupdata"), 0x68030000);
    EXPECT_EQ(dispid_of(object.Get(), L"NoSuchMember"), DISPID_UNKNOWN);
  }
}

TEST(Dispatch, TitleAndSetupDataStartEmptyAndKeepWhatIsAssigned) {
  for (const ClassInfo& info : kListedClasses) {
    SCOPED_TRACE(narrow(info.name));
    ComPtr<IDispatch> object = create_listed(info);
    if (!object) continue;
    EXPECT_EQ(get(object.Get(), L"Title").text(), "");
    EXPECT_EQ(get(object.Get(), L"SetupData").text(), "");
    ASSERT_EQ(put(object.Get(), L"Title", "Payroll \xC3\xA9t\xC3\xA9").hr, S_OK);
    ASSERT_EQ(put(object.Get(), L"SetupData", "a,,b,").hr, S_OK);
    EXPECT_EQ(get(object.Get(), L"Title").text(), "Payroll \xC3\xA9t\xC3\xA9");
    EXPECT_EQ(get(object.Get(), L"SetupData").text(), "a,,b,");
  }
}

TEST(Dispatch, GenericValidateAcceptsAnythingAndLeavesTheValue) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  unique_variant value;
  V_VT(&value) = VT_I4;
  V_I4(&value) = 42;
  VARIANT by_reference;
  VariantInit(&by_reference);
  V_VT(&by_reference) = VT_VARIANT | VT_BYREF;
  V_VARIANTREF(&by_reference) = value.addressof();
  CallResult result =
      call(object.Get(), L"Validate", DISPATCH_METHOD, {text_arg("Shift"), by_reference});
  EXPECT_EQ(result.hr, S_OK);
  EXPECT_EQ(V_VT(&value), VT_I4);
  EXPECT_EQ(V_I4(&value), 42);
}

TEST(Dispatch, CheckMethodsRaiseTheClassesNumbers) {
  HRESULT hr = S_OK;
  ComPtr<IDispatch> adp7 = create_object(L"zorvat.ADP7", &hr);
  ASSERT_TRUE(adp7) << "0x" << std::hex << static_cast<unsigned long>(hr);
  CallResult result = call(adp7.Get(), L"ValidateSetupData", DISPATCH_METHOD, {text_arg("A,B,C")});
  ASSERT_TRUE(result.raised());
  EXPECT_EQ(result.scode, static_cast<HRESULT>(0x800A0000 + result.number));
  EXPECT_EQ(result.source, "zorvat.ADP7.ValidateSetupData");
  EXPECT_GE(result.number, 1001);
  EXPECT_LE(result.number, 1013);
  EXPECT_FALSE(result.description.empty());
}

// --- Errors ------------------------------------------------------------------------

TEST(Errors, MissingCardPropertyReaches438WithThePublicMembersSource) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  json cards = one_card();
  cards["cards"][0].erase("Shift");
  ComPtr<IDispatch> collection = make_collection(cards);
  DialogDriver driver(SaveAnswer::Cancel, L"");
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_EQ(result.hr, DISP_E_EXCEPTION);
  EXPECT_EQ(result.scode, static_cast<HRESULT>(0x800A01B6));
  EXPECT_EQ(result.number, 438);
  EXPECT_EQ(result.source, "zorvat.Generic.Execute");
  EXPECT_EQ(result.description, "Object doesn't support this property or method");
  EXPECT_TRUE(driver.save_dialogs().empty()) << "the error comes before the dialog";
}

TEST(Errors, FailureThroughTheVtableSetsErrorInfo) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ComPtr<_Generic> generic;
  ASSERT_EQ(object.As(&generic), S_OK);
  ComPtr<ISupportErrorInfo> support;
  ASSERT_EQ(object.As(&support), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID__Generic), S_OK);

  // No settings at all: the class finds no title field (9 Subscript out of range).
  ComPtr<IDispatch> collection = make_collection(one_card());
  VARIANT_BOOL done = VARIANT_TRUE;
  const HRESULT hr = generic->Execute(collection.Get(), &done);
  EXPECT_EQ(hr, static_cast<HRESULT>(0x800A0009));
  EXPECT_EQ(done, VARIANT_FALSE);
  ComPtr<IErrorInfo> info;
  ASSERT_EQ(GetErrorInfo(0, &info), S_OK);
  unique_bstr source, description;
  info->GetSource(source.put());
  info->GetDescription(description.put());
  EXPECT_EQ(bstr_to_utf8(source.get()), "zorvat.Generic.Execute");
  EXPECT_EQ(bstr_to_utf8(description.get()), "Subscript out of range");
}

TEST(Errors, ObjectThatIsNoCollectionRaises438) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  json card_only = json::parse(R"({"ExportID": "E1"})");
  auto* plain = new HostObject();
  plain->set(L"ExportID", json_value("ExportID", card_only["ExportID"]));
  ComPtr<IDispatch> not_a_collection;
  not_a_collection.Attach(plain);
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(not_a_collection.Get())});
  ASSERT_TRUE(result.raised());
  EXPECT_EQ(result.number, 438);
  EXPECT_EQ(result.source, "zorvat.Generic.Execute");
}

TEST(LateBinding, EachNameIsResolvedOncePerExport) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  json cards = one_card();
  for (int index = 1; index < 50; ++index) cards["cards"].push_back(cards["cards"][0]);
  ComPtr<IDispatch> collection = make_collection(cards);
  for (int run = 0; run < 2; ++run) {
    const long long lookups = HostObject::name_lookups();
    const long long reads = HostObject::reads();
    DialogDriver driver(SaveAnswer::Cancel, L"");
    CallResult result =
        call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
    driver.stop();
    ASSERT_EQ(result.hr, S_OK);
    // ExportID, Number, Shift and the seven hour types, each looked up once; every
    // card read by DISPID; _NewEnum once.
    EXPECT_EQ(HostObject::name_lookups() - lookups, 10) << "run " << run;
    EXPECT_EQ(HostObject::reads() - reads, 50 * 10 + 1) << "run " << run;
  }
}

TEST(Errors, HostFailureReachesTheClientWithItsNumberAndDescription) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  ComPtr<IDispatch> collection = make_collection(one_card());
  // The card's REG fails with the host's own error 1234.
  unique_variant card;
  {
    unique_variant enumerator_value;
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    ASSERT_EQ(collection->Invoke(DISPID_NEWENUM, IID_NULL, 0, DISPATCH_PROPERTYGET, &none,
                                 enumerator_value.addressof(), nullptr, nullptr),
              S_OK);
    ComPtr<IEnumVARIANT> enumerator;
    ASSERT_EQ(V_UNKNOWN(&enumerator_value)->QueryInterface(IID_PPV_ARGS(&enumerator)), S_OK);
    ASSERT_EQ(enumerator->Next(1, card.addressof(), nullptr), S_OK);
  }
  static_cast<HostObject*>(V_DISPATCH(&card))
      ->set(L"REG", failing_value(MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, 1234)));
  DialogDriver driver(SaveAnswer::Cancel, L"");
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_TRUE(result.raised());
  EXPECT_EQ(result.number, 1234);
  EXPECT_EQ(result.source, "zorvat.Generic.Execute");
  EXPECT_EQ(result.description, to_utf8(kFailureDescription));
}

TEST(LateBinding, HostSubtypesConvertAsTheClassesExpect) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  json cards = one_card();
  cards["cards"][0]["Number"] = "315";  // numeric text
  ComPtr<IDispatch> collection = make_collection(cards);
  unique_variant card;
  {
    unique_variant enumerator_value;
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    ASSERT_EQ(collection->Invoke(DISPID_NEWENUM, IID_NULL, 0, DISPATCH_PROPERTYGET, &none,
                                 enumerator_value.addressof(), nullptr, nullptr),
              S_OK);
    ComPtr<IEnumVARIANT> enumerator;
    ASSERT_EQ(V_UNKNOWN(&enumerator_value)->QueryInterface(IID_PPV_ARGS(&enumerator)), S_OK);
    ASSERT_EQ(enumerator->Next(1, card.addressof(), nullptr), S_OK);
  }
  auto* host_card = static_cast<HostObject*>(V_DISPATCH(&card));
  VARIANT shift;  // a 16-bit integer
  VariantInit(&shift);
  V_VT(&shift) = VT_I2;
  V_I2(&shift) = 1;
  host_card->set(L"Shift", shift);
  VARIANT regular;  // currency
  VariantInit(&regular);
  V_VT(&regular) = VT_CY;
  V_CY(&regular).int64 = 2400LL * 10000;
  host_card->set(L"REG", regular);
  VARIANT overtime;  // a double
  VariantInit(&overtime);
  V_VT(&overtime) = VT_R8;
  V_R8(&overtime) = 90.0;
  host_card->set(L"OT1", overtime);
  VARIANT vacation;  // a decimal
  VariantInit(&vacation);
  V_VT(&vacation) = VT_DECIMAL;
  VarDecFromI4(0, &V_DECIMAL(&vacation));
  V_VT(&vacation) = VT_DECIMAL;
  host_card->set(L"VAC", vacation);
  VARIANT sick;  // a single
  VariantInit(&sick);
  V_VT(&sick) = VT_R4;
  V_R4(&sick) = 0.0f;
  host_card->set(L"SIC", sick);

  const fs::path path = fresh_folder("subtypes") / "payroll.tab";
  DialogDriver driver(SaveAnswer::File, path.wstring());
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_EQ(read_bytes(path), kOneCardLine);
}

// --- The Save dialog ------------------------------------------------------------------

TEST(SaveDialog, WritesTheFileTheUserTypedExactlyAsBuilt) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  const fs::path path = fresh_folder("save-file") / "payroll.tab";
  ComPtr<IDispatch> collection = make_collection(one_card());
  DialogDriver driver(SaveAnswer::File, path.wstring());
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_TRUE(result.boolean());
  EXPECT_EQ(read_bytes(path), kOneCardLine);
  ASSERT_EQ(driver.save_dialogs().size(), 1u);
  const SeenSaveDialog seen = driver.save_dialogs().front();
  EXPECT_EQ(seen.proposed_name, L"");
  ASSERT_FALSE(seen.filters.empty());
  EXPECT_EQ(narrow(seen.filters.front()), "Generic ASCII (*.TAB) ");
  EXPECT_TRUE(driver.messages().empty());
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), kCommaSetup);
}

TEST(SaveDialog, CancelReturnsFalseAndWritesNothing) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", "0,0,0,0,0,False,True,False,False,False,,0,x").hr,
            S_OK);
  const fs::path folder = fresh_folder("save-cancel");
  ComPtr<IDispatch> collection = make_collection(one_card());
  DialogDriver driver(SaveAnswer::Cancel, L"");
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_EQ(result.hr, S_OK);
  EXPECT_FALSE(result.boolean());
  EXPECT_EQ(driver.save_dialogs().size(), 1u);
  EXPECT_TRUE(driver.messages().empty());
  EXPECT_TRUE(fs::is_empty(folder));
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), "0,0,0,0,0,False,True,False,False,False,,0,x");
}

TEST(SaveDialog, EmptyNameShowsNoFileNameSelected) {
  ComPtr<IDispatch> object = create_object(L"zorvat.Generic");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", kCommaSetup).hr, S_OK);
  ComPtr<IDispatch> collection = make_collection(one_card());
  DialogDriver driver(SaveAnswer::Empty, L"");
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_EQ(result.hr, S_OK);
  EXPECT_FALSE(result.boolean());
  ASSERT_EQ(driver.messages().size(), 1u);
  EXPECT_EQ(narrow(driver.messages().front().text), "No file name selected!");
  EXPECT_EQ(narrow(driver.messages().front().caption), "zorvat");
}

TEST(SaveDialog, ShowsTheClassesFilterAndProposedName) {
  ComPtr<IDispatch> object = create_object(L"zorvat.PCPayLink");
  ASSERT_TRUE(object);
  ASSERT_EQ(put(object.Get(), L"SetupData", "7,A001,3,12,VA,HO,QS,R3").hr, S_OK);
  ComPtr<IDispatch> collection = make_collection(one_card());
  DialogDriver driver(SaveAnswer::Cancel, L"");
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  ASSERT_EQ(result.hr, S_OK) << result.number << " " << result.description;
  EXPECT_FALSE(result.boolean());
  ASSERT_EQ(driver.save_dialogs().size(), 1u);
  const SeenSaveDialog seen = driver.save_dialogs().front();
  EXPECT_EQ(narrow(seen.proposed_name), "JJA001I3");
  ASSERT_FALSE(seen.filters.empty());
  EXPECT_EQ(narrow(seen.filters.front()), "PayChex PayLink Import File (*.012) ");
  EXPECT_EQ(get(object.Get(), L"SetupData").text(), "7,A001,3,12,VA,HO,QS,R3");
}

// --- Lifetime ---------------------------------------------------------------------------

TEST(Lifetime, DllCanUnloadNowOnceObjectsAndLocksAreGone) {
  HMODULE module = LoadLibraryW(config().dll.wstring().c_str());
  ASSERT_NE(module, nullptr);
  using CanUnload = HRESULT(STDAPICALLTYPE*)();
  using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
  auto can_unload = reinterpret_cast<CanUnload>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
  auto get_class_object = reinterpret_cast<GetClassObject>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
  ASSERT_NE(can_unload, nullptr);
  ASSERT_NE(get_class_object, nullptr);

  EXPECT_EQ(can_unload(), S_OK);
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(get_class_object(CLSID_Generic, IID_IClassFactory,
                             reinterpret_cast<void**>(factory.GetAddressOf())),
            S_OK);
  ComPtr<IDispatch> object;
  ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDispatch,
                                    reinterpret_cast<void**>(object.GetAddressOf())),
            S_OK);
  EXPECT_EQ(can_unload(), S_FALSE);
  object.Reset();
  EXPECT_EQ(can_unload(), S_OK);
  ASSERT_EQ(factory->LockServer(TRUE), S_OK);
  EXPECT_EQ(can_unload(), S_FALSE);
  ASSERT_EQ(factory->LockServer(FALSE), S_OK);
  EXPECT_EQ(can_unload(), S_OK);

  ComPtr<IClassFactory> missing;
  EXPECT_EQ(get_class_object(GUID_NULL, IID_IClassFactory,
                             reinterpret_cast<void**>(missing.GetAddressOf())),
            CLASS_E_CLASSNOTAVAILABLE);
  factory.Reset();
  FreeLibrary(module);
}

// --- After regsvr32 /u ---------------------------------------------------------------------

TEST(Unregistered, EveryKeyTheServerWroteIsGone) {
  for (const ClassInfo& info : kListedClasses) {
    SCOPED_TRACE(narrow(info.name));
    EXPECT_FALSE(key_exists(prog_id(info)));
    EXPECT_FALSE(key_exists(L"CLSID\\" + guid_text(*info.clsid)));
    EXPECT_FALSE(key_exists(L"Interface\\" + guid_text(*info.iid)));
    HRESULT hr = S_OK;
    EXPECT_FALSE(create_object(prog_id(info), &hr));
    EXPECT_TRUE(FAILED(hr));
  }
  EXPECT_FALSE(key_exists(L"TypeLib\\" + guid_text(LIBID_zorvat)));
  // What belongs to the system stays.
  EXPECT_TRUE(key_exists(L"CLSID"));
  EXPECT_TRUE(key_exists(L"TypeLib"));
  ComPtr<ITypeLib> library;
  EXPECT_TRUE(FAILED(LoadRegTypeLib(LIBID_zorvat, 2, 0, LOCALE_NEUTRAL, &library)));
}

}  // namespace
}  // namespace zorvat::com::testing
