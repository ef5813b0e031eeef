// SPDX-License-Identifier: Apache-2.0
// Commands out of bytes: whole lines from a pipe, or single keys of a terminal. Values, any thread.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace halvora {

/// Collects bytes into lines, the last of which may lack its end. Of a line that is longer than any
/// command only the beginning is kept.
class CommandLines {
 public:
  static constexpr std::size_t kLongest = 1000;

  /// Lines that hold nothing are left out.
  void add(std::string_view bytes, const std::function<void(std::string_view)>& line);
  void end(const std::function<void(std::string_view)>& line);

 private:
  std::string begun_;
};

/// The command that a key means; empty for none.
std::string_view commandOfKey(char key);
/// Which keys there are, in one line.
inline constexpr const char* kKeysHelp =
    "space go, b back, h hold, r resume, o blackout, u release, p panic, q quit";

}  // namespace halvora
