// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/files.h"

#include <filesystem>
#include <fstream>
#include <ios>

namespace halvora {

std::optional<std::string> readFile(const std::string& path, std::size_t limit) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  // What is read decides, not the size the file claimed before: it may be growing.
  std::string bytes;
  char block[1 << 14];
  while (file.read(block, sizeof block), file.gcount() > 0) {
    bytes.append(block, static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > limit) return std::nullopt;
  }
  if (file.bad()) return std::nullopt;
  return bytes;
}

}  // namespace halvora
