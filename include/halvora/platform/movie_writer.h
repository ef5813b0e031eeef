// SPDX-License-Identifier: Apache-2.0
// Movies as output: pictures in, a file that every player shows. For tools; the kit itself only
// reads. One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// How a movie is to be written.
struct MovieFormat {
  /// Pixels; even, at least 2.
  int width = 0;
  int height = 0;            ///< Likewise.
  int framesPerSecond = 30;  ///< At least 1.
};

class MovieWriter : public Need {
 public:
  /// Without `finish` the file is worth nothing.
  ~MovieWriter() override = default;
  /// The next picture: rows from the top, red, green and blue a pixel. False once anything failed.
  virtual bool add(std::span<const std::uint8_t> rgb) = 0;
  /// Writes what is left. False where anything failed, now or before.
  virtual bool finish() = 0;
};

/// Begins movies.
class MovieWriters : public Need {
 public:
  /// Null where the file cannot be made, or there is no encoder.
  virtual std::unique_ptr<MovieWriter> make(const std::string& path,
                                            const MovieFormat& format) const = 0;
};

}  // namespace v0
}  // namespace halvora
