// SPDX-License-Identifier: Apache-2.0
// An empty folder that is gone, with everything in it, when this object goes.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace halvora {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::error_code error;
    path_ = (std::filesystem::temp_directory_path(error) / "halvora-XXXXXX").string();
    if (error || mkdtemp(path_.data()) == nullptr) path_.clear();
  }
  ~ScratchFolder() {
    std::error_code error;
    if (!path_.empty()) std::filesystem::remove_all(path_, error);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  /// Empty where none could be made.
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace halvora
