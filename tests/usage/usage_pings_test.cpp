// SPDX-License-Identifier: Apache-2.0
#include "usage/usage_pings.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"

namespace halvora {
namespace {

// Midnights, universal time.
constexpr double kFirstOf2026 = 1767225600;
constexpr double kDay = 86400;
constexpr double kMinute = 60;

const char* const kDeviceKey = "LastAppOpenCallDate";
const char* const kSignalKey = "LastReceivedSignalCallDate";

using Urls = std::vector<std::string>;

class UsagePingsTest : public testing::Test {
 protected:
  UsagePings pings() { return {clock_, calendar_, defaults_, http_, applicationId_, endpoints_}; }

  void goTo(double secondsSince1970) { clock_.begin = Date{secondsSince1970}; }

  Date stored(const char* key) const {
    const DefaultsValue* value = defaults_.find(key);
    const Date* date = value == nullptr ? nullptr : std::get_if<Date>(&value->storage);
    return date == nullptr ? Date{-1} : *date;
  }

  std::string applicationId_ = "com.example.host";
  VirtualRunLoop loop_;
  VirtualWallClock clock_{loop_};
  VirtualCalendar calendar_;
  VirtualDefaults defaults_;
  VirtualHttp http_;
  UsageEndpoints endpoints_{"https://opens.example", "https://devices.example",
                            "https://signals.example"};
};

TEST_F(UsagePingsTest, AnOpenedApplicationCountsItselfAndThenTheDevice) {
  pings().appOpened();
  EXPECT_EQ(http_.log.entries, (Urls{"https://opens.example/?appID=com.example.host",
                                     "https://devices.example/?appID=com.example.host"}));
}

TEST_F(UsagePingsTest, AnEndpointMayEndWithItsSlash) {
  endpoints_.appOpened = "https://opens.example/";
  pings().appOpened();
  EXPECT_EQ(http_.log.entries.front(), "https://opens.example/?appID=com.example.host");
}

TEST_F(UsagePingsTest, AStoredDateThatNoCalendarTakesIsNone) {
  goTo(kFirstOf2026);
  for (const double seconds : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    http_.log.entries.clear();
    defaults_.setFromOutside(kSignalKey, DefaultsValue(seconds));
    pings().recievedSignal();
    EXPECT_EQ(http_.log.entries.size(), 1U) << seconds;
    EXPECT_EQ(stored(kSignalKey), Date{kFirstOf2026});
  }
}

TEST_F(UsagePingsTest, TwoActivationsOnOneDayAreTwoOpensAndOneDevice) {
  goTo(kFirstOf2026 + 9 * 60 * kMinute);
  pings().appOpened();
  goTo(kFirstOf2026 + 20 * 60 * kMinute);
  pings().appOpened();
  EXPECT_EQ(http_.log.entries, (Urls{"https://opens.example/?appID=com.example.host",
                                     "https://devices.example/?appID=com.example.host",
                                     "https://opens.example/?appID=com.example.host"}));
}

TEST_F(UsagePingsTest, AReceivedSignalCountsOnceADay) {
  UsagePings usage = pings();
  for (int second = 0; second < 10; ++second) {
    usage.recievedSignal();
    loop_.runFor(milliseconds(1000));
  }
  EXPECT_EQ(http_.log.entries, Urls{"https://signals.example/?appID=com.example.host"});
}

TEST_F(UsagePingsTest, Yesterday2359AndNow0001AreTwoDays) {
  goTo(kFirstOf2026 - kMinute);
  pings().recievedSignal();
  goTo(kFirstOf2026 + kMinute);
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries.size(), 2U);
}

TEST_F(UsagePingsTest, TheFirstAndTheLastSecondOfADayAreOneDay) {
  goTo(kFirstOf2026);
  pings().recievedSignal();
  goTo(kFirstOf2026 + kDay - 1);
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries.size(), 1U);
}

TEST_F(UsagePingsTest, ADateInAnotherYearButOnTheSameDayOfItIsSent) {
  goTo(kFirstOf2026 + 365 * kDay);
  defaults_.setFromOutside(kDeviceKey, Date{kFirstOf2026});
  pings().uniqueDevice();
  EXPECT_EQ(http_.log.entries.size(), 1U);
}

