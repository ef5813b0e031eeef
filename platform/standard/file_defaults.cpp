// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/file_defaults.h"

#include <atomic>
#include <mutex>
#include <new>
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

  void save() {
    std::optional<std::string> document;
    {
      const std::lock_guard lock(mutex_);
      document = std::exchange(document_, std::nullopt);
    }
    if (!document) return;
    // Until it is there: what throws has failed as well.
    hasFailed_ = true;
    hasFailed_ = !files_.makeFolder(folder_) || !files_.replace(path_, *document);
  }

  bool hasFailed() const { return hasFailed_; }

 private:
  const std::string path_;
  const std::string folder_;
  Files& files_;
  std::atomic<bool> hasFailed_{false};
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
    if (isChanged_ || saver_->hasFailed()) handOver();
    // The queue waits for the job under way and forgets the others.
    queue_.reset();
    saver_->save();
  } catch (const std::bad_alloc&) {
    // The file stays as it was saved last.
  }
}

// What a process left behind that died while it saved.
void FileDefaults::removeLeftovers(const std::string& path, Files& files) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = path.substr(0, slash + 1);
  const std::string begin = path.substr(slash + 1) + ".new-";
  for (std::string& name : files.list(path.substr(0, slash)).value_or(std::vector<std::string>())) {
    if (name.starts_with(begin)) files.removeFolder(name.insert(0, folder));
  }
}

void FileDefaults::load(const std::string& path, const Needs& needs) {
  removeLeftovers(path, needs.files);
  if (!needs.files.attributes(path)) return;
  const std::string damaged = path + ".damaged";
  const std::optional<std::string> bytes = needs.files.read(path, kLargestFile);
  if (!bytes) {
    needs.files.move(path, damaged);
    return;
  }
  const std::optional<JsonValue> document = needs.json.parse(*bytes);
  ReadDefaults read = document ? readDefaultsDocument(*document) : ReadDefaults{};
  // A copy, so that there is no moment without a file.
  if (!read.isWhole) needs.files.replace(damaged, *bytes);
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
    saveTimer_ = Timer(runLoop_, runLoop_.after(kSaveDelay, [this] { synchronize(); }));
  }
}

void FileDefaults::synchronize() {
  saveTimer_.invalidate();
  if (!isChanged_ && !saver_->hasFailed()) return;
  handOver();
  const bool isBegun = queue_->dispatch([weak = std::weak_ptr<Saver>(saver_)] {
    if (const auto saver = weak.lock()) saver->save();
  });
  // Tried again after a while, as if it had just been set.
  if (!isBegun) changed();
}

void FileDefaults::handOver() {
  saver_->give(defaultsDocument(values_));
  isChanged_ = false;
}

}  // namespace halvora
