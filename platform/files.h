// SPDX-License-Identifier: Apache-2.0
// The file system as a need: folders are listed, whole files read and replaced, never opened for
// long. Paths are absolute, UTF-8, with '/' between names; links are followed. Any thread.
#pragma once

#include <array>
#include <charconv>
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
  /// None where there is neither a file nor a folder, or it may not be looked at.
  virtual std::optional<FileAttributes> attributes(const std::string& path) const = 0;
  /// The names in a folder: whole numbers first, by value, then the others, by code point. None
  /// where it cannot be listed.
  virtual std::optional<std::vector<std::string>> list(const std::string& folder) const = 0;
  /// The bytes of a regular file; none when it is missing, unreadable or larger than `limit`.
  virtual std::optional<std::string> read(const std::string& path, std::size_t limit) const = 0;
  /// Writes a whole file in place of what is there, or leaves that as it was: no reader, and no
  /// crash of the process, ever sees a part. False, and no trace of it, where that failed.
  virtual bool replace(const std::string& path, std::string_view bytes) = 0;
  /// As `replace`, and what is true of a crash of the process is true of a power cut: by the time
  /// it returns true, the medium has the new file. Takes as long as the medium takes.
  virtual bool replaceLastingly(const std::string& path, std::string_view bytes) {
    return replace(path, bytes);
  }
  /// Removes what writers that were killed have left of the files whose paths begin so ("/data/x":
  /// of "/data/x", "/data/x.png"), and leaves alone what a living one is writing.
  virtual void removeLeftovers(const std::string& /*beginning*/) {}
  /// Makes a folder and those above it; true if it is there afterwards.
  virtual bool makeFolder(const std::string& path) = 0;
  /// Gives a file or folder another name in its file system, in place of a file that had it. False,
  /// and nothing changed, where that failed.
  virtual bool move(const std::string& from, const std::string& to) = 0;
  /// Removes a file, or a folder and everything in it, as far as that is allowed.
  virtual void removeFolder(const std::string& path) = 0;
};

inline constexpr std::string_view kLeftoverMark = ".new-";
inline constexpr std::size_t kLeftoverDigits = 16;

/// What the name of a file ends with until it is whole and gets its own.
inline std::string leftoverEnding(std::uint64_t number) {
  std::array<char, kLeftoverDigits> text{};
  const char* end = std::to_chars(text.data(), text.data() + text.size(), number, 16).ptr;
  const auto size = static_cast<std::size_t>(end - text.data());
  return std::string(kLeftoverMark) + std::string(kLeftoverDigits - size, '0') +
         std::string(text.data(), size);
}

inline bool isLeftover(std::string_view name) {
  constexpr std::size_t kSize = kLeftoverMark.size() + kLeftoverDigits;
  if (name.size() < kSize) return false;
  const std::string_view ending = name.substr(name.size() - kSize);
  return ending.starts_with(kLeftoverMark) &&
         ending.find_first_not_of("0123456789abcdef", kLeftoverMark.size()) ==
             std::string_view::npos;
}

inline bool isFile(const Files& files, const std::string& path) {
  const std::optional<FileAttributes> attributes = files.attributes(path);
  return attributes && !attributes->isFolder;
}

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
