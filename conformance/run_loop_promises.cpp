// SPDX-License-Identifier: Apache-2.0
#include "conformance/run_loop_promises.h"

#include <string>
#include <thread>
#include <utility>

namespace halvora::conformance {

namespace {

constexpr Duration kShort = milliseconds(20);
constexpr Duration kLong = milliseconds(100);

void checkOrder(const LoopUnderTest& its, Promises& promises) {
  std::vector<int> order;
  bool isWithin = true;
  bool ranWithin = false;
  its.loop->after(kShort, [&] { order.push_back(3); });
  its.loop->soon([&] {
    ranWithin = isWithin;
    order.push_back(1);
    its.loop->soon([&] { order.push_back(2); });
  });
  isWithin = false;
  its.runFor(kLong);
  promises.expect(!ranWithin, "a task has a turn of its own, and never runs within the call");
  promises.expect(order == std::vector{1, 2, 3}, "what is due earlier runs earlier", listed(order));

  order.clear();
  // Due at one moment, whatever the clock does between the calls: nothing can be due earlier.
  for (int number = 0; number < 8; ++number) {
    its.loop->soon([&order, number] { order.push_back(number); });
  }
  its.runFor(kShort);
  promises.expect(order == std::vector{0, 1, 2, 3, 4, 5, 6, 7},
                  "what is due at the same time runs in the order in which it was scheduled",
                  listed(order));
}

void checkTimes(const LoopUnderTest& its, Promises& promises) {
  RunLoop& loop = *its.loop;
  const Duration begun = loop.now();
  Duration ranAt{-1};
  loop.after(kShort, [&] { ranAt = loop.now(); });
  its.runFor(kLong);
  promises.expect(ranAt >= begun + kShort, "a timer never runs before its time",
                  std::to_string((ranAt - begun).count()) + " µs");
  promises.expect(loop.now() >= begun + kLong, "time goes on while the loop runs");

  int hops = 0;
  const Duration before = loop.now();
  Duration lastHop = before;
  bool isAdvancing = true;
  std::function<void()> hop = [&] {
    isAdvancing = isAdvancing && loop.now() > lastHop;
    lastHop = loop.now();
    if (++hops < 3) loop.after(Duration{0}, [&] { hop(); });
  };
  loop.after(Duration{-5}, [&] { hop(); });
  its.runFor(kLong);
  promises.expect(isAdvancing && hops == 3,
                  "a timer of no or negative delay is due later, so that time always advances");
}

void checkRepeating(const LoopUnderTest& its, Promises& promises) {
  RunLoop& loop = *its.loop;
  static constexpr Duration kInterval = milliseconds(10);
  const Duration begun = loop.now();
  int count = 0;
  bool isEarly = false;
  const TimerId timer = loop.every(kInterval, [&] {
    ++count;
    isEarly = isEarly || loop.now() < begun + count * kInterval;
  });
  its.runFor(kLong);
  loop.cancel(timer);
  const auto most = static_cast<int>((loop.now() - begun) / kInterval);
  promises.expect(!isEarly && count <= most && count > 0,
                  "a repeating timer is due at multiples of its interval and does not drift",
                  std::to_string(count) + " times of " + std::to_string(most));
  const int counted = count;
  its.runFor(kLong);
  promises.expect(count == counted, "a timer that was cancelled does not run");

  int runs = 0;
  TimerId itself = 0;
  itself = loop.every(kInterval, [&] {
    ++runs;
    loop.cancel(itself);
  });
  its.runFor(kLong);
  promises.expect(runs == 1, "a repeating timer may cancel itself", std::to_string(runs));
}

void checkIds(const LoopUnderTest& its, Promises& promises) {
  RunLoop& loop = *its.loop;
  const TimerId first = loop.after(kShort, [] {});
  promises.expect(first != 0, "no timer has the id 0");
  promises.expect(loop.isPending(first), "a timer is pending until it has run");
  its.runFor(kLong);
  promises.expect(!loop.isPending(first), "a timer that has run is pending no longer");
  promises.expect(!loop.isPending(0), "the id 0 names no timer");
  const TimerId second = loop.after(kShort, [] {});
  promises.expect(second != first, "an id is never used twice");
  loop.cancel(first);
  loop.cancel(0);
  promises.expect(loop.isPending(second),
                  "cancelling a timer that has run leaves all others alone");
  loop.cancel(second);
  promises.expect(!loop.isPending(second), "a cancelled timer is pending no longer");
}

void checkThreads(const LoopUnderTest& its, Promises& promises) {
  constexpr int kBlocks = 100;
  struct Heard {
    std::vector<int> order;
    std::thread::id main = std::this_thread::get_id();
    bool isElsewhere = false;
  } heard;
  std::thread other([&its, &heard] {
    for (int number = 0; number < kBlocks; ++number) {
      its.loop->post([&heard, number] {
        heard.isElsewhere = heard.isElsewhere || std::this_thread::get_id() != heard.main;
        heard.order.push_back(number);
      });
    }
  });
  other.join();
  its.runFor(kLong);
  const std::vector<int>& order = heard.order;
  bool isOrdered = order.size() == kBlocks;
  for (std::size_t at = 0; at < order.size(); ++at) {
    isOrdered = isOrdered && order[at] == static_cast<int>(at);
  }
  promises.expect(isOrdered, "blocks of another thread all run, in the order of the calls",
                  listed(order));
  promises.expect(!heard.isElsewhere, "a block of another thread runs on the main thread");
}

}  // namespace

std::vector<BrokenPromise> checkRunLoop(const std::function<LoopUnderTest()>& make) {
  Promises promises("RunLoop");
  checkOrder(make(), promises);
  checkTimes(make(), promises);
  checkRepeating(make(), promises);
  checkIds(make(), promises);
  if (const LoopUnderTest its = make(); its.takesBlocksFromThreads) checkThreads(its, promises);
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
