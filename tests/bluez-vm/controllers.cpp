// SPDX-License-Identifier: Apache-2.0
// Bluetooth controllers that hear each other, in an air that others share: two, and a third where
// it is wished for. Runs in the emulated machine. Every line of standard input is one wish:
//   show MILLISECONDS       a transmitter that both hear, a packet so often; 0 ends it
//   crowd SECONDS           the first hears 8 transmitters, 10 packets a second each, among 20,000
//                           other devices, 1,000 of their reports a second
//   refuse 1                the first one scans no more, and says so; 0 ends it
//   unplug NUMBER           that controller, counted from 0, is gone; plug NUMBER brings it back
// Standard output says "ready", and after a crowd "crowd PACKETS FOREIGN": how many reports the
// controller gave of each. It ends with its input.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "tests/bluez-vm/controller.h"

namespace halvora {
namespace {

/// Of the air's clock.
constexpr int kTickMilliseconds = 5;
constexpr int kTransmitters = 8;
constexpr int kPacketsASecond = 10;
constexpr int kForeignDevices = 20'000;
constexpr int kForeignASecond = 1'000;

/// What a device of the air advertises: `rest` follows the company's id.
AirReport reportOf(std::uint8_t first, int number, std::uint16_t company,
                   const std::vector<std::uint8_t>& rest) {
  AirReport report;
  report.address = {static_cast<std::uint8_t>(number),
                    static_cast<std::uint8_t>(number >> 8),
                    static_cast<std::uint8_t>(number >> 16),
                    0,
                    0,
                    first};
  report.data.resize(4 + rest.size());
  report.data[0] = static_cast<std::uint8_t>(3 + rest.size());
  report.data[1] = 0xFF;
  report.data[2] = static_cast<std::uint8_t>(company & 0xFF);
  report.data[3] = static_cast<std::uint8_t>(company >> 8);
  std::ranges::copy(rest, report.data.begin() + 4);
  return report;
}

/// A plain green packet of application 4242 with that sequence number.
AirReport packetOf(int transmitter, int sequence) {
  std::vector<std::uint8_t> rest(24);
  rest[0] = 4242 >> 8;
  rest[1] = 4242 & 0xFF;
  rest[5] = 255;  // master
  rest[7] = 255;  // green
  rest[9] = 1;    // mode
  rest[21] = static_cast<std::uint8_t>(sequence >> 8);
  rest[22] = static_cast<std::uint8_t>(sequence);
  rest[23] = static_cast<std::uint8_t>(transmitter);
  return reportOf(0xC0, transmitter, 0xC909, rest);
}

/// The kernel's end of one controller.
class VirtualController {
 public:
  explicit VirtualController(std::uint8_t number)
      : descriptor_(open("/dev/vhci", O_RDWR | O_CLOEXEC)),
        controller_({number, 0, 0, 1, 0xAA, 0}, [this](std::span<const std::uint8_t> packet) {
          if (write(descriptor_, packet.data(), packet.size()) < 0) std::perror("vhci");
        }) {
    const std::array<std::uint8_t, 2> create = {0xFF, 0};
    isThere_ = descriptor_ >= 0 && write(descriptor_, create.data(), create.size()) == 2;
  }
  VirtualController(const VirtualController&) = delete;
  VirtualController& operator=(const VirtualController&) = delete;
  ~VirtualController() { close(descriptor_); }

  bool isThere() const { return isThere_; }
  int descriptor() const { return descriptor_; }
  Controller& operator*() { return controller_; }
  Controller* operator->() { return &controller_; }

  void read() {
    std::array<std::uint8_t, 1024> packet{};
    const ssize_t size = ::read(descriptor_, packet.data(), packet.size());
    if (size > 0) controller_.take(std::span(packet).first(static_cast<std::size_t>(size)));
  }

 private:
  const int descriptor_;
  Controller controller_;
  bool isThere_ = false;
};

/// Tells the controllers of each other, tick by tick, and of everybody else.
class SharedAir {
 public:
  static constexpr std::size_t kMost = 3;

  bool plug(std::size_t number) {
    Side& side = sides_[number];
    if (!side.own) side = {std::make_unique<VirtualController>(static_cast<std::uint8_t>(number))};
    return side.own->isThere();
  }
  /// Null where none is plugged in.
  VirtualController* at(std::size_t number) const { return sides_[number].own.get(); }

  void tick() {
    ++ticks_;
    for (Side& side : sides_) relay(side);
    if (every_ > 0 && --untilShow_ <= 0) {
      untilShow_ = every_;
      ++shown_;
      for (Side& side : sides_) {
        if (side.own) (*side.own)->hear(packetOf(0, shown_));
      }
    }
    if (crowdEnd_ > 0) crowd();
  }

  /// An advertisement that has just begun is heard at once.
  void relayBegun() {
    for (Side& side : sides_) {
      if (!side.own || side.begun == (*side.own)->begun()) continue;
      side.begun = (*side.own)->begun();
      side.due = ticks_;
      relay(side);
    }
  }

