// SPDX-License-Identifier: Apache-2.0
// The machine's file system, as far as the standard library reaches: it cannot make files last, nor
// know what a killed writer has left, and most libraries end the process where there is no memory
// for the name of something in a folder. A system's own files do better. Stateless; any thread.
#pragma once

#include "halvora/platform/files.h"

namespace halvora {

/// The bytes of a regular file, or none when it is missing, unreadable, no regular file or larger
/// than `limit` bytes.
std::optional<std::string> readFile(const std::string& path, std::size_t limit);

class StandardFiles : public Files {
 public:
  std::optional<FileAttributes> attributes(const std::string& path) const override;
  std::optional<std::vector<std::string>> list(const std::string& folder) const override;
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    return readFile(path, limit);
  }
  bool replace(const std::string& path, std::string_view bytes) override;
  bool makeFolder(const std::string& path) override;
  bool move(const std::string& from, const std::string& to) override;
  void removeFolder(const std::string& path) override;
};

}  // namespace halvora
