// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/file_defaults.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace halvora {

/// Writes the newest document that it was given. Used by one thread at a time, `give` apart.
class FileDefaults::Saver {
 public:
  Saver(const std::string& path, Files& files)
      : path_(path), folder_(path.substr(0, path.rfind('/'))), files_(files) {}

  void give(std::string document) {
    const std::lock_guard lock(mutex_);
    document_ = std::move(document);
  }

  /// False where that failed: the document is kept for the next time, unless there is a newer one.
  bool save() {
    std::optional<std::string> document;
    {
      const std::lock_guard lock(mutex_);
      document = std::exchange(document_, std::nullopt);
    }
    if (!document || write(*document)) {
      failuresInARow_ = 0;
      return true;
    }
    ++failuresInARow_;
    const std::lock_guard lock(mutex_);
    if (!document_) document_ = std::move(document);
    return false;
  }

  int failuresInARow() const { return failuresInARow_; }

 private:
  bool write(const std::string& document) {
    try {
      return files_.makeFolder(folder_) && files_.replaceLastingly(path_, document);
    } catch (const std::exception&) {
      return false;  // Memory is short.
    }
  }

  const std::string path_;
  const std::string folder_;
  Files& files_;
  std::atomic<int> failuresInARow_{0};
  std::mutex mutex_;
  /// Not written yet. Under the mutex.
  std::optional<std::string> document_;
};

FileDefaults::FileDefaults(const std::string& path, const Needs& needs)
    : runLoop_(needs.runLoop),
      saver_(std::make_shared<Saver>(path, needs.files)),
      queue_(needs.queues.make("com.halvora.sdk.defaults")) {
  load(path, needs);
}

FileDefaults::~FileDefaults() {
  saveTimer_.invalidate();
  try {
    if (isChanged_) saver_->give(defaultsDocument(values_));
  } catch (const std::exception&) {
    // Memory is short: what was given before is what can be saved.
  }
  // The queue waits for the job under way and forgets the others.
  queue_.reset();
  saver_->save();
}

void FileDefaults::load(const std::string& path, const Needs& needs) {
  needs.files.removeLeftovers(path);
  if (!needs.files.attributes(path)) return;
  const std::string damaged = path + ".damaged";
  const std::optional<std::string> bytes = needs.files.read(path, kLargestFile);
  if (!bytes) {
    needs.files.move(path, damaged);
    return;
  }
  const std::optional<JsonValue> document = needs.json.parse(*bytes);
  ReadDefaults read = document ? readDefaultsDocument(*document) : ReadDefaults{};
  // A copy, so that there is no moment without a file; where there is no room for one, the file
  // itself, so that no save takes its place.
  if (!read.isWhole && !needs.files.replaceLastingly(damaged, *bytes)) {
    needs.files.move(path, damaged);
  }
  values_ = std::move(read.values);
}

const DefaultsValue* FileDefaults::find(std::string_view key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? nullptr : &found->second;
}

void FileDefaults::set(std::string_view key, DefaultsValue value) {
  const auto found = values_.find(key);
  if (found == values_.end()) {
    values_.emplace(key, std::move(value));
  } else {
    if (found->second == value) return;
    found->second = std::move(value);
  }
  changed();
}

void FileDefaults::remove(std::string_view key) {
  const auto found = values_.find(key);
  if (found == values_.end()) return;
  values_.erase(found);
  changed();
}

void FileDefaults::changed() {
  isChanged_ = true;
  if (!saveTimer_.isValid()) {
    saveTimer_ = Timer(runLoop_, runLoop_.after(kSaveDelay, [this] { save(); }));
  }
}

void FileDefaults::synchronize() {
  const bool isTriedAgain = saver_->failuresInARow() > 0 && saveTimer_.isValid();
  if (!isChanged_ || isTriedAgain) return;
  save();
}

void FileDefaults::save() {
  saveTimer_.invalidate();
  bool isBegun = false;
  try {
    if (std::exchange(isChanged_, false)) saver_->give(defaultsDocument(values_));
    isBegun = queue_->dispatch([this, weak = std::weak_ptr<Saver>(saver_)] {
      const auto saver = weak.lock();
      if (!saver || saver->save()) return;
      runLoop_.post([this, weak] {
        if (!weak.expired()) saveFailed();
      });
    });
  } catch (const std::exception&) {
    isChanged_ = true;
  }
  // Neither memory nor a thread to be had.
  if (!isBegun) saveFailed();
}

void FileDefaults::saveFailed() {
  ++failedSaves_;
  constexpr int kMostDoublings = 6;
  const int doublings = std::clamp(saver_->failuresInARow() - 1, 0, kMostDoublings);
  const Duration pause = std::min(kSaveDelay * (1 << doublings), kLongestRetry);
  saveTimer_ = Timer(runLoop_, runLoop_.after(pause, [this] { save(); }));
}

}  // namespace halvora
