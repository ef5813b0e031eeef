// SPDX-License-Identifier: Apache-2.0
// Numbers and texts as few bytes: for files that one run of a command writes and another one reads.
// What is read may be anything: a reader that comes to what cannot be is bad from there on, and
// gives zeros. Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace halvora {

class PackedWriter {
 public:
  /// Small numbers take little room.
  void number(std::uint64_t value);
  /// Likewise, on both sides of 0.
  void signedNumber(std::int64_t value);
  void text(std::string_view text);
  void byte(std::uint8_t value) { bytes_ += static_cast<char>(value); }

  const std::string& bytes() const { return bytes_; }
  void clear() { bytes_.clear(); }

 private:
  std::string bytes_;
};

class PackedReader {
 public:
  /// The bytes outlive it.
  explicit PackedReader(std::string_view bytes) : bytes_(bytes) {}

  std::uint64_t number(std::uint64_t most = UINT64_MAX);
  std::int64_t signedNumber(std::int64_t most = INT64_MAX);
  std::string_view text();
  std::uint8_t byte();
  /// How many of something follow that takes at least so many bytes each: never more than there
  /// are bytes for, so that room can be made for all of them.
  std::size_t count(std::size_t leastBytes);

  /// Bytes that were not read yet.
  std::size_t left() const { return bytes_.size() - at_; }
  bool isGood() const { return isGood_; }
  /// Everything was read, and all of it could be.
  bool isDone() const { return isGood_ && at_ == bytes_.size(); }
  void fail() { isGood_ = false; }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
  bool isGood_ = true;
};

/// Of no text at all.
inline constexpr std::uint64_t kNoFingerprint = 0xCBF29CE484222325U;
/// A number that another text hardly has: to tell files apart, not to defend them (FNV-1a). With
/// the number of a text before it, that of both together.
std::uint64_t fingerprintOf(std::string_view text, std::uint64_t before = kNoFingerprint);

}  // namespace halvora
