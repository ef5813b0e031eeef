// SPDX-License-Identifier: Apache-2.0
// The file system as a need: folders are listed, whole files read and replaced, never opened for
// long. Paths are absolute, UTF-8, with '/' between names; links are followed. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// What a file system says of something in it.
struct FileAttributes {
  bool isFolder = false;  ///< Otherwise a file.
  /// Bytes.
  std::uint64_t size = 0;
  /// Seconds since 1970, as fine as the file system keeps them.
  double modifiedAt = 0;
  friend bool operator==(const FileAttributes&, const FileAttributes&) = default;
};

class Files : public Need {
 public:
  /// A folder with more entries than these is listed no further.
  static constexpr std::size_t kMostEntries = 100'000;

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

/// Whether there is something at that path that is no folder.
inline bool isFile(const Files& files, const std::string& path) {
  const std::optional<FileAttributes> attributes = files.attributes(path);
  return attributes && !attributes->isFolder;
}

}  // namespace v0
}  // namespace halvora
