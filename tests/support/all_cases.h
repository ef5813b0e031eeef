// SPDX-License-Identifier: Apache-2.0
// Whether a test that takes many cases takes all of them, or the few that a daily run has time for.
#pragma once

#include <cstdlib>
#include <string_view>

namespace halvora {

/// `./test --all` says so in the environment.
inline bool wantsAllCases() {
  const char* const all = std::getenv("HALVORA_TEST_ALL");
  return all != nullptr && std::string_view(all) == "1";
}

}  // namespace halvora
