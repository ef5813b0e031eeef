// SPDX-License-Identifier: Apache-2.0
#include "venue/air/bluez_advertiser.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adapters/linux/poll_run_loop.h"
#include "tests/adapters/linux/bus/fake_bluez.h"
#include "tests/adapters/linux/bus/private_bus.h"
#include "tests/adapters/linux/bus/stranger.h"

namespace halvora {
namespace {

using testing::ElementsAre;

// An advertiser on a private bus with the fake daemon. Real time passes here; tests wait for what
// is to happen, with a bound that only a failure reaches.
class BluezAdvertiserTest : public testing::Test {
 protected:
  using Bytes = FakeBluez::Bytes;

  static Bytes packet(std::uint8_t number) { return {0x09, 0xC9, 0x01, 0x02, number}; }

  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
  }
  bool waitFor(const std::function<bool()>& isTrue) {
    return loop.runUntil(isTrue, std::chrono::seconds(30));
  }
  bool open(const TransmitterSettings& settings = {}) {
    advertiser = std::make_unique<BluezAdvertiser>(loop, loop, bus.address());
    advertiser->open(settings);
    return waitFor([&] { return !advertiser->isBusy(); }) && advertiser->failure().empty();
  }
  std::string refusal(const TransmitterSettings& settings = {}) {
    return open(settings) ? "" : advertiser->failure();
  }
  bool waitForAir(const Bytes& data) {
    return waitFor([&] { return bluez.isAdvertising() && bluez.onAir() == data; });
  }
  /// The daemon with one powered adapter, and the first packet on the air.
  void advertise() {
    bluez.appear();
    bluez.addAdapter("hci0", true);
    ASSERT_TRUE(open());
    advertiser->show(packet(1));
    ASSERT_TRUE(waitForAir(packet(1)));
    ASSERT_TRUE(waitFor([&] { return !advertiser->isBusy(); }));
  }

  PrivateBus bus;
  PollRunLoop loop;
  FakeBluez bluez{loop, loop, bus.address()};
  std::unique_ptr<BluezAdvertiser> advertiser;
};

TEST_F(BluezAdvertiserTest, AdvertisesToNobodyInParticularAtTheIntervalThatIsAskedFor) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  ASSERT_TRUE(open({.interval = milliseconds(250)}));
  EXPECT_FALSE(bluez.isAdvertising());
  advertiser->show(packet(1));
  ASSERT_TRUE(waitForAir(packet(1)));
  EXPECT_EQ(bluez.airedType, "broadcast");
  EXPECT_EQ(bluez.airedInterval, 250U);
  EXPECT_THAT(bluez.calls, ElementsAre("GetManagedObjects", "RegisterAdvertisement"));
}

TEST_F(BluezAdvertiserTest, ANewPacketIsAChangeOfTheSameAdvertisement) {
  advertise();
  for (const std::uint8_t number : Bytes{2, 3, 4}) {
    advertiser->show(packet(number));
    ASSERT_TRUE(waitForAir(packet(number)));
  }
  EXPECT_THAT(bluez.aired, ElementsAre(packet(1), packet(2), packet(3), packet(4)));
  EXPECT_THAT(bluez.calls, ElementsAre("GetManagedObjects", "RegisterAdvertisement"));
}

TEST_F(BluezAdvertiserTest, APacketThatComesBeforeTheAnswerIsNotForgotten) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  ASSERT_TRUE(open());
  advertiser->show(packet(1));
  advertiser->show(packet(2));
  ASSERT_TRUE(waitForAir(packet(2)));
  advertiser->show(packet(3));
  EXPECT_TRUE(waitForAir(packet(3)));
}

TEST_F(BluezAdvertiserTest, IsOffTheAirWhenItEnds) {
  advertise();
  advertiser->end();
  EXPECT_TRUE(advertiser->isBusy());
  ASSERT_TRUE(waitFor([&] { return !advertiser->isBusy(); }));
  EXPECT_FALSE(bluez.isAdvertising());
  EXPECT_EQ(bluez.calls.back(), "UnregisterAdvertisement");
  EXPECT_EQ(advertiser->failure(), "");
}

TEST_F(BluezAdvertiserTest, IsOffTheAirWhenItIsGone) {
  advertise();
  advertiser.reset();
  EXPECT_TRUE(waitFor([&] { return !bluez.isAdvertising(); }));
}

TEST_F(BluezAdvertiserTest, TakesTheAdapterThatIsNamed) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  bluez.addAdapter("hci1", false);
  bluez.addAdapter("hci2", true);
  EXPECT_EQ(refusal({.adapter = "hci2"}), "");
  EXPECT_EQ(refusal({.adapter = "hci1"}), "the Bluetooth adapter hci1 is switched off");
  EXPECT_EQ(refusal({.adapter = "hci7"}), "no Bluetooth adapter called hci7");
}

