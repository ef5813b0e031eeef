// SPDX-License-Identifier: Apache-2.0
#include "venue/base/written_files.h"

#include <filesystem>
#include <iterator>
#include <list>

#include <unistd.h>

#include "venue/base/placed_file.h"

namespace halvora {

namespace fs = std::filesystem;

bool WrittenFiles::replace(const std::string& path, std::string_view bytes) {
  // Its entry is made first, so that what is written is never forgotten for want of memory.
  std::list<std::string> entry{fileAt(path)};
  const std::string& file = entry.front();
  const bool isWritten = !isInterrupted_ && !file.empty() && files_.replace(file, bytes);
  if (isWritten) {
    const std::lock_guard lock(mutex_);
    written_.splice(written_.end(), entry);
  }
  return isDone(isWritten, path);
}

bool WrittenFiles::makeFolder(const std::string& path) {
  std::vector<std::string> missing;
  std::error_code error;
  for (fs::path folder = path; !folder.empty() && !fs::exists(folder, error);
       folder = folder.parent_path()) {
    missing.push_back(folder.string());
  }
  {
    // Before they are: of a folder that could not be made, those above it may have been.
    const std::lock_guard lock(mutex_);
    made_.insert(made_.end(), std::make_move_iterator(missing.rbegin()),
                 std::make_move_iterator(missing.rend()));
  }
  return isDone(!isInterrupted_ && files_.makeFolder(path), path);
}

// Asks for no memory, because it may be the want of it that brings one here.
void WrittenFiles::takeBack() noexcept {
  const std::lock_guard lock(mutex_);
  for (const std::string& file : written_) unlink(file.c_str());
  // Fails where there is something in it, or something else in its place.
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) rmdir(folder->c_str());
  written_.clear();
  made_.clear();
}

std::string WrittenFiles::firstFailure() const {
  const std::lock_guard lock(mutex_);
  return firstFailure_;
}

bool WrittenFiles::isDone(bool isGood, const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (!isGood && firstFailure_.empty()) firstFailure_ = path;
  return isGood;
}

}  // namespace halvora
