// SPDX-License-Identifier: Apache-2.0
// Ends the program where a benchmark would compare two things that do not do the same job: a number
// for that is worse than none.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace halvora {

inline void require(bool isTrue, const std::string& what) {
  if (isTrue) return;
  std::fprintf(stderr, "halvora_bench: %s\n", what.c_str());
  std::abort();
}

}  // namespace halvora
