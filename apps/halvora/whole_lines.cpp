// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/whole_lines.h"

#include <cerrno>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvora {

bool WholeLines::write(std::string_view lines) noexcept {
  std::size_t written = 0;
  while (written < lines.size()) {
    const ssize_t count = ::write(descriptor_, lines.data() + written, lines.size() - written);
    if (count > 0) {
      written += static_cast<std::size_t>(count);
      continue;
    }
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) {
      // Whoever handed the descriptor in may have set it so, for a terminal all share.
      pollfd room{descriptor_, POLLOUT, 0};
      if (poll(&room, 1, -1) >= 0 || errno == EINTR) continue;
    }
    isClosed_ = errno == EPIPE;
    takeBack(lines.substr(0, written));
    return false;
  }
  return true;
}

void WholeLines::takeBack(std::string_view begun) noexcept {
  const std::size_t end = begun.rfind('\n');
  const std::size_t excess = begun.size() - (end == std::string_view::npos ? 0 : end + 1);
  struct stat file = {};
  if (excess == 0 || fstat(descriptor_, &file) != 0 || !S_ISREG(file.st_mode)) return;
  const off_t at = lseek(descriptor_, 0, SEEK_CUR);
  // Only at its end: what others have written behind it is theirs.
  if (at < static_cast<off_t>(excess) || at != file.st_size) return;
  const off_t whole = at - static_cast<off_t>(excess);
  if (ftruncate(descriptor_, whole) == 0) lseek(descriptor_, whole, SEEK_SET);
}

}  // namespace halvora
