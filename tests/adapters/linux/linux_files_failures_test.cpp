// SPDX-License-Identifier: Apache-2.0
// Writing a file where the system refuses something on the way: names that are taken, locks, room,
// descriptors. Whatever it is, the file is whole, old or new, and nothing is left beside it.
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "adapters/linux/linux_files.h"
#include "adapters/standard/file_names.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/support/storage_calls.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::StartsWith;
using Names = std::vector<std::string>;

/// A limit of this process's own, for as long as one lives.
class Limit {
 public:
  Limit(__rlimit_resource resource, rlim_t most) : resource_(resource) {
    getrlimit(resource, &before_);
    const rlimit limit{most, before_.rlim_max};
    EXPECT_EQ(setrlimit(resource, &limit), 0);
  }
  ~Limit() { setrlimit(resource_, &before_); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

 private:
  __rlimit_resource resource_;
  rlimit before_{};
};

class LinuxFilesRefused : public testing::Test {
 protected:
  std::string pathOf(const std::string& name) const { return folder_.path() + "/" + name; }
  Names names() const { return files_.list(folder_.path()).value_or(Names{"(none)"}); }
  mode_t modeOf(const std::string& path) const {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }
  /// A name for a file that is being written, as somebody else took it.
  std::string take(std::uint64_t number) const {
    folder_.write("file" + leftoverEnding(number), "another's");
    return "file" + leftoverEnding(number);
  }

