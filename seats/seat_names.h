// SPDX-License-Identifier: Apache-2.0
// The texts of the seat screens: which section names mean a standing area, and the kit's own texts
// with their fallbacks. Stateless; any thread that the bundle allows.
#pragma once

#include <string>
#include <string_view>

#include "halvora/labels.h"
#include "halvora/platform/bundle.h"

namespace halvora {

/// Whether the name, brought to upper case, contains "STANDING". UTF-8; letters beyond ASCII count
/// by what their upper case is.
bool isStandingName(std::string_view name);

/// The bundle's text for a key; the fallback where it has none, an empty one, or only the key.
std::string localizedText(const Bundle& bundle, std::string_view key, std::string_view fallback);

}  // namespace halvora
