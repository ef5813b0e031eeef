// SPDX-License-Identifier: Apache-2.0
// `halvora map dump`: what it reads, what it prints and how it ends.
#include <string>

#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

TEST(MapDumpCommand, PrintsTheSectionsOnOneLine) {
  const TestFolder folder;
  const std::string map = folder.write(
      "map.json", R"({"sections": [{"name": 7, "rows": [{"seats": ["A", {"x": 4, "y": 5}]}]}]})");
  const ToolRun run = runTool({"map", "dump", map});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, R"([{"displayName":"7","rows":[{"displayName":"Row 1","seats":[)"
                        R"({"displayName":"A","xPos":1,"yPos":1},)"
                        R"({"displayName":"Seat 2","xPos":4,"yPos":5}]}]}])"
                        "\n");
}

TEST(MapDumpCommand, TakesTextsFromAStringTable) {
  const TestFolder folder;
  const std::string map = folder.write("map.json", R"({"s": {"1": {"2": {"3": [4, 5]}}}})");
  const std::string strings = folder.write(
      "de.json", R"({"hv_seat_picker_fallback_section_prefix": "Block", "unrelated": "text"})");
  const ToolRun run = runTool({"map", "dump", map, "--strings", strings});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, R"([{"displayName":"Block 1","rows":[{"displayName":"Row 2","seats":[)"
                        R"({"displayName":"Seat 3","xPos":4,"yPos":5}]}]}])"
                        "\n");
}

TEST(MapDumpCommand, ADocumentWithoutSectionsIsAnEmptyArray) {
  const TestFolder folder;
  for (const char* text : {"", "{", "[1,]", "7", "{}", R"({"sections": 3})"}) {
    const ToolRun run = runTool({"map", "dump", folder.write("map.json", text)});
    EXPECT_EQ(run.status, 0) << text;
    EXPECT_EQ(run.output, "[]\n") << text;
  }
}

TEST(MapDumpCommand, RefusesWhatItCannotRead) {
  const TestFolder folder;
  const std::string map = folder.write("map.json", "[]");
  const std::string missing = (folder.path() / "missing.json").string();
  const std::string broken = folder.write("broken.json", "[1");
  EXPECT_EQ(flawOfRefusal(runTool({"map", "dump", missing})), "");
  EXPECT_EQ(flawOfRefusal(runTool({"map", "dump", folder.path().string()})), "");
  EXPECT_EQ(flawOfRefusal(runTool({"map", "dump"})), "");
  EXPECT_EQ(flawOfRefusal(runTool({"map", "dump", map, "--strings", missing})), "");
  EXPECT_EQ(flawOfRefusal(runTool({"map", "dump", map, "--strings", broken})), "");
}

}  // namespace
}  // namespace halvora
