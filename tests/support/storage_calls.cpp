// SPDX-License-Identifier: Apache-2.0
#include "tests/support/storage_calls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace halvora {
namespace {

StorageCalls* listener = nullptr;
int syncs = 0;

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string pathOf(int file) {
  std::array<char, 4096> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t size = readlink(link.c_str(), path.data(), path.size());
  return size < 0 ? "?" : std::string(path.data(), static_cast<std::size_t>(size));
}

/// What is to go wrong with the next call to sync; 0 for nothing.
int errorOfSync(int file) {
  if (listener == nullptr) return 0;
  if (listener->interruptions > 0) {
    --listener->interruptions;
    return EINTR;
  }
  listener->all.push_back("sync " + nameOf(pathOf(file)));
  const bool fails = listener->firstFailure != 0 && ++syncs >= listener->firstFailure;
  return fails ? listener->error : 0;
}

}  // namespace

StorageCalls::StorageCalls() {
  listener = this;
  syncs = 0;
}

StorageCalls::~StorageCalls() { listener = nullptr; }

}  // namespace halvora

// In place of the C library's.
extern "C" int fsync(int file) {
  if (const int error = halvora::errorOfSync(file)) {
    errno = error;
    return -1;
  }
  return static_cast<int>(syscall(SYS_fsync, file));
}

extern "C" int rename(const char* from, const char* to) noexcept {
  if (halvora::listener != nullptr) {
    halvora::listener->all.push_back("rename " + halvora::nameOf(from) + " " + halvora::nameOf(to));
  }
  return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

extern "C" int flock(int file, int operation) noexcept {
  if (halvora::listener != nullptr && !halvora::listener->locks.empty()) {
    std::vector<int>& locks = halvora::listener->locks;
    const int error = locks.front();
    locks.erase(locks.begin());
    if (error != 0) {
      errno = error;
      return -1;
    }
  }
  return static_cast<int>(syscall(SYS_flock, file, operation));
}

extern "C" ssize_t getrandom(void* bytes, size_t size, unsigned int flags) {
  if (halvora::listener != nullptr && halvora::listener->hasNoChance) {
    std::memset(bytes, 0x5A, size);
    errno = EAGAIN;
    return -1;
  }
  if (halvora::listener != nullptr && halvora::listener->chance) {
    const std::size_t count = std::min(size, sizeof *halvora::listener->chance);
    std::memcpy(bytes, &*halvora::listener->chance, count);
    return static_cast<ssize_t>(count);
  }
  return syscall(SYS_getrandom, bytes, size, flags);
}
