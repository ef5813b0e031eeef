// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/live_crowd.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "venue/crowd/air.h"

namespace halvora {

namespace {

// Of the chances of the crowd's air, and of its phones.
constexpr std::uint64_t kAirSeed = 1;
constexpr std::uint64_t kPhoneSeed = 2;

class LoopQueue final : public SerialQueue {
 public:
  LoopQueue(RunLoop& loop, std::string_view label) : loop_(loop), label_(label) {}
  const std::string& label() const override { return label_; }
  bool dispatch(Task task) override {
    loop_.post(std::move(task));
    return true;
  }

 private:
  RunLoop& loop_;
  std::string label_;
};

}  // namespace

std::unique_ptr<SerialQueue> LoopQueues::make(std::string_view label) {
  return std::make_unique<LoopQueue>(loop_, label);
}

struct LiveCrowd::Member final : private ViewObserver, private CrowdTorch::Observer {
  Member(LiveCrowd& its, std::size_t place, const CrowdParts& parts, const CrowdSeat& seat)
      : crowd(its), index(place), phone(its.ground_, parts, seat, mixed(kPhoneSeed, place, 0)) {
    phone.views().setObserver(this);
    phone.torch().setObserver(this);
  }

  void touch() {
    if (std::exchange(isTouched, true)) return;
    crowd.touch(index);
  }

  void alphaChanged(ViewId, double, Duration) override { touch(); }
  void hiddenChanged(ViewId, bool) override { touch(); }
  void lightChanged(const MaybeColour&) override { touch(); }
  void lightAnimationStarted(const MaybeColour&, Duration) override { touch(); }
  void torchChanged() override { touch(); }

  LiveCrowd& crowd;
  const std::size_t index;
  bool isTouched = false;
  std::optional<BroadcastBytes> obeyed;
  CrowdPhone phone;
};

LiveCrowd::LiveCrowd(RunLoop& loop, const CrowdParts& parts, std::span<const CrowdSeat> seats)
    : queues_(loop), ground_(loop, queues_), lights_(seats.size()) {
  members_.reserve(seats.size());
  for (const CrowdSeat& seat : seats) {
    members_.push_back(std::make_unique<Member>(*this, members_.size(), parts, seat));
    members_.back()->phone.act(LoadAction{});
    members_.back()->phone.act(StartAction{});
  }
}

// Engines that go may change their views once more.
LiveCrowd::~LiveCrowd() { isAnnounced_ = true; }

CrowdPhone& LiveCrowd::phone(std::size_t index) { return members_[index]->phone; }

const std::optional<BroadcastBytes>& LiveCrowd::obeyed(std::size_t index) const {
  return members_[index]->obeyed;
}

void LiveCrowd::hear(std::span<const std::uint8_t> packet, double loss) {
  BroadcastBytes bytes{};
  std::copy_n(packet.begin(), std::min(packet.size(), bytes.size()), bytes.begin());
  for (const auto& member : members_) {
    if (loss > 0 && isLost(mixed(kAirSeed, member->index, sent_), loss)) continue;
    if (member->phone.hear(packet) == CrowdPhone::Heard::newLook) member->obeyed = bytes;
  }
  ++sent_;
}

void LiveCrowd::becomeActive() {
  for (const auto& member : members_) member->phone.act(AppAction{true});
}

void LiveCrowd::touch(std::size_t index) {
  touched_.push_back(static_cast<std::uint32_t>(index));
  if (std::exchange(isAnnounced_, true)) return;
  if (mayHaveChanged) mayHaveChanged();
}

void LiveCrowd::look(std::vector<std::uint32_t>& changed) {
  isAnnounced_ = true;
  isAnimating_ = false;
  std::vector<std::uint32_t> next;
  for (const std::uint32_t index : std::exchange(touched_, {})) {
    Member& member = *members_[index];
    const CrowdLight light = member.phone.light();
    if (light != lights_[index]) {
      lights_[index] = light;
      changed.push_back(index);
    }
    const bool isAnimating = member.phone.views().isAnimating();
    member.isTouched = isAnimating;
    if (!isAnimating) continue;
    next.push_back(index);
    isAnimating_ = true;
  }
  touched_ = std::move(next);
  isAnnounced_ = false;
}

}  // namespace halvora
