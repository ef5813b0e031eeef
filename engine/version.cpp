// SPDX-License-Identifier: Apache-2.0
#include "halvora/version.h"

namespace halvora {

const char* v0::versionOfLibrary() noexcept { return HALVORA_VERSION; }

}  // namespace halvora
