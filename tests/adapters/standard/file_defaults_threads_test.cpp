// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/poll_run_loop.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/virtual/virtual_files.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

// A value that comes while an earlier one is being saved, by a thread that nothing orders.
TEST(FileDefaultsThreads, AValueMayComeWhileAnotherIsSaved) {
  const ExactJsonReader json;
  ThreadQueues queues;
  for (const bool isFull : {false, true}) {
    VirtualFiles files;
    files.isFull = isFull;
    PollRunLoop loop;
    for (int round = 0; round < 20; ++round) {
      FileDefaults defaults("/data/defaults.json", {files, json, loop, queues});
      defaults.set("first", round);
      defaults.synchronize();
      defaults.set("second", round);
    }
    const FileDefaults last("/data/defaults.json", {files, json, loop, queues});
    EXPECT_EQ(integerForKey(last, "second"), isFull ? 0 : 19);
  }
}

}  // namespace
}  // namespace halvora
