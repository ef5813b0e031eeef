// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/mapped_file.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
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

std::optional<MappedFile> MappedFile::open(const std::string& path, std::size_t size) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return std::nullopt;
  struct stat facts {};
  const bool isWhole = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && size > 0 &&
                       static_cast<std::uint64_t>(facts.st_size) == size;
  void* memory = MAP_FAILED;
  if (isWhole) memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, file, 0);
  close(file);
  if (memory == MAP_FAILED) return std::nullopt;
  return MappedFile({static_cast<std::byte*>(memory), size});
}

MappedFile::~MappedFile() {
  if (!bytes_.empty()) munmap(bytes_.data(), bytes_.size());
}

}  // namespace halvora
