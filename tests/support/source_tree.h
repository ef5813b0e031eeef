// SPDX-License-Identifier: Apache-2.0
// Where this project's files lie, for tests that read them. One source knows the path, so that the
// compiler's cache serves every other one in whichever folder a tree lies.
#pragma once

#include <string>

namespace halvora {

/// The root of the source tree, without a slash at its end.
std::string sourceTree();

}  // namespace halvora
