// SPDX-License-Identifier: Apache-2.0
#include "usage/usage_pings.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace halvora {

namespace {

constexpr std::string_view kDeviceKey = "LastAppOpenCallDate";
constexpr std::string_view kSignalKey = "LastReceivedSignalCallDate";

// The characters that may stand in a URL as they are.
bool isUrlCharacter(char character) {
  constexpr std::string_view kMarks = "-._~:/?#[]@!$&'()*+,;=%";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || kMarks.find(character) != std::string_view::npos;
}

// Defaults filled by hand or by a scenario hold a date as its seconds.
std::optional<Date> storedDate(const UserDefaults& defaults, std::string_view key) {
  const DefaultsValue* value = defaults.find(key);
  if (value == nullptr) return std::nullopt;
  double seconds = 0;
  if (const auto* date = std::get_if<Date>(&value->storage)) {
    seconds = date->secondsSince1970;
  } else if (const auto* real = std::get_if<double>(&value->storage)) {
    seconds = *real;
  } else if (const auto* whole = std::get_if<std::int64_t>(&value->storage)) {
    seconds = static_cast<double>(*whole);
  } else {
    return std::nullopt;
  }
  // Some thirty thousand years either way; what lies beyond is no date that a calendar could take.
  constexpr double kFarthest = 1e12;
  return std::abs(seconds) <= kFarthest ? std::optional(Date{seconds}) : std::nullopt;
}

bool isNone(const UsageEndpoints& endpoints) {
  return endpoints.appOpened.empty() && endpoints.device.empty() &&
         endpoints.receivedSignal.empty();
}

}  // namespace

UsagePings::UsagePings(const WallClock& clock, const Calendar& calendar, UserDefaults& defaults,
                       HttpClient& http, const std::string& applicationId, UsageEndpoints endpoints)
    : clock_(clock),
      calendar_(calendar),
      defaults_(defaults),
      http_(http),
      applicationId_(applicationId),
      endpoints_(isNone(endpoints) ? nullptr
                                   : std::make_unique<const UsageEndpoints>(std::move(endpoints))) {
}

void UsagePings::appOpened() {
  send(&UsageEndpoints::appOpened);
  uniqueDevice();
}

void UsagePings::uniqueDevice() { sendOnceADay(kDeviceKey, &UsageEndpoints::device); }

void UsagePings::recievedSignal() { sendOnceADay(kSignalKey, &UsageEndpoints::receivedSignal); }

void UsagePings::send(Endpoint which) {
  if (!endpoints_) return;
  const std::string& endpoint = (*endpoints_).*which;
  if (endpoint.empty()) return;
  const bool hasSlash = endpoint.back() == '/';
  const std::string url = endpoint + (hasSlash ? "?appID=" : "/?appID=") + applicationId_;
  if (std::all_of(url.begin(), url.end(), isUrlCharacter)) http_.get(url);
}

// The day counts as done even where nothing could be sent: a counter that fails is not worth a
// retry a second.
void UsagePings::sendOnceADay(std::string_view key, Endpoint endpoint) {
  const Date now = clock_.now();
  const DayComponents today = calendar_.componentsOf(now);
  const std::optional<Date> last = storedDate(defaults_, key);
  if (last && isSameDayAsDate(*last, calendar_, today)) return;
  send(endpoint);
  defaults_.set(key, now);
  defaults_.synchronize();
}

bool isSameDayAsDate(Date date, const Calendar& withCalendar, const DayComponents& components) {
  return withCalendar.componentsOf(date) == components;
}

}  // namespace halvora
