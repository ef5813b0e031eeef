// SPDX-License-Identifier: Apache-2.0
#include "conformance/device_promises.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <future>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace halvora::conformance {

namespace {

constexpr std::array<std::uint8_t, 26> kPacket{0x09, 0xC9, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11,
                                               12,   13,   0, 0, 0, 0, 0, 0, 0, 0, 0, 1,  7};

/// Writes down what a manager says, and may give the manager up while it is told.
struct Listener final : CentralManagerDelegate {
  void centralManagerDidUpdateState(CentralState state) override {
    states.push_back(state);
    if (goesWhenTold) manager.reset();
  }
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    ++packets;
    isWhole = isWhole && advertisement.manufacturerData &&
              std::vector<std::uint8_t>(advertisement.manufacturerData->begin(),
                                        advertisement.manufacturerData->end()) ==
                  std::vector<std::uint8_t>(kPacket.begin(), kPacket.end());
    if (goesWhenHeard) manager.reset();
  }

  std::unique_ptr<CentralManager> manager;
  std::vector<CentralState> states;
  int packets = 0;
  bool isWhole = true;
  bool goesWhenTold = false;
  bool goesWhenHeard = false;
};

void checkReports(const RadioUnderTest& its, Promises& promises) {
  Listener listener;
  listener.manager = its.radio->makeManager(listener);
  promises.expect(listener.manager != nullptr, "a manager is never null");
  if (listener.manager == nullptr) return;
  promises.expect(listener.states.empty(),
                  "the first report comes in a turn of its own, not while the manager is made");
  its.settle();
  const auto last = [&] {
    return listener.states.empty() ? CentralState::unknown : listener.states.back();
  };
  promises.expect(last() == CentralState::poweredOn,
                  "a manager reports its state after it was made");
  promises.expect(listener.manager->state() == CentralState::poweredOn,
                  "a manager's state is the one that it reported last");
  its.setPower(false);
  its.settle();
  promises.expect(!listener.states.empty() && last() != CentralState::poweredOn &&
                      listener.manager->state() == last(),
                  "the loss of power is reported");
  Listener fleeting;
  fleeting.goesWhenTold = true;
  fleeting.manager = its.radio->makeManager(fleeting);
  its.settle();
  its.setPower(true);
  its.settle();
  promises.expect(fleeting.states.size() == 1,
                  "a manager that goes while it is told is told nothing more");
}

void checkScanning(const RadioUnderTest& its, Promises& promises) {
  Listener listener;
  listener.manager = its.radio->makeManager(listener);
  if (listener.manager == nullptr) return;
  its.settle();
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets == 0, "nothing is heard before a scan begins");
  listener.manager->scanForPeripherals({.allowDuplicates = true});
  its.settle();
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets == 1, "a packet on the air is heard while a scan goes on",
                  std::to_string(listener.packets));
  promises.expect(listener.isWhole, "a packet is handed over whole, with its company's id");
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets >= 2, "with repeats wished for, the same packet is heard again");
  listener.manager->restartScan({.allowDuplicates = true});
  its.settle();
  const int before = listener.packets;
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets > before, "a scan that was begun anew goes on");
  listener.manager->stopScan();
  its.settle();
  const int stopped = listener.packets;
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets == stopped, "nothing is heard after the scan was stopped");
}

void checkPower(const RadioUnderTest& its, Promises& promises) {
  Listener listener;
  listener.manager = its.radio->makeManager(listener);
  if (listener.manager == nullptr) return;
  its.settle();
  listener.manager->scanForPeripherals({.allowDuplicates = true});
  its.settle();
  its.setPower(false);
  its.settle();
  its.setPower(true);
  its.settle();
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets == 0, "losing power ends a scan, also when power is back");
  listener.manager->scanForPeripherals({.allowDuplicates = true});
  its.settle();
  listener.goesWhenHeard = true;
  its.advertise(kPacket);
  its.advertise(kPacket);
  its.settle();
  promises.expect(listener.packets == 1, "a manager that goes while it hears hears nothing more",
                  std::to_string(listener.packets));
}

/// Whether a task that came last has run, within a time that is enough for any machine.
bool finish(const QueuesUnderTest& its, SerialQueue& queue) {
  constexpr std::chrono::seconds kEnough{30};
  const auto reached = std::make_shared<std::promise<void>>();
  std::future<void> isReached = reached->get_future();
  queue.dispatch([reached] { reached->set_value(); });
  if (its.finish) its.finish();
  // A queue that runs nothing by itself has run by now.
  return isReached.wait_for(its.finish ? std::chrono::seconds(0) : kEnough) ==
         std::future_status::ready;
}

}  // namespace

