// SPDX-License-Identifier: Apache-2.0
// A file that appears under its name only when it is whole: until then it lies beside it, and goes
// with this object. Main thread.
#pragma once

#include <string>

#include "venue/base/leftover.h"

namespace halvora {

/// The file that is meant by a path. What is there keeps its kind: a link goes on pointing to its
/// file, and nobody's pipe or device becomes a file. Empty for what is none.
std::string fileAt(const std::string& path);

class PlacedFile {
 public:
  explicit PlacedFile(const std::string& path);

  /// Makes an empty file beside the place, of a name that nobody had; false where none can be made,
  /// and where there is something else than a file.
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
