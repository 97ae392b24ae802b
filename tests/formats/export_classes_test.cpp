// The class list: every class in it is created by its class name and by its ProgID,
// as the C++ class the list names, and the registry lists the classes in the list's
// order. A test binary's own class, added after the listed ones, is listed last.
#include "export_classes.h"

#include <gtest/gtest.h>

#include "export_class_list.h"
#include "scripted_host.h"

namespace zorvat::formats {
namespace {

// Creates `name` by class name and by ProgID; each must be a `Class`.
template <class Class>
void expect_creatable_as(std::string_view name) {
  scripted::Host host;
  for (const std::string& requested : {std::string(name), "zorvat." + std::string(name)}) {
    auto created = export_registry().create(requested, host.context());
    ASSERT_NE(created, nullptr) << requested;
    EXPECT_EQ(created->class_name(), name);
    EXPECT_EQ(created->prog_id(), "zorvat." + std::string(name));
    EXPECT_NE(dynamic_cast<Class*>(created.get()), nullptr) << requested;
  }
}

TEST(ExportClasses, EachListedClassIsCreatableByItsNameAndProgId) {
#define ZORVAT_EXPECT_CREATABLE(Class, folder) \
  expect_creatable_as<Class>(folder::class_rules().class_name);
  ZORVAT_EXPORT_CLASSES(ZORVAT_EXPECT_CREATABLE)
#undef ZORVAT_EXPECT_CREATABLE
}

TEST(ExportClasses, TheRegistryListsTheClassesInTheListsOrder) {
  std::vector<std::string> listed;
  for (const reconcile::ClassRules& rules : export_classes()) listed.emplace_back(rules.class_name);
  EXPECT_EQ(export_registry().class_names(), listed);
  // The list's own classes come first, in its order; the first is Generic, as hosts
  // show it.
  ASSERT_FALSE(listed.empty());
  EXPECT_EQ(listed.front(), "Generic");
}

TEST(ExportClasses, EachEntryCreatesTheClassItNames) {
  scripted::Host host;
  for (const reconcile::ClassRules& rules : export_classes()) {
    const auto created = rules.create(host.context());
    ASSERT_NE(created, nullptr) << rules.class_name;
    EXPECT_EQ(created->class_name(), rules.class_name);
  }
}

// The benchmark exports with each class's examples: a class that writes a file has
// one at least, and each passes the class's own check.
TEST(ExportClasses, EachClassThatWritesAFileHasExamplesItsCheckAccepts) {
  for (const reconcile::ClassRules& rules : export_classes()) {
    if (!rules.reads_files()) continue;
    EXPECT_FALSE(rules.examples.empty()) << rules.class_name;
    for (const reconcile::SettingsExample& example : rules.examples)
      EXPECT_NO_THROW(reconcile::run_settings_check(rules, example.setup, example.title))
          << rules.class_name << " " << example.label;
  }
}

TEST(ExportClasses, ClassesAreFoundByNameOrProgIdInAnyCase) {
  ASSERT_NE(find_export_class("zorvat.peachtree"), nullptr);
  EXPECT_EQ(find_export_class("zorvat.peachtree")->class_name, "Peachtree");
  EXPECT_EQ(find_export_class("ADP7")->class_name, "ADP7");
  EXPECT_EQ(find_export_class("ZORVAT.QB2000")->class_name, "QB2000");
  EXPECT_EQ(find_export_class("zorvat."), nullptr);
  EXPECT_EQ(find_export_class("Payroll9000"), nullptr);
}

TEST(ExportClasses, AClassCannotBeAddedOnceTheListIsInUse) {
  (void)export_classes();
  EXPECT_THROW(add_export_class(export_classes().front()), std::logic_error);
}

}  // namespace
}  // namespace zorvat::formats
