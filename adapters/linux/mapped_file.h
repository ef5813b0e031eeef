// SPDX-License-Identifier: Apache-2.0
// Memory that lies in a file instead of the machine's own: for data that is larger than a program
// should hold, and gone when this object goes, or the process. The file has no name and all of its
// room from the start, so that a full disk is known before anything is written. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace halvora {

class MappedFile {
 public:
  /// So many bytes, all 0, on the file system of `folder`; none where they cannot be had.
  static std::optional<MappedFile> make(const std::string& folder, std::size_t size);

  /// The bytes of a file that has so many; none where it has not, or cannot be read. What is
  /// written to them stays here.
  static std::optional<MappedFile> open(const std::string& path, std::size_t size);

  MappedFile(MappedFile&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}
  MappedFile& operator=(MappedFile&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile();

  /// Begins at a multiple of the machine's page size.
  std::span<std::byte> bytes() const { return bytes_; }

 private:
  explicit MappedFile(std::span<std::byte> bytes) : bytes_(bytes) {}

  std::span<std::byte> bytes_;
};

}  // namespace halvora
