// SPDX-License-Identifier: Apache-2.0
#include "venue/base/leftover.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "apps/halvora/interruption.h"
#include "apps/halvora/scratch_folder.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

class LeftoverTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return folder_.path() + "/" + name; }
  std::string put(const std::string& name) const {
    fs::create_directories(fs::path(path(name)).parent_path());
    std::ofstream(path(name)) << "something";
    return path(name);
  }

  TemporaryFolder folder_;
};

TEST_F(LeftoverTest, AFolderGoesWithEverythingInIt) {
  for (int file = 0; file < 300; ++file) {
    put("scratch/a folder/with a name that is long enough to fill blocks/" + std::to_string(file));
  }
  for (int file = 0; file < 300; ++file) put("scratch/" + std::to_string(file));
  put("scratch/.hidden/file");
  fs::create_directory(path("elsewhere"));
  put("elsewhere/kept");
  fs::create_directory_symlink(path("elsewhere"), path("scratch/link"));
  {
    Leftover leftover;
    leftover.watch(path("scratch"));
  }
  EXPECT_FALSE(fs::exists(path("scratch")));
  EXPECT_TRUE(fs::exists(path("elsewhere/kept"))) << "what a link leads to is not in it";
}

TEST_F(LeftoverTest, AFileGoesAndOneThatIsKeptStays) {
  const std::string gone = put("gone");
  const std::string kept = put("kept");
  {
    Leftover first;
    Leftover second;
    first.watch(gone);
    second.watch(kept);
    second.keep();
  }
  EXPECT_FALSE(fs::exists(gone));
  EXPECT_TRUE(fs::exists(kept));
}

TEST_F(LeftoverTest, EachHasAPlaceOfItsOwn) {
  const std::string first = put("first");
  const std::string second = put("second");
  {
    Leftover one;
    Leftover other;
    one.watch(first);
    other.watch(second);
  }
  EXPECT_FALSE(fs::exists(first));
  EXPECT_FALSE(fs::exists(second));
}

// No command makes one so deep; what it lies in stays, and nothing waits for it.
TEST_F(LeftoverTest, AFolderOfTwentyWithinOneAnotherStays) {
  std::string deep = "scratch";
  for (int depth = 1; depth <= 20; ++depth) deep += "/" + std::to_string(depth);
  put(deep + "/file");
  put("scratch/beside");
  {
    Leftover leftover;
    leftover.watch(path("scratch"));
  }
  EXPECT_TRUE(fs::exists(path(deep + "/file")));
  EXPECT_FALSE(fs::exists(path("scratch/beside")));
}

// As a signal does that ends the process.
TEST_F(LeftoverTest, AllThatIsStillWatchedGoesAtOnce) {
  Leftover leftovers[3];
  const char* const names[] = {"kept", "gone", "kept too"};
  for (int at = 0; at < 3; ++at) leftovers[at].watch(put(names[at]));
  leftovers[0].keep();
  leftovers[2].keep();
  removeLeftovers();
  EXPECT_TRUE(fs::exists(path("kept")));
  EXPECT_FALSE(fs::exists(path("gone")));
  EXPECT_TRUE(fs::exists(path("kept too")));
}

TEST_F(LeftoverTest, WhatIsGoneAlreadyOrHasNoNameIsNoTrouble) {
  Leftover leftover;
  leftover.watch("");
  leftover.remove();
  leftover.watch(path("never there"));
  leftover.remove();
  leftover.watch(std::string(10'000, 'x'));
  leftover.remove();
}

TEST_F(LeftoverTest, ThereIsRoomAgainForThoseThatCameAndWent) {
  for (int round = 0; round < 50; ++round) {
    Leftover leftover;
    leftover.watch(put("again"));
    leftover.remove();
    EXPECT_FALSE(fs::exists(path("again")));
  }
}

// What a command is that makes a folder and then takes for ever.
[[noreturn]] void runForEver(const std::string& temporary, int ready) {
  setenv("TMPDIR", temporary.c_str(), 1);
  const std::atomic<bool>& isInterrupted = interruptedBySignals();
  const ScratchFolder scratch;
  std::ofstream(scratch.path() + "/table") << "half of one";
  if (write(ready, "r", 1) != 1) _exit(3);
  while (!isInterrupted) pause();
  if (write(ready, "i", 1) != 1) _exit(3);
  for (;;) pause();
}

TEST_F(LeftoverTest, WhoAsksTwiceEndsTheProcessAndFindsNothingOfIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      std::signal(signal, SIG_DFL);
      runForEver(folder_.path(), ends[1]);
    }
    close(ends[1]);
    char word = 0;
    ASSERT_EQ(read(ends[0], &word, 1), 1);
    EXPECT_FALSE(fs::is_empty(folder_.path()));
    kill(child, signal);
    ASSERT_EQ(read(ends[0], &word, 1), 1) << "the first one is a wish";
    EXPECT_EQ(word, 'i');
    kill(child, signal);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), signal);
    close(ends[0]);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
  }
}

}  // namespace
}  // namespace halvora
