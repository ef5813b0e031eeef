// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_storage.h"

#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"

namespace halvora {
namespace {

TEST(VirtualDefaults, ReadsSeeTheLastWrite) {
  VirtualDefaults defaults;
  EXPECT_EQ(defaults.find("key"), nullptr);
  defaults.set("key", std::int64_t{1});
  defaults.set("key", std::string("two"));
  ASSERT_NE(defaults.find("key"), nullptr);
  EXPECT_EQ(*defaults.find("key"), DefaultsValue(std::string("two")));
  EXPECT_EQ(defaults.find("Key"), nullptr);
  defaults.remove("key");
  EXPECT_EQ(defaults.find("key"), nullptr);
}

TEST(VirtualDefaults, AnEqualWriteChangesNothing) {
  VirtualDefaults defaults;
  const DefaultsDictionary record{{"x", std::int64_t{1}}, {"name", std::string("A")}};
  defaults.set("key", record);
  EXPECT_EQ(defaults.changes, 1U);
  const DefaultsValue* before = defaults.find("key");
  defaults.set("key", record);
  EXPECT_EQ(defaults.changes, 1U);
  EXPECT_EQ(defaults.find("key"), before);
  defaults.set("key", std::int64_t{1});
  EXPECT_EQ(defaults.changes, 2U);
}

TEST(VirtualDefaults, RemovingWhatIsNotThereChangesNothing) {
  VirtualDefaults defaults;
  defaults.remove("key");
  EXPECT_EQ(defaults.changes, 0U);
  defaults.set("key", true);
  defaults.remove("key");
  EXPECT_EQ(defaults.changes, 2U);
}

TEST(VirtualDefaults, WritesDownTheKitsWritesOnly) {
  VirtualDefaults defaults;
  defaults.setFromOutside("outside", DefaultsValue(true));
  defaults.set("inside", std::int64_t{1});
  defaults.set("inside", std::int64_t{1});
  defaults.remove("inside");
  ASSERT_EQ(defaults.log.entries.size(), 3U);
  EXPECT_EQ(defaults.log.entries[1].key, "inside");
  EXPECT_EQ(defaults.log.entries[1].value, DefaultsValue(std::int64_t{1}));
  EXPECT_EQ(defaults.log.entries[2].value, std::nullopt);
  ASSERT_NE(defaults.find("outside"), nullptr);
  defaults.setFromOutside("outside", std::nullopt);
  EXPECT_EQ(defaults.find("outside"), nullptr);
}

TEST(VirtualBundle, ServesItsResourcesAndTexts) {
  VirtualBundle bundle("com.example.host");
  bundle.resources["a/b.json"] = "12345";
  bundle.strings["key"] = "text";
  EXPECT_EQ(bundle.identifier(), "com.example.host");
  EXPECT_EQ(bundle.readResource("a/b.json", 5), "12345");
  EXPECT_EQ(bundle.readResource("a/b.json", 4), std::nullopt);
  EXPECT_EQ(bundle.readResource("b.json", 5), std::nullopt);
  EXPECT_EQ(bundle.localizedString("key"), "text");
  EXPECT_EQ(bundle.localizedString("other"), "other");
}

TEST(VirtualPhone, HandsOutWhatItOwns) {
  const ExactJsonReader json;
  VirtualBundle host("com.example.other");
  VirtualPhone phone(json, {.brightness = 0.75,
                            .bounds = {100, 200},
                            .authorization = BluetoothAuthorization::denied,
                            .state = CentralState::poweredOff,
                            .random = {},
                            .mainBundle = &host,
                            .kitBundle = nullptr});
  const Platform platform = phone.platform();
  EXPECT_EQ(platform.screen->brightness(), 0.75);
  EXPECT_EQ(platform.screen->bounds(), (Size{100, 200}));
  EXPECT_EQ(platform.bluetooth->authorization(), BluetoothAuthorization::denied);
  EXPECT_EQ(phone.bluetooth.state(), CentralState::poweredOff);
  EXPECT_EQ(&platform.bundles->main, &host);
  EXPECT_EQ(&platform.bundles->kit, &phone.kitBundle);
  EXPECT_EQ(&*platform.runLoop, &phone.loop);
  EXPECT_EQ(&*platform.defaults, &phone.defaults);
}

TEST(VirtualPhone, MayHaveNoTorch) {
  const ExactJsonReader json;
  for (const bool hasTorch : {false, true}) {
    VirtualPhoneSetup setup;
    setup.hasTorch = hasTorch;
    VirtualPhone phone(json, std::move(setup));
    EXPECT_EQ(phone.platform().torch->hasTorch(), hasTorch);
  }
}

TEST(VirtualPhone, DrawsTheSameAsAnyOtherPhone) {
  const ExactJsonReader json;
  VirtualPhone first(json);
  VirtualPhone second(json);
  for (int count = 0; count < 20; ++count) {
    EXPECT_EQ(first.random->below(1'000'000), second.random->below(1'000'000));
  }
}

}  // namespace
}  // namespace halvora
