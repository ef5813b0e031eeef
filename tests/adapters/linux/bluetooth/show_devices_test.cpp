// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bluetooth/show_devices.h"

#include <string>

#include <gmock/gmock.h>

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr std::uint8_t kData[] = {9, 201, 7};
constexpr std::uint8_t kOther[] = {9, 201, 8, 8};

TEST(ShowDevices, KnowsNobodyAtFirst) {
  ShowDevices devices;
  EXPECT_EQ(devices.repeat("a"), std::nullopt);
}

TEST(ShowDevices, ARepeatOfWhatWasJustToldIsEmptyAndTheNextOneIsNot) {
  ShowDevices devices;
  devices.keep("a", kData, true);
  EXPECT_THAT(devices.repeat("a"), Optional(testing::IsEmpty()));
  EXPECT_THAT(devices.repeat("a"), Optional(ElementsAre(9, 201, 7)));
  EXPECT_THAT(devices.repeat("a"), Optional(ElementsAre(9, 201, 7)));
}

TEST(ShowDevices, WhatWasAskedForIsRepeatedAtOnce) {
  ShowDevices devices;
  devices.keep("a", kData, false);
  EXPECT_THAT(devices.repeat("a"), Optional(ElementsAre(9, 201, 7)));
}

TEST(ShowDevices, KeepsTheLastOfEach) {
  ShowDevices devices;
  devices.keep("a", kData, false);
  devices.keep("b", kData, false);
  devices.keep("a", kOther, false);
  EXPECT_THAT(devices.repeat("a"), Optional(ElementsAre(9, 201, 8, 8)));
  EXPECT_THAT(devices.repeat("b"), Optional(ElementsAre(9, 201, 7)));
  EXPECT_EQ(devices.size(), 2U);
}

TEST(ShowDevices, TheOneThatWasQuietLongestMakesRoom) {
  ShowDevices devices;
  for (std::size_t at = 0; at < ShowDevices::kMost; ++at) {
    devices.keep(std::to_string(at), kData, false);
  }
  devices.repeat("0");
  devices.keep("new", kData, false);
  EXPECT_EQ(devices.size(), ShowDevices::kMost);
  EXPECT_NE(devices.repeat("0"), std::nullopt);
  EXPECT_EQ(devices.repeat("1"), std::nullopt);
  EXPECT_NE(devices.repeat("new"), std::nullopt);
}

TEST(ShowDevices, CutsWhatIsLongerThanAnAdvertisement) {
  ShowDevices devices;
  devices.keep("a", std::vector<std::uint8_t>(1000, 5), false);
  EXPECT_THAT(devices.repeat("a"), Optional(testing::SizeIs(kLongestCompanyData)));
}

}  // namespace
}  // namespace halvora
