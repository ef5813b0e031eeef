// SPDX-License-Identifier: Apache-2.0
// Message authentication codes: whether bytes come from somebody who has a key, and are as they
// were. AES-CMAC with 128 bits, NIST SP 800-38B and RFC 4493. Main thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// The secret of a show: 16 bytes that its transmitters and the applications of its audience share.
/// Whoever reads it can sign. Its memory is wiped when it goes; it is never printed.
class ShowKey {
 public:
  static constexpr std::size_t kSize = 16;  ///< Bytes.

  /// Copies the bytes; wiping those is their owner's business.
  explicit ShowKey(std::span<const std::uint8_t, kSize> bytes) {
    std::ranges::copy(bytes, bytes_.begin());
  }
  /// As key files have it: 32 hexadecimal digits, white space around them ignored. None for any
  /// other text, of which no copy is left.
  static std::optional<ShowKey> ofText(std::string_view text);
  ShowKey(const ShowKey&) = default;             ///< Each copy is wiped for itself.
  ShowKey& operator=(const ShowKey&) = default;  ///< Likewise.
  ~ShowKey() {
    // Written through a volatile, because nobody reads it any more and a compiler would leave it.
    for (volatile std::uint8_t& byte : bytes_) byte = 0;
  }

  /// The secret itself; good for as long as the key is there.
  std::span<const std::uint8_t, kSize> bytes() const { return bytes_; }

 private:
  ShowKey() = default;

  std::array<std::uint8_t, kSize> bytes_{};
};

/// The codes of one key.
class MessageCode : public Need {
 public:
  using Code = std::array<std::uint8_t, 16>;  ///< The whole of it; a packet's tag is a part.
  /// Of any bytes, none included. Allocates nothing and cannot fail.
  virtual Code of(std::span<const std::uint8_t> message) = 0;
};

class MessageCodes : public Need {
 public:
  /// Null where there is no cipher. The key is not kept longer than the code, nor as it is.
  virtual std::unique_ptr<MessageCode> withKey(const ShowKey& key) const = 0;
};

}  // namespace v0
}  // namespace halvora
