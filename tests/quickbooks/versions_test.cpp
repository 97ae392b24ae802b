#include "zorvat/quickbooks/versions.h"

#include <gtest/gtest.h>

namespace zorvat::quickbooks {
namespace {

using Versions = std::vector<std::string>;

TEST(QbxmlVersionNumber, ReadsTwoNumbersJoinedByAPoint) {
  EXPECT_EQ(parse_qbxml_version("13.0"), (QbxmlVersionNumber{13, 0}));
  EXPECT_EQ(parse_qbxml_version("1.1"), (QbxmlVersionNumber{1, 1}));
  EXPECT_EQ(parse_qbxml_version("2.10"), (QbxmlVersionNumber{2, 10}));
}

TEST(QbxmlVersionNumber, RefusesOtherEditionsAndText) {
  for (const char* text : {"CA3.0", "UK2.0", "13", "13.", ".0", "13.0.1", "1 .0", "-1.0", "",
                           "12345.0", "x.y", "13.0 "})
    EXPECT_EQ(parse_qbxml_version(text), std::nullopt) << text;
}

TEST(QbxmlVersionNumber, ComparesMajorThenMinor) {
  EXPECT_LT((QbxmlVersionNumber{2, 10}), (QbxmlVersionNumber{3, 0}));
  EXPECT_LT((QbxmlVersionNumber{2, 0}), (QbxmlVersionNumber{2, 1}));
}

TEST(VersionsForBackEnd, PutsTheHighestVersionTheBackEndBuildsFirst) {
  // QuickBooks lists its versions oldest first; a generation that builds up to 8.0.
  EXPECT_EQ(versions_for_back_end({"1.0", "1.1", "2.0", "7.0", "8.0", "10.0", "13.0"}, {8, 0}),
            (Versions{"8.0", "1.0", "1.1", "2.0", "7.0", "10.0", "13.0"}));
}

TEST(VersionsForBackEnd, NeverAboveWhatTheExportWrites) {
  // The request processor builds whatever it is given: the export's newest counts.
  EXPECT_EQ(versions_for_back_end({"15.0", "16.0", "17.0", "CA3.0"}, {99, 0}),
            (Versions{"16.0", "15.0", "17.0", "CA3.0"}));
}

TEST(VersionsForBackEnd, ComparesVersionsAsNumbersNotText) {
  EXPECT_EQ(versions_for_back_end({"2.0", "10.0", "9.0"}, {99, 0}),
            (Versions{"10.0", "2.0", "9.0"}));
  EXPECT_EQ(versions_for_back_end({"2.1", "2.10", "2.9"}, {99, 0}),
            (Versions{"2.10", "2.1", "2.9"}));
}

TEST(VersionsForBackEnd, SkipsOtherEditions) {
  EXPECT_EQ(versions_for_back_end({"CA3.0", "UK3.0", "3.0"}, {16, 0}),
            (Versions{"3.0", "CA3.0", "UK3.0"}));
}

TEST(VersionsForBackEnd, HandsOnTheListWhenNothingQualifies) {
  EXPECT_EQ(versions_for_back_end({"CA3.0", "17.0"}, {16, 0}), (Versions{"CA3.0", "17.0"}));
  EXPECT_EQ(versions_for_back_end({}, {16, 0}), Versions{});
}

TEST(VersionsForBackEnd, KeepsAListWhoseFirstIsAlreadyTheChoice) {
  EXPECT_EQ(versions_for_back_end({"3.0", "2.0", "1.0"}, {3, 0}), (Versions{"3.0", "2.0", "1.0"}));
}

}  // namespace
}  // namespace zorvat::quickbooks
