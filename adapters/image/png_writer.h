// SPDX-License-Identifier: Apache-2.0
// A picture as the bytes of a PNG file. Stateless; any thread.
#pragma once

#include <string>

#include "halvora/platform/image.h"

namespace halvora {

/// Keeps every pixel as it is. Empty for a picture that has no size, or not enough pixels for it.
std::string pngOf(const Image& image);

}  // namespace halvora
