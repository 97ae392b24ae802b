// Registers the test tree's classes after the product's list, before anything in the
// binary reads the list (static initialisation; the list refuses a later addition).
#include "export_classes.h"
#include "test_export_class_list.h"

namespace zorvat::formats {
namespace {

const bool registered = [] {
#define ZORVAT_REGISTER_TEST_CLASS(Class, folder) add_export_class(folder::class_rules());
  ZORVAT_TEST_EXPORT_CLASSES(ZORVAT_REGISTER_TEST_CLASS)
#undef ZORVAT_REGISTER_TEST_CLASS
  return true;
}();

}  // namespace
}  // namespace zorvat::formats
