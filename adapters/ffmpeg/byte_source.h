// SPDX-License-Identifier: Apache-2.0
// Bytes that can be read from any place: a file, or memory in tests. Owned by whoever opened it;
// any thread, several at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace halvora {

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual std::uint64_t size() const = 0;
  /// How many bytes were read: fewer than asked for at the end, and where reading fails.
  virtual std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) const = 0;
};

}  // namespace halvora
