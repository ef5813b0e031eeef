// SPDX-License-Identifier: Apache-2.0
// A file system in memory, with a disk that can be full and folders that can be read-only. Safe
// from several threads, apart from its settings.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "adapters/virtual/log.h"
#include "halvora/platform/files.h"

namespace halvora {

class VirtualFiles final : public Files {
 public:
  std::optional<FileAttributes> attributes(const std::string& path) const override;
  std::optional<std::vector<std::string>> list(const std::string& folder) const override;
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override;
  bool replace(const std::string& path, std::string_view bytes) override;
  /// Nobody else writes here.
  void removeLeftovers(const std::string& beginning) override;
  bool makeFolder(const std::string& path) override;
  /// Files only.
  bool move(const std::string& from, const std::string& to) override;
  void removeFolder(const std::string& path) override;

  /// Somebody else's doing: a file with the folders above it, or one less.
  void put(const std::string& path, std::string bytes, double modifiedAt = 0);
  void remove(const std::string& path);
  void touch(const std::string& path, double modifiedAt);

  /// Writing fails from now on, or folders can no longer be made.
  bool isFull = false;
  bool isReadOnly = false;
  /// What the clock of this file system says; every written file gets it.
  double now = 0;
  /// The paths that were read, and that were replaced.
  mutable Log<std::string> reads;
  Log<std::string> writes;

 private:
  struct File {
    std::string bytes;
    double modifiedAt = 0;
  };
  void makeFoldersAbove(const std::string& path);

  mutable std::mutex mutex_;
  std::map<std::string, File> files_;
  std::set<std::string> folders_;
};

}  // namespace halvora
