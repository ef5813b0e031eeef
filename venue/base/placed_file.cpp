// SPDX-License-Identifier: Apache-2.0
#include "venue/base/placed_file.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace halvora {

namespace fs = std::filesystem;

std::string fileAt(const std::string& path) {
  constexpr int kMostLinks = 40;
  fs::path file = path;
  std::error_code error;
  fs::file_status status = fs::symlink_status(file, error);
  for (int link = 0; fs::is_symlink(status) && link < kMostLinks; ++link) {
    file = file.parent_path() / fs::read_symlink(file, error);
    status = fs::symlink_status(file, error);
  }
  return !fs::exists(status) || fs::is_regular_file(status) ? file.string() : std::string();
}

PlacedFile::PlacedFile(const std::string& path) : path_(fileAt(path)) {}

bool PlacedFile::begin() {
  if (path_.empty()) return false;
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
