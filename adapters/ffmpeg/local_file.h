// SPDX-License-Identifier: Apache-2.0
// A regular file that stays open, so that everyone who reads it reads the same one even when
// another takes its place. Any thread.
#pragma once

#include <memory>
#include <string>

#include "adapters/ffmpeg/byte_source.h"

namespace halvora {

class LocalFile final : public ByteSource {
 public:
  /// Null for what is missing, may not be read, or is not a regular file.
  static std::unique_ptr<LocalFile> open(const std::string& path);

  ~LocalFile() override;
  LocalFile(const LocalFile&) = delete;
  LocalFile& operator=(const LocalFile&) = delete;

  /// As it was when the file was opened.
  std::uint64_t size() const override { return size_; }
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) const override;

 private:
  LocalFile(int descriptor, std::uint64_t size) : descriptor_(descriptor), size_(size) {}

  int descriptor_;
  std::uint64_t size_;
};

}  // namespace halvora
