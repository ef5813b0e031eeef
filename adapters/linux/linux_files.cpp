// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/linux_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "adapters/standard/file_names.h"

namespace halvora {

namespace {

constexpr mode_t kFileMode = 0666;
constexpr mode_t kFolderMode = 0777;
constexpr int kMostNames = 100;

/// A call until no signal comes between.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  explicit operator bool() const { return number_ >= 0; }
  int number() const { return number_; }
  /// Only this says whether the disk had room for the last of it. A signal does not keep it open.
  bool close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || ::close(number) == 0 || errno == EINTR;
  }

 private:
  int number_;
};

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

bool isFolder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::uint64_t anyNumber() {
  std::uint64_t number = 0;
  // Without chance the names are tried one after the other.
  if (getrandom(&number, sizeof number, GRND_NONBLOCK) < 0) number = 0;
  return number;
}

/// A new file beside `path`, which the rest of the world can see is being written.
struct NewFile {
  std::string path;
  Descriptor descriptor{-1};
};

NewFile newFileBeside(const std::string& path) {
  std::uint64_t number = anyNumber();
  for (int count = 0; count < kMostNames; ++count, ++number) {
    NewFile file{path + leftoverEnding(number)};
    file.descriptor = Descriptor(uninterrupted([&file] {
      return open(file.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                  kFileMode);
    }));
    if (!file.descriptor && errno == EEXIST) continue;
    if (!file.descriptor) break;
    // Who removes leftovers may have been faster than the lock, and then has removed it or will. A
    // file system without locks has nothing removed.
    const bool isTaken =
        flock(file.descriptor.number(), LOCK_EX | LOCK_NB) < 0 && errno == EWOULDBLOCK;
    struct stat status {};
    if (!isTaken && fstat(file.descriptor.number(), &status) == 0 && status.st_nlink > 0)
      return file;
    unlink(file.path.c_str());
  }
  return {};
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        uninterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool sync(int descriptor) {
  return uninterrupted([descriptor] { return fsync(descriptor); }) == 0;
}

bool syncFolder(const std::string& path) {
  const Descriptor folder(
      uninterrupted([&path] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  // Some file systems cannot: there a name lasts when it lasts.
  return folder && (sync(folder.number()) || errno == EINVAL);
}

/// The lock lives as long as any descriptor of the file: a second one holds it while the first is
/// closed, which may be when the system says that the disk was full.
bool put(const std::string& path, std::string_view bytes, bool isLasting) {
  NewFile file = newFileBeside(path);
  if (!file.descriptor) return false;
  const int number = file.descriptor.number();
  const Descriptor lock(fcntl(number, F_DUPFD_CLOEXEC, 0));
  const bool isWritten =
      lock && writeAll(number, bytes) && (!isLasting || sync(number)) && file.descriptor.close();
  if (isWritten && rename(file.path.c_str(), path.c_str()) == 0) {
    return !isLasting || syncFolder(folderOf(path));
  }
  unlink(file.path.c_str());
  return false;
}

// Rounded once, as the standard library does: tables on the disk hold a video's time to the last
// bit.
double secondsOf(const timespec& time) {
  constexpr std::int64_t kASecond = 1'000'000'000;
  constexpr std::int64_t kFarthest = INT64_MAX / kASecond - 1;
  if (time.tv_sec > kFarthest || time.tv_sec < -kFarthest) return static_cast<double>(time.tv_sec);
  return static_cast<double>(time.tv_sec * kASecond + time.tv_nsec) / static_cast<double>(kASecond);
}

// Not by the standard library's iterator, which ends the process where there is no memory for a
// name. False if the folder cannot be read to its end; `take` says whether it goes on.
template <class Take>
bool readFolder(const std::string& path, const Take& take) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
  if (!folder) {
    if (errno == ENOMEM) throw std::bad_alloc();
    return false;
  }
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(folder.get());
    if (entry == nullptr) return errno == 0;
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && !take(name)) return true;
  }
}

void removeIfLeft(const std::string& path) {
  const Descriptor file(uninterrupted(
      [&path] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK); }));
  struct stat status {};
  const bool isLeft = file && fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) &&
                      flock(file.number(), LOCK_EX | LOCK_NB) == 0;
  if (isLeft) unlink(path.c_str());
}

}  // namespace

std::optional<FileAttributes> LinuxFiles::attributes(const std::string& path) const {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  const bool isFile = S_ISREG(status.st_mode);
  if (!isFile && !S_ISDIR(status.st_mode)) return std::nullopt;
  return FileAttributes{.isFolder = !isFile,
                        .size = isFile ? static_cast<std::uint64_t>(status.st_size) : 0,
                        .modifiedAt = secondsOf(status.st_mtim)};
}

std::optional<std::vector<std::string>> LinuxFiles::list(const std::string& folder) const {
  std::vector<std::string> names;
  const bool isRead = readFolder(folder, [&names](std::string_view name) {
    names.emplace_back(name);
    return names.size() < kMostEntries;
  });
  if (!isRead) return std::nullopt;
  std::sort(names.begin(), names.end(), isListedBefore);
  return names;
}

bool LinuxFiles::replace(const std::string& path, std::string_view bytes) {
  return put(path, bytes, false);
}

bool LinuxFiles::replaceLastingly(const std::string& path, std::string_view bytes) {
  return put(path, bytes, true);
}

void LinuxFiles::removeLeftovers(const std::string& beginning) {
  const std::string folder = folderOf(beginning);
  const std::string_view name = std::string_view(beginning).substr(beginning.rfind('/') + 1);
  readFolder(folder, [&](std::string_view found) {
    if (found.starts_with(name) && isLeftover(found)) {
      removeIfLeft(folder + "/" + std::string(found));
    }
    return true;
  });
}

bool LinuxFiles::makeFolder(const std::string& path) {
  if (isFolder(path)) return true;
  const std::string above = folderOf(path);
  if (path.empty() || above == path || !makeFolder(above)) return false;
  if (mkdir(path.c_str(), kFolderMode) != 0) return isFolder(path);
  // A name that does not last yet is a matter for whoever needs it to.
  syncFolder(above);
  return true;
}

// Not by the standard library, which ends the process where there is no memory for a name.
void LinuxFiles::removeFolder(const std::string& path) {
  constexpr int kMostOpen = 16;
  const auto removeOne = [](const char* name, const struct stat* /*status*/, int /*kind*/,
                            FTW* /*place*/) {
    static_cast<void>(std::remove(name));
    return 0;
  };
  // What is in a folder before the folder; a link, not where it leads.
  nftw(path.c_str(), removeOne, kMostOpen, FTW_DEPTH | FTW_PHYS);
}

}  // namespace halvora