  TemporaryFolder folder_;
  LinuxFiles files_;
};

TEST_F(LinuxFilesRefused, ATakenNameGivesWayToTheNext) {
  StorageCalls calls;
  calls.chance = 0x0123456789abcdef;
  const std::string first = take(0x0123456789abcdef);
  const std::string second = take(0x0123456789abcdf0);
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
  EXPECT_THAT(calls.all, ElementsAre("rename file.new-0123456789abcdf1 file"));
  EXPECT_EQ(files_.read(pathOf("file"), 10), "new");
  EXPECT_THAT(names(), ElementsAre("file", first, second));
  EXPECT_EQ(files_.read(pathOf(first), 10), "another's");
}

TEST_F(LinuxFilesRefused, WhereAllNamesAreTakenNothingIsWritten) {
  StorageCalls calls;
  calls.chance = 1;
  for (std::uint64_t number = 1; number <= 200; ++number) take(number);
  EXPECT_FALSE(files_.replace(pathOf("file"), "new"));
  EXPECT_EQ(names().size(), 200U);
  // A hundred are tried.
  unlink(pathOf("file" + leftoverEnding(200)).c_str());
  calls.chance = 100;
  EXPECT_FALSE(files_.replace(pathOf("file"), "new"));
  calls.chance = 101;
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
}

TEST_F(LinuxFilesRefused, WithoutChanceTheNamesBeginAtNought) {
  StorageCalls calls;
  calls.hasNoChance = true;
  take(0);
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
  EXPECT_THAT(calls.all, ElementsAre("rename file.new-0000000000000001 file"));
}

TEST_F(LinuxFilesRefused, ALockThatAnotherHoldsMeansThatTheFileIsGone) {
  StorageCalls calls;
  calls.chance = 7;
  calls.locks = {EWOULDBLOCK, EWOULDBLOCK};
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
  EXPECT_THAT(calls.all, ElementsAre("rename file.new-0000000000000009 file"));
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(LinuxFilesRefused, WhereThereAreNoLocksFilesAreWrittenWithout) {
  StorageCalls calls;
  calls.chance = 7;
  calls.locks = {ENOLCK};
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
  EXPECT_THAT(calls.all, ElementsAre("rename file.new-0000000000000007 file"));
  const std::string left = take(3);
  calls.locks = {ENOLCK};
  files_.removeLeftovers(pathOf("file"));
  EXPECT_THAT(names(), ElementsAre("file", left)) << "and nothing is removed";
}

TEST_F(LinuxFilesRefused, AFileThatIsCutShortIsNotKept) {
  folder_.write("file", "old");
  const auto before = signal(SIGXFSZ, SIG_IGN);
  {
    // The first write gets some of it through, the second one nothing.
    const Limit limit(RLIMIT_FSIZE, 1000);
    EXPECT_FALSE(files_.replace(pathOf("file"), std::string(1001, 'x')));
    EXPECT_EQ(files_.read(pathOf("file"), 10), "old");
    EXPECT_TRUE(files_.replace(pathOf("file"), std::string(1000, 'x')));
  }
  signal(SIGXFSZ, before);
  EXPECT_EQ(files_.read(pathOf("file"), 2000), std::string(1000, 'x'));
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(LinuxFilesRefused, WithoutDescriptorsNothingIsWritten) {
  folder_.write("file", "old");
  const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
  ASSERT_GE(next, 0);
  close(next);
  // None; one for the file; and one for its lock as well.
  for (const auto& [more, isWritten] : {std::pair{0, false}, {1, false}, {2, true}}) {
    const Limit limit(RLIMIT_NOFILE, static_cast<rlim_t>(next + more));
    EXPECT_EQ(files_.replace(pathOf("file"), "new"), isWritten) << more;
  }
  EXPECT_THAT(names(), ElementsAre("file"));
  EXPECT_EQ(files_.read(pathOf("file"), 10), "new");
}

TEST_F(LinuxFilesRefused, NoDescriptorIsKept) {
  const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(next);
  EXPECT_TRUE(files_.replaceLastingly(pathOf("file"), "new"));
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b")));
  files_.list(folder_.path());
  files_.removeLeftovers(pathOf("file"));
  const int again = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(again, next);
  close(again);
}

TEST_F(LinuxFilesRefused, WhoMayDoWhatIsLeftToTheUser) {
  const mode_t before = umask(0);
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
  EXPECT_TRUE(files_.makeFolder(pathOf("folder")));
  umask(before);
  EXPECT_EQ(modeOf(pathOf("file")), 0666U);
  EXPECT_EQ(modeOf(pathOf("folder")), 0777U);
}

/// This process in another folder, for as long as one lives.
class InFolder {
 public:
  explicit InFolder(const std::string& path) : before_(open(".", O_PATH | O_CLOEXEC)) {
    EXPECT_EQ(chdir(path.c_str()), 0);
  }
  ~InFolder() {
    EXPECT_EQ(fchdir(before_), 0);
    close(before_);
  }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;

 private:
  int before_;
};

TEST_F(LinuxFilesRefused, ANameWithoutAFolderIsInTheOneOfTheProcess) {
  const InFolder in(folder_.path());
  const std::string own = folder_.path().substr(folder_.path().rfind('/') + 1);
  StorageCalls calls;
  EXPECT_TRUE(files_.replaceLastingly("file", "new"));
  EXPECT_THAT(calls.all, ElementsAre(StartsWith("sync file.new-"), StartsWith("rename file.new-"),
                                     "sync " + own));
  calls.all.clear();
  EXPECT_TRUE(files_.makeFolder("folder"));
  EXPECT_THAT(calls.all, ElementsAre("sync " + own));
  EXPECT_FALSE(files_.makeFolder(""));
  EXPECT_TRUE(files_.makeFolder("a"));
  calls.all.clear();
  EXPECT_TRUE(files_.replaceLastingly("a/file", "new"));
  EXPECT_EQ(calls.all.back(), "sync a");
  take(5);
  files_.removeLeftovers("file");
  EXPECT_THAT(names(), ElementsAre("a", "file", "folder"));
}

TEST_F(LinuxFilesRefused, TheFirstFolderOfAllIsThere) {
  EXPECT_TRUE(files_.makeFolder("/"));
  EXPECT_TRUE(files_.makeFolder("//"));
  // Its own name has the root above it, and nobody makes anything there.
  EXPECT_TRUE(files_.makeFolder("/tmp"));
  EXPECT_FALSE(files_.makeFolder("/proc/self/nobody/makes/this"));
}

TEST(LinuxFilesTimes, AreToldHoweverFarTheyAre) {
  // Where files are in memory, times may be as far away as numbers go.
  const std::string path = "/dev/shm/halvora-times-" + std::to_string(getpid());
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) GTEST_SKIP() << "no files in memory here";
  const LinuxFiles files;
  // Nanoseconds beyond that would not be counted in a number, and their parts are not told.
  constexpr std::int64_t kFarthest = INT64_MAX / 1'000'000'000 - 1;
  bool isKept = true;
  for (const std::int64_t second : {std::int64_t{-5}, kFarthest, kFarthest + 1, kFarthest + 2,
                                    -kFarthest, -kFarthest - 1, -kFarthest - 2}) {
    const timespec time{second, 999'999'999};
    const timespec times[2] = {time, time};
    struct stat status {};
    isKept = isKept && futimens(file, times) == 0 && fstat(file, &status) == 0 &&
             status.st_mtim.tv_sec == second;
    if (!isKept) break;
    const bool isNear = second <= kFarthest && second >= -kFarthest;
    const double expected = static_cast<double>(second) + (isNear ? 0.999999999 : 0);
    EXPECT_NEAR(files.attributes(path)->modifiedAt, expected, 1e-5) << second;
  }
  close(file);
  unlink(path.c_str());
  if (!isKept) GTEST_SKIP() << "times are kept within bounds here";
}

}  // namespace
}  // namespace halvora
