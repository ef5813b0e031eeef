// SPDX-License-Identifier: Apache-2.0
#include "venue/live/command_input.h"

#include <algorithm>
#include <utility>

namespace halvora {

void CommandLines::add(std::string_view bytes, const std::function<void(std::string_view)>& line) {
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\n');
    const std::string_view piece = bytes.substr(0, end);
    begun_.append(piece.substr(0, kLongest - std::min(begun_.size(), kLongest)));
    if (end == std::string_view::npos) return;
    this->end(line);
    bytes.remove_prefix(end + 1);
  }
}

void CommandLines::end(const std::function<void(std::string_view)>& line) {
  const std::string whole = std::exchange(begun_, {});
  if (whole.find_first_not_of(" \t\r") != std::string::npos) line(whole);
}

std::string_view commandOfKey(char key) {
  constexpr std::pair<char, std::string_view> kKeys[] = {
      {' ', "go"},       {'\n', "go"},     {'b', "back"},  {'h', "hold"}, {'r', "resume"},
      {'o', "blackout"}, {'u', "release"}, {'p', "panic"}, {'q', "quit"}};
  for (const auto& [known, command] : kKeys) {
    if (known == key) return command;
  }
  return {};
}

}  // namespace halvora
