// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/settings_portal.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/adapters/linux/bus/stranger.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kReadAll = "org.freedesktop.portal.Settings.ReadAll";
constexpr const char* kAppearance = "org.freedesktop.appearance";

class SettingsPortals : public ServicesTest {
 protected:
  SettingsPortals() {
    // The third is of a namespace that was not asked for.
    answers("a{sa{sv}}", 3, kAppearance, 3, "accent-color", "(ddd)", 0.2, 0.5, 0.9, "contrast", "u",
            1U, "color-scheme", "u", 2U, "org.gnome.desktop.interface", 2, "enable-animations", "b",
            0, "cursor-theme", "s", "large", "org.example", 1, "contrast", "u", 0U);
  }

  template <class... Arguments>
  void answers(const char* types, Arguments... arguments) {
    service.answers[kReadAll] = [=](sd_bus_message* call) {
      return sd_bus_reply_method_return(call, types, arguments...);
    };
  }
  void make() {
    portal = std::make_unique<SettingsPortal>(
        buses.session, [this](const UserWishes& now) { told.push_back(now); });
  }
  bool waitForWishes(const UserWishes& wished) {
    return waitFor([&] { return portal->wishes() == wished; });
  }
  template <class... Arguments>
  void tell(const char* space, const char* key, const char* type, Arguments... value) {
    service.announce(kPath, kInterface, "SettingChanged", [=](sd_bus_message* message) {
      sd_bus_message_append(message, "ssv", space, key, type, value...);
    });
  }

  FakeService service{loop, loop, bus.address(), "org.freedesktop.portal.Desktop"};
  std::vector<UserWishes> told;
  std::unique_ptr<SettingsPortal> portal;
};

constexpr UserWishes kAll{
    .highContrast = true, .reducedMotion = true, .scheme = ColourScheme::light};

TEST_F(SettingsPortals, AreAskedOnceForThreeNamespaces) {
  service.appear();
  make();
  EXPECT_EQ(portal->wishes(), UserWishes());
  ASSERT_TRUE(waitForWishes(kAll));
  settle();
  EXPECT_THAT(told, ElementsAre(kAll));
  EXPECT_THAT(service.calls,
              ElementsAre("ReadAll([org.freedesktop.appearance, org.gnome.desktop.interface, "
                          "org.gnome.desktop.a11y.interface])"));
}

TEST_F(SettingsPortals, EachChangeIsToldOnce) {
  service.appear();
  make();
  ASSERT_TRUE(waitForWishes(kAll));
  tell("org.gnome.desktop.interface", "enable-animations", "b", 1);
  ASSERT_TRUE(waitForWishes({.highContrast = true, .scheme = ColourScheme::light}));
  tell(kAppearance, "contrast", "u", 0U);
  tell(kAppearance, "color-scheme", "u", 1U);
  ASSERT_TRUE(waitForWishes({.scheme = ColourScheme::dark}));
  // What says the same once more, or is of no concern, is not told.
  const std::size_t before = told.size();
  tell(kAppearance, "color-scheme", "u", 1U);
  tell(kAppearance, "accent-color", "(ddd)", 0.1, 0.1, 0.1);
  settle();
  EXPECT_EQ(told.size(), before);
  tell("org.gnome.desktop.a11y.interface", "high-contrast", "b", 1);
  ASSERT_TRUE(waitForWishes({.highContrast = true, .scheme = ColourScheme::dark}));
  tell(kAppearance, "reduced-motion", "u", 1U);
  EXPECT_TRUE(
      waitForWishes({.highContrast = true, .reducedMotion = true, .scheme = ColourScheme::dark}));
}

TEST_F(SettingsPortals, BadValuesSayNothing) {
  service.appear();
  make();
  ASSERT_TRUE(waitForWishes(kAll));
  tell(kAppearance, "contrast", "s", "none");
  tell(kAppearance, "color-scheme", "as", 2, "dark", "light");
  tell("org.gnome.desktop.interface", "enable-animations", "u", 1U);
  service.announce(kPath, kInterface, "SettingChanged", [](sd_bus_message* message) {
    sd_bus_message_append(message, "ss", kAppearance, "contrast");
  });
  service.announce(kPath, kInterface, "SettingChanged", [](sd_bus_message*) {});
  settle();
  EXPECT_EQ(portal->wishes(), kAll);
  // And what comes behind them is still heard.
  tell(kAppearance, "color-scheme", "u", 7U);
  EXPECT_TRUE(waitForWishes({.highContrast = true, .reducedMotion = true}));
}

TEST_F(SettingsPortals, AnswersOfAnotherShapeSayNothing) {
  answers("a{sv}", 1, kAppearance, "u", 1U);
  service.appear();
  make();
  ASSERT_TRUE(waitForCalls(service, 1));
  settle();
  EXPECT_EQ(portal->wishes(), UserWishes());
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(SettingsPortals, AStrangerIsNotBelieved) {
  service.appear();
  make();
  ASSERT_TRUE(waitForWishes(kAll));
  Stranger stranger(loop, bus.address());
  stranger.signal(service.caller, kPath, kInterface, "SettingChanged", [](sd_bus_message* message) {
    sd_bus_message_append(message, "ssv", kAppearance, "contrast", "u", 0U);
  });
  ASSERT_TRUE(stranger.isThrough(service.caller));
  EXPECT_EQ(portal->wishes(), kAll);
}

TEST_F(SettingsPortals, APortalThatComesLaterIsAskedAndOneThatGoesStillHolds) {
  make();
  settle();
  EXPECT_EQ(portal->wishes(), UserWishes());
  service.appear();
  ASSERT_TRUE(waitForWishes(kAll));
  service.die();
  settle();
  EXPECT_EQ(portal->wishes(), kAll);
  answers("a{sa{sv}}", 1, kAppearance, 1, "contrast", "u", 0U);
  service.appear();
  EXPECT_TRUE(waitForWishes({.reducedMotion = true, .scheme = ColourScheme::light}));
}

TEST_F(SettingsPortals, AreHeardAgainOnABusThatCameBack) {
  service.appear();
  make();
  ASSERT_TRUE(waitForWishes(kAll));
  bool isLost = false;
  const BusObserver observer(buses.session, {[] {}, [&isLost] { isLost = true; }});
  service.die();
  bus.stop();
  ASSERT_TRUE(waitFor([&] { return isLost; }));
  ASSERT_TRUE(bus.start());
  service.appear();
  ASSERT_TRUE(waitFor([&] { return buses.session.reach() != nullptr; }));
  ASSERT_TRUE(waitForCalls(service, 2));
  settle();
  tell(kAppearance, "contrast", "u", 0U);
  EXPECT_TRUE(waitForWishes({.reducedMotion = true, .scheme = ColourScheme::light}));
}

TEST_F(SettingsPortals, WithoutABusNothingIsWished) {
  Bus none(loop, loop, "unix:path=/nowhere");
  const SettingsPortal lonely(none, [this](const UserWishes& now) { told.push_back(now); });
  settle();
  EXPECT_EQ(lonely.wishes(), UserWishes());
  EXPECT_THAT(told, IsEmpty());
}

}  // namespace
}  // namespace halvora
