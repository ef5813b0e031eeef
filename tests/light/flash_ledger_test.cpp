// SPDX-License-Identifier: Apache-2.0
// What the account of a phone's light takes for a change.
#include "light/flash_ledger.h"

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr Duration kLater = milliseconds(100);

TEST(LuminanceChangesTest, TheFirstLightMayBeTheBrightOne) {
  LuminanceChanges changes;
  changes.add(0.8, {});
  EXPECT_EQ(changes.times().since({}), 0);
  changes.add(0.0, kLater);
  EXPECT_EQ(changes.times().since({}), 1);
}

TEST(LuminanceChangesTest, ARunBeginsWhereItTurned) {
  LuminanceChanges changes;
  for (const double luminance : {0.0, 0.8, 0.5, 0.75}) changes.add(luminance, kLater);
  EXPECT_EQ(changes.times().since({}), 3) << "up, down and up again";
}

TEST(RedChangesTest, TheFirstLightIsNoChange) {
  RedChanges fromRed;
  fromRed.add({1, 0, 0}, {});
  EXPECT_EQ(fromRed.times().since({}), 0);
  fromRed.add({}, kLater);
  EXPECT_EQ(fromRed.times().since({}), 1);
  RedChanges toRed;
  toRed.add({0, 0, 1}, {});
  EXPECT_EQ(toRed.times().since({}), 0);
  toRed.add({1, 0, 0}, kLater);
  EXPECT_EQ(toRed.times().since({}), 1);
}

}  // namespace
}  // namespace halvora
