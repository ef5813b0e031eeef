// SPDX-License-Identifier: Apache-2.0
// Standard output, on which programs depend: it holds whole lines only, whatever fails in between.
// Each text is on its way when `write` returns. One thread.
#pragma once

#include <string_view>

namespace halvora {

class WholeLines {
 public:
  /// The descriptor stays whoever's it is.
  explicit WholeLines(int descriptor) : descriptor_(descriptor) {}

  /// One or more whole lines. False where they could not all be written; of a line that was begun
  /// then nothing stays in a file.
  bool write(std::string_view lines) noexcept;
  /// Whether nobody reads them any more.
  bool isClosed() const { return isClosed_; }

 private:
  void takeBack(std::string_view begun) noexcept;

  int descriptor_;
  bool isClosed_ = false;
};

}  // namespace halvora
