// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/local_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvora {

std::unique_ptr<LocalFile> LocalFile::open(const std::string& path) {
  // Without waiting, as a pipe of that name would wait for somebody to write into it.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  struct stat status = {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(descriptor);
    return nullptr;
  }
  return std::unique_ptr<LocalFile>(
      new LocalFile(descriptor, static_cast<std::uint64_t>(status.st_size)));
}

LocalFile::~LocalFile() { close(descriptor_); }

std::size_t LocalFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  std::size_t count = 0;
  // Beyond what a file can have the offset comes out negative, and nothing is read.
  while (count < bytes.size()) {
    const ssize_t got = pread(descriptor_, bytes.data() + count, bytes.size() - count,
                              static_cast<off_t>(offset + count));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    count += static_cast<std::size_t>(got);
  }
  return count;
}

}  // namespace halvora
