// SPDX-License-Identifier: Apache-2.0
// In place of OLA's client, where there is none.
#include "venue/live/ola_input.h"

namespace halvora {

std::unique_ptr<OlaInput> OlaInput::open(unsigned /*universe*/, RunLoop& /*loop*/,
                                         OlaListener /*listener*/, std::uint16_t /*port*/) {
  return nullptr;
}

}  // namespace halvora
