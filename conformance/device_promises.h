// SPDX-License-Identifier: Apache-2.0
// What a radio, a screen, queues, workers and a reader of JSON promise.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "conformance/promises.h"
#include "conformance/run_loop_promises.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/json.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/workers.h"

namespace halvora::conformance {

/// A radio in a world that the caller moves. `settle` runs the loop until what was done has
/// arrived. The radio is allowed and has power at first.
struct RadioUnderTest {
  std::shared_ptr<void> world;                  ///< Owns what the others need.
  BluetoothCentral* radio = nullptr;            ///< In that world.
  std::function<void()> settle;                 ///< What was done so far has arrived afterwards.
  std::function<void(bool hasPower)> setPower;  ///< Of the machine's adapter.
  /// Something is sent that has these bytes, company first.
  std::function<void(std::span<const std::uint8_t> manufacturerData)> advertise;
};

/// The first report, power, scans, repeats, whole packets, managers that go while they are told.
std::vector<BrokenPromise> checkRadio(const std::function<RadioUnderTest()>& make);

/// A screen whose backlight cannot be set ignores that, and keeps its level.
std::vector<BrokenPromise> checkScreen(const std::function<std::unique_ptr<Screen>()>& make);

/// Queues, and how their work is brought to an end.
struct QueuesUnderTest {
  std::unique_ptr<SerialQueues> queues;  ///< Nothing dispatched yet.
  /// Runs what was dispatched; absent where queues have threads of their own.
  std::function<void()> finish = {};
};

/// Order, one task at a time, tasks that throw.
std::vector<BrokenPromise> checkQueues(const std::function<QueuesUnderTest()>& make);

/// Every task is run and waited for, whatever the others do.
std::vector<BrokenPromise> checkWorkers(const std::function<std::unique_ptr<Workers>()>& make);

/// Equal members, 64 bits, encodings, what is malformed, depth.
std::vector<BrokenPromise> checkJson(const std::function<std::unique_ptr<JsonReader>()>& make);

}  // namespace halvora::conformance