  void wish(const std::string& line) {
    const std::size_t space = line.find(' ');
    const int value = space == std::string::npos ? 0 : std::atoi(line.c_str() + space);
    if (line.starts_with("show ")) {
      every_ = value / kTickMilliseconds;
      untilShow_ = 0;
    } else if (line.starts_with("refuse ")) {
      if (VirtualController* first = at(0)) (*first)->setRefusing(value != 0);
    } else if (line.starts_with("plug ")) {
      plug(numberOf(value));
    } else if (line.starts_with("unplug ")) {
      sides_[numberOf(value)] = {};
    } else if (line.starts_with("crowd ")) {
      crowdTick_ = 0;
      crowdEnd_ = value * 1000 / kTickMilliseconds;
      packets_ = foreign_ = packetsTold_ = foreignTold_ = 0;
    }
  }

 private:
  struct Side {
    std::unique_ptr<VirtualController> own = nullptr;
    std::uint64_t begun = 0;
    std::int64_t due = 0;
  };

  static std::size_t numberOf(int value) {
    return static_cast<std::size_t>(std::clamp(value, 0, static_cast<int>(kMost) - 1));
  }

  void relay(Side& side) {
    if (!side.own) return;
    Controller& from = **side.own;
    if (!from.isAdvertising() || ticks_ < side.due) return;
    side.due = ticks_ + from.interval() / kTickMilliseconds;
    for (Side& other : sides_) {
      if (other.own && &other != &side) (*other.own)->hear(from.advertisement());
    }
  }

  // Rates are kept as sums, so that they come out right however late a tick is.
  void crowd() {
    ++crowdTick_;
    const auto upTo = [&](std::int64_t aSecond) {
      return crowdTick_ * kTickMilliseconds * aSecond / 1000;
    };
    for (; packets_ < upTo(kTransmitters * kPacketsASecond); ++packets_) {
      const auto transmitter = static_cast<int>(packets_ % kTransmitters);
      const auto sequence = static_cast<int>(packets_ / kTransmitters) + 1;
      packetsTold_ += tellFirst(packetOf(transmitter + 1, sequence));
    }
    for (; foreign_ < upTo(kForeignASecond); ++foreign_) {
      const auto device = static_cast<int>(foreign_ % kForeignDevices);
      const std::vector<std::uint8_t> rest = {0x10, 0x05, static_cast<std::uint8_t>(foreign_)};
      foreignTold_ += tellFirst(reportOf(0xF0, device, 0x004C, rest));
    }
    if (crowdTick_ < crowdEnd_) return;
    crowdEnd_ = 0;
    std::printf("crowd %lld %lld\n", static_cast<long long>(packetsTold_),
                static_cast<long long>(foreignTold_));
    std::fflush(stdout);
  }

  int tellFirst(const AirReport& report) {
    VirtualController* const first = at(0);
    return first != nullptr && (*first)->hear(report) ? 1 : 0;
  }

  std::array<Side, kMost> sides_;
  std::int64_t ticks_ = 0;
  // One transmitter.
  int every_ = 0;
  int untilShow_ = 0;
  int shown_ = 0;
  // The crowd.
  std::int64_t crowdTick_ = 0;
  std::int64_t crowdEnd_ = 0;
  std::int64_t packets_ = 0;
  std::int64_t foreign_ = 0;
  std::int64_t packetsTold_ = 0;
  std::int64_t foreignTold_ = 0;
};

/// Whole lines of standard input.
class Wishes {
 public:
  /// False at the end of the input.
  bool read(const std::function<void(const std::string&)>& take) {
    std::array<char, 256> text{};
    const ssize_t size = ::read(STDIN_FILENO, text.data(), text.size());
    if (size <= 0) return false;
    pending_.append(text.data(), static_cast<std::size_t>(size));
    for (std::size_t end = 0; (end = pending_.find('\n')) != std::string::npos;) {
      take(pending_.substr(0, end));
      pending_.erase(0, end + 1);
    }
    return true;
  }

 private:
  std::string pending_;
};

int run() {
  SharedAir air;
  const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  const timespec tick{0, kTickMilliseconds * 1'000'000};
  const itimerspec period{tick, tick};
  if (!air.plug(0) || !air.plug(1) || timer < 0 ||
      timerfd_settime(timer, 0, &period, nullptr) < 0) {
    std::perror("no controllers");
    return 1;
  }
  std::puts("ready");
  std::fflush(stdout);
  Wishes wishes;
  // Whoever is not plugged in has no descriptor, which poll passes over.
  std::array<pollfd, SharedAir::kMost + 2> polled{};
  auto& [first, second, third, clock, input] = polled;
  const std::array<pollfd*, SharedAir::kMost> controllers = {&first, &second, &third};
  clock = {timer, POLLIN, 0};
  input = {STDIN_FILENO, POLLIN, 0};
  for (;;) {
    for (std::size_t at = 0; at < controllers.size(); ++at) {
      const VirtualController* const own = air.at(at);
      *controllers[at] = {own != nullptr ? own->descriptor() : -1, POLLIN, 0};
    }
    if (poll(polled.data(), polled.size(), -1) <= 0) break;
    for (std::size_t at = 0; at < controllers.size(); ++at) {
      if (controllers[at]->revents != 0) air.at(at)->read();
    }
    air.relayBegun();
    std::uint64_t ticks = 0;
    if (clock.revents != 0 && read(timer, &ticks, sizeof ticks) == sizeof ticks) {
      for (; ticks > 0; --ticks) air.tick();
    }
    if (input.revents != 0 && !wishes.read([&](const std::string& line) { air.wish(line); })) {
      break;
    }
  }
  return 0;
}

}  // namespace
}  // namespace halvora

int main() { return halvora::run(); }
