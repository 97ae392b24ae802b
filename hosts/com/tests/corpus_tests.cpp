// The conformance corpus through the DLL: each case of tests/corpus is run as the
// host runs an export, with the Save dialog answered by the dialog driver.
//
// The classes are the DLL's own, the coclasses of its type library; the cases of a class
// are the folders under tests/corpus/<class in lower case>/. Folders of the corpus that
// belong to no class of the DLL (shared cards, cases for classes other hosts or test
// binaries have) are not this host's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>

#include "automation_client.h"
#include "dialog_driver.h"
#include "host_objects.h"
#include "listed_classes.h"
#include "test_config.h"

namespace zorvat::com::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::string read_bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

json read_json(const fs::path& path) {
  return json::parse(read_bytes(path));
}

SaveAnswer save_answer(const std::string& text) {
  if (text == "cancel") return SaveAnswer::Cancel;
  if (text == "empty") return SaveAnswer::Empty;
  return SaveAnswer::File;
}

std::string text_or_empty(const json& object, const char* key) {
  if (!object.contains(key) || object.at(key).is_null()) return {};
  return object.at(key).get<std::string>();
}

class CorpusCase : public ::testing::Test {
 public:
  CorpusCase(std::string class_name, fs::path folder)
      : class_name_(std::move(class_name)), folder_(std::move(folder)) {}

  void TestBody() override {
    const json test_case = read_json(folder_ / "case.json");
    const std::string& class_name = class_name_;
    ASSERT_EQ(test_case.at("class").get<std::string>(), class_name)
        << "a case in the folder of " << class_name << " is for another class";
    const std::string command = test_case.value("command", std::string("export"));
    const json& expect = test_case.at("expect");

    HRESULT created = S_OK;
    ComPtr<IDispatch> object = create_object(to_wide("zorvat." + class_name), &created);
    ASSERT_TRUE(object) << "zorvat." << class_name << " cannot be created (0x" << std::hex
                        << static_cast<unsigned long>(created) << ")";
    ASSERT_TRUE(set_component_today(test_case.value("today", std::string("2004-03-08"))));
    const std::string setup = text_or_empty(test_case, "setup");
    ASSERT_EQ(put(object.Get(), L"Title", text_or_empty(test_case, "title")).hr, S_OK);
    ASSERT_EQ(put(object.Get(), L"SetupData", setup).hr, S_OK);

    const fs::path output_folder = config().work / "corpus" / class_name / folder_.filename();
    std::error_code ignored;
    fs::remove_all(output_folder, ignored);
    fs::create_directories(output_folder);
    const fs::path output = output_folder / "export.out";

    // The host's order: the check method first, then Execute when the check passed.
    CallResult result;
    std::vector<std::string> messages;
    if (class_name == "Generic")
      result = call(object.Get(), L"Validate", DISPATCH_METHOD, {text_arg(""), text_arg("")});
    else
      result = call(object.Get(), L"ValidateSetupData", DISPATCH_METHOD, {text_arg(setup)});
    if (command == "export" && result.hr == S_OK) {
      const json cards = read_json(folder_ / test_case.value("cards", std::string("cards.json")));
      ComPtr<IDispatch> collection = make_collection(cards);
      DialogDriver driver(save_answer(test_case.value("save", std::string("file"))),
                          output.wstring());
      result = call(object.Get(), L"Execute", DISPATCH_METHOD, {object_arg(collection.Get())});
      driver.stop();
      messages = driver.message_texts();
    }
    ASSERT_TRUE(SUCCEEDED(result.hr) || result.raised())
        << "Invoke failed with 0x" << std::hex << static_cast<unsigned long>(result.hr);

    const int exit = result.raised() ? 3 : (command == "validate" || result.boolean()) ? 0 : 1;
    EXPECT_EQ(exit, expect.value("exit", 0));

    if (expect.contains("setupData") && !expect.at("setupData").is_null()) {
      EXPECT_EQ(get(object.Get(), L"SetupData").text(), expect.at("setupData").get<std::string>());
    }

    if (expect.contains("file") && !expect.at("file").is_null()) {
      ASSERT_TRUE(fs::exists(output)) << "no file was written";
      const std::string expected = read_bytes(folder_ / expect.at("file").get<std::string>());
      const std::string written = read_bytes(output);
      EXPECT_EQ(written, expected)
          << "written file differs from " << expect.at("file").get<std::string>();
    } else {
      EXPECT_TRUE(fs::is_empty(output_folder)) << "a file was written";
    }

    std::vector<std::string> expected_messages;
    if (expect.contains("messages"))
      for (const json& message : expect.at("messages"))
        expected_messages.push_back(message.get<std::string>());
    EXPECT_EQ(messages, expected_messages);

    if (expect.contains("error") && !expect.at("error").is_null()) {
      const json& error = expect.at("error");
      ASSERT_TRUE(result.raised()) << "no error was raised";
      if (error.contains("number")) {
        EXPECT_EQ(result.number, error.at("number").get<long>());
      }
      if (error.contains("source")) {
        EXPECT_EQ(result.source, error.at("source").get<std::string>());
      }
      if (error.contains("description")) {
        EXPECT_EQ(result.description, error.at("description").get<std::string>());
      }
    } else {
      EXPECT_FALSE(result.raised())
          << "raised " << result.number << " " << result.source << ": " << result.description;
    }
  }

 private:
  std::string class_name_;
  fs::path folder_;
};

// Stands for the corpus when the DLL's classes cannot be read: one failing test.
class UnreadableClasses : public ::testing::Test {
 public:
  explicit UnreadableClasses(HRESULT hr) : hr_(hr) {}
  void TestBody() override {
    FAIL() << "the coclasses of " << config().dll.string() << " cannot be read (0x" << std::hex
           << static_cast<unsigned long>(hr_) << ")";
  }

 private:
  HRESULT hr_;
};

std::string lower_case(std::string text) {
  for (char& letter : text)
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  return text;
}

}  // namespace

void register_corpus_tests() {
  std::error_code error;
  if (config().corpus.empty() || !fs::is_directory(config().corpus, error)) return;
  std::vector<LibraryClass> classes;
  const HRESULT hr = library_classes(config().dll, classes);
  if (FAILED(hr) || classes.empty()) {
    ::testing::RegisterTest("Corpus", "ClassesOfTheDll", nullptr, nullptr, __FILE__, __LINE__,
                            [hr]() -> ::testing::Test* { return new UnreadableClasses(hr); });
    return;
  }
  for (const LibraryClass& coclass : classes) {
    const std::string class_name = to_utf8(coclass.name);
    const fs::path class_folder = config().corpus / lower_case(class_name);
    if (!fs::is_directory(class_folder, error)) continue;
    std::vector<fs::path> cases;
    for (const fs::directory_entry& entry : fs::directory_iterator(class_folder, error))
      if (entry.is_directory() && fs::is_regular_file(entry.path() / "case.json"))
        cases.push_back(entry.path());
    std::sort(cases.begin(), cases.end());
    const std::string suite = "Corpus_" + class_folder.filename().string();
    for (const fs::path& folder : cases) {
      const std::string name = folder.filename().string();
      ::testing::RegisterTest(suite.c_str(), name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [class_name, folder]() -> ::testing::Test* {
                                return new CorpusCase(class_name, folder);
                              });
    }
  }
}

}  // namespace zorvat::com::testing
