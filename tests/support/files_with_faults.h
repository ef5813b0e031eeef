// SPDX-License-Identifier: Apache-2.0
// Files in memory of which single ones cannot be listed or written. Owned by the test.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/virtual/virtual_files.h"

namespace halvora {

class FilesWithFaults final : public Files {
 public:
  std::optional<FileAttributes> attributes(const std::string& path) const override {
    return files.attributes(path);
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) const override {
    return folder == unlistable ? std::nullopt : files.list(folder);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    return files.read(path, limit);
  }
  bool replace(const std::string& path, std::string_view bytes) override {
    return path != unwritable && files.replace(path, bytes);
  }
  void removeLeftovers(const std::string& beginning) override { files.removeLeftovers(beginning); }
  bool makeFolder(const std::string& path) override { return files.makeFolder(path); }
  bool move(const std::string& from, const std::string& to) override {
    return files.move(from, to);
  }
  void removeFolder(const std::string& path) override { files.removeFolder(path); }

  VirtualFiles files;
  /// A folder and a file.
  std::string unlistable;
  std::string unwritable;
};

}  // namespace halvora
