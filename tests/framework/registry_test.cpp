#include <gtest/gtest.h>

#include "scripted_host.h"
#include "zorvat/error.h"
#include "zorvat/export_class.h"

namespace zorvat {
namespace {

class Dummy final : public ExportClass {
 public:
  using ExportClass::ExportClass;
  std::string_view class_name() const override { return "Dummy"; }
  bool Execute(const Variant&) override { return save_text({"Dummy (*.d) | *.d", "x.d"}, "abc"); }
  bool Setup() override { raise_no_setup_form(); }
  void run_check() override {}
  ClassDescription describe() override { return {}; }
};

ExportRegistry make_registry() {
  ExportRegistry registry;
  registry.add("Dummy", [](ExportContext context) { return std::make_unique<Dummy>(context); });
  return registry;
}

TEST(ExportRegistry, CreatesByClassNameOrProgId) {
  scripted::Host host;
  const ExportRegistry registry = make_registry();
  for (const char* name : {"Dummy", "zorvat.Dummy", "ZORVAT.dummy", "dummy"}) {
    auto created = registry.create(name, host.context());
    ASSERT_NE(created, nullptr) << name;
    EXPECT_EQ(created->prog_id(), "zorvat.Dummy");
  }
  EXPECT_EQ(registry.create("zorvat.Nope", host.context()), nullptr);
  EXPECT_EQ(registry.create("zorvat.", host.context()), nullptr);
  EXPECT_EQ(registry.class_names(), std::vector<std::string>{"Dummy"});
}

TEST(ExportClass, AFreshObjectHasEmptyTitleAndSettings) {
  scripted::Host host;
  Dummy dummy(host.context());
  EXPECT_EQ(dummy.Title, "");
  EXPECT_EQ(dummy.SetupData(), "");
  dummy.SetupData("anything, unchecked");
  dummy.Title = "t";
  EXPECT_EQ(dummy.SetupData(), "anything, unchecked");
  EXPECT_EQ(dummy.Title, "t");
}

TEST(ExportClass, FileStepCancelWritesNothing) {
  scripted::Host host;
  Dummy dummy(host.context());
  host.ui.answer_save_cancel();
  EXPECT_FALSE(dummy.Execute(Variant()));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "Dummy (*.d) | *.d");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "x.d");
}

TEST(ExportClass, FileStepEmptyNameShowsTheMessage) {
  scripted::Host host;
  Dummy dummy(host.context());
  host.ui.answer_save("");
  EXPECT_FALSE(dummy.Execute(Variant()));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
}

TEST(ExportClass, FileStepWritesTheWholeTextOnce) {
  scripted::Host host;
  Dummy dummy(host.context());
  host.ui.answer_save("out.d");
  EXPECT_TRUE(dummy.Execute(Variant()));
  EXPECT_EQ(host.files.writes, 1);
  EXPECT_EQ(host.files.at("out.d"), "abc");
}

TEST(ExportClass, SetupWithoutAFormSaysSo) {
  scripted::Host host;
  Dummy dummy(host.context());
  try {
    dummy.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kInvalidProcedureCall);
    EXPECT_EQ(error.description(), "The setup form of zorvat.Dummy is not available on this host");
  }
}

}  // namespace
}  // namespace zorvat
