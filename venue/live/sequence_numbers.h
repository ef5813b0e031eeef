// SPDX-License-Identifier: Apache-2.0
// The one authority for a hall's sequence numbers: phones obey only what is newer than what they
// heard last, so a number is on disk before it is on the air, and whoever goes on after a crash, a
// power cut or on a second machine goes on above it. Main thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>

#include "halvora/platform/serial_queues.h"
#include "venue/base/outside.h"

namespace halvora {

class SequenceNumbers {
 public:
  virtual ~SequenceNumbers() = default;
  /// The number of a new look.
  virtual std::uint16_t next() = 0;
  /// Why numbers are on the air that are not on disk, in one line; empty while all is well.
  virtual std::string alarm() const { return {}; }
};

/// Without a journal: from a number on, forgotten in the end.
class PlainNumbers final : public SequenceNumbers {
 public:
  explicit PlainNumbers(std::uint16_t first) : next_(first) {}
  std::uint16_t next() override;

 private:
  std::uint16_t next_;
};

/// How many numbers are reserved at a time, so that the disk is seldom waited for.
inline constexpr int kReservedNumbers = 1024;

/// Numbers that were reserved before they are given out. Half a block ahead the next one is
/// reserved on the queue; where that fails or takes too long, the show goes on, with an alarm: a
/// hall that stands still is worse than one that a restart may not reach.
class ReservedNumbers final : public SequenceNumbers {
 public:
  /// Puts on disk that all numbers up to that one are taken; on the queue's thread.
  using Keep = std::function<bool(std::uint16_t last)>;

  /// Numbers go on above `last`. Without a queue blocks are reserved at once.
  ReservedNumbers(std::uint16_t last, Keep keep, std::unique_ptr<SerialQueue> queue);
  /// Gives back what was not used, or notes what was used beyond it.
  ~ReservedNumbers() override;
  ReservedNumbers(const ReservedNumbers&) = delete;
  ReservedNumbers& operator=(const ReservedNumbers&) = delete;

  /// The first block; false where it cannot be reserved.
  bool begin();
  std::uint16_t next() override;
  std::string alarm() const override;

 private:
  void reserveMore();
  bool reserveNow(std::uint64_t count);
  std::uint16_t numberAt(std::uint64_t count) const;

  const std::uint16_t last_;
  Keep keep_;
  /// Since the beginning.
  std::uint64_t used_ = 0;
  std::uint64_t asked_ = 0;
  /// How many were used when that was asked for.
  std::uint64_t askedAt_ = 0;
  std::atomic<std::uint64_t> reserved_{0};
  std::atomic<bool> hasFailed_{false};
  std::unique_ptr<SerialQueue> queue_;
};

/// Opens or makes the journal, locks it for this process and reserves a first block; numbers go on
/// above the last that was reserved, and not below `first`. Or what to end with: another player has
/// it, it cannot be written, or it is no journal.
std::variant<std::unique_ptr<SequenceNumbers>, CommandResult> openSequenceJournal(
    const std::string& path, std::uint16_t first, std::unique_ptr<SerialQueue> queue);

}  // namespace halvora
