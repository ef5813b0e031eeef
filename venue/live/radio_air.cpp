// SPDX-License-Identifier: Apache-2.0
#include "venue/live/radio_air.h"

#include <algorithm>
#include <utility>

namespace halvora {

RadioAir::RadioAir(Make make, TransmitterSettings settings, RunLoop& loop, Say say)
    : make_(std::move(make)), settings_(std::move(settings)), loop_(loop), say_(std::move(say)) {
  open();
  look_ = {loop_, loop_.every(kLook, [this] { look(); })};
}

const std::string& RadioAir::failure() const {
  return advertiser_ ? advertiser_->failure() : failure_;
}

void RadioAir::open() {
  advertiser_ = make_();
  hasShown_ = false;
  if (advertiser_) advertiser_->open(settings_);
}

void RadioAir::look() {
  if (!advertiser_) {
    if (loop_.now() - lostAt_ >= kRetry) open();
    return;
  }
  if (!advertiser_->failure().empty()) return lose(advertiser_->failure());
  if (advertiser_->isBusy()) return;
  if (!hasShown_ && !newest_.empty()) {
    isWaiting_ = true;
    pump();
  }
  if (std::exchange(isLost_, false)) say_(settings_.adapter + " is back");
}

void RadioAir::lose(const std::string& why) {
  failure_ = why;
  advertiser_.reset();
  lostAt_ = loop_.now();
  if (std::exchange(isLost_, true)) return;
  say_(settings_.adapter + " is lost: " + why + "; the show goes on without it until it is back");
}

void RadioAir::send(std::span<const std::uint8_t> data, bool isRepeat) {
  // A repeat that was signed anew is told, as a radio repeats what it has.
  if (isRepeat && std::ranges::equal(data, newest_)) return;
  if (!isRepeat && isWaiting_ && hasShown_ && leftOut_++ == 0) {
    say_(settings_.adapter + " does not take packets as fast as they come; the newest is kept");
  }
  newest_.assign(data.begin(), data.end());
  isWaiting_ = true;
  pump();
}

void RadioAir::pump() {
  if (!isWaiting_ || !advertiser_ || !advertiser_->failure().empty()) return;
  if (!hasShown_ && advertiser_->isBusy()) return;
  const Duration now = loop_.now();
  if (nextShow_ > now) {
    pump_ = {loop_, loop_.after(nextShow_ - now, [this] { pump(); })};
    return;
  }
  isWaiting_ = false;
  hasShown_ = true;
  nextShow_ = now + settings_.interval;
  advertiser_->show(newest_);
}

void RadioAir::end() {
  look_.invalidate();
  pump_.invalidate();
  if (advertiser_ && advertiser_->failure().empty()) advertiser_->end();
}

}  // namespace halvora
