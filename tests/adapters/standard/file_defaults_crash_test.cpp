// SPDX-License-Identifier: Apache-2.0
// A process that writes its defaults all the time and dies at any moment.
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "conformance/crash_promises.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/support/all_cases.h"
#include "tests/support/passed_files.h"

namespace halvora {
namespace {

constexpr int kDeaths = 50;
constexpr int kAllDeaths = 200;
constexpr std::uint32_t kMostEvents = 60;
constexpr char kWritten = 'w';
constexpr char kSaved = 's';

void say(int pipe, char event) {
  if (write(pipe, &event, 1) != 1) _exit(1);
}

/// Says when a file has been put in place, on the thread that did it.
class SayingFiles final : public PassedFiles {
 public:
  SayingFiles(Files& files, int pipe) : PassedFiles(files), pipe_(pipe) {}
  bool replace(const std::string& path, std::string_view bytes) override {
    return said(PassedFiles::replace(path, bytes));
  }
  bool replaceLastingly(const std::string& path, std::string_view bytes) override {
    return said(PassedFiles::replaceLastingly(path, bytes));
  }

 private:
  bool said(bool isInPlace) const {
    if (isInPlace) say(pipe_, kSaved);
    return isInPlace;
  }

  int pipe_;
};

struct Process {
  Process(const std::string& path, Files& files) : defaults(path, {files, json, loop, queues}) {}

  ExactJsonReader json;
  VirtualRunLoop loop;
  ThreadQueues queues;
  FileDefaults defaults;
};

/// Never returns.
[[noreturn]] void writeUntilKilled(const std::string& path, int pipe) {
  LinuxFiles beneath;
  SayingFiles files(beneath, pipe);
  Process process(path, files);
  conformance::writeForEver(process.defaults, [pipe] { say(pipe, kWritten); });
}

std::size_t leftovers(const std::string& folder) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().filename() != "defaults.json") ++count;
  }
  return count;
}

/// Lets a process save once at least, and then do so much more, before it is killed.
void killAfter(const std::string& path, std::uint32_t events) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    writeUntilKilled(path, ends[1]);
  }
  close(ends[1]);
  char event = 0;
  do {
    ASSERT_EQ(::read(ends[0], &event, 1), 1);
  } while (event != kSaved);
  for (std::uint32_t count = 0; count < events; ++count) {
    ASSERT_EQ(::read(ends[0], &event, 1), 1);
  }
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  close(ends[0]);
}

TEST(FileDefaultsCrash, LeavesTheOldOrTheNewValues) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/defaults.json";
  std::mt19937 random(20261121);
  LinuxFiles files;
  const ExactJsonReader json;
  VirtualRunLoop loop;
  ThreadQueues queues;
  const auto broken = conformance::checkDefaultsAfterCrashes(
      {.open =
           [&] {
             auto defaults = std::make_unique<FileDefaults>(
                 path, FileDefaults::Needs{files, json, loop, queues});
             EXPECT_EQ(leftovers(folder.path()), 0U) << "damaged, or half written";
             return defaults;
           },
       .killAWriter = [&] { killAfter(path, static_cast<std::uint32_t>(random() % kMostEvents)); }},
      wantsAllCases() ? kAllDeaths : kDeaths);
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

}  // namespace
}  // namespace halvora
