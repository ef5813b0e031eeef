// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_names.h"

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"

namespace halvora {
namespace {

TEST(StandingName, IsAnyNameWithTheWordInAnyCase) {
  for (const char* name : {"STANDING", "Standing Floor", "standing", "Block B sTaNdInG pit",
                           "Outstanding", "SSTANDING", "STANSTANDING", "Grandstanding A"}) {
    EXPECT_TRUE(isStandingName(name)) << name;
  }
}

TEST(StandingName, IsNoOtherName) {
  for (const char* name : {"", " ", "Stand", "Stand ing", "STANDIN", "TANDING", "Stehplatz",
                           "ST ANDING", "STAN-DING", "gnidnats"}) {
    EXPECT_FALSE(isStandingName(name)) << name;
  }
}

TEST(StandingName, KnowsTheLettersWhoseUpperCaseIsAscii) {
  EXPECT_TRUE(isStandingName("stand\u0131ng")) << "dotless i becomes I";
  EXPECT_TRUE(isStandingName("\u017Ftanding")) << "long s becomes S";
  EXPECT_TRUE(isStandingName("\uFB06anding")) << "the ligature st becomes ST";
  EXPECT_TRUE(isStandingName("\uFB05anding")) << "and so does that of long s and t";
  EXPECT_TRUE(isStandingName("Gro\u00DFtanding")) << "sharp s becomes SS";
}

TEST(StandingName, TakesOtherLettersForThemselves) {
  EXPECT_FALSE(isStandingName("STAND\u0130NG")) << "dotted capital I is another letter";
  EXPECT_FALSE(isStandingName("\uFF33\uFF34\uFF21\uFF2E\uFF24\uFF29\uFF2E\uFF27")) << "full width";
  EXPECT_FALSE(isStandingName("ST\u00C4NDING"));
  EXPECT_TRUE(isStandingName("\u00C4\u00DF\u4E2DStanding\u00E9"));
}

TEST(StandingName, ReadsBrokenUtf8AsOtherLetters) {
  EXPECT_TRUE(isStandingName("\xC3STANDING\xFF"));
  EXPECT_FALSE(
      isStandingName("STAN\xC4"
                     "DING"));
  EXPECT_FALSE(isStandingName("\xC5"));
  EXPECT_FALSE(isStandingName("\xEF\xAC"));
}

TEST(LocalizedText, IsTheBundlesUnlessThatIsEmptyOrTheKey) {
  VirtualBundle bundle("com.example.kit");
  bundle.strings = {{"has", "Hat"}, {"empty", ""}, {"same", "same"}};
  EXPECT_EQ(localizedText(bundle, "has", "Has"), "Hat");
  EXPECT_EQ(localizedText(bundle, "empty", "Empty"), "Empty");
  EXPECT_EQ(localizedText(bundle, "same", "Same"), "Same");
  EXPECT_EQ(localizedText(bundle, "missing", "Missing"), "Missing");
  EXPECT_EQ(localizedText(bundle, "missing", ""), "");
}

TEST(Formatted, FillsInTurn) {
  EXPECT_EQ(formatted("%@  |  %@  |  %@", {"A", "B", "C"}), "A  |  B  |  C");
  EXPECT_EQ(formatted("Row %ld", {"7"}), "Row 7");
  EXPECT_EQ(formatted("%@", {"50 %@ %ld %%"}), "50 %@ %ld %%") << "arguments are not formats";
  for (const char* format : {"%d", "%i", "%u", "%li", "%lu", "%lld", "%qd", "%zd", "%hhd"}) {
    EXPECT_EQ(formatted(format, {"12"}), "12") << format;
  }
}

TEST(Formatted, FillsByPosition) {
  EXPECT_EQ(formatted("%3$@ %1$@ %2$@", {"A", "B", "C"}), "C A B");
  EXPECT_EQ(formatted("%2$@ %2$@", {"A", "B"}), "B B");
  EXPECT_EQ(formatted("%1$ld.", {"4"}), "4.");
  EXPECT_EQ(formatted("%2$@ %@ %@", {"A", "B"}), "B A B") << "a position does not count the turn";
}

TEST(Formatted, BearsFewerAndMorePlacesThanArguments) {
  EXPECT_EQ(formatted("%@, %@", {"A", "B", "C"}), "A, B");
  EXPECT_EQ(formatted("Seat", {"4"}), "Seat");
  EXPECT_EQ(formatted("%@-%@-%@", {"A"}), "A--");
  EXPECT_EQ(formatted("%4$@%0$@%18446744073709551617$@!", {"A"}), "!");
  EXPECT_EQ(formatted("%@", {}), "");
  EXPECT_EQ(formatted("", {"A"}), "");
}

TEST(Formatted, LeavesWhatIsNoPlaceAsItIs) {
  EXPECT_EQ(formatted("100%% %@", {"A"}), "100% A");
  EXPECT_EQ(formatted("100%", {"A"}), "100%");
  EXPECT_EQ(formatted("%", {"A"}), "%");
  EXPECT_EQ(formatted("%1", {"A"}), "%1");
  EXPECT_EQ(formatted("%1$", {"A"}), "%1$");
  EXPECT_EQ(formatted("%l", {"A"}), "%l");
  EXPECT_EQ(formatted("%n %s %x %@", {"A"}), "%n %s %x A");
  EXPECT_EQ(formatted("%1@ %@", {"A"}), "%1@ A");
  EXPECT_EQ(formatted("%5%@", {"A"}), "%5A");
}

}  // namespace
}  // namespace halvora
