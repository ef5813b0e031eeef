// SPDX-License-Identifier: Apache-2.0
// What a run loop promises: order, times that do not drift, turns of their own, blocks from other
// threads. A loop in real time is run for some tenths of a second.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "conformance/promises.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/time.h"

namespace halvora::conformance {

struct LoopUnderTest {
  std::unique_ptr<RunLoop> loop;  ///< Nothing scheduled yet.
  /// Runs what is due within that span of the loop's own time, then returns.
  std::function<void(Duration span)> runFor;
  /// False for a loop that has no other threads, such as one in virtual time.
  bool takesBlocksFromThreads = true;
};

/// Turns, order, times that are never early and do not drift, ids, cancelling, blocks of threads.
std::vector<BrokenPromise> checkRunLoop(const std::function<LoopUnderTest()>& make);

}  // namespace halvora::conformance