TEST_F(UsagePingsTest, ADateInAnotherMonthButOnTheSameDayOfItIsSent) {
  goTo(kFirstOf2026 + 31 * kDay);
  defaults_.setFromOutside(kDeviceKey, Date{kFirstOf2026});
  pings().uniqueDevice();
  EXPECT_EQ(http_.log.entries.size(), 1U);
}

TEST_F(UsagePingsTest, AStoredDateInTheFutureIsAnotherDayToo) {
  goTo(kFirstOf2026);
  defaults_.setFromOutside(kDeviceKey, Date{kFirstOf2026 + kDay});
  pings().uniqueDevice();
  EXPECT_EQ(http_.log.entries.size(), 1U);
  EXPECT_EQ(stored(kDeviceKey), Date{kFirstOf2026});
}

TEST_F(UsagePingsTest, TheDayIsTheOneOfTheUsersTimeZone) {
  calendar_.offsetSeconds = 2 * 60 * kMinute;
  goTo(kFirstOf2026 - 3 * 60 * kMinute);
  pings().recievedSignal();
  // 23:00 and 01:00 in universal time are 01:00 and 03:00 of one local day; the first call was at
  // 23:00 the day before.
  goTo(kFirstOf2026 - 60 * kMinute);
  pings().recievedSignal();
  goTo(kFirstOf2026 + 60 * kMinute);
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries.size(), 2U);
}

TEST_F(UsagePingsTest, TheTwoDailyCountersAreIndependent) {
  pings().uniqueDevice();
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries, (Urls{"https://devices.example/?appID=com.example.host",
                                     "https://signals.example/?appID=com.example.host"}));
}

TEST_F(UsagePingsTest, NowIsStoredUnderTheCountersKeyAndSynchronised) {
  goTo(kFirstOf2026 + 5);
  pings().uniqueDevice();
  EXPECT_EQ(stored(kDeviceKey), Date{kFirstOf2026 + 5});
  EXPECT_EQ(defaults_.find(kSignalKey), nullptr);
  EXPECT_EQ(defaults_.synchronisations, 1U);
  goTo(kFirstOf2026 + 6);
  pings().recievedSignal();
  EXPECT_EQ(stored(kSignalKey), Date{kFirstOf2026 + 6});
  EXPECT_EQ(stored(kDeviceKey), Date{kFirstOf2026 + 5});
  EXPECT_EQ(defaults_.synchronisations, 2U);
}

TEST_F(UsagePingsTest, OnTheSameDayNothingIsWritten) {
  pings().recievedSignal();
  const std::uint64_t changes = defaults_.changes;
  loop_.runFor(milliseconds(1000));
  pings().recievedSignal();
  EXPECT_EQ(defaults_.changes, changes);
  EXPECT_EQ(defaults_.log.entries.size(), 1U);
}

TEST_F(UsagePingsTest, AnInvalidIdentifierSendsNothingButStillStoresTheDay) {
  goTo(kFirstOf2026);
  applicationId_ = "com example host";
  UsagePings usage = pings();
  usage.appOpened();
  usage.recievedSignal();
  EXPECT_EQ(http_.log.entries, Urls{});
  EXPECT_EQ(stored(kDeviceKey), Date{kFirstOf2026});
  EXPECT_EQ(stored(kSignalKey), Date{kFirstOf2026});
}

TEST_F(UsagePingsTest, ADayThatCouldNotBeSentIsNotSentLater) {
  applicationId_ = "com example host";
  pings().recievedSignal();
  applicationId_ = "com.example.host";
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries, Urls{});
}

TEST_F(UsagePingsTest, IdentifiersWithCharactersThatNoUrlHasAreInvalid) {
  for (const char* identifier : {"a\"b", "a<b", "a\nb", "\xC3\xA4", "a\\b", "a{b}", "a|b", "a^b"}) {
    applicationId_ = identifier;
    pings().appOpened();
    EXPECT_EQ(http_.log.entries, Urls{}) << identifier;
  }
}

TEST_F(UsagePingsTest, EveryCharacterThatAUrlMayHaveIsSent) {
  applicationId_ = "azAZ09-._~:/?#[]@!$&'()*+,;=%";
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries, Urls{"https://signals.example/?appID=" + applicationId_});
}

