// The registry of the eight export classes: each is created by its class name and by
// its ProgID, as the class it names.
#include "builtin_formats.h"

#include <gtest/gtest.h>

#include "adp7/adp7.h"
#include "generic/generic.h"
#include "intuitpac/intuitpac.h"
#include "pcpaylink/pcpaylink.h"
#include "pcpreview/pcpreview.h"
#include "peachtree/peachtree.h"
#include "primepay/primepay.h"
#include "qb2000/qb2000.h"
#include "scripted_host.h"

namespace zorvat::formats {
namespace {

template <class Class>
class BuiltinFormat : public testing::Test {};

using Classes =
    testing::Types<Generic, ADP7, IntuitPAC, PCPayLink, PCPreview, Peachtree, PrimePay, QB2000>;

// The class name the registry knows each class by.
template <class Class>
std::string name_of();
template <>
std::string name_of<Generic>() {
  return "Generic";
}
template <>
std::string name_of<ADP7>() {
  return "ADP7";
}
template <>
std::string name_of<IntuitPAC>() {
  return "IntuitPAC";
}
template <>
std::string name_of<PCPayLink>() {
  return "PCPayLink";
}
template <>
std::string name_of<PCPreview>() {
  return "PCPreview";
}
template <>
std::string name_of<Peachtree>() {
  return "Peachtree";
}
template <>
std::string name_of<PrimePay>() {
  return "PrimePay";
}
template <>
std::string name_of<QB2000>() {
  return "QB2000";
}

TYPED_TEST_SUITE(BuiltinFormat, Classes);

TYPED_TEST(BuiltinFormat, IsCreatableByItsNameAndProgId) {
  scripted::Host host;
  const std::string name = name_of<TypeParam>();
  for (const std::string& requested : {name, "zorvat." + name}) {
    auto created = builtin_formats().create(requested, host.context());
    ASSERT_NE(created, nullptr) << requested;
    EXPECT_EQ(created->class_name(), name);
    EXPECT_EQ(created->prog_id(), "zorvat." + name);
    EXPECT_NE(dynamic_cast<TypeParam*>(created.get()), nullptr) << requested;
  }
}

TEST(BuiltinFormats, ListsTheEightClasses) {
  EXPECT_EQ(builtin_formats().class_names(),
            (std::vector<std::string>{"Generic", "ADP7", "IntuitPAC", "PCPayLink", "PCPreview",
                                      "Peachtree", "PrimePay", "QB2000"}));
}

}  // namespace
}  // namespace zorvat::formats
