// SPDX-License-Identifier: Apache-2.0
// Which build of the kit this is. Any thread.
#pragma once

#include <string_view>

namespace halvora {

/// "halvora", the version, and in brackets the libraries that the build found, each with its own
/// version. One line, without its end.
std::string_view versionText();

}  // namespace halvora
