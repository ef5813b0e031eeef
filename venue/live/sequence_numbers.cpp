// SPDX-License-Identifier: Apache-2.0
#include "venue/live/sequence_numbers.h"

#include <utility>

#include "venue/show/cue_schedule.h"

namespace halvora {

namespace {

/// Numbers go from 1 to 65535 and round again; 0 is no phone's newer number.
constexpr std::uint64_t kNumbers = 0xFFFF;
/// How many numbers later a disk that failed is asked again.
constexpr std::uint64_t kRetry = 32;

}  // namespace

std::uint16_t PlainNumbers::next() { return std::exchange(next_, nextSequence(next_)); }

ReservedNumbers::ReservedNumbers(std::uint16_t last, Keep keep, std::unique_ptr<SerialQueue> queue)
    : last_(last), keep_(std::move(keep)), queue_(std::move(queue)) {}

// The queue goes first: what it still writes would be above what was used. Where the disk failed
// there are numbers on the air that it does not know yet.
ReservedNumbers::~ReservedNumbers() {
  queue_.reset();
  if (reserved_ != used_) keep_(numberAt(used_));
}

std::uint16_t ReservedNumbers::numberAt(std::uint64_t count) const {
  if (count == 0) return last_;
  return static_cast<std::uint16_t>((last_ + count - 1) % kNumbers + 1);
}

bool ReservedNumbers::begin() {
  asked_ = kReservedNumbers;
  return reserveNow(asked_);
}

bool ReservedNumbers::reserveNow(std::uint64_t count) {
  const bool isKept = keep_(numberAt(count));
  hasFailed_ = !isKept;
  if (isKept) reserved_ = count;
  return isKept;
}

void ReservedNumbers::reserveMore() {
  asked_ = used_ + kReservedNumbers + kReservedNumbers / 2;
  askedAt_ = used_;
  if (queue_ == nullptr) {
    reserveNow(asked_);
  } else if (!queue_->dispatch([this, count = asked_] { reserveNow(count); })) {
    hasFailed_ = true;
  }
}

std::uint16_t ReservedNumbers::next() {
  ++used_;
  const bool isLow = used_ + kReservedNumbers / 2 >= asked_;
  if (isLow || (hasFailed_ && used_ >= askedAt_ + kRetry)) reserveMore();
  return numberAt(used_);
}

std::string ReservedNumbers::alarm() const {
  if (used_ <= reserved_ && !hasFailed_) return {};
  return "the journal of sequence numbers cannot be written; after a restart the hall may not "
         "follow";
}

}  // namespace halvora
