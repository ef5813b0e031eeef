// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/whole_lines.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

class WholeLinesTest : public testing::Test {
 protected:
  std::string path() const { return folder_.path() + "/output"; }
  std::string contents() const {
    std::ifstream file(path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// In a process of its own, whose files may have so many bytes: whether each text was written.
  std::string writeInto(int flags, rlim_t most, const std::vector<std::string>& texts) const {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{most, most};
      setrlimit(RLIMIT_FSIZE, &limit);
      WholeLines output(open(path().c_str(), flags, 0600));
      for (const std::string& text : texts) {
        const char answer = output.write(text) ? 'y' : 'n';
        if (write(ends[1], &answer, 1) != 1) _exit(1);
      }
      _exit(0);
    }
    close(ends[1]);
    std::string answers;
    for (char answer = 0; read(ends[0], &answer, 1) == 1;) answers += answer;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return answers;
  }

  TemporaryFolder folder_;
};

TEST_F(WholeLinesTest, AFileThatMayNotGrowKeepsTheLinesThatFit) {
  constexpr int kNew = O_WRONLY | O_CREAT | O_TRUNC;
  EXPECT_EQ(writeInto(kNew, 25, {"first line\n", "second line\nthird line\n", "fourth\n"}), "ynn");
  EXPECT_EQ(contents(), "first line\nsecond line\n");
  EXPECT_EQ(writeInto(kNew, 5, {"first line\n", "a\n"}), "ny");
  EXPECT_EQ(contents(), "a\n");
  EXPECT_EQ(writeInto(kNew, 1000, {"first\n", "second\n"}), "yy");
  EXPECT_EQ(contents(), "first\nsecond\n");
}

TEST_F(WholeLinesTest, WhatAFileHeldBeforeStays) {
  std::ofstream(path()) << "earlier\n";
  EXPECT_EQ(writeInto(O_WRONLY | O_APPEND, 12, {"later line\n"}), "n");
  EXPECT_EQ(contents(), "earlier\n");
  EXPECT_EQ(writeInto(O_RDWR, 8, {"now\nand more than fits\n"}), "n");
  EXPECT_EQ(contents().substr(0, 4), "now\n");
}

TEST_F(WholeLinesTest, AFullDeviceIsNoClosedPipe) {
  const int full = open("/dev/full", O_WRONLY);
  if (full < 0) GTEST_SKIP() << "there is no such device";
  WholeLines output(full);
  EXPECT_FALSE(output.write("line\n"));
  EXPECT_FALSE(output.isClosed());
  close(full);
}

TEST_F(WholeLinesTest, APipeThatNobodyReadsIsClosed) {
  std::signal(SIGPIPE, SIG_IGN);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  WholeLines output(ends[1]);
  EXPECT_TRUE(output.write("line\n"));
  EXPECT_FALSE(output.isClosed());
  close(ends[0]);
  EXPECT_FALSE(output.write("line\n"));
  EXPECT_TRUE(output.isClosed());
  EXPECT_FALSE(output.write("line\n"));
  close(ends[1]);
}

TEST_F(WholeLinesTest, APipeThatIsFullForNowIsWaitedFor) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  fcntl(ends[1], F_SETFL, O_NONBLOCK);
  const std::string text = std::string(300'000, 'x') + "\n";
  const pid_t child = fork();
  if (child == 0) _exit(WholeLines(ends[1]).write(text) ? 0 : 1);
  close(ends[1]);
  std::string got;
  char block[4096];
  for (ssize_t count = 0; (count = read(ends[0], block, sizeof block)) > 0;) {
    got.append(block, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(got, text);
}

}  // namespace
}  // namespace halvora
