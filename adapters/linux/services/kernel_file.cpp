// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/kernel_file.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace halvora {

std::string firstLineOf(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return {};
  std::array<char, 32> bytes;
  const ssize_t size = read(file, bytes.data(), bytes.size());
  close(file);
  if (size <= 0 || size == static_cast<ssize_t>(bytes.size())) return {};
  const std::string_view text(bytes.data(), static_cast<std::size_t>(size));
  return std::string(text.substr(0, text.find('\n')));
}

std::optional<std::uint32_t> numberIn(const std::string& path, std::uint32_t most) {
  const std::string text = firstLineOf(path);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  if (!isNumber || number > most) return {};
  return number;
}

}  // namespace halvora
