// SPDX-License-Identifier: Apache-2.0
// A file that appears under its name only when it is whole: until then it lies beside it, and goes
// with this object. Main thread.
#pragma once

#include <string>

#include "venue/base/leftover.h"

namespace halvora {

class PlacedFile {
 public:
  explicit PlacedFile(std::string path);

  /// Makes an empty file beside the place, of a name that nobody had; false where none can be made.
  bool begin();
  /// The file until it is whole.
  const std::string& part() const { return part_; }
  /// Puts it in its place.
  bool place();

 private:
  std::string path_;
  std::string part_;
  Leftover leftover_;
};

}  // namespace halvora
