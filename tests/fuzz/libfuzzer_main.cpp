// SPDX-License-Identifier: Apache-2.0
// Clang's fuzzer over one target, which `--target=NAME` names: options with two dashes are left to
// us. The target's own length and words are added to the fuzzer's options.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz_targets.h"
#include "tests/support/source_tree.h"

namespace {

const halvora::FuzzTarget* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  constexpr std::string_view kOption = "--target=";
  // For as long as the process lives: the fuzzer keeps pointers.
  static std::vector<char*> all(*arguments, *arguments + *count);
  for (const std::string_view argument : std::vector<std::string_view>(all.begin(), all.end())) {
    if (argument.starts_with(kOption)) {
      chosen = halvora::fuzzTargetOf(argument.substr(kOption.size()));
    }
  }
  if (chosen == nullptr) {
    std::fputs("--target=NAME must name a target\n", stderr);
    std::exit(2);
  }
  static std::string longest = "-max_len=" + std::to_string(chosen->longest);
  all.push_back(longest.data());
  if (chosen->words != nullptr) {
    static std::string words =
        "-dict=" + halvora::sourceTree() + "/tests/fuzz/words/" + chosen->words;
    all.push_back(words.data());
  }
  *count = static_cast<int>(all.size());
  all.push_back(nullptr);
  *arguments = all.data();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return chosen->run({data, size});
}
