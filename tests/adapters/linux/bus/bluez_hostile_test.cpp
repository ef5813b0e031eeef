// SPDX-License-Identifier: Apache-2.0
// Messages that no daemon sends, in its name or in a stranger's.
#include <random>

#include <gmock/gmock.h>

#include "tests/adapters/linux/bus/bluez_bus_test.h"
#include "tests/adapters/linux/bus/stranger.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Fill = std::function<void(sd_bus_message*)>;

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kObjects = "org.freedesktop.DBus.ObjectManager";

class BluezHostile : public BluezBusTest {
 protected:
  // A change of our transmitter's ManufacturerData to whatever `fill` appends.
  void changeData(const Fill& fill) {
    bluez.signal(bluez.pathOf(kShow), kProperties, "PropertiesChanged",
                 [&](sd_bus_message* message) {
                   sd_bus_message_append(message, "s", "org.bluez.Device1");
                   sd_bus_message_open_container(message, 'a', "{sv}");
                   sd_bus_message_open_container(message, 'e', "sv");
                   sd_bus_message_append(message, "s", "ManufacturerData");
                   fill(message);
                   sd_bus_message_close_container(message);
                   sd_bus_message_close_container(message);
                   sd_bus_message_append(message, "as", 0);
                 });
  }
  // What is well formed is still heard, and was all that was.
  void expectOnlyAPacketIsHeard() {
    bluez.advertise(kShow, rest(9));
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_THAT(listener.packets, ElementsAre(packet(9)));
  }
  std::uint64_t malformed() const { return central->diagnostics().signalCounts.malformed; }
};

TEST_F(BluezHostile, DataOfAnotherTypeIsMalformed) {
  scan();
  const Fill kFills[] = {
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "s", "text"); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "ay", 2, 1, 2); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "a{sv}", 1, "0xC909", "ay", 1, 1); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "a{qs}", 1, 0xC909, "text"); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "a{qv}", 1, 0xC909, "s", "text"); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "a{qv}", 1, 0xC909, "ai", 2, 1, 2); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "v", "v", "a{qv}", 0); },
  };
  for (const Fill& fill : kFills) changeData(fill);
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(malformed(), std::size(kFills));
}

