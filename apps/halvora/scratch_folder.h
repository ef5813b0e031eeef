// SPDX-License-Identifier: Apache-2.0
// An empty folder that is gone, with everything in it, when this object goes.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "venue/base/leftover.h"

namespace halvora {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::error_code error;
    path_ = (std::filesystem::temp_directory_path(error) / "halvora-XXXXXX").string();
    if (error || mkdtemp(path_.data()) == nullptr) path_.clear();
    leftover_.watch(path_);
  }

  /// Empty where none could be made.
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  Leftover leftover_;
};

}  // namespace halvora
