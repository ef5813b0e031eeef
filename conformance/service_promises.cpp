// SPDX-License-Identifier: Apache-2.0
#include "conformance/service_promises.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace halvora::conformance {

namespace {

std::string listed(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "nothing" : text;
}

std::string said(const std::optional<BatteryState>& state) {
  if (!state) return "no battery";
  return std::to_string(state->level) + (state->isFed ? ", fed" : ", not fed");
}

/// A client that is asked for things, and what of that has come to the server.
class Asking {
 public:
  Asking(HttpUnderTest& its, Promises& promises) : its_(its), promises_(promises) {}

  void ask(const std::string& path) {
    its_.client->get(its_.server + path);
    expected_.push_back(path);
  }
  /// All that was asked for has come, and has been answered where it ever is.
  void settle() {
    its_.workUntil([this] { return its_.asked().size() >= expected_.size() && its_.open() == 0; });
  }
  /// The same with some that are never answered.
  void settle(int silent) {
    its_.workUntil(
        [&] { return its_.asked().size() >= expected_.size() && its_.open() == silent; });
  }
  /// In which order they come is the network's.
  void expectAll(std::string_view promise) {
    std::vector<std::string> came = its_.asked();
    const std::string found = listed(came);
    std::ranges::sort(came);
    std::ranges::sort(expected_);
    promises_.expect(came == expected_, promise, found);
  }

 private:
  HttpUnderTest& its_;
  Promises& promises_;
  std::vector<std::string> expected_;
};

void checkAsking(HttpUnderTest its, Promises& promises) {
  Asking asking(its, promises);
  asking.ask("/");
  asking.ask("/?appID=4242");
  asking.ask("/device/?appID=com.example.host-1_2");
  asking.settle();
  asking.expectAll("an address is asked for once, with its path and its query as they are");
  asking.ask("/?appID=4242");
  asking.settle();
  asking.expectAll("an address that was asked for before is asked for again");
}

void checkAnswers(HttpUnderTest its, Promises& promises) {
  Asking asking(its, promises);
  asking.ask("/moved");
  asking.ask("/failing");
  asking.settle();
  // Whoever goes where it is sent, or tries again, does so before this is through.
  asking.ask("/last");
  asking.settle();
  asking.expectAll("whatever is answered, nothing else is asked for and nothing is tried again");
}

void checkWhatIsNoAddress(HttpUnderTest its, Promises& promises) {
  for (const char* text : {"", "nowhere", "http://", "https:///?appID=1", "http://a b/",
                           "https://[::", "file:///etc/hosts"}) {
    its.client->get(text);
  }
  Asking asking(its, promises);
  asking.ask("/after");
  asking.settle();
  asking.expectAll("what is no address is dropped, and what follows it is asked for");
}

void checkGivingUp(HttpUnderTest its, Promises& promises) {
  Asking asking(its, promises);
  asking.ask("/silent");
  asking.settle(1);
  asking.ask("/beside");
  asking.settle(1);
  asking.expectAll("a request that nobody answers holds up no other");
  its.client->cancelAll();
  asking.settle();
  promises.expect(its.open() == 0, "giving up ends what is under way",
                  std::to_string(its.open()) + " connections open");
  its.client->cancelAll();
  asking.ask("/later");
  asking.settle();
  asking.expectAll("after giving up others may be asked for, and what was given up is not");
}

void checkGoing(HttpUnderTest its, Promises& promises) {
  Asking asking(its, promises);
  asking.ask("/silent");
  asking.settle(1);
  its.client.reset();
  asking.settle();
  promises.expect(its.open() == 0, "a client that goes ends what is under way",
                  std::to_string(its.open()) + " connections open");
}

}  // namespace

std::vector<BrokenPromise> checkWallClock(const std::function<WallClockUnderTest()>& make) {
  Promises promises("WallClock");
  const WallClockUnderTest its = make();
  const auto now = [&its] { return its.clock->now().secondsSince1970; };
  const double before = its.secondsNow();
  const double first = now();
  const double after = its.secondsNow();
  promises.expect(std::isfinite(first), "a date is a number", std::to_string(first));
  // Either clock may leave fractions out.
  promises.expect(first >= before - 1 && first <= after + 1,
                  "dates are seconds since 1970 in universal time, whatever zone the phone is in",
                  std::to_string(first - before) + " s beside the other clock");
  constexpr Duration kSpan = milliseconds(1'100);
  its.pass(kSpan);
  const double later = now();
  promises.expect(later > first, "the date goes on while time passes",
                  std::to_string(later - first) + " s in " + std::to_string(toSeconds(kSpan)));
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkBattery(const std::function<BatteryUnderTest()>& make) {
  Promises promises("Battery");
  const BatteryUnderTest its = make();
  constexpr std::array<BatteryState, 4> kStates{
      {{1, true}, {0.5, false}, {0.19, false}, {0, true}}};
  for (const BatteryState& state : kStates) {
    its.become(state);
    const std::optional<BatteryState> found = its.battery->state();
    // Systems count in percent.
    promises.expect(found && std::abs(found->level - state.level) <= 0.01,
                    "the level is the share of a full battery, 0 to 1",
                    said(found) + " of " + said(state));
    promises.expect(found && found->isFed == state.isFed,
                    "a battery is fed while something fills it or holds it full",
                    said(found) + " of " + said(state));
    promises.expect(its.battery->state() == found, "asking changes nothing");
  }
  its.become(std::nullopt);
  promises.expect(!its.battery->state(), "where there is no battery there is no state",
                  said(its.battery->state()));
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkHttp(const std::function<HttpUnderTest()>& make) {
  Promises promises("HttpClient");
  checkAsking(make(), promises);
  checkAnswers(make(), promises);
  checkWhatIsNoAddress(make(), promises);
  checkGivingUp(make(), promises);
  checkGoing(make(), promises);
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
