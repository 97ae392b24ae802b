// Names as the payroll system reads them: the host hands the names over as BSTRs, and
// zorvat.dll writes them in the system's ANSI code page (Windows-1252 in the en-US
// prefix the tests run in), one byte a letter. A letter the code page lacks is written
// "?" (one for each UTF-16 code unit); fixed widths count letters, so a record keeps
// its width in bytes. The bytes below are written by hand from the code chart:
// é E9, ñ F1, ’ 92, á E1, í ED; 王 U+738B is not in the code page.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "automation_client.h"
#include "dialog_driver.h"
#include "host_objects.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;

std::string read_bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// A BSTR made straight from UTF-16 text, as the host hands its names over, not through
// the tests' own UTF-8 conversion (text_arg).
VARIANT bstr(const wchar_t* text) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = SysAllocString(text);
  return value;
}

struct Name {
  const wchar_t* first;
  const wchar_t* last;
};

// One card per name, built from BSTRs directly: employee 301, 302, ..., with 8 hours of
// regular time each (40 for the second).
ComPtr<IDispatch> cards_with(const std::vector<Name>& names) {
  auto* collection = new HostObject();
  collection->make_collection();
  long employee = 301;
  for (const Name& name : names) {
    auto* card = new HostObject();
    card->set(L"ExportID", bstr((L"E" + std::to_wstring(employee)).c_str()));
    card->set(L"Number", long_arg(employee));
    card->set(L"Shift", long_arg(1));
    card->set(L"REG", long_arg(employee == 302 ? 2400 : 480));
    for (const wchar_t* hours : {L"OT1", L"OT2", L"VAC", L"HOL", L"SIC", L"OTH"})
      card->set(hours, long_arg(0));
    card->set(L"FirstName", bstr(name.first));
    card->set(L"MI", bstr(L""));
    card->set(L"LastName", bstr(name.last));
    card->set(L"Badge", bstr(L"77"));
    VARIANT element;
    VariantInit(&element);
    V_VT(&element) = VT_DISPATCH;
    V_DISPATCH(&element) = card;  // the collection takes the creator's reference
    collection->add_element(element);
    ++employee;
  }
  ComPtr<IDispatch> result;
  result.Attach(collection);
  return result;
}

// Runs one export with `setup`, the Save dialog answered with a fresh path; returns
// the written bytes.
std::string export_bytes(const wchar_t* class_name, const std::string& setup,
                         const std::vector<Name>& names, const std::string& folder_name) {
  ComPtr<IDispatch> object = create_object(std::wstring(L"zorvat.") + class_name);
  EXPECT_TRUE(object);
  if (!object) return {};
  EXPECT_EQ(put(object.Get(), L"SetupData", setup).hr, S_OK);
  const fs::path folder = config().work / folder_name;
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder);
  const fs::path path = folder / "export.out";
  ComPtr<IDispatch> collection = cards_with(names);
  DialogDriver driver(SaveAnswer::File, path.wstring());
  CallResult result =
      call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
  driver.stop();
  EXPECT_EQ(result.hr, S_OK) << result.number << " " << result.source << ": " << result.description;
  EXPECT_TRUE(result.boolean());
  return read_bytes(path);
}

// PCPreview's record for 8 or 40 hours of regular time under pay code A, sequence 7:
// the number, the 25-letter name column, then the fixed columns (127 bytes in all).
std::string preview_record(const std::string& number, const std::string& name_column,
                           const std::string& hours) {
  return number + name_column + std::string(19, ' ') + "E A" + std::string(9, ' ') + hours +
         std::string(19, ' ') + "7" + std::string(37, ' ');
}

const wchar_t kFirst[] = L"Jos\u00e9";
const wchar_t kLast[] = L"O\u2019Pe\u00f1a \u738b";  // José O’Peña 王
// The same names in Windows-1252.
const std::string kFirstBytes = "Jos\xE9";
const std::string kLastBytes = std::string("O\x92Pe\xF1") + "a ?";

// Shows bytes above 0x7E in hex, so a failure says which byte differs.
std::string visible(const std::string& bytes) {
  std::string shown;
  for (unsigned char c : bytes) {
    if (c < 32 || c > 126) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      shown += hex;
    } else {
      shown.push_back(static_cast<char>(c));
    }
  }
  return shown;
}

class CodePage : public ::testing::Test {
 protected:
  void SetUp() override {
    // Every byte below is Windows-1252's; the prefix's locale must give that code page.
    ASSERT_EQ(GetACP(), 1252u) << "the Wine prefix's ANSI code page is not 1252 (en-US)";
  }
};

TEST_F(CodePage, GenericWritesABstrNameOneByteALetter) {
  const std::string written = export_bytes(L"Generic", "0,0,0,1,1,False,True,False,False,False,,0",
                                           {{kFirst, kLast}}, "code-page-generic");
  const std::string expected = "E301,000000301,01,8.00,0.00,0.00,0.00,0.00,0.00,0.00," +
                               kFirstBytes + "  " + kLastBytes + ",301\r\n";
  EXPECT_EQ(visible(written), visible(expected));
}

TEST_F(CodePage, GenericWritesLastAndFirstNamesQuoted) {
  const std::string written = export_bytes(L"Generic", "1,0,0,1,0,False,False,False,True,False,,0",
                                           {{kFirst, kLast}}, "code-page-generic-quoted");
  const std::string expected =
      "\"E301\";\"000000301\";\"01\";\"8.00\";\"0.00\";\"0.00\";\"0.00\";\"0.00\";\"0.00\";"
      "\"0.00\";\"" +
      kLastBytes + "\";\"" + kFirstBytes + "\";\"77\"\r\n";
  EXPECT_EQ(visible(written), visible(expected));
}

TEST_F(CodePage, PCPreviewNameColumnHoldsTwentyFiveLetters) {
  const std::string written =
      export_bytes(L"PCPreview", "12,A,B,C,7,D,E,F,G,0,0,0,0",
                   {{kFirst, kLast}, {L"Mar\u00eda Dolores", L"Guti\u00e9rrez Ib\u00e1\u00f1ez"}},
                   "code-page-pcpreview");
  // "José O’Peña 王" is 13 letters and 12 blanks; "María Dolores Gutiérrez Ibáñez" is
  // 30 letters, cut after the 25th.
  const std::string cut = std::string("Mar\xED") + "a Dolores Guti\xE9rrez I";
  const std::string expected =
      preview_record("000301", kFirstBytes + " " + kLastBytes + std::string(12, ' '), "    8.00") +
      preview_record("000302", cut, "   40.00");
  EXPECT_EQ(written.size(), 2u * 127u);
  EXPECT_EQ(visible(written), visible(expected));
}

TEST_F(CodePage, ALetterBeyondUtf16sFirstPlaneIsTwoLettersAndTwoQuestionMarks) {
  // U+1D11E, a surrogate pair in the BSTR: two code units, two "?" and two positions of
  // the name column.
  const std::string written = export_bytes(L"PCPreview", "12,A,B,C,7,D,E,F,G,0,0,0,0",
                                           {{L"Ann", L"Lee \U0001D11E"}}, "code-page-surrogates");
  const std::string expected =
      preview_record("000301", "Ann Lee ??" + std::string(15, ' '), "    8.00");
  EXPECT_EQ(visible(written), visible(expected));
}

}  // namespace
}  // namespace zorvat::com::testing
