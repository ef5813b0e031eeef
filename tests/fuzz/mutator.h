// SPDX-License-Identifier: Apache-2.0
// Random inputs for a target, by a seed: kept inputs with changes, and words of its language put
// in. The same seed gives the same inputs everywhere. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_target.h"

namespace halvora {

class Mutator {
 public:
  using Input = std::vector<std::uint8_t>;

  /// What is kept may be empty. Inputs are at most `longest` bytes, kept ones too.
  Mutator(std::uint64_t seed, std::vector<Input> kept, std::vector<std::string> words,
          std::size_t longest);

  /// Valid until the next one.
  FuzzBytes next();

 private:
  std::uint64_t draw();
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(draw() % bound); }
  void change();
  void insert(std::size_t at, FuzzBytes bytes);

  std::uint64_t state_;
  std::vector<Input> kept_;
  std::vector<std::string> words_;
  std::size_t longest_;
  Input input_;
};

}  // namespace halvora
