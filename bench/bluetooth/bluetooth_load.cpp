// SPDX-License-Identifier: Apache-2.0
// What listening on a bus costs: processor time of this process a signal beside that of a process
// which is only woken as often, what was missed of a show, and how memory grows with foreign
// devices. Run it on a bus of its own:
//   dbus-run-session -- build/release/bin/halvora_bluetooth_load [SECONDS]
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/linux/bus/bluez_daemon.h"
#include "bench/bluetooth/bare_reader.h"
#include "bench/bluetooth/speaker.h"

namespace halvora {
namespace {

struct Case {
  const char* name;
  Air air;
};

class Counter final : public CentralManagerDelegate {
 public:
  void centralManagerDidUpdateState(CentralState state) override {
    if (state == CentralState::poweredOn) manager->scanForPeripherals({.allowDuplicates = true});
  }
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    const auto data = *advertisement.manufacturerData;
    if (data[2] != kLastPacketMark) {
      ++packets;
      return;
    }
    said = static_cast<std::uint64_t>(data[3]) << 16 | static_cast<std::uint64_t>(data[4]) << 8 |
           data[5];
    isOver = true;
  }

  std::unique_ptr<CentralManager> manager;
  std::uint64_t packets = 0;
  std::uint64_t said = 0;
  bool isOver = false;
};

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::size_t heapBytes() { return mallinfo2().uordblks; }

// In this process: listens until the last packet, and prints a row of the table.
bool listen(const Case& measured, const std::string& address) {
  PollRunLoop loop;
  BluezDaemon daemon(loop, loop, address);
  BluezCentral central(loop, daemon);
  Counter counter;
  counter.manager = central.makeManager(counter);
  const auto isSpoken = [&] { return central.diagnostics().isScanning || counter.isOver; };
  if (!loop.runUntil(isSpoken, std::chrono::seconds(30))) return false;

  // What is kept from a show's first second on is not growth.
  loop.runUntil([&] { return counter.isOver; }, std::chrono::seconds(1));
  const std::size_t heapBefore = heapBytes();
  const double before = processorSeconds();
  const BluezSignalCounts first = daemon.signalCounts();
  if (!loop.runUntil([&] { return counter.isOver; },
                     std::chrono::seconds(measured.air.seconds + 60))) {
    return false;
  }
  const double spent = processorSeconds() - before;
  const BluezSignalCounts& last = daemon.signalCounts();
  const auto ours = static_cast<double>(last.ours - first.ours);
  const auto foreign = static_cast<double>(last.foreign - first.foreign);
  const double load = spent / (static_cast<double>(measured.air.seconds) - 1) * 100;
  std::printf("| %s | %llu | %llu | %.0f | %.1f | %.2f | %lld |\n", measured.name,
              static_cast<unsigned long long>(counter.said),
              static_cast<unsigned long long>(counter.packets), foreign,
              spent * 1e6 / (ours + foreign), load,
              static_cast<long long>(heapBytes()) - static_cast<long long>(heapBefore));
  std::fflush(stdout);
  return counter.said == counter.packets && last.malformed == 0;
}

bool measure(const Case& measured, const std::string& address) {
  const pid_t speaker = fork();
  if (speaker == 0) _exit(Speaker(address, measured.air).run() ? 0 : 1);
  const bool isGood = listen(measured, address);
  int status = 0;
  waitpid(speaker, &status, 0);
  return isGood && status == 0;
}

}  // namespace
}  // namespace halvora

int main(int argumentCount, char** arguments) {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address == nullptr) {
    std::fputs("no bus: run this under dbus-run-session\n", stderr);
    return 1;
  }
  const int seconds = argumentCount > 1 ? std::atoi(arguments[1]) : 10;
  using halvora::Air;
  const halvora::Case kCases[] = {
      {"a show alone, discovery", Air{.seconds = seconds, .foreignASecond = 0}},
      {"a show at 1,000 a second, discovery",
       Air{.seconds = seconds, .showPacketsASecond = 125, .foreignASecond = 0}},
      {"a show in a crowd of 1,000 a second, discovery", Air{.seconds = seconds}},
      {"the same crowd without a show", Air{.seconds = seconds, .showTransmitters = 1}},
      {"a show alone, monitor", Air{.seconds = seconds, .hasMonitors = true}},
      {"a show at 1,000 a second, monitor",
       Air{.seconds = seconds, .showPacketsASecond = 125, .hasMonitors = true}},
  };
  std::puts(
      "| what | show packets said | heard | foreign signals | µs a signal | % of a core | "
      "bytes of heap grown |\n| --- | --: | --: | --: | --: | --: | --: |");
  constexpr int kWakesASecond = 80;
  const double bare = halvora::bareReaderCost(kWakesASecond, seconds);
  if (bare < 0) {
    std::fputs("the bare reader lost its writer\n", stderr);
    return 1;
  }
  std::printf("| no bus: a bare reader woken 80 times a second | | | | %.1f | %.2f | |\n", bare,
              bare * kWakesASecond / 1e4);
  for (const halvora::Case& measured : kCases) {
    if (!halvora::measure(measured, address)) {
      std::fprintf(stderr, "%s: packets were missed, or nothing was heard\n", measured.name);
      return 1;
    }
  }
  return 0;
}
