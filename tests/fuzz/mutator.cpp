// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/mutator.h"

#include <algorithm>
#include <utility>

namespace halvora {

Mutator::Mutator(std::uint64_t seed, std::vector<Input> kept, std::vector<std::string> words,
                 std::size_t longest)
    : state_(seed), kept_(std::move(kept)), words_(std::move(words)), longest_(longest) {
  for (Input& input : kept_) input.resize(std::min(input.size(), longest_));
}

// SplitMix64: any seed is a good one.
std::uint64_t Mutator::draw() {
  std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
  z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9U;
  z = (z ^ z >> 27) * 0x94D049BB133111EBU;
  return z ^ z >> 31;
}

FuzzBytes Mutator::next() {
  // Now and then bytes out of nothing.
  if (kept_.empty() || below(16) == 0) {
    input_.resize(below(longest_ + 1));
    for (std::uint8_t& byte : input_) byte = static_cast<std::uint8_t>(draw());
  } else {
    input_ = kept_[below(kept_.size())];
  }
  for (std::size_t left = below(8); left > 0; --left) change();
  return input_;
}

void Mutator::change() {
  constexpr std::uint8_t kTelling[] = {0, 1, 9, 0x7F, 0x80, 0xC9, 0xFE, 0xFF, '"', '0', '-', '{'};
  if (input_.empty()) {
    input_.push_back(static_cast<std::uint8_t>(draw()));
    return;
  }
  const std::size_t at = below(input_.size());
  const std::size_t count = 1 + below(std::min<std::size_t>(input_.size() - at, 16));
  switch (below(8)) {
    case 0:
      input_[at] = static_cast<std::uint8_t>(input_[at] ^ 1U << below(8));
      break;
    case 1:
      input_[at] = kTelling[below(std::size(kTelling))];
      break;
    case 2:
      input_[at] = static_cast<std::uint8_t>(draw());
      break;
    case 3:
      input_[at] = static_cast<std::uint8_t>(input_[at] + (below(2) == 0 ? 1 : 255));
      break;
    case 4:
      input_.erase(input_.begin() + static_cast<std::ptrdiff_t>(at),
                   input_.begin() + static_cast<std::ptrdiff_t>(at + count));
      break;
    case 5: {
      const Input copy(input_.begin() + static_cast<std::ptrdiff_t>(at),
                       input_.begin() + static_cast<std::ptrdiff_t>(at + count));
      insert(below(input_.size()), copy);
      break;
    }
    case 6:
      if (!words_.empty()) {
        const std::string& word = words_[below(words_.size())];
        insert(at, {reinterpret_cast<const std::uint8_t*>(word.data()), word.size()});
      }
      break;
    default:
      if (!kept_.empty()) {
        const FuzzBytes other = kept_[below(kept_.size())];
        input_.resize(at);
        if (!other.empty()) insert(at, other.subspan(below(other.size())));
      }
      break;
  }
}

void Mutator::insert(std::size_t at, FuzzBytes bytes) {
  const std::size_t room = longest_ - std::min(longest_, input_.size());
  bytes = bytes.first(std::min(bytes.size(), room));
  input_.insert(input_.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin(), bytes.end());
}

}  // namespace halvora
