// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/mp4_bytes.h"

namespace halvora {

std::uint64_t Mp4Bytes::number(std::uint64_t at, int count) {
  const auto bytes = static_cast<std::uint64_t>(count);
  if (at < windowAt_ || at - windowAt_ + bytes > windowSize_) {
    windowAt_ = at;
    windowSize_ = source_.read(at, window_);
    if (windowSize_ < bytes) {
      isCut_ = true;
      return 0;
    }
  }
  std::uint64_t value = 0;
  for (std::uint64_t byte = 0; byte < bytes; ++byte) {
    value = value << 8 | window_[at - windowAt_ + byte];
  }
  return value;
}

Mp4Box Mp4Bytes::boxAt(std::uint64_t at, std::uint64_t limit) {
  Mp4Box box = {.type = number32(at + 4), .begin = at, .body = at, .end = at};
  std::uint64_t size = number(at, 4);
  std::uint64_t header = 8;
  if (size == 1 && limit - at >= 16) {
    size = number(at + 8, 8);
    header = 16;
  } else if (size == 0) {
    size = limit - at;
  }
  if (size < header) return box;
  box.body = at + header;
  box.end = size <= UINT64_MAX - at ? at + size : UINT64_MAX;
  return box;
}

}  // namespace halvora
