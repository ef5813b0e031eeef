// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/written_files.h"

#include <filesystem>
#include <utility>

#include <unistd.h>

namespace halvora {

namespace fs = std::filesystem;

bool WrittenFiles::replace(const std::string& path, std::string_view bytes) {
  // Room to write it down first: what was written and not written down could not be taken back.
  std::string name = path;
  const std::lock_guard lock(mutex_);
  written_.reserve(written_.size() + 1);
  const bool isWritten = !isInterrupted_ && files_.replace(path, bytes);
  if (isWritten) written_.push_back(std::move(name));
  return isDone(isWritten, path);
}

bool WrittenFiles::makeFolder(const std::string& path) {
  std::vector<std::string> missing;
  std::error_code error;
  for (fs::path folder = path; !folder.empty() && !fs::exists(folder, error);
       folder = folder.parent_path()) {
    missing.push_back(folder.string());
  }
  const std::lock_guard lock(mutex_);
  // Of a folder that cannot be made, those above it may be.
  made_.insert(made_.end(), missing.rbegin(), missing.rend());
  return isDone(!isInterrupted_ && files_.makeFolder(path), path);
}

void WrittenFiles::takeBack() noexcept {
  const std::lock_guard lock(mutex_);
  // Nothing here needs memory: there may be none left.
  for (const std::string& file : written_) unlink(file.c_str());
  // Fails where there is something in it.
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) rmdir(folder->c_str());
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
