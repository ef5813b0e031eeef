// SPDX-License-Identifier: Apache-2.0
// The kit's own adapters keep what the conformance suite asks of anybody's.
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/linux/linux_files.h"
#include "adapters/linux/poll_run_loop.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/kit_bundle.h"
#include "adapters/standard/standard_files.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "bindings/c/host_loop.h"
#include "conformance/device_promises.h"
#include "conformance/run_loop_promises.h"
#include "conformance/storage_promises.h"
#include "halvora/platform/absent.h"
#include "tests/adapters/linux/bluetooth/scripted_bluez.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

void expectKept(const std::vector<BrokenPromise>& broken) {
  EXPECT_TRUE(broken.empty()) << textOf(broken);
}

TEST(ConformanceOfRunLoops, HoldsInVirtualTime) {
  expectKept(checkRunLoop([] {
    auto loop = std::make_unique<VirtualRunLoop>();
    auto* its = loop.get();
    return LoopUnderTest{std::move(loop), [its](Duration span) { its->runFor(span); }, false};
  }));
}

TEST(ConformanceOfRunLoops, HoldsInAHostsTime) {
  expectKept(checkRunLoop([] {
    auto loop = std::make_unique<HostLoop>();
    auto* its = loop.get();
    return LoopUnderTest{std::move(loop),
                         [its](Duration span) { its->runUntil(its->now() + span); }, false};
  }));
}

TEST(ConformanceOfRunLoopsThreads, HoldsOnPoll) {
  expectKept(checkRunLoop([] {
    auto loop = std::make_unique<PollRunLoop>();
    auto* its = loop.get();
    return LoopUnderTest{std::move(loop),
                         [its](Duration span) { its->runUntil([] { return false; }, span); }};
  }));
}

TEST(ConformanceOfFiles, HoldsForTheStandardLibrarys) {
  const TemporaryFolder folder;
  expectKept(checkFiles([] { return std::make_unique<StandardFiles>(); }, folder.path()));
}

TEST(ConformanceOfFiles, HoldsForLinux) {
  const TemporaryFolder folder;
  expectKept(checkFiles([] { return std::make_unique<LinuxFiles>(); }, folder.path()));
}

TEST(ConformanceOfDefaults, HoldsForAFile) {
  const TemporaryFolder folder;
  const ExactJsonReader json;
  LinuxFiles files;
  VirtualRunLoop loop;
  VirtualQueues queues(loop);
  expectKept(checkUserDefaults([&] {
    return std::make_unique<FileDefaults>(folder.path() + "/defaults.json",
                                          FileDefaults::Needs{files, json, loop, queues});
  }));
}

TEST(ConformanceOfBundles, HoldsForAFolder) {
  const TemporaryFolder folder;
  folder.write("a/b.txt", "bytes");
  const StandardFiles files;
  expectKept(checkBundle([&] {
    return BundleUnderTest{std::make_unique<FolderBundle>(files, folder.path(), "com.example.host"),
                           "a/b.txt", "bytes"};
  }));
}

TEST(ConformanceOfBundles, HoldsForTheKits) {
  const ExactJsonReader json;
  const auto english = readFile(sourceTree() + "/assets/kit/strings/en.json", 1U << 20);
  ASSERT_TRUE(english);
  expectKept(checkBundle([&] {
    return BundleUnderTest{std::make_unique<KitBundle>(std::vector<std::string>{"en"}, json),
                           "strings/en.json", *english};
  }));
}

TEST(ConformanceOfRadios, HoldsInMemory) {
  expectKept(checkRadio([] {
    struct World {
      VirtualRunLoop loop;
      VirtualBluetooth radio{loop};
    };
    auto world = std::make_shared<World>();
    World& its = *world;
    return RadioUnderTest{
        std::move(world), &its.radio, [&its] { its.loop.runFor(milliseconds(50)); },
        [&its](bool hasPower) {
          its.radio.setState(hasPower ? CentralState::poweredOn : CentralState::poweredOff);
        },
        [&its](std::span<const std::uint8_t> packet) { its.radio.advertise(packet); }};
  }));
}

TEST(ConformanceOfRadios, HoldsOverTheDaemon) {
  expectKept(checkRadio([] {
    struct World {
      VirtualRunLoop loop;
      ScriptedBluez daemon{loop};
      BluezCentral radio{loop, daemon, {}};
    };
    auto world = std::make_shared<World>();
    World& its = *world;
    const auto setPower = [&its](bool hasPower) {
      its.daemon.become({BluezReach::there, {BluezAdapter{"hci0", hasPower, false}}});
    };
    setPower(true);
    return RadioUnderTest{
        std::move(world), &its.radio, [&its] { its.loop.runFor(milliseconds(50)); }, setPower,
        [&its](std::span<const std::uint8_t> packet) { its.daemon.advertise(packet); }};
  }));
}

TEST(ConformanceOfScreens, HoldsInMemory) {
  expectKept(checkScreen([] { return std::make_unique<VirtualScreen>(Size{390, 844}, 0.5); }));
}

TEST(ConformanceOfScreens, HoldsForOneThatIgnoresWrites) {
  struct Dull final : Screen {
    Size bounds() const override { return {}; }
    double brightness() const override { return 1; }
    void setBrightness(double /*level*/) override {}
    float currentEDRHeadroom() const override { return 1; }
  };
  expectKept(checkScreen([] { return std::make_unique<Dull>(); }));
}

TEST(ConformanceOfQueuesThreads, HoldsOnThreads) {
  expectKept(checkQueues([] { return QueuesUnderTest{std::make_unique<ThreadQueues>()}; }));
}

TEST(ConformanceOfQueues, HoldsInVirtualTime) {
  struct Both final : SerialQueues {
    std::unique_ptr<SerialQueue> make(std::string_view label) override {
      return queues.make(label);
    }
    VirtualRunLoop loop;
    VirtualQueues queues{loop};
  };
  expectKept(checkQueues([] {
    auto both = std::make_unique<Both>();
    Both& its = *both;
    return QueuesUnderTest{std::move(both), [&its] {
                             its.loop.soon([] {});
                             its.loop.runFor(milliseconds(1));
                           }};
  }));
}

TEST(ConformanceOfWorkersThreads, HoldsOnThreads) {
  expectKept(checkWorkers([] { return std::make_unique<ThreadWorkers>(); }));
}

TEST(ConformanceOfJson, HoldsForTheReader) {
  expectKept(checkJson([] { return std::make_unique<ExactJsonReader>(); }));
}

}  // namespace
}  // namespace halvora
