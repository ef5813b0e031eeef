// SPDX-License-Identifier: Apache-2.0
#include "venue/base/input_file.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvora {

namespace {

// How long Ctrl-C may take while nothing comes.
constexpr int kPatienceMs = 100;

class OpenFile {
 public:
  // Not blocking, because a pipe that nobody writes to could not even be opened.
  explicit OpenFile(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)) {}
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  bool isFolder() const {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 && S_ISDIR(status.st_mode);
  }
  /// Whether there is something to read, or an end; false after a while.
  bool wait() const {
    pollfd wanted{descriptor_, POLLIN, 0};
    return ::poll(&wanted, 1, kPatienceMs) > 0;
  }
  /// 0 at the end, below 0 for a failure.
  ssize_t read(char* to, std::size_t size) const { return ::read(descriptor_, to, size); }

 private:
  int descriptor_;
};

}  // namespace

std::variant<std::string, CommandResult> readInput(const std::string& path, std::size_t limit,
                                                   const std::atomic<bool>& isInterrupted) {
  const OpenFile file(path);
  if (!file.isOpen()) return unusable(path + ": cannot be read");
  if (file.isFolder()) return unusable(path + ": is a folder");
  std::string bytes;
  std::array<char, 1 << 16> block;
  while (true) {
    if (isInterrupted) return interrupted();
    if (!file.wait()) continue;
    const ssize_t count = file.read(block.data(), block.size());
    if (count == 0) return bytes;
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) return unusable(path + ": cannot be read");
    bytes.append(block.data(), static_cast<std::size_t>(count));
    if (bytes.size() > limit) {
      return unusable(path + ": has more than " + std::to_string(limit >> 20) + " MiB");
    }
  }
}

}  // namespace halvora
