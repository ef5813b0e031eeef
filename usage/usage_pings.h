// SPDX-License-Identifier: Apache-2.0
// The three usage counters: opened applications at every activation, devices and received signals
// at most once a calendar day. Each is one HTTP GET whose reply nobody reads. Owned by the engine;
// main thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "halvora/platform/http.h"
#include "halvora/platform/time.h"
#include "halvora/platform/user_defaults.h"
#include "halvora/platform/wall_clock.h"
#include "halvora/usage.h"

namespace halvora {

class UsagePings {
 public:
  /// `applicationId` is the host's bundle identifier; it must outlive this, like the rest.
  UsagePings(const WallClock& clock, const Calendar& calendar, UserDefaults& defaults,
             HttpClient& http, const std::string& applicationId, UsageEndpoints endpoints);

  /// Counts an activation, then the device.
  void appOpened();
  /// Counts the device, once a day.
  void uniqueDevice();
  /// Counts a received signal, once a day.
  void recievedSignal();

 private:
  using Endpoint = std::string UsageEndpoints::*;

  void send(Endpoint endpoint);
  void sendOnceADay(std::string_view key, Endpoint endpoint);

  const WallClock& clock_;
  const Calendar& calendar_;
  UserDefaults& defaults_;
  HttpClient& http_;
  const std::string& applicationId_;
  /// Null where nothing is sent.
  std::unique_ptr<const UsageEndpoints> endpoints_;
};

/// Whether the date lies on the day of those components, in that calendar.
bool isSameDayAsDate(Date date, const Calendar& withCalendar, const DayComponents& components);

}  // namespace halvora
