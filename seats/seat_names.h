// SPDX-License-Identifier: Apache-2.0
// The texts of the seat screens: which section names mean a standing area, the kit's own texts with
// their fallbacks, and formats as string tables write them. Stateless; any thread that the bundle
// allows.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "halvora/platform/bundle.h"

namespace halvora {

/// Whether the name, brought to upper case, contains "STANDING". UTF-8; letters beyond ASCII count
/// by what their upper case is.
bool isStandingName(std::string_view name);

/// The bundle's text for a key; the fallback where it has none, an empty one, or only the key.
std::string localizedText(const Bundle& bundle, std::string_view key, std::string_view fallback);

/// Fills arguments into a format of a string table. "%@", "%ld" and their kin take the arguments in
/// turn, "%2$@" takes the second; "%%" is a percent sign. A place without an argument stays empty,
/// an argument without a place is left out, anything else stands as it is written.
std::string formatted(std::string_view format, std::initializer_list<std::string_view> arguments);

}  // namespace halvora