TEST_F(BluezHostile, DataLongerThanAnAdvertisementIsMalformed) {
  scan();
  bluez.advertise(kShow, Bytes(kLongestCompanyData - 2, 1));
  bluez.advertise(kShow, Bytes(kLongestCompanyData - 1, 1));
  bluez.advertise(kShow, Bytes(100'000, 1));
  ASSERT_TRUE(waitFor([&] { return malformed() == 2; }));
  ASSERT_EQ(listener.packets.size(), 1U);
  EXPECT_EQ(listener.packets.front().size(), kLongestCompanyData);
}

TEST_F(BluezHostile, NoDataAtAllIsAPacketOfTwoBytes) {
  scan();
  bluez.advertise(kShow, {});
  ASSERT_TRUE(waitForPackets(1));
  EXPECT_THAT(listener.packets.front(), ElementsAre(0x09, 0xC9));
}

TEST_F(BluezHostile, SignalsOfAnotherShapeAreMalformed) {
  scan();
  const auto device = [&](const Fill& fill) {
    bluez.signal(bluez.pathOf(kShow), kProperties, "PropertiesChanged", fill);
  };
  const auto added = [&](const Fill& fill) {
    bluez.signal("/", kObjects, "InterfacesAdded", fill);
  };
  device([](sd_bus_message* m) { sd_bus_message_append(m, "s", "org.bluez.Device1"); });
  device([](sd_bus_message* m) { sd_bus_message_append(m, "ss", "org.bluez.Device1", "more"); });
  device([](sd_bus_message* m) {
    sd_bus_message_append(m, "sa{ss}as", "org.bluez.Device1", 1, "ManufacturerData", "x", 0);
  });
  bluez.signal("/org/bluez/hci0", kProperties, "PropertiesChanged", [](sd_bus_message* m) {
    sd_bus_message_append(m, "sa{sv}as", "org.bluez.Adapter1", 1, "Powered", "s", "no", 0);
  });
  added([](sd_bus_message*) {});
  bluez.signal("/", kObjects, "InterfacesRemoved", [](sd_bus_message*) {});
  added([](sd_bus_message* m) { sd_bus_message_append(m, "s", "/org/bluez/hci0/dev_1"); });
  added([](sd_bus_message* m) { sd_bus_message_append(m, "oa{sv}", "/org/bluez/hci0/dev_1", 0); });
  added([](sd_bus_message* m) {
    sd_bus_message_append(m, "oa{sa{sv}}", "/org/bluez/hci7", 1, "org.bluez.Adapter1", 1, "Powered",
                          "as", 0);
  });
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(malformed(), 8U);
  EXPECT_THAT(listener.states, ElementsAre(CentralState::unknown, CentralState::poweredOn));
}

TEST_F(BluezHostile, AdaptersWithoutEndAreNotBelieved) {
  scan();
  for (int number = 0; number < 200; ++number) {
    bluez.signal("/", kObjects, "InterfacesAdded", [&](sd_bus_message* message) {
      const std::string path = "/org/bluez/hcix" + std::to_string(number);
      sd_bus_message_append(message, "oa{sa{sv}}", path.c_str(), 1, "org.bluez.Adapter1", 0);
    });
  }
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(daemon.adapters().size(), 16U);
}

TEST_F(BluezHostile, AStrangerIsNotHeardThoughItWritesToUs) {
  scan(true);
  const std::string target = bluez.monitorClient();
  Stranger stranger(loop, bus.address());
  const auto send = [&](const std::string& path, const char* interface, const char* member,
                        const Fill& fill) {
    stranger.signal(target, path, interface, member, fill);
  };
  const std::string path = bluez.pathOf(kShow);
  send(path, kProperties, "PropertiesChanged", [](sd_bus_message* m) {
    sd_bus_message_append(m, "sa{sv}as", "org.bluez.Device1", 1, "ManufacturerData", "a{qv}", 1,
                          0xC909, "ay", 2, 1, 2, 0);
  });
  send("/", kObjects, "InterfacesAdded", [&](sd_bus_message* m) {
    sd_bus_message_append(m, "oa{sa{sv}}", path.c_str(), 1, "org.bluez.Device1", 1,
                          "ManufacturerData", "a{qv}", 1, 0xC909, "ay", 2, 1, 2);
  });
  send("/", kObjects, "InterfacesRemoved", [](sd_bus_message* m) {
    sd_bus_message_append(m, "oas", "/org/bluez/hci0", 1, "org.bluez.Adapter1");
  });
  send("/org/bluez/hci0", kProperties, "PropertiesChanged", [](sd_bus_message* m) {
    sd_bus_message_append(m, "sa{sv}as", "org.bluez.Adapter1", 1, "Powered", "b", 0, 0);
  });
  send("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
       [](sd_bus_message* m) { sd_bus_message_append(m, "sss", "org.bluez", ":1.1", ""); });
  send("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
       [](sd_bus_message* m) { sd_bus_message_append(m, "b", 0); });
  ASSERT_TRUE(stranger.isThrough(target));
  EXPECT_EQ(central->diagnostics().restarts, 0U);
  EXPECT_FALSE(stranger.call(target, "/org/halvora/monitors/show",
                             "org.bluez.AdvertisementMonitor1", "Release"));
  EXPECT_THAT(listener.packets, IsEmpty());
  EXPECT_THAT(listener.states, ElementsAre(CentralState::unknown, CentralState::poweredOn));
  expectOnlyAPacketIsHeard();
}

TEST_F(BluezHostile, ALongPathIsNoAdapterAndNoDevice) {
  scan(true);
  const std::string path = "/org/bluez/" + std::string(60'000, 'a');
  bluez.signal("/", kObjects, "InterfacesAdded", [&](sd_bus_message* m) {
    sd_bus_message_append(m, "oa{sa{sv}}", path.c_str(), 1, "org.bluez.Adapter1", 1, "Powered", "b",
                          1);
  });
  const std::string device = "/org/bluez/hci0/" + std::string(60'000, 'a');
  const auto tell = [&](const std::string& from, const char* name) {
    bluez.signal(from, kProperties, "PropertiesChanged", [&](sd_bus_message* m) {
      sd_bus_message_append(m, "sa{sv}as", name, 1, "ManufacturerData", "a{qv}", 1, 0xC909, "ay", 2,
                            1, 2, 0);
    });
  };
  tell(device, "org.bluez.Device1");
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(daemon.adapters().size(), 1U);
  EXPECT_EQ(daemon.keptDevices(), 1U);
}

TEST_F(BluezHostile, SignalsWithoutEndAreReadToTheirEndOnce) {
  scan();
  // So many companies, so many properties, so many interfaces, and nothing of ours among them.
  changeData([](sd_bus_message* m) {
    sd_bus_message_open_container(m, 'v', "a{qv}");
    sd_bus_message_open_container(m, 'a', "{qv}");
    for (int company = 0; company < 50'000; ++company) {
      sd_bus_message_append(m, "{qv}", company, "ay", 1, 7);
    }
    sd_bus_message_close_container(m);
    sd_bus_message_close_container(m);
  });
  bluez.signal(bluez.pathOf(kShow), kProperties, "PropertiesChanged", [](sd_bus_message* m) {
    sd_bus_message_append(m, "s", "org.bluez.Device1");
    sd_bus_message_open_container(m, 'a', "{sv}");
    for (int property = 0; property < 50'000; ++property) {
      sd_bus_message_append(m, "{sv}", property % 2 == 0 ? "" : "RSSI", "n", 1);
    }
    sd_bus_message_close_container(m);
    sd_bus_message_append(m, "as", 0);
  });
  bluez.signal("/", kObjects, "InterfacesAdded", [](sd_bus_message* m) {
    sd_bus_message_append(m, "o", "/org/bluez/hci0/dev_1");
    sd_bus_message_open_container(m, 'a', "{sa{sv}}");
    for (int interface = 0; interface < 50'000; ++interface) {
      sd_bus_message_append(m, "{sa{sv}}", "", 0);
    }
    sd_bus_message_close_container(m);
  });
  bluez.signal("/", kObjects, "InterfacesRemoved", [](sd_bus_message* m) {
    sd_bus_message_append(m, "o", "/org/bluez/hci0");
    sd_bus_message_open_container(m, 'a', "s");
    for (int interface = 0; interface < 50'000; ++interface) sd_bus_message_append(m, "s", "");
    sd_bus_message_close_container(m);
  });
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(central->diagnostics().signalCounts.foreign, 3U);
  EXPECT_EQ(malformed(), 0U);
}

TEST_F(BluezHostile, ValuesInValuesInValuesAreMalformed) {
  scan();
  changeData([](sd_bus_message* m) {
    constexpr int kDepth = 50;
    for (int level = 0; level < kDepth; ++level) sd_bus_message_open_container(m, 'v', "v");
    sd_bus_message_append(m, "v", "b", 1);
    for (int level = 0; level < kDepth; ++level) sd_bus_message_close_container(m);
  });
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(malformed(), 1U);
}

// An answer to the first question, with what `fill` appends.
FakeBluez::Answer answerOf(const Fill& fill) {
  return [fill](sd_bus_message* call) {
    sd_bus_message* reply = nullptr;
    if (sd_bus_message_new_method_return(call, &reply) < 0) return -1;
    const BusMessage owned(reply);
    fill(reply);
    return sd_bus_send(nullptr, reply, nullptr);
  };
}

TEST_F(BluezHostile, AnAnswerOfAnotherShapeHasNoAdapters) {
  const Fill kFills[] = {
      [](sd_bus_message*) {},
      [](sd_bus_message* m) { sd_bus_message_append(m, "s", "text"); },
      [](sd_bus_message* m) { sd_bus_message_append(m, "a{sv}", 0); },
      [](sd_bus_message* m) {
        sd_bus_message_append(m, "a{oa{sa{sv}}}", 1, "/org/bluez/hci0", 1, "org.bluez.Adapter1", 1,
                              "Powered", "v", "v", "b", 1);
      },
  };
  for (const Fill& fill : kFills) {
    bluez.answers["GetManagedObjects"] = answerOf(fill);
    bluez.appear();
    makeCentral();
    ASSERT_TRUE(waitForState(CentralState::unsupported));
    EXPECT_TRUE(daemon.adapters().empty());
    EXPECT_EQ(daemon.reach(), BluezReach::there);
    TearDown();
    listener.states.clear();
    bluez.die();
  }
  EXPECT_EQ(daemon.signalCounts().malformed, std::size(kFills));
}

TEST_F(BluezHostile, OfAnAnswerThatEndsHalfWayWhatCameBeforeCounts) {
  bluez.answers["GetManagedObjects"] = answerOf([](sd_bus_message* m) {
    sd_bus_message_append(m, "a{oa{sa{sv}}}", 2, "/org/bluez/hci0", 1, "org.bluez.Adapter1", 1,
                          "Powered", "b", 1, "/org/bluez/hci1", 1, "org.bluez.Adapter1", 1,
                          "Powered", "s", "yes");
  });
  bluez.addAdapter("hci0", true);
  bluez.appear();
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForScan());
  expectOnlyAPacketIsHeard();
  EXPECT_EQ(malformed(), 1U);
  EXPECT_EQ(daemon.adapters().size(), 1U);
}

TEST_F(BluezHostile, AnAnswerWithoutEndHasSixteenAdaptersAtMost) {
  bluez.answers["GetManagedObjects"] = answerOf([](sd_bus_message* m) {
    sd_bus_message_open_container(m, 'a', "{oa{sa{sv}}}");
    for (int object = 0; object < 50'000; ++object) {
      const std::string path = "/org/bluez/hci" + std::to_string(object);
      sd_bus_message_append(m, "{oa{sa{sv}}}", path.c_str(), 1, "org.bluez.Adapter1", 0);
    }
    sd_bus_message_close_container(m);
  });
  bluez.appear();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::poweredOff));
  EXPECT_EQ(daemon.adapters().size(), 16U);
}

TEST_F(BluezHostile, AnErrorsTextIsKeptInPart) {
  bluez.answers["GetManagedObjects"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_errorf(call, "org.bluez.Error.Failed", "%s",
                                      std::string(1'000'000, 'x').c_str());
  };
  bluez.appear();
  makeCentral();
  ASSERT_TRUE(waitFor([&] { return central->diagnostics().errors.count > 0; }));
  EXPECT_LT(central->diagnostics().errors.last.size(), 1000U);
}

// Appends one value of a random type, at most so deep.
void appendAnything(sd_bus_message* message, std::mt19937& random, int depth) {
  switch (random() % (depth > 0 ? 7 : 4)) {
    case 0:
      sd_bus_message_append(message, "v", "u", random());
      break;
    case 1:
      sd_bus_message_append(message, "v", "s", "ManufacturerData");
      break;
    case 2:
      sd_bus_message_append(message, "v", "ay", 3, 1, 2, 3);
      break;
    case 3:
      sd_bus_message_append(message, "v", "(qay)", random() % 0xFFFF, 1, 7);
      break;
    case 4:
      sd_bus_message_open_container(message, 'v', "v");
      appendAnything(message, random, depth - 1);
      sd_bus_message_close_container(message);
      break;
    case 5:
    case 6: {
      sd_bus_message_open_container(message, 'v', "a{qv}");
      sd_bus_message_open_container(message, 'a', "{qv}");
      for (unsigned entries = random() % 4; entries > 0; --entries) {
        sd_bus_message_open_container(message, 'e', "qv");
        // Never bytes, so that nothing well formed of ours is among them.
        sd_bus_message_append(message, "q", entries % 2 == 0 ? 0xC909 : 0x004C);
        sd_bus_message_open_container(message, 'v', "v");
        appendAnything(message, random, depth - 1);
        sd_bus_message_close_container(message);
        sd_bus_message_close_container(message);
      }
      sd_bus_message_close_container(message);
      sd_bus_message_close_container(message);
      break;
    }
    default:
      break;
  }
}

TEST_F(BluezHostile, ValuesOfAnyTypeDoNoHarm) {
  scan();
  std::mt19937 random(20);
  for (int round = 0; round < 1000; ++round) {
    changeData([&](sd_bus_message* message) { appendAnything(message, random, 5); });
  }
  expectOnlyAPacketIsHeard();
  const BluezSignalCounts counts = central->diagnostics().signalCounts;
  EXPECT_EQ(counts.malformed + counts.foreign, 1000U);
  EXPECT_GT(counts.malformed, 500U);
}

}  // namespace
}  // namespace halvora
