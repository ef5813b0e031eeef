// SPDX-License-Identifier: Apache-2.0
// A torch pixel map makes every phone ask for the still of each frame. Here each is read and
// decoded once for all phones of a crowd; what was asked for last is kept, up to a limit. Any
// thread.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "halvora/platform/bundle.h"
#include "halvora/platform/image.h"
#include "pixelmap/still_source.h"

namespace halvora {

/// Values by key; those that were not asked for the longest go first.
template <class Value>
class RecentValues {
 public:
  explicit RecentValues(std::size_t mostBytes) : mostBytes_(mostBytes) {}

  /// A copy of the key's value, made by `make` where it is not there. Whoever asks meanwhile waits,
  /// because most often it is the same that they want.
  template <class Make, class BytesOf>
  Value get(std::string_view key, const Make& make, const BytesOf& bytesOf) {
    const std::lock_guard lock(mutex_);
    const auto found = places_.find(key);
    if (found != places_.end()) {
      entries_.splice(entries_.begin(), entries_, found->second);
    } else {
      entries_.push_front({std::string(key), make(), 0});
      Entry& entry = entries_.front();
      entry.bytes = entry.key.size() + bytesOf(entry.value);
      bytes_ += entry.bytes;
      places_.emplace(entry.key, entries_.begin());
      while (bytes_ > mostBytes_ && entries_.size() > 1) forgetLast();
    }
    return entries_.front().value;
  }

 private:
  struct Entry {
    std::string key;
    Value value;
    std::size_t bytes;
  };

  void forgetLast() {
    bytes_ -= entries_.back().bytes;
    places_.erase(entries_.back().key);
    entries_.pop_back();
  }

  const std::size_t mostBytes_;
  std::mutex mutex_;
  std::size_t bytes_ = 0;
  std::list<Entry> entries_;
  /// By the keys of the entries.
  std::unordered_map<std::string_view, typename std::list<Entry>::iterator> places_;
};

/// Takes for granted that a still stays as it is.
class SharedStills final : public StillSource {
 public:
  /// More than a second's stills, which is what a crowd comes back to phone after phone.
  static constexpr std::size_t kMostBytes = std::size_t{256} << 20;

  /// Both must outlive it.
  SharedStills(const Bundle& bundle, const ImageDecoder& decoder)
      : bundle_(bundle), decoder_(decoder), recent_(kMostBytes) {}
  std::optional<Still> find(const std::string& name) const override;

 private:
  std::optional<Still> read(const std::string& name) const;

  const Bundle& bundle_;
  const ImageDecoder& decoder_;
  mutable RecentValues<std::optional<Still>> recent_;
};

}  // namespace halvora
