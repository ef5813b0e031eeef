// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/mapped_file.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace halvora {

namespace {

// A file without a name, or -1.
int unnamedFile(const std::string& folder) {
  std::string name = folder + "/.halvora-XXXXXX";
  const int file = mkostemp(name.data(), O_CLOEXEC);
  if (file >= 0) unlink(name.c_str());
  return file;
}

bool hasRoom(int file, std::size_t size) {
  if (size > static_cast<std::size_t>(std::numeric_limits<off_t>::max())) return false;
  int error = EINTR;
  while (error == EINTR) error = posix_fallocate(file, 0, static_cast<off_t>(size));
  return error == 0;
}

}  // namespace

std::optional<MappedFile> MappedFile::make(const std::string& folder, std::size_t size) {
  if (size == 0) return MappedFile({});
  const int file = unnamedFile(folder);
  if (file < 0) return std::nullopt;
  void* memory = MAP_FAILED;
  if (hasRoom(file, size)) {
    memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  }
  // The mapping keeps what it needs.
  close(file);
  if (memory == MAP_FAILED) return std::nullopt;
  return MappedFile({static_cast<std::byte*>(memory), size});
}

MappedFile::~MappedFile() {
  if (!bytes_.empty()) munmap(bytes_.data(), bytes_.size());
}

}  // namespace halvora
