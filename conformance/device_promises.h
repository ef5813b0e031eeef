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
  std::shared_ptr<void> world;
  BluetoothCentral* radio = nullptr;
  std::function<void()> settle;
  std::function<void(bool hasPower)> setPower;
  std::function<void(std::span<const std::uint8_t> manufacturerData)> advertise;
};

std::vector<BrokenPromise> checkRadio(const std::function<RadioUnderTest()>& make);

/// A screen whose backlight cannot be set ignores that, and keeps its level.
std::vector<BrokenPromise> checkScreen(const std::function<std::unique_ptr<Screen>()>& make);

struct QueuesUnderTest {
  std::unique_ptr<SerialQueues> queues;
  /// Runs what was dispatched; absent where queues have threads of their own.
  std::function<void()> finish = {};
};

std::vector<BrokenPromise> checkQueues(const std::function<QueuesUnderTest()>& make);

std::vector<BrokenPromise> checkWorkers(const std::function<std::unique_ptr<Workers>()>& make);

std::vector<BrokenPromise> checkJson(const std::function<std::unique_ptr<JsonReader>()>& make);

}  // namespace halvora::conformance
