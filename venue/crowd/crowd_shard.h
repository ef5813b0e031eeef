// SPDX-License-Identifier: Apache-2.0
// Which phones of a venue one of several runs simulates. Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace halvora {

/// One of so many neighbouring stretches of a venue's phones.
struct CrowdShard {
  static constexpr std::uint64_t kMost = 512;

  /// From 1.
  std::uint64_t number = 1;
  std::uint64_t of = 1;

  std::size_t first(std::size_t phones) const { return at(number - 1, phones); }
  std::size_t end(std::size_t phones) const { return at(number, phones); }

 private:
  std::size_t at(std::uint64_t shard, std::size_t phones) const {
    return static_cast<std::size_t>(phones * shard / of);
  }
};

}  // namespace halvora