TEST_F(UsagePingsTest, OneEndpointIsEnough) {
  const UsageEndpoints all = endpoints_;
  for (std::string UsageEndpoints::*const endpoint :
       {&UsageEndpoints::appOpened, &UsageEndpoints::device, &UsageEndpoints::receivedSignal}) {
    endpoints_ = {};
    endpoints_.*endpoint = all.*endpoint;
    defaults_.remove(kDeviceKey);
    defaults_.remove(kSignalKey);
    UsagePings usage = pings();
    usage.appOpened();
    usage.recievedSignal();
    EXPECT_EQ(http_.log.drain(), Urls{all.*endpoint + "/?appID=com.example.host"});
  }
}

TEST_F(UsagePingsTest, TheFarthestDateIsStillOne) {
  for (const double seconds : {1e12, -1e12}) {
    goTo(seconds);
    defaults_.setFromOutside(kSignalKey, DefaultsValue(seconds));
    pings().recievedSignal();
    EXPECT_EQ(http_.log.drain(), Urls{}) << "it was today";
    const double beyond = seconds < 0 ? seconds - 1 : seconds + 1;
    goTo(beyond);
    defaults_.setFromOutside(kSignalKey, DefaultsValue(beyond));
    pings().recievedSignal();
    EXPECT_EQ(http_.log.drain().size(), 1U) << "no calendar takes it";
  }
}

TEST_F(UsagePingsTest, TheIdentifierIsInsertedAsItIs) {
  applicationId_ = "a&b=c/d?e#f+g";
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries, Urls{"https://signals.example/?appID=a&b=c/d?e#f+g"});
}

TEST_F(UsagePingsTest, AnEmptyIdentifierIsSentAsEmpty) {
  applicationId_ = "";
  pings().recievedSignal();
  EXPECT_EQ(http_.log.entries, Urls{"https://signals.example/?appID="});
}

TEST_F(UsagePingsTest, AnEmptyEndpointIsNotSentButItsDayIsStored) {
  goTo(kFirstOf2026);
  endpoints_ = {};
  UsagePings usage = pings();
  usage.appOpened();
  usage.recievedSignal();
  EXPECT_EQ(http_.log.entries, Urls{});
  EXPECT_EQ(stored(kDeviceKey), Date{kFirstOf2026});
  EXPECT_EQ(stored(kSignalKey), Date{kFirstOf2026});
}

TEST_F(UsagePingsTest, AnEmptyOpenEndpointDoesNotKeepTheDeviceFromBeingCounted) {
  endpoints_.appOpened.clear();
  pings().appOpened();
  EXPECT_EQ(http_.log.entries, Urls{"https://devices.example/?appID=com.example.host"});
}

TEST_F(UsagePingsTest, ADateKeptAsItsSecondsCounts) {
  goTo(kFirstOf2026 + 60);
  for (const DefaultsValue& kept :
       {DefaultsValue(std::int64_t{1767225600}), DefaultsValue(1767225600.5)}) {
    defaults_.setFromOutside(kDeviceKey, kept);
    pings().uniqueDevice();
    EXPECT_EQ(http_.log.entries, Urls{});
  }
}

TEST_F(UsagePingsTest, WhatIsNoDateCountsAsNone) {
  for (const DefaultsValue& kept :
       {DefaultsValue(std::string("2026-01-01")), DefaultsValue(true),
        DefaultsValue(DefaultsArray{}), DefaultsValue(DefaultsDictionary{})}) {
    defaults_.setFromOutside(kDeviceKey, kept);
    pings().uniqueDevice();
    EXPECT_EQ(http_.log.drain().size(), 1U);
  }
}

TEST(SameDay, ComparesYearMonthAndDay) {
  const VirtualCalendar calendar;
  const Date date{kFirstOf2026 + 30};
  EXPECT_TRUE(isSameDayAsDate(date, calendar, {2026, 1, 1}));
  EXPECT_FALSE(isSameDayAsDate(date, calendar, {2025, 1, 1}));
  EXPECT_FALSE(isSameDayAsDate(date, calendar, {2026, 2, 1}));
  EXPECT_FALSE(isSameDayAsDate(date, calendar, {2026, 1, 2}));
}

}  // namespace
}  // namespace halvora
