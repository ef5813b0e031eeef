// SPDX-License-Identifier: Apache-2.0
// Files in memory of which single ones cannot be listed or written. Owned by the test.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/virtual/virtual_files.h"
#include "tests/support/passed_files.h"

namespace halvora {

class FilesWithFaults final : public PassedFiles {
 public:
  FilesWithFaults() : PassedFiles(files) {}
  std::optional<std::vector<std::string>> list(const std::string& folder) const override {
    return folder == unlistable ? std::nullopt : PassedFiles::list(folder);
  }
  bool replace(const std::string& path, std::string_view bytes) override {
    return path != unwritable && PassedFiles::replace(path, bytes);
  }

  VirtualFiles files;
  /// A folder and a file.
  std::string unlistable;
  std::string unwritable;
};

}  // namespace halvora
