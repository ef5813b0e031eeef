// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/spoken_lines.h"

#include <algorithm>
#include <cerrno>
#include <exception>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvora {

namespace {

// Whoever handed the descriptor in shares how it waits, so only one of this process's own may be
// told not to. A file never waits, and has its own place to write at.
int promptOf(int descriptor) {
  struct stat place = {};
  if (fstat(descriptor, &place) != 0 || !(S_ISFIFO(place.st_mode) || S_ISCHR(place.st_mode))) {
    return -1;
  }
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  return ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

SpokenLines::SpokenLines(int descriptor) : descriptor_(descriptor), prompt_(promptOf(descriptor)) {}

SpokenLines::~SpokenLines() {
  if (prompt_ >= 0) ::close(prompt_);
}

void SpokenLines::say(std::string_view text) noexcept try {
  const std::scoped_lock lock(mutex_);
  rest_.erase(0, put(rest_));
  std::string gap;
  if (missed_ > 0) gap = "halvora: lines that nobody took: " + std::to_string(missed_) + "\n";
  if (rest_.empty() && take(gap)) {
    missed_ = 0;
    if (rest_.empty() && take(text)) return;
  }
  missed_ += static_cast<std::uint64_t>(std::ranges::count(text, '\n'));
} catch (const std::exception&) {
  // Without memory for it nothing is said.
}

bool SpokenLines::take(std::string_view text) {
  const std::size_t count = put(text);
  if (count == 0 && !text.empty()) return false;
  rest_ = text.substr(count);
  return true;
}

// What nobody will ever read counts as written.
std::size_t SpokenLines::put(std::string_view text) const {
  if (text.empty()) return 0;
  const int where = prompt_ >= 0 ? prompt_ : descriptor_;
  pollfd room{where, POLLOUT, 0};
  if (prompt_ < 0 && poll(&room, 1, 0) == 0) return 0;
  const ssize_t count = ::write(where, text.data(), text.size());
  if (count >= 0) return static_cast<std::size_t>(count);
  return errno == EAGAIN || errno == EINTR ? 0 : text.size();
}

}  // namespace halvora
