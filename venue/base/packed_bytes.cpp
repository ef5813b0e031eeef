// SPDX-License-Identifier: Apache-2.0
#include "venue/base/packed_bytes.h"

namespace halvora {

namespace {

constexpr unsigned kBits = 7;
constexpr std::uint64_t kMore = 0x80;

}  // namespace

void PackedWriter::number(std::uint64_t value) {
  for (; value >= kMore; value >>= kBits) byte(static_cast<std::uint8_t>(value | kMore));
  byte(static_cast<std::uint8_t>(value));
}

void PackedWriter::signedNumber(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  number(value < 0 ? ~(bits << 1) : bits << 1);
}

void PackedWriter::text(std::string_view text) {
  number(text.size());
  bytes_ += text;
}

std::uint8_t PackedReader::byte() {
  if (!isGood_ || at_ == bytes_.size()) {
    isGood_ = false;
    return 0;
  }
  return static_cast<std::uint8_t>(bytes_[at_++]);
}

std::uint64_t PackedReader::number(std::uint64_t most) {
  std::uint64_t value = 0;
  for (unsigned shift = 0; shift < 64; shift += kBits) {
    const std::uint64_t next = byte();
    const std::uint64_t part = next & ~kMore;
    if (part << shift >> shift != part) break;
    value |= part << shift;
    if ((next & kMore) != 0) continue;
    isGood_ = isGood_ && value <= most;
    return isGood_ ? value : 0;
  }
  isGood_ = false;
  return 0;
}

std::int64_t PackedReader::signedNumber(std::int64_t most) {
  const std::uint64_t bits = number();
  const auto half = static_cast<std::int64_t>(bits >> 1);
  const std::int64_t value = (bits & 1) != 0 ? -half - 1 : half;
  isGood_ = isGood_ && value <= most && value >= -most;
  return isGood_ ? value : 0;
}

std::string_view PackedReader::text() {
  const std::size_t size = count(1);
  const std::string_view text = bytes_.substr(at_, size);
  at_ += size;
  return text;
}

std::size_t PackedReader::count(std::size_t leastBytes) {
  const std::uint64_t value = number();
  isGood_ = isGood_ && value <= (bytes_.size() - at_) / leastBytes;
  return isGood_ ? static_cast<std::size_t>(value) : 0;
}

std::uint64_t fingerprintOf(std::string_view text, std::uint64_t before) {
  std::uint64_t print = before;
  for (const char byte : text) {
    print = (print ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
  }
  return print;
}

}  // namespace halvora
