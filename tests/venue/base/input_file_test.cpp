// SPDX-License-Identifier: Apache-2.0
// What commands read their input from: files, pipes, and what is neither.
#include "venue/base/input_file.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "adapters/json/exact_json_reader.h"
#include "tests/apps/halvora/tool_runner.h"
#include "venue/show/scenario_file.h"

namespace halvora {
namespace {

struct InputRoom : testing::Test {
  /// The bytes, or the error with its status in front.
  std::string read(const std::string& path, std::size_t limit = 1 << 20) {
    const auto input = readInput(path, limit, isInterrupted);
    if (const auto* bytes = std::get_if<std::string>(&input)) return *bytes;
    const auto& refusal = std::get<CommandResult>(input);
    return std::to_string(refusal.status) + " " + refusal.error;
  }
  /// A pipe with a name.
  std::string makePipe() const {
    std::string path = (folder.path() / "pipe").string();
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    return path;
  }

  TestFolder folder;
  std::atomic<bool> isInterrupted{false};
};

TEST_F(InputRoom, AFileIsReadWhole) {
  const std::string bytes = std::string(200'000, 'x') + std::string(1, '\0') + "\n";
  EXPECT_EQ(read(folder.write("file", bytes)), bytes);
  EXPECT_EQ(read(folder.write("empty", "")), "");
}

TEST_F(InputRoom, WhatIsNoInputIsNamed) {
  const std::string file = folder.write("file", std::string((1 << 20) + 1, 'x'));
  EXPECT_EQ(read(folder.path().string()), "2 " + folder.path().string() + ": is a folder");
  EXPECT_EQ(read(file + "s"), "2 " + file + "s: cannot be read");
  EXPECT_EQ(read(file + "/x"), "2 " + file + "/x: cannot be read");
  EXPECT_EQ(read(""), "2 : cannot be read");
  EXPECT_EQ(read(file), "2 " + file + ": has more than 1 MiB");
  EXPECT_EQ(read("/dev/zero"), "2 /dev/zero: has more than 1 MiB");
  EXPECT_EQ(read("/dev/null"), "");
}

TEST_F(InputRoom, AnInterruptionEndsTheWait) {
  isInterrupted = true;
  EXPECT_EQ(read(makePipe()).substr(0, 2), "1 ");
}

TEST_F(InputRoom, LinesOfAScenarioAreToldByTheirFile) {
  const ExactJsonReader json;
  const std::string good = folder.write("good", "{\"at\":0,\"start\":true}\n");
  const std::string bad = folder.write("bad", "{\"at\":0,\"start\":true}\n{\n");
  const auto scenario = readScenario(good, json, isInterrupted);
  ASSERT_TRUE(std::holds_alternative<Scenario>(scenario));
  EXPECT_EQ(std::get<Scenario>(scenario).lines.size(), 1U);
  const auto refused = readScenario(bad, json, isInterrupted);
  ASSERT_TRUE(std::holds_alternative<CommandResult>(refused));
  EXPECT_EQ(std::get<CommandResult>(refused).status, 2);
  EXPECT_TRUE(std::get<CommandResult>(refused).error.starts_with(bad + ":2: "));
}

using InputThreads = InputRoom;

TEST_F(InputThreads, APipeIsReadToItsEnd) {
  const std::string path = makePipe();
  const std::string bytes(300'000, 'y');
  std::thread writer([&] { std::ofstream(path, std::ios::binary) << bytes; });
  EXPECT_EQ(read(path), bytes);
  writer.join();
}

TEST_F(InputThreads, AScenarioComesThroughAPipe) {
  const std::string path = makePipe();
  std::thread writer([&] { std::ofstream(path) << "{\"at\":0,\"start\":true}\n"; });
  const ToolRun run = runTool({"trace", path, "--until", "1"});
  writer.join();
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_NE(run.output.find("bluetoothStatus"), std::string::npos) << run.output;
}

}  // namespace
}  // namespace halvora
