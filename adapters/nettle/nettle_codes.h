// SPDX-License-Identifier: Apache-2.0
// Message codes by Nettle. Any thread; a code is for one thread at a time.
#pragma once

#include "halvora/platform/message_codes.h"

namespace halvora {

class NettleCodes final : public MessageCodes {
 public:
  std::unique_ptr<MessageCode> withKey(const ShowKey& key) const override;
};

}  // namespace halvora
