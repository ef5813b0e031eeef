// SPDX-License-Identifier: Apache-2.0
// Runs the halvora command inside the test program, with its standard output as a text, and keeps
// the files that it is given. Every test has its own; one thread.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/halvora/command.h"

namespace halvora {

struct ToolRun {
  int status = 0;
  std::string output;
  std::string error;
  /// What it said on standard error while it ran.
  std::string messages;
};

/// What is around a run, where it is not what a script has: files as `WordVideos` reads them, no
/// terminal, no radio, nobody who interrupts.
struct ToolSetup {
  const VideoAssets* videos = nullptr;
  const std::atomic<bool>* isInterrupted = nullptr;
  Terminal terminal = {};
  /// Takes the output in place of the result's text.
  Output output = {};
  /// None where they are absent.
  std::function<std::unique_ptr<Radio>(const std::string& adapter)> openRadio = {};
  std::function<std::unique_ptr<Transmitter>()> openTransmitter = {};
  std::function<std::unique_ptr<LiveGround>()> openLive = {};
  const MessageCodes* codes = nullptr;
  const MovieWriters* movies = nullptr;
  /// Nothing can be written to the result's text.
  bool isOutputClosed = false;
};

/// `halvora ARGUMENTS...`
ToolRun runTool(const std::vector<std::string>& arguments, const ToolSetup& setup = {});

/// The lines of a text; the last one must end with a line feed too, or is marked as unended.
std::vector<std::string> linesOf(std::string_view text);

/// Exit status 2 as scripts rely on it: nothing on standard output, one line on standard error.
/// The result says what is wrong about it; empty when nothing is.
std::string flawOfRefusal(const ToolRun& run);

/// A file, read whole; it must exist.
std::string contentsOf(const std::filesystem::path& file);

/// This folder of tests.
std::filesystem::path toolTests();

/// A folder of the test's own, gone with the object.
class TestFolder {
 public:
  TestFolder();
  ~TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  /// Writes a file, with the folders that it lies in, and gives its path.
  std::string write(const std::string& name, std::string_view contents) const;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace halvora
