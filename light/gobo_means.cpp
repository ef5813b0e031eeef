// SPDX-License-Identifier: Apache-2.0
#include "light/gobo_means.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

namespace halvora {

/// A picture on its way. The queue's until it has ended, then the main thread's.
struct GoboMeans::Reading {
  Reading(GoboMeans& theOwner, std::string thePath)
      : owner(&theOwner), means(theOwner.means_), loop(theOwner.loop_), path(std::move(thePath)) {}

  void run() {
    const auto here = means.lock();
    if (!here) return;
    read(*here);
    // Where the main thread cannot be told, its next frame or look finds the mean.
    loop.post([theOwner = owner, theMeans = means] {
      if (!theMeans.expired()) theOwner->arrived_();
    });
  }
  void read(const PictureMeans& here) noexcept {
    try {
      sums = here.read(path);
    } catch (...) {
      // Short of memory for it: nobody can draw it then, either.
    }
    hasEnded = true;
  }

  GoboMeans* owner;
  std::weak_ptr<PictureMeans> means;
  RunLoop& loop;
  std::string path;
  std::atomic<bool> hasEnded{false};
  /// None where there was no memory for them.
  std::optional<PictureMeans::Sums> sums;
};

GoboMeans::GoboMeans(const Platform& platform, std::function<void()> arrived)
    : loop_(platform.runLoop),
      queues_(platform.queues),
      arrived_(std::move(arrived)),
      means_(std::make_shared<PictureMeans>(Pictures(platform))) {}

// The queue goes first, and waits for the picture that is under way.
GoboMeans::~GoboMeans() = default;

const GoboMeans::Reading* GoboMeans::find(const std::string& path) const {
  const auto found = std::find_if(readings_.begin(), readings_.end(),
                                  [&path](const auto& reading) { return reading->path == path; });
  return found == readings_.end() ? nullptr : found->get();
}

void GoboMeans::keepWhatHasArrived() {
  std::erase_if(readings_, [this](const auto& reading) {
    if (!reading->hasEnded || !reading->sums) return false;
    try {
      means_->keep(reading->path, *reading->sums);
      return true;
    } catch (...) {
      // Without memory for it now it is kept when it is asked for again.
      return false;
    }
  });
}

bool GoboMeans::begin(const std::string& path) {
  try {
    readings_.reserve(kMostUnderWay);
    if (!queue_) queue_ = queues_.make("com.halvora.sdk.light.pictures");
    const auto reading = std::make_shared<Reading>(*this, path);
    if (!queue_->dispatch([reading] { reading->run(); })) return false;
    readings_.push_back(reading);
    return true;
  } catch (...) {
    return false;
  }
}

bool GoboMeans::isKnown(const std::string& path) {
  keepWhatHasArrived();
  if (means_->has(path)) return true;
  if (const Reading* const known = find(path)) return known->hasEnded && !known->sums;
  // Those for which there was no memory may be asked for again.
  std::erase_if(readings_, [](const auto& one) { return one->hasEnded && !one->sums; });
  if (readings_.size() == kMostUnderWay) return false;
  readsHere_ = !begin(path);
  return readsHere_;
}

PictureMean GoboMeans::of(const std::string& path, Size screen) {
  return readsHere_ || means_->has(path) ? means_->of(path, screen) : PictureMean();
}

}  // namespace halvora
