// SPDX-License-Identifier: Apache-2.0
#include "adapters/nettle/nettle_codes.h"

#include <nettle/cmac.h>
// Not <cstring>: what the compiler may not leave out is not standard.
#include <string.h>  // NOLINT(modernize-deprecated-headers)

namespace halvora {

namespace {

class NettleCode final : public MessageCode {
 public:
  explicit NettleCode(const ShowKey& key) { cmac_aes128_set_key(&state_, key.bytes().data()); }
  // The key can be had back from what was made of it.
  ~NettleCode() override { explicit_bzero(&state_, sizeof state_); }

  Code of(std::span<const std::uint8_t> message) override {
    Code code{};
    cmac_aes128_update(&state_, message.size(), message.data());
    // Begins the next message as well.
    cmac_aes128_digest(&state_, code.size(), code.data());
    return code;
  }

 private:
  cmac_aes128_ctx state_{};
};

}  // namespace

std::unique_ptr<MessageCode> NettleCodes::withKey(const ShowKey& key) const {
  return std::make_unique<NettleCode>(key);
}

}  // namespace halvora
