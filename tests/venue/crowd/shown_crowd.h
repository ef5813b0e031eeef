// SPDX-License-Identifier: Apache-2.0
// `halvora crowd` at a venue of its own, with a show of looks that change every four seconds and
// are sent ten times a second. Base of tests; one thread.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "tests/support/plain_codes.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {

class ShownCrowd : public testing::Test {
 protected:
  /// `lookOf` says what the looks are, by their number.
  ShownCrowd(std::size_t seats, int looks, const std::function<Broadcast(int number)>& lookOf) {
    folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(seats));
    std::string lines = "{\"at\": 0, \"start\": true}\n";
    for (int at = 0; at < looks; ++at) {
      lines += "{\"at\": " + std::to_string(2 + 4 * at) + ", \"packet\": \"" +
               NSDataToHex(encodeBroadcast(lookOf(at))) +
               "\", \"every\": 0.1, \"until\": " + std::to_string(5 + 4 * at) + ".95}\n";
    }
    show = folder.write("show.jsonl", lines);
  }
  ToolRun run(const Words& options) {
    Words words{"crowd",
                "--assets",
                folder.path().string(),
                "--venue",
                "7",
                "--scenario",
                show,
                "--size",
                "64x32",
                "--fps",
                "10",
                "--out",
                (folder.path() / "sheet.png").string()};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words, {.codes = &codes});
  }

  TestFolder folder;
  PlainCodes codes;
  std::string show;
};

}  // namespace halvora
