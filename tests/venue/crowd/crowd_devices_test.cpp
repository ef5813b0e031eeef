// SPDX-License-Identifier: Apache-2.0
// The small devices of a crowd's phones against the virtual ones that everything else is tested on.
#include "venue/crowd/crowd_devices.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

/// What both kinds of defaults have under a key: their text, their number, or neither.
std::string shownBy(const UserDefaults& defaults, const char* key) {
  const bool isThere = defaults.find(key) != nullptr;
  return (isThere ? "" : "absent ") + textForKey(defaults, key).value_or("no text") + " " +
         std::to_string(integerForKey(defaults, key));
}

class CrowdDefaultsTest : public testing::Test {
 protected:
  const CrowdSeat seat_{{12, -3}, "Block with a long name"};
  SharedDefaults shared_;
  CrowdDefaults defaults_{shared_, seat_};
};

TEST_F(CrowdDefaultsTest, HaveTheSeatAndNothingElse) {
  EXPECT_EQ(integerForKey(defaults_, "xPos"), 12);
  EXPECT_EQ(integerForKey(defaults_, "yPos"), -3);
  EXPECT_EQ(textForKey(defaults_, "selectedSection"), "Block with a long name");
  EXPECT_EQ(defaults_.find("appID"), nullptr);
}

TEST_F(CrowdDefaultsTest, KeepWhatIsWrittenLikeAnyOther) {
  VirtualDefaults others;
  const std::vector<DefaultsValue> values = {true,
                                             std::int64_t{-7},
                                             std::int64_t{1} << 40,
                                             2.5,
                                             std::string(),
                                             std::string("a text too long to lie in its string"),
                                             Date{3.25},
                                             DefaultsArray{std::int64_t{1}, std::string("b")},
                                             DefaultsDictionary{{"key", true}}};
  for (const DefaultsValue& before : values) {
    for (const DefaultsValue& value : values) {
      for (UserDefaults* defaults :
           {static_cast<UserDefaults*>(&defaults_), static_cast<UserDefaults*>(&others)}) {
        defaults->set("first", before);
        defaults->set("second", true);
        defaults->set("first", value);
      }
      ASSERT_NE(defaults_.find("first"), nullptr);
      EXPECT_EQ(*defaults_.find("first"), value);
      EXPECT_EQ(*defaults_.find("second"), DefaultsValue(true));
      EXPECT_EQ(shownBy(defaults_, "first"), shownBy(others, "first"));
    }
  }
  defaults_.remove("first");
  defaults_.remove("never there");
  EXPECT_EQ(shownBy(defaults_, "first"), "absent no text 0");
  EXPECT_EQ(shownBy(defaults_, "second"), "1 1");
}

TEST_F(CrowdDefaultsTest, TwoNumbersMayBeReadAtOnce) {
  defaults_.set("one", std::int64_t{1});
  defaults_.set("two", 2.0);
  const DefaultsValue* one = defaults_.find("one");
  const DefaultsValue* two = defaults_.find("two");
  const DefaultsValue* x = defaults_.find("xPos");
  const DefaultsValue* y = defaults_.find("yPos");
  EXPECT_EQ(*one, DefaultsValue(std::int64_t{1}));
  EXPECT_EQ(*two, DefaultsValue(2.0));
  EXPECT_EQ(*x, DefaultsValue(std::int64_t{12}));
  EXPECT_EQ(*y, DefaultsValue(std::int64_t{-3}));
}

TEST_F(CrowdDefaultsTest, NeighboursHaveTheirOwn) {
  const CrowdSeat next{{13, -3}, "Block with a long name"};
  CrowdDefaults others(shared_, next);
  defaults_.set("appID", std::int64_t{1});
  others.set("appID", std::int64_t{2});
  others.set("syncCloud", std::string("YES"));
  EXPECT_EQ(shownBy(defaults_, "appID"), "1 1");
  EXPECT_EQ(shownBy(others, "appID"), "2 2");
  EXPECT_EQ(shownBy(defaults_, "syncCloud"), "absent no text 0");
  EXPECT_EQ(integerForKey(defaults_, "xPos"), 12);
  EXPECT_EQ(integerForKey(others, "xPos"), 13);
  EXPECT_EQ(defaults_.find("selectedSection"), others.find("selectedSection"));
}

