// SPDX-License-Identifier: Apache-2.0
// The machine's files for one run of a command: knows what the run wrote, so that a run that fails
// can take it back, and writes nothing more once the user has interrupted it. Looks at a flag that
// outlives it. Any thread.
#pragma once

#include <atomic>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/linux/linux_files.h"

namespace halvora {

class WrittenFiles final : public Files {
 public:
  explicit WrittenFiles(const std::atomic<bool>& isInterrupted) : isInterrupted_(isInterrupted) {}

  std::optional<FileAttributes> attributes(const std::string& path) const override {
    return files_.attributes(path);
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) const override {
    return files_.list(folder);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    return files_.read(path, limit);
  }
  bool replace(const std::string& path, std::string_view bytes) override;
  void removeLeftovers(const std::string& beginning) override { files_.removeLeftovers(beginning); }
  bool makeFolder(const std::string& path) override;
  bool move(const std::string& from, const std::string& to) override {
    return !isInterrupted_ && files_.move(from, to);
  }
  void removeFolder(const std::string& path) override { files_.removeFolder(path); }

  /// Removes what was written and made so far, folders only where they are empty by then.
  void takeBack() noexcept;
  /// The first path that could not be written or made; empty for none.
  std::string firstFailure() const;

 private:
  bool isDone(bool isGood, const std::string& path);

  const std::atomic<bool>& isInterrupted_;
  LinuxFiles files_;
  mutable std::mutex mutex_;
  std::list<std::string> written_;
  /// Those above before those within.
  std::vector<std::string> made_;
  std::string firstFailure_;
};

}  // namespace halvora
