// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/version.h"

#include "halvora/version.h"

namespace halvora {

std::string_view versionText() {
  return "halvora " HALVORA_VERSION " (" HALVORA_LIBRARY_VERSIONS ")";
}

}  // namespace halvora
