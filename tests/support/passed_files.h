// SPDX-License-Identifier: Apache-2.0
// Files that pass on what they are asked, for tests that want one thing of them to be otherwise.
// Owned by the test; those beneath outlive them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/files.h"

namespace halvora {

class PassedFiles : public Files {
 public:
  explicit PassedFiles(Files& files) : files_(files) {}

  std::optional<FileAttributes> attributes(const std::string& path) const override {
    return files_.attributes(path);
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) const override {
    return files_.list(folder);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    return files_.read(path, limit);
  }
  bool replace(const std::string& path, std::string_view bytes) override {
    return files_.replace(path, bytes);
  }
  bool replaceLastingly(const std::string& path, std::string_view bytes) override {
    return files_.replaceLastingly(path, bytes);
  }
  void removeLeftovers(const std::string& beginning) override { files_.removeLeftovers(beginning); }
  bool makeFolder(const std::string& path) override { return files_.makeFolder(path); }
  bool move(const std::string& from, const std::string& to) override {
    return files_.move(from, to);
  }
  void removeFolder(const std::string& path) override { files_.removeFolder(path); }

 private:
  Files& files_;
};

}  // namespace halvora