std::vector<BrokenPromise> checkRadio(const std::function<RadioUnderTest()>& make) {
  Promises promises("BluetoothCentral");
  checkReports(make(), promises);
  checkScanning(make(), promises);
  checkPower(make(), promises);
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkScreen(const std::function<std::unique_ptr<Screen>()>& make) {
  Promises promises("Screen");
  const std::unique_ptr<Screen> screen = make();
  const auto isLevel = [](double level) { return level >= 0 && level <= 1; };
  const double first = screen->brightness();
  promises.expect(isLevel(first), "the level is from 0 to 1", std::to_string(first));
  screen->setBrightness(0.25);
  const bool isSettable = std::abs(screen->brightness() - 0.25) < 0.05;
  promises.expect(isSettable || screen->brightness() == first,
                  "a level that was set is in force, or ignored",
                  std::to_string(screen->brightness()));
  for (const double level : {-1.0, 2.0, std::numeric_limits<double>::infinity()}) {
    screen->setBrightness(level);
    const double wanted = level < 0 ? 0 : 1;
    const double found = screen->brightness();
    promises.expect(isSettable ? std::abs(found - wanted) < 0.05 : found == first,
                    "levels outside of 0 to 1 are clamped", std::to_string(found));
  }
  const Size size = screen->bounds();
  promises.expect(size.width >= 0 && size.height >= 0, "the bounds are no less than nothing");
  promises.expect(screen->currentEDRHeadroom() >= 1, "the headroom is at least 1");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkQueues(const std::function<QueuesUnderTest()>& make) {
  Promises promises("SerialQueues");
  const QueuesUnderTest its = make();
  std::unique_ptr<SerialQueue> queue = its.queues->make("com.example.work");
  promises.expect(queue->label() == "com.example.work", "a queue has its label", queue->label());
  struct Seen {
    std::vector<int> order;
    std::atomic<int> atOnce{0};
    bool wasAlone = true;
  } seen;
  constexpr int kTasks = 50;
  for (int number = 0; number < kTasks; ++number) {
    queue->dispatch([&seen, number] {
      seen.wasAlone = seen.wasAlone && ++seen.atOnce == 1;
      seen.order.push_back(number);
      --seen.atOnce;
    });
  }
  // Without an end nobody may look at what was seen.
  if (!finish(its, *queue)) {
    queue.reset();
    promises.expect(false, "every task runs, in the order in which they came");
    return std::move(promises).broken();
  }
  bool isOrdered = seen.order.size() == kTasks;
  for (std::size_t at = 0; at < seen.order.size(); ++at) {
    isOrdered = isOrdered && seen.order[at] == static_cast<int>(at);
  }
  promises.expect(isOrdered, "every task runs, in the order in which they came");
  promises.expect(seen.wasAlone, "one task runs at a time");
  bool hasRun = false;
  queue->dispatch([] { throw std::runtime_error("of a task"); });
  queue->dispatch([&hasRun] { hasRun = true; });
  finish(its, *queue);
  queue.reset();
  promises.expect(hasRun, "what a task throws ends that task and no other");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkWorkers(const std::function<std::unique_ptr<Workers>()>& make) {
  Promises promises("Workers");
  const std::unique_ptr<Workers> workers = make();
  promises.expect(workers->count() >= 1, "there is at least one worker",
                  std::to_string(workers->count()));
  constexpr int kTasks = 20;
  std::array<std::atomic<int>, kTasks> runs{};
  const auto runAll = [&](int thrower) {
    std::vector<Task> tasks;
    tasks.reserve(kTasks);
    for (int number = 0; number < kTasks; ++number) {
      tasks.emplace_back([&runs, number, thrower] {
        ++runs[static_cast<std::size_t>(number)];
        if (number == thrower) throw std::runtime_error("of a task");
      });
    }
    return workers->run(tasks);
  };
  const auto eachRan = [&runs](int times) {
    for (const std::atomic<int>& count : runs) {
      if (count != times) return false;
    }
    return true;
  };
  promises.expect(runAll(-1) == WorkEnd::done && eachRan(1),
                  "every task runs once, and all have ended when the call returns");
  promises.expect(runAll(3) == WorkEnd::failed && eachRan(2),
                  "a task that throws is a failure, and the others go on");
  promises.expect(workers->run({}) != WorkEnd::failed, "no tasks are no failure");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkJson(const std::function<std::unique_ptr<JsonReader>()>& make) {
  Promises promises("JsonReader");
  const std::unique_ptr<JsonReader> json = make();
  const auto whole = [&](std::string_view text) -> std::optional<std::int64_t> {
    const std::optional<JsonValue> document = json->parse(text);
    const JsonValue* value = document ? document->find("a") : nullptr;
    return value != nullptr && value->integer() != nullptr ? std::optional(*value->integer())
                                                           : std::nullopt;
  };
  promises.expect(whole(R"({"a": 1, "a": 2})") == 1, "of equal members the first one counts");
  promises.expect(whole(R"({"a": 9007199254740993})") == 9'007'199'254'740'993,
                  "integers of 64 bits are exact");
  promises.expect(whole("\xEF\xBB\xBF{\"a\": 1}") == 1, "a byte order mark is passed over");
  promises.expect(whole(std::string_view("{\0\"\0a\0\"\0:\0\x31\0}\0", 14)) == 1, "UTF-16 is read");
  for (const std::string_view text :
       {"", "{", "[1,]", R"({"a" 1})", "[01]", "['a']", "[\"\\ud800\"]", "[1] x", "1", "[nan]"}) {
    promises.expect(!json->parse(text), "what is malformed is no document", std::string(text));
  }
  std::string reason;
  json->parse("[", &reason);
  promises.expect(!reason.empty(), "a document that is not taken has a reason");
  promises.expect(!json->parse(std::string(1U << 20, '[')), "depth is bounded");
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
