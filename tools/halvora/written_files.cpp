// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/written_files.h"

#include <filesystem>

namespace halvora {

namespace fs = std::filesystem;

bool WrittenFiles::replace(const std::string& path, std::string_view bytes) {
  const bool isWritten = !isInterrupted_ && files_.replace(path, bytes);
  const std::lock_guard lock(mutex_);
  if (isWritten) written_.push_back(path);
  return isDone(isWritten, path);
}

bool WrittenFiles::makeFolder(const std::string& path) {
  std::vector<std::string> missing;
  std::error_code error;
  for (fs::path folder = path; !folder.empty() && !fs::exists(folder, error);
       folder = folder.parent_path()) {
    missing.push_back(folder.string());
  }
  const bool isMade = !isInterrupted_ && files_.makeFolder(path);
  const std::lock_guard lock(mutex_);
  // Of a folder that could not be made, those above it may have been.
  made_.insert(made_.end(), missing.rbegin(), missing.rend());
  return isDone(isMade, path);
}

void WrittenFiles::takeBack() {
  const std::lock_guard lock(mutex_);
  std::error_code error;
  for (const std::string& file : written_) fs::remove(file, error);
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) {
    // Removing fails where there is something in it.
    if (fs::is_directory(fs::symlink_status(*folder, error))) fs::remove(*folder, error);
  }
  written_.clear();
  made_.clear();
}

std::string WrittenFiles::firstFailure() const {
  const std::lock_guard lock(mutex_);
  return firstFailure_;
}

// Under the lock.
bool WrittenFiles::isDone(bool isGood, const std::string& path) {
  if (!isGood && firstFailure_.empty()) firstFailure_ = path;
  return isGood;
}

}  // namespace halvora
