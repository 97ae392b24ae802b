// A duration as a sign and counts without sign, the form the newer session managers'
// time interval takes, and the order of the session back ends.
#include <gtest/gtest.h>

#include "zorvat/quickbooks/back_ends.h"
#include "zorvat/quickbooks/values.h"

namespace zorvat::quickbooks {
namespace {

TEST(SignedInterval, IsNegativeAsAWholeWhenAnyCountIs) {
  // -8 hours and 30 minutes is minus eight and a half hours, as "-PT8H30M0S".
  EXPECT_EQ(signed_interval({-8, 30, 0}), (SignedTimeInterval{8, 30, 0, true}));
  EXPECT_EQ(signed_interval({0, -30, 0}), (SignedTimeInterval{0, 30, 0, true}));
  EXPECT_EQ(signed_interval({-1, -15, -5}), (SignedTimeInterval{1, 15, 5, true}));
  EXPECT_EQ(signed_interval({8, 30, 0}), (SignedTimeInterval{8, 30, 0, false}));
  EXPECT_EQ(signed_interval({0, 0, 0}), (SignedTimeInterval{0, 0, 0, false}));
  EXPECT_EQ(signed_interval({-2147483647 - 1, 0, 0}),
            (SignedTimeInterval{2147483648LL, 0, 0, true}));
}

TEST(SignedInterval, ReadsBackWithTheSignOnTheFirstCountThatIsNotZero) {
  EXPECT_EQ(duration_of({8, 30, 0, true}), (Duration{-8, 30, 0}));
  EXPECT_EQ(duration_of({0, 30, 0, true}), (Duration{0, -30, 0}));
  EXPECT_EQ(duration_of({0, 0, 5, true}), (Duration{0, 0, -5}));
  EXPECT_EQ(duration_of({0, 0, 0, true}), (Duration{0, 0, 0}));
  EXPECT_EQ(duration_of({24, 0, 0, false}), (Duration{24, 0, 0}));
}

TEST(SignedInterval, RefusesASignedCountOrOneBeyond32Bits) {
  EXPECT_EQ(duration_of({-8, 30, 0, false}), std::nullopt);
  EXPECT_EQ(duration_of({8, -30, 0, true}), std::nullopt);
  EXPECT_EQ(duration_of({2147483648LL, 0, 0, false}), std::nullopt);
  EXPECT_EQ(duration_of({2147483647, 0, 0, true}), (Duration{-2147483647, 0, 0}));
}

TEST(SignedInterval, AgreesWithTheQbxmlText) {
  for (const Duration duration : {Duration{-8, 30, 0}, Duration{0, -30, 0}, Duration{2, 30, 0}}) {
    const SignedTimeInterval interval = signed_interval(duration);
    EXPECT_EQ(duration_text(duration).starts_with("-"), interval.negative);
    EXPECT_EQ(duration_of(interval), parse_duration_text(duration_text(duration)));
  }
}

TEST(SessionBackEnds, TryTheEarlyGenerationsThenTheNewerOnesNewestFirstThenTheRequestProcessor) {
  EXPECT_EQ(session_back_end_names(),
            "QBFC2.QBSessionManager, QBFC1.QBSessionManager, QBFC16.QBSessionManager, "
            "QBFC15.QBSessionManager, QBFC14.QBSessionManager, QBFC13.QBSessionManager, "
            "QBFC12.QBSessionManager, QBFC11.QBSessionManager, QBFC10.QBSessionManager, "
            "QBFC9.QBSessionManager, QBFC8.QBSessionManager, QBFC7.QBSessionManager, "
            "QBFC6.QBSessionManager, QBFC5.QBSessionManager, QBFC4.QBSessionManager, "
            "QBFC3.QBSessionManager, QBXMLRP2.RequestProcessor");
  for (const SessionBackEnd& back_end : kSessionBackEnds) {
    if (back_end.kind != BackEndKind::NewerQbfc) continue;
    // QBFCn builds up to qbXML n.0.
    const std::string expected =
        "QBFC" + std::to_string(back_end.newest_built.major) + ".QBSessionManager";
    EXPECT_EQ(back_end.prog_id, expected);
    EXPECT_EQ(back_end.newest_built.minor, 0);
  }
}

}  // namespace
}  // namespace zorvat::quickbooks
