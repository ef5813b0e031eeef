// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/bluetooth_settings.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSet = "org.freedesktop.DBus.Properties.Set";

/// Knows adapters, and nothing else.
class KnownAdapters final : public BluezService {
 public:
  void open(BluezListener&) override {}
  void close() override {}
  void look() override {}
  BluezReach reach() const override { return BluezReach::there; }
  std::span<const BluezAdapter> adapters() const override { return known; }
  void start(const std::string&, BluezMethod) override {}
  void stop() override {}
  void abandon() override {}
  const BluezSignalCounts& signalCounts() const override { return counts_; }
  const BluezErrors& errors() const override { return errors_; }

  std::vector<BluezAdapter> known;

 private:
  BluezSignalCounts counts_;
  BluezErrors errors_;
};

class SettingsOfBluetooth : public ServicesTest {
 protected:
  SettingsOfBluetooth() { bluez.answers[kSet] = agree; }

  FakeService bluez{loop, loop, bus.address(), "org.bluez"};
  KnownAdapters radio;
  int pages = 0;
  std::string path;
  BluetoothSettings settings{buses.system, radio, [this] { ++pages; }};
};

TEST_F(SettingsOfBluetooth, AnAdapterWithoutPowerIsSwitchedOn) {
  radio.known = {{"/org/bluez/hci0", false, false}, {"/org/bluez/hci1", false, false}};
  bluez.appear();
  settings.open();
  ASSERT_TRUE(waitForCalls(bluez, 1));
  EXPECT_THAT(bluez.calls, ElementsAre("Set(org.bluez.Adapter1, Powered, [true])"));
  EXPECT_EQ(pages, 0);
}

TEST_F(SettingsOfBluetooth, WhereThereIsNothingToSwitchOnThePageIsOpened) {
  bluez.appear();
  settings.open();
  EXPECT_EQ(pages, 1);
  radio.known = {{"/org/bluez/hci0", false, false}, {"/org/bluez/hci1", true, false}};
  settings.open();
  EXPECT_EQ(pages, 2);
  EXPECT_THAT(bluez.calls, IsEmpty());
}

TEST_F(SettingsOfBluetooth, OnlyTheAdapterThatIsNamedCounts) {
  radio.known = {{"/org/bluez/hci0", true, false}, {"/org/bluez/hci1", false, false}};
  BluetoothSettings named(
      buses.system, radio, [this] { ++pages; }, "hci1");
  BluetoothSettings missing(
      buses.system, radio, [this] { ++pages; }, "hci7");
  bluez.answers[kSet] = [this](sd_bus_message* call) {
    path = sd_bus_message_get_path(call);
    return agree(call);
  };
  bluez.appear();
  named.open();
  ASSERT_TRUE(waitForCalls(bluez, 1));
  EXPECT_EQ(path, "/org/bluez/hci1");
  EXPECT_EQ(pages, 0);
  missing.open();
  EXPECT_EQ(pages, 1);
}

TEST_F(SettingsOfBluetooth, WhereItIsRefusedThePageIsOpened) {
  radio.known = {{"/org/bluez/hci0", false, false}};
  bluez.answers[kSet] = refusal("org.bluez.Error.Blocked");
  bluez.appear();
  settings.open();
  ASSERT_TRUE(waitFor([&] { return pages == 1; }));
  bluez.die();
  settings.open();
  ASSERT_TRUE(waitFor([&] { return pages == 2; }));
  bus.stop();
  ASSERT_TRUE(waitFor([&] {
    settings.open();
    return pages > 2;
  }));
}

TEST_F(SettingsOfBluetooth, OneThatIsUnderWayIsEnough) {
  radio.known = {{"/org/bluez/hci0", false, false}};
  bluez.isHanging = true;
  bluez.appear();
  for (int tap = 0; tap < 10; ++tap) settings.open();
  ASSERT_TRUE(waitForCalls(bluez, 1));
  for (int tap = 0; tap < 10; ++tap) settings.open();
  settle();
  bluez.die();
  ASSERT_TRUE(waitFor([&] { return pages == 1; }));
  EXPECT_EQ(bluez.calls.size(), 1U);
}

std::vector<std::string> programs(std::string_view desktops) {
  std::vector<std::string> found;
  for (const SettingsCommand& command : settingsCommands(desktops)) {
    found.push_back(command.program);
  }
  return found;
}

TEST(SettingsCommands, TheDesktopsOwnComesFirst) {
  EXPECT_EQ(programs("Phosh:GNOME").front(), "gnome-control-center");
  EXPECT_EQ(programs("KDE").front(), "plasma-settings");
  EXPECT_EQ(programs("Lomiri").front(), "lomiri-url-dispatcher");
  EXPECT_EQ(settingsCommands("Lomiri").front(),
            (SettingsCommand{"lomiri-url-dispatcher", {"settings:///system/bluetooth"}}));
  EXPECT_EQ(programs("X-Cinnamon").front(), "blueberry");
  EXPECT_EQ(programs("").front(), "blueman-manager");
  EXPECT_EQ(programs("xKDE:Lomirix").front(), "gnome-control-center");
}

TEST(SettingsCommands, EveryOtherOneFollowsInAnyDesktop) {
  const auto all = programs({});
  EXPECT_EQ(all.size(), 7U);
  for (const char* desktops : {"KDE", "Phosh:GNOME", "XFCE", "GNOMEx:xGNOME", ":"}) {
    EXPECT_THAT(programs(desktops), testing::UnorderedElementsAreArray(all));
  }
}

}  // namespace
}  // namespace halvora
