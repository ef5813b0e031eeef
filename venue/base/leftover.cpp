// SPDX-License-Identifier: Apache-2.0
#include "venue/base/leftover.h"

#include <array>
#include <atomic>
#include <climits>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace halvora {

namespace {

// A command has one or two.
constexpr std::size_t kMostLeftovers = 4;
// A folder of tables in a folder of videos in a folder of its own.
constexpr int kDeepest = 16;

struct Place {
  std::atomic<bool> isTaken{false};
  /// Only then is the path whole.
  std::atomic<bool> isWatched{false};
  std::array<char, PATH_MAX> path{};
};

std::array<Place, kMostLeftovers> places;

void removeAt(int folder, const char* name, int depth) noexcept;

void removeWithin(int folder, int depth) noexcept {
  alignas(dirent64) std::array<char, 4096> block{};
  // What is removed may hide what follows, so each block is the first one.
  for (;;) {
    lseek(folder, 0, SEEK_SET);
    const ssize_t size = getdents64(folder, block.data(), block.size());
    bool isAny = false;
    for (ssize_t at = 0; at < size;) {
      const auto* entry = reinterpret_cast<const dirent64*>(block.data() + at);
      at += entry->d_reclen;
      const char* name = entry->d_name;
      if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
      removeAt(folder, name, depth);
      isAny = isAny || faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
    }
    if (!isAny) return;
  }
}

void removeAt(int folder, const char* name, int depth) noexcept {
  if (unlinkat(folder, name, 0) == 0 || depth == 0) return;
  const int inner = openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (inner < 0) return;
  removeWithin(inner, depth - 1);
  close(inner);
  unlinkat(folder, name, AT_REMOVEDIR);
}

}  // namespace

void Leftover::watch(const std::string& path) noexcept {
  remove();
  if (path.empty() || path.size() >= PATH_MAX) return;
  for (std::size_t at = 0; at < places.size(); ++at) {
    Place& place = places[at];
    if (place.isTaken.exchange(true)) continue;
    std::memcpy(place.path.data(), path.c_str(), path.size() + 1);
    place.isWatched = true;
    place_ = static_cast<int>(at);
    return;
  }
}

void Leftover::remove() noexcept {
  if (place_ < 0) return;
  removeAt(AT_FDCWD, places[static_cast<std::size_t>(place_)].path.data(), kDeepest);
  keep();
}

void Leftover::keep() noexcept {
  if (place_ < 0) return;
  Place& place = places[static_cast<std::size_t>(place_)];
  place.isWatched = false;
  place.isTaken = false;
  place_ = -1;
}

void removeLeftovers() noexcept {
  for (const Place& place : places) {
    if (place.isWatched) removeAt(AT_FDCWD, place.path.data(), kDeepest);
  }
}

}  // namespace halvora
