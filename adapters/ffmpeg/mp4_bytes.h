// SPDX-License-Identifier: Apache-2.0
// Boxes and numbers of an MP4 file, read through a small window, so that a table of any size costs
// no memory. One thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "adapters/ffmpeg/byte_source.h"

namespace halvora {

/// Four letters as the number that they are in the file.
constexpr std::uint32_t fourLetters(const char (&name)[5]) {
  std::uint32_t number = 0;
  for (int at = 0; at < 4; ++at) number = number << 8 | static_cast<unsigned char>(name[at]);
  return number;
}

struct Mp4Box {
  std::uint32_t type = 0;
  /// Of the header, of what it encloses, and of what comes after.
  std::uint64_t begin = 0;
  std::uint64_t body = 0;
  std::uint64_t end = 0;

  std::uint64_t bodySize() const { return end - body; }
};

class Mp4Bytes {
 public:
  explicit Mp4Bytes(const ByteSource& source) : source_(source) {}

  std::uint64_t fileSize() const { return source_.size(); }
  /// Whether something was asked for that could not be read.
  bool isCut() const { return isCut_; }
  /// The big-endian number of `count` bytes, up to 8; 0 where the file ends before.
  std::uint64_t number(std::uint64_t at, int count);
  std::uint32_t number32(std::uint64_t at) { return static_cast<std::uint32_t>(number(at, 4)); }
  /// The box at `at`, of at least 8 bytes up to `limit`. It may claim to end beyond that; a size
  /// that no box can have gives one that ends where it begins.
  Mp4Box boxAt(std::uint64_t at, std::uint64_t limit);

 private:
  const ByteSource& source_;
  std::array<std::uint8_t, 4096> window_ = {};
  std::uint64_t windowAt_ = 0;
  std::size_t windowSize_ = 0;
  bool isCut_ = false;
};

}  // namespace halvora