TEST_F(BluezAdvertiserTest, TakesTheFirstAdapterThatCanDoIt) {
  bluez.appear();
  bluez.addAdapter("hci0", false);
  EXPECT_EQ(refusal(), "the Bluetooth adapter hci0 is switched off");
  bluez.canAdvertise = false;
  bluez.addAdapter("hci1", true);
  EXPECT_EQ(refusal({.adapter = "hci1"}), "the Bluetooth adapter hci1 cannot advertise");
  bluez.canAdvertise = true;
  bluez.addAdapter("hci2", true);
  EXPECT_EQ(refusal(), "");
}

TEST_F(BluezAdvertiserTest, SaysWhatIsMissing) {
  EXPECT_EQ(refusal(), "no Bluetooth service");
  bluez.appear();
  EXPECT_EQ(refusal(), "no Bluetooth adapter");
  bluez.errors["GetManagedObjects"] = SD_BUS_ERROR_ACCESS_DENIED;
  EXPECT_EQ(refusal(), "the system does not allow this user to use Bluetooth");
  advertiser = std::make_unique<BluezAdvertiser>(loop, loop, "unix:path=nowhere");
  advertiser->open({});
  EXPECT_TRUE(advertiser->isBusy());
  ASSERT_TRUE(waitFor([&] { return !advertiser->isBusy(); }));
  EXPECT_EQ(advertiser->failure(), "no system bus to reach the Bluetooth service on");
}

TEST_F(BluezAdvertiserTest, SaysWhyTheDaemonDoesNotAdvertise) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  bluez.errors["RegisterAdvertisement"] = "org.bluez.Error.NotPermitted";
  ASSERT_TRUE(open());
  advertiser->show(packet(1));
  ASSERT_TRUE(waitFor([&] { return !advertiser->failure().empty(); }));
  EXPECT_EQ(advertiser->failure(),
            "the Bluetooth service does not advertise: org.bluez.Error.NotPermitted: as the test "
            "wants it");
}

TEST_F(BluezAdvertiserTest, NoticesThatItIsTakenOffTheAir) {
  advertise();
  bluez.releaseAdvertisements();
  ASSERT_TRUE(waitFor([&] { return !advertiser->failure().empty(); }));
  EXPECT_EQ(advertiser->failure(), "the Bluetooth service has taken the advertisement off the air");
  advertiser->show(packet(2));
  advertiser->end();
  EXPECT_FALSE(advertiser->isBusy());
}

TEST_F(BluezAdvertiserTest, NoticesThatItsAdapterIsUnplugged) {
  advertise();
  bluez.addAdapter("hci7", true);
  bluez.removeAdapter("hci7");
  bluez.removeAdapter("hci0");
  ASSERT_TRUE(waitFor([&] { return !advertiser->failure().empty(); }));
  EXPECT_EQ(advertiser->failure(), "the Bluetooth adapter is gone");
}

TEST_F(BluezAdvertiserTest, NoticesThatItsAdapterIsSwitchedOff) {
  advertise();
  bluez.addAdapter("hci7", true);
  bluez.setPowered("hci7", false);
  advertiser->show(packet(2));
  ASSERT_TRUE(waitForAir(packet(2)));
  EXPECT_EQ(advertiser->failure(), "");
  bluez.setPowered("hci0", false);
  ASSERT_TRUE(waitFor([&] { return !advertiser->failure().empty(); }));
  EXPECT_EQ(advertiser->failure(), "the Bluetooth adapter is switched off");
}

TEST_F(BluezAdvertiserTest, AStrangerNeitherEndsItNorTakesItOffTheAir) {
  advertise();
  const std::string target = bluez.advertisementClient();
  Stranger stranger(loop, bus.address());
  stranger.sayGone(target, "org.bluez");
  EXPECT_FALSE(
      stranger.call(target, "/org/halvora/advertisement", "org.bluez.LEAdvertisement1", "Release"));
  EXPECT_EQ(advertiser->failure(), "");
  advertiser->show(packet(2));
  EXPECT_TRUE(waitForAir(packet(2)));
}

TEST_F(BluezAdvertiserTest, AdaptersWithoutEndAreNotBelieved) {
  bluez.appear();
  for (int number = 0; number < 100; ++number) {
    bluez.addAdapter("hci" + std::to_string(100 + number), number >= 16);
  }
  EXPECT_EQ(refusal(), "the Bluetooth adapter hci100 is switched off");
}

TEST_F(BluezAdvertiserTest, AnAnswerOfAnotherShapeIsNone) {
  bluez.answers["GetManagedObjects"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_return(call, "s", "text");
  };
  bluez.appear();
  EXPECT_EQ(refusal(), "the Bluetooth service gives an answer that is none");
}

TEST_F(BluezAdvertiserTest, NoticesThatTheDaemonHasGone) {
  advertise();
  bluez.die();
  ASSERT_TRUE(waitFor([&] { return !advertiser->failure().empty(); }));
  EXPECT_EQ(advertiser->failure(), "the Bluetooth service has gone");
}

}  // namespace
}  // namespace halvora
