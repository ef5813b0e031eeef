// SPDX-License-Identifier: Apache-2.0
// A cipher for tests of what is done with tags: anything but secret, the same on every system, and
// it knows how often it was asked. Values; one thread.
#pragma once

#include <cstdint>
#include <memory>

#include "halvora/platform/message_codes.h"

namespace halvora {

class PlainCode final : public MessageCode {
 public:
  explicit PlainCode(std::uint64_t key, std::uint64_t* asked = nullptr)
      : key_(key), asked_(asked) {}

  Code of(std::span<const std::uint8_t> message) override {
    if (asked_ != nullptr) ++*asked_;
    std::uint64_t state = key_ ^ 0xCBF29CE484222325U;
    for (const std::uint8_t byte : message) state = (state ^ byte) * 0x100000001B3U;
    state ^= state >> 29;
    Code code{};
    for (std::size_t at = 0; at < code.size(); ++at) {
      code[at] = static_cast<std::uint8_t>(state >> (at % 8 * 8) & 0xFF);
    }
    return code;
  }

 private:
  std::uint64_t key_;
  std::uint64_t* asked_;
};

class PlainCodes final : public MessageCodes {
 public:
  std::unique_ptr<MessageCode> withKey(const ShowKey& key) const override {
    std::uint64_t state = 0;
    for (const std::uint8_t byte : key.bytes()) state = state * 257 + byte + 1;
    return std::make_unique<PlainCode>(state, &asked);
  }

  /// How many codes were made.
  mutable std::uint64_t asked = 0;
};

}  // namespace halvora
