// SPDX-License-Identifier: Apache-2.0
// The inputs of a target that the tree keeps: seeds, and what was ever found. Any thread.
#pragma once

#include <string>
#include <vector>

#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/mutator.h"

namespace halvora {

struct KeptInput {
  /// From the folder of kept inputs.
  std::string name;
  Mutator::Input bytes;
};

/// In the order of their names. `folder` is tests/fuzz.
std::vector<KeptInput> keptInputsOf(const FuzzTarget& target, const std::string& folder);
std::vector<std::string> wordsOf(const FuzzTarget& target, const std::string& folder);
/// Changes of what is kept.
Mutator mutatorOf(const FuzzTarget& target, const std::string& folder, std::uint64_t seed);

}  // namespace halvora
