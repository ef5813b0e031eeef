// SPDX-License-Identifier: Apache-2.0
// What defaults promise when the process that writes them is killed. How a process is started and
// killed is the system's, so the caller does both: its process opens the same defaults and calls
// `writeForEver`, and is killed in the middle of that.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "conformance/promises.h"
#include "halvora/platform/user_defaults.h"

namespace halvora::conformance {

/// For the process that is to be killed. Counts on from what is stored: at each step it sets values
/// that belong together, asks for them to be made lasting and calls `wrote`. Ends by what `wrote`
/// throws, or never.
[[noreturn]] void writeForEver(UserDefaults& defaults, const std::function<void()>& wrote);

struct CrashUnderTest {
  /// Opens the defaults, as an application does when it starts.
  std::function<std::unique_ptr<UserDefaults>()> open;
  /// Has another process write them, and kills it at any moment after something was made lasting.
  /// Returns when it has gone.
  std::function<void()> killAWriter;
};

/// The more deaths, the likelier one is in the middle of a write. Empty defaults at first.
std::vector<BrokenPromise> checkDefaultsAfterCrashes(const CrashUnderTest& its, int deaths);

}  // namespace halvora::conformance
