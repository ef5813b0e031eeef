// SPDX-License-Identifier: Apache-2.0
// How large a face would like a host view to be: either dimension may be open. A value.
#pragma once

#include <optional>

#include "halvora/platform/screen.h"

namespace halvora {

struct ProposedSize {
  std::optional<double> width;
  std::optional<double> height;
};

}  // namespace halvora
