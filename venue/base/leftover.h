// SPDX-License-Identifier: Apache-2.0
// A file or folder that must not outlast the command: it goes with this object, whatever ends the
// command, and also where a user who cannot wait ends the process. Removing takes no memory,
// because there may be none left. Main thread.
#pragma once

#include <string>

namespace halvora {

class Leftover {
 public:
  Leftover() = default;
  ~Leftover() { remove(); }
  Leftover(const Leftover&) = delete;
  Leftover& operator=(const Leftover&) = delete;

  /// From here on; a path that is longer than any file's is left alone.
  void watch(const std::string& path) noexcept;
  /// Gone at once, with everything in it.
  void remove() noexcept;
  /// Stays, because it is wanted after all.
  void keep() noexcept;

 private:
  /// Of the places that the process has; below 0 for none.
  int place_ = -1;
};

/// Of all that there is now. Safe within a signal's handler.
void removeLeftovers() noexcept;

}  // namespace halvora
