// SPDX-License-Identifier: Apache-2.0
#include "tests/apps/halvora/tool_runner.h"

#include <fstream>
#include <iterator>
#include <utility>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "apps/halvora/commands.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/support/source_tree.h"
#include "tests/venue/plan/word_videos.h"

namespace halvora {

namespace {

/// A binary portable pixmap, as `PixmapDecoder` reads it.
std::string pixmapOfImage(const Image& image) {
  std::string text =
      "P6 " + std::to_string(image.width) + " " + std::to_string(image.height) + " 255\n";
  for (std::size_t at = 0; at < image.rgba.size(); ++at) {
    if (at % 4 != 3) text += static_cast<char>(image.rgba[at]);
  }
  return text;
}

}  // namespace

ToolRun runTool(const std::vector<std::string>& arguments, const ToolSetup& setup) {
  std::vector<const char*> words{"halvora"};
  for (const std::string& argument : arguments) words.push_back(argument.c_str());
  const PixmapDecoder images;
  const WordVideos videos;
  const std::atomic<bool> isNotInterrupted{false};
  Outside outside{images, setup.videos != nullptr ? *setup.videos : videos,
                  setup.isInterrupted != nullptr ? *setup.isInterrupted : isNotInterrupted,
                  setup.terminal, pixmapOfImage};
  outside.openRadio = setup.openRadio;
  outside.openTransmitter = setup.openTransmitter;
  outside.openLive = setup.openLive;
  outside.codes = setup.codes;
  outside.movies = setup.movies;
  ToolRun run;
  const Output output = setup.output ? setup.output : [&](std::string_view text) {
    if (setup.isOutputClosed) return false;
    run.output += text;
    return true;
  };
  outside.messages = [&run](std::string_view lines) {
    run.messages += lines;
    return true;
  };
  CommandResult result = runCommand(static_cast<int>(words.size()), words.data(), outside, output);
  run.status = result.status;
  run.error = std::move(result.error);
  for (const std::string& line : result.more) run.error += "\n" + line;
  return run;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      lines.back() += " (not ended)";
      break;
    }
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::string flawOfRefusal(const ToolRun& run) {
  if (run.status != 2) return "exit status " + std::to_string(run.status) + " instead of 2";
  if (!run.output.empty()) return "on standard output: " + run.output;
  if (run.error.empty()) return "nothing on standard error";
  if (run.error.find('\n') != std::string::npos) return "more than one line: " + run.error;
  return "";
}

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  EXPECT_TRUE(stream.good()) << file << " cannot be read";
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::filesystem::path toolTests() {
  return std::filesystem::path(sourceTree()) / "tests" / "venue";
}

TestFolder::TestFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "halvora-XXXXXX").string();
  EXPECT_NE(mkdtemp(name.data()), nullptr) << "no folder for the test";
  path_ = name;
}

TestFolder::~TestFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TestFolder::write(const std::string& name, std::string_view contents) const {
  const std::filesystem::path file = path_ / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << contents;
  return file.string();
}

}  // namespace halvora
