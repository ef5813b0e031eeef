// SPDX-License-Identifier: Apache-2.0
// The file system as a need: folders are listed, whole files read and replaced, never opened for
// long. Paths are absolute, UTF-8, with '/' between names; links are followed. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/text.h"

namespace halvora {

struct FileAttributes {
  bool isFolder = false;
  /// Bytes.
  std::uint64_t size = 0;
  /// Seconds since 1970, as fine as the file system keeps them.
  double modifiedAt = 0;
};

class Files {
 public:
  /// A folder with more entries than these is listed no further.
  static constexpr std::size_t kMostEntries = 100'000;

  virtual ~Files() = default;
  /// None where there is nothing, or it may not be looked at.
  virtual std::optional<FileAttributes> attributes(const std::string& path) const = 0;
  /// The names in a folder: whole numbers first, by value, then the others, by code point. None
  /// where it cannot be listed.
  virtual std::optional<std::vector<std::string>> list(const std::string& folder) const = 0;
  /// The bytes of a regular file; none when it is missing, unreadable or larger than `limit`.
  virtual std::optional<std::string> read(const std::string& path, std::size_t limit) const = 0;
  /// Writes a whole file in place of what is there, or leaves that as it was: no reader, and no
  /// crash of the process, ever sees a part. False, and no trace of it, where that failed.
  virtual bool replace(const std::string& path, std::string_view bytes) = 0;
  /// Makes a folder and those above it; true if it is there afterwards.
  virtual bool makeFolder(const std::string& path) = 0;
  /// Gives a file or folder another name in its file system, in place of a file that had it. False,
  /// and nothing changed, where that failed.
  virtual bool move(const std::string& from, const std::string& to) = 0;
  /// Removes a file, or a folder and everything in it, as far as that is allowed.
  virtual void removeFolder(const std::string& path) = 0;
};

/// The order of a listing: "10" comes after "9", and "x" after both.
inline bool isListedBefore(std::string_view left, std::string_view right) {
  const auto placeOf = [](std::string_view name) {
    constexpr std::size_t kMostDigits = 18;
    const bool isNumber = !name.empty() && name.size() <= kMostDigits &&
                          name.find_first_not_of("0123456789") == std::string_view::npos;
    return std::tuple(!isNumber, isNumber ? integerValue(name) : 0, name);
  };
  return placeOf(left) < placeOf(right);
}

}  // namespace halvora
