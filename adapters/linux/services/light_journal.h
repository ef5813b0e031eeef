// SPDX-License-Identifier: Apache-2.0
// What of the kernel's lights a show has changed and not given back: a file of a few lines that a
// process holds for as long as it lives. One that is killed leaves it as it is, and the next start
// gives back what is in it. The file belongs where it goes with the user's session, as a machine
// that starts anew sets its lights by itself. The host owns it; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/linux/services/sysfs_light.h"

namespace halvora {

class LightJournal {
 public:
  /// Where the file cannot be had, or another process holds it, nothing was left and nothing is
  /// noted.
  explicit LightJournal(const std::string& path);
  ~LightJournal();
  LightJournal(const LightJournal&) = delete;
  LightJournal& operator=(const LightJournal&) = delete;

  /// The level that the light is to have back; none if it is not owed one.
  std::optional<std::uint32_t> owed(const SysfsLight& light) const;
  /// Costs nothing where it is noted already.
  void note(const SysfsLight& light, std::uint32_t level);
  void forget(const SysfsLight& light);

 private:
  struct Entry {
    std::string subsystem;
    std::string name;
    std::uint32_t level;
  };
  static constexpr std::size_t kMostEntries = 8;

  bool isHeld() const { return file_ >= 0; }
  void read();
  void take(std::string_view line);
  void write();
  void release();
  std::vector<Entry>::const_iterator find(const SysfsLight& light) const;

  int file_ = -1;
  std::vector<Entry> entries_;
};

}  // namespace halvora
