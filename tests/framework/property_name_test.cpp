#include <gtest/gtest.h>

#include <set>

#include "zorvat/automation.h"

namespace zorvat {
namespace {

TEST(PropertyNames, AnOrdinalIsTakenAtItsFirstAskingAndKeptAfterIt) {
  static const PropertyName kFresh{"REG"};
  // Before anyone asks, no ordinal is taken: a host's table is never indexed by one.
  EXPECT_EQ(kFresh.ordinal_if_taken(), PropertyName::kNoOrdinal);
  const std::uint32_t taken = kFresh.ordinal();
  EXPECT_NE(taken, PropertyName::kNoOrdinal);
  EXPECT_EQ(kFresh.ordinal(), taken);
  EXPECT_EQ(kFresh.ordinal_if_taken(), taken);
}

TEST(PropertyNames, EveryNameHasItsOwnOrdinalWhateverItsText) {
  // Two names of one text are two declarations: each is resolved on its own.
  static const PropertyName kNames[] = {PropertyName{"REG"}, PropertyName{"REG"},
                                        PropertyName{"OT1"}, PropertyName{"reg"}};
  std::set<std::uint32_t> ordinals;
  for (const PropertyName& name : kNames) ordinals.insert(name.ordinal());
  EXPECT_EQ(ordinals.size(), std::size(kNames));
}

}  // namespace
}  // namespace zorvat
