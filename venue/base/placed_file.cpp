// SPDX-License-Identifier: Apache-2.0
#include "venue/base/placed_file.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace halvora {

namespace fs = std::filesystem;

PlacedFile::PlacedFile(std::string path) : path_(std::move(path)) {}

bool PlacedFile::begin() {
  constexpr int kMostTries = 1000;
  for (int at = 0; at < kMostTries; ++at) {
    part_ = path_ + ".part-" + std::to_string(at);
    // "x" leaves alone what is there.
    if (std::FILE* file = std::fopen(part_.c_str(), "wbx")) {
      leftover_.watch(part_);
      std::fclose(file);
      return true;
    }
    std::error_code error;
    if (!fs::exists(fs::symlink_status(part_, error))) return false;
  }
  return false;
}

bool PlacedFile::place() {
  const bool isDone = std::rename(part_.c_str(), path_.c_str()) == 0;
  if (isDone) leftover_.keep();
  return isDone;
}

}  // namespace halvora
