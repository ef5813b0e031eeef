// SPDX-License-Identifier: Apache-2.0
// What the example show does to an audience whose phones limit their flashes keeps to three a
// second: each phone, the hall, and the smallest boxes of it, in which the fewest phones make a
// mean.
#include <array>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "adapters/standard/standard_files.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

const fs::path kDemo = fs::path(sourceTree()) / "assets" / "demo";
constexpr std::array kBoxes{"Box 2", "Box 8", "Box 10"};

struct DemoSafety : testing::Test {
  // The demo's own hall would take a minute.
  DemoSafety() {
    const fs::path maps = "HVAssets/Maps/Venue-7";
    fs::copy(kDemo, folder.path(), fs::copy_options::recursive);
    rapidjson::Document map;
    map.Parse(readFile((kDemo / maps / "map.json").string(), 1 << 26).value_or("").c_str());
    rapidjson::Value boxes(rapidjson::kObjectType);
    for (const char* box : kBoxes) {
      boxes.AddMember(rapidjson::StringRef(box), map["s"][box], map.GetAllocator());
    }
    map["s"] = boxes;
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    map.Accept(writer);
    folder.write((maps / "map.json").string(), text.GetString());
  }

  ToolRun run(const char* policy, const char* seed) const {
    return runTool({"safety", (folder.path() / "example-show.jsonl").string(), "--assets",
                    folder.path().string(), "--venue", "7", "--flash", policy, "--seed", seed,
                    "--threads", "1"});
  }

  TestFolder folder;
};

TEST_F(DemoSafety, PassesWhereItsPhonesLimitTheirFlashes) {
  for (const char* seed : {"1", "2", "3"}) {
    const ToolRun done = run("limited", seed);
    EXPECT_EQ(done.status, 0) << "seed " << seed << ": " << done.error << done.output;
  }
}

// What the limit is for: the show has one strobe.
TEST_F(DemoSafety, FailsAsItIsSent) { EXPECT_EQ(run("exact", "1").status, 1); }

}  // namespace
}  // namespace halvora
