// SPDX-License-Identifier: Apache-2.0
#include "tests/support/source_tree.h"

namespace halvora {

std::string sourceTree() { return HALVORA_SOURCE_DIR; }

}  // namespace halvora
