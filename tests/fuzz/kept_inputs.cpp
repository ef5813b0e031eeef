// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/kept_inputs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "text/numbers.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

// A line of the fuzzer's own format: "text" with \\ \" and \xAB in it.
std::string wordOf(const std::string& line) {
  const std::size_t begin = line.find('"');
  const std::size_t end = line.rfind('"');
  std::string word;
  if (line.starts_with('#') || begin == std::string::npos || end <= begin) return word;
  for (std::size_t at = begin + 1; at < end; ++at) {
    if (line[at] != '\\') {
      word += line[at];
    } else if (line[at + 1] != 'x') {
      word += line[++at];
    } else {
      word += static_cast<char>(hexDigit(line[at + 2]) * 16 + hexDigit(line[at + 3]));
      at += 3;
    }
  }
  return word;
}

}  // namespace

std::vector<KeptInput> keptInputsOf(const FuzzTarget& target, const std::string& folder) {
  std::vector<KeptInput> inputs;
  for (const char* kind : {"seeds", "findings"}) {
    std::error_code error;
    const std::string name = std::string(kind) + "/" + target.name;
    for (const auto& entry : fs::directory_iterator(folder + "/" + name, error)) {
      std::ifstream file(entry.path(), std::ios::binary);
      inputs.push_back({name + "/" + entry.path().filename().string(),
                        Mutator::Input(std::istreambuf_iterator<char>(file), {})});
    }
  }
  std::ranges::sort(inputs, {}, &KeptInput::name);
  return inputs;
}

std::vector<std::string> wordsOf(const FuzzTarget& target, const std::string& folder) {
  std::vector<std::string> words;
  if (target.words == nullptr) return words;
  std::ifstream file(folder + "/words/" + target.words);
  for (std::string line; std::getline(file, line);) {
    std::string word = wordOf(line);
    if (!word.empty()) words.push_back(std::move(word));
  }
  return words;
}

Mutator mutatorOf(const FuzzTarget& target, const std::string& folder, std::uint64_t seed) {
  std::vector<Mutator::Input> inputs;
  for (KeptInput& kept : keptInputsOf(target, folder)) inputs.push_back(std::move(kept.bytes));
  return {seed, std::move(inputs), wordsOf(target, folder), target.longest};
}

}  // namespace halvora