TEST_F(CrowdDefaultsTest, EqualValuesAreOne) {
  const CrowdSeat next{{13, -3}, "another"};
  CrowdDefaults others(shared_, next);
  for (const DefaultsValue& value :
       {DefaultsValue(std::string("YES")), DefaultsValue(DefaultsArray{std::int64_t{1}})}) {
    defaults_.set("key", value);
    others.set("another key", value);
    EXPECT_EQ(defaults_.find("key"), others.find("another key"));
    others.set("another key", std::string("NO"));
    EXPECT_EQ(*defaults_.find("key"), value);
  }
}

/// Writes down what its managers tell it, and when.
class Listener final : public CentralManagerDelegate {
 public:
  explicit Listener(const RunLoop& loop) : loop_(loop) {}
  void centralManagerDidUpdateState(CentralState state) override {
    add("state " + std::to_string(static_cast<int>(state)));
  }
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    add("packet " + std::to_string(advertisement.manufacturerData->front()));
  }
  std::vector<std::string> heard;

 private:
  void add(const std::string& what) {
    heard.push_back(std::to_string(loop_.now().count()) + " " + what);
  }
  const RunLoop& loop_;
};

/// The same story on a radio of either kind.
template <class Radio>
std::vector<std::string> story(VirtualRunLoop& loop, Radio& radio) {
  Listener listener(loop);
  const auto hear = [&](std::uint8_t number) {
    const std::array<std::uint8_t, 1> data = {number};
    radio.advertise(std::span<const std::uint8_t>(data));
    if (radio.isScanning()) listener.heard.push_back("scanning");
  };
  hear(1);
  std::unique_ptr<CentralManager> manager = radio.makeManager(listener);
  hear(2);
  loop.runFor(milliseconds(1));
  manager->scanForPeripherals({});
  hear(3);
  manager->stopScan();
  hear(4);
  manager->restartScan({});
  hear(5);
  radio.setState(CentralState::poweredOff);
  radio.setState(CentralState::poweredOff);
  hear(6);
  manager->scanForPeripherals({});
  hear(7);
  radio.setState(CentralState::poweredOn);
  hear(8);
  manager->scanForPeripherals({});
  // Another one is made before the first goes, as when listening is begun twice.
  manager = radio.makeManager(listener);
  hear(9);
  manager->scanForPeripherals({});
  hear(10);
  loop.runFor(milliseconds(1));
  // One that goes before its first report is never heard of again.
  manager = radio.makeManager(listener);
  manager.reset();
  radio.setState(CentralState::poweredOff);
  loop.runFor(milliseconds(1));
  hear(11);
  return listener.heard;
}

TEST(CrowdRadio, TellsTheStoryOfTheVirtualOne) {
  VirtualRunLoop loop;
  CrowdRadio radio(loop, ScenarioDevice());
  VirtualRunLoop otherLoop;
  VirtualBluetooth other(otherLoop);
  const std::vector<std::string> expected = story(otherLoop, other);
  EXPECT_EQ(expected.size(), 10U);
  EXPECT_EQ(story(loop, radio), expected);
}

TEST(CrowdRadio, BeginsAsTheDeviceSays) {
  VirtualRunLoop loop;
  ScenarioDevice device;
  device.authorization = BluetoothAuthorization::denied;
  device.state = CentralState::poweredOff;
  CrowdRadio radio(loop, device);
  EXPECT_EQ(radio.authorization(), BluetoothAuthorization::denied);
  Listener listener(loop);
  const auto manager = radio.makeManager(listener);
  EXPECT_EQ(manager->state(), CentralState::poweredOff);
  manager->scanForPeripherals({});
  EXPECT_FALSE(radio.isScanning());
  radio.setAuthorization(BluetoothAuthorization::allowedAlways);
  EXPECT_EQ(radio.authorization(), BluetoothAuthorization::allowedAlways);
}

TEST(CrowdScreen, ClampsItsLevel) {
  const Size size{3, 4};
  CrowdScreen screen(size, 0.5);
  EXPECT_EQ(screen.brightness(), 0.5);
  screen.setBrightness(1.5);
  EXPECT_EQ(screen.brightness(), 1);
  screen.setBrightness(-0.5);
  EXPECT_EQ(screen.brightness(), 0);
  EXPECT_EQ(screen.bounds(), size);
}

}  // namespace
}  // namespace halvora
