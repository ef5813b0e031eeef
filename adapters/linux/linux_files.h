// SPDX-License-Identifier: Apache-2.0
// The machine's file system, for all that writes on Linux. What is written stands beside its place
// under a name of its own, locked for as long as its writer lives, and is renamed when it is whole;
// so what a killed writer has left can be told from what a living one is writing. Stateless; any
// thread.
#pragma once

#include "adapters/standard/standard_files.h"

namespace halvora {

class LinuxFiles final : public StandardFiles {
 public:
  std::optional<FileAttributes> attributes(const std::string& path) const override;
  std::optional<std::vector<std::string>> list(const std::string& folder) const override;
  bool replace(const std::string& path, std::string_view bytes) override;
  bool replaceLastingly(const std::string& path, std::string_view bytes) override;
  void removeLeftovers(const std::string& beginning) override;
  /// A folder that was made is on the medium too.
  bool makeFolder(const std::string& path) override;
  void removeFolder(const std::string& path) override;
};

}  // namespace halvora
