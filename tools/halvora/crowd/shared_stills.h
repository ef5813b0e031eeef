// SPDX-License-Identifier: Apache-2.0
// A torch pixel map makes every phone read and decode the still of each frame. These two stand
// before a bundle and a decoder and do it once for all phones of a crowd; what was asked for last
// is kept, up to a limit. Any thread.
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

#include "platform/bundle.h"
#include "platform/image.h"

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

/// Takes for granted that a resource stays as it is.
class SharedResources final : public Bundle {
 public:
  static constexpr std::size_t kMostResourceBytes = std::size_t{32} << 20;

  explicit SharedResources(const Bundle& bundle) : bundle_(bundle), recent_(kMostResourceBytes) {}
  const std::string& identifier() const override { return bundle_.identifier(); }
  const std::string& resourcePath() const override { return bundle_.resourcePath(); }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string localizedString(std::string_view key) const override {
    return bundle_.localizedString(key);
  }

 private:
  const Bundle& bundle_;
  mutable RecentValues<std::optional<std::string>> recent_;
};

class SharedPictures final : public ImageDecoder {
 public:
  /// More than a second's stills, which is what a crowd comes back to phone after phone.
  static constexpr std::size_t kMostPictureBytes = std::size_t{256} << 20;

  explicit SharedPictures(const ImageDecoder& decoder)
      : decoder_(decoder), recent_(kMostPictureBytes) {}
  std::optional<Image> decode(std::string_view bytes) const override;

 private:
  const ImageDecoder& decoder_;
  mutable RecentValues<std::shared_ptr<const std::optional<Image>>> recent_;
};

}  // namespace halvora
