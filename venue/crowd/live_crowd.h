// SPDX-License-Identifier: Apache-2.0
// A crowd in the time of a run loop: all phones live on the loop of whoever owns it, hear what is
// handed to them when it is handed to them, and say when a light may have changed. Nothing is done
// for a phone that shows what it showed. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "venue/crowd/crowd_phone.h"

namespace halvora {

/// Queues without threads: a task runs on the loop, in a turn of its own. For phones that have next
/// to nothing to do beside their main thread, and are many.
class LoopQueues final : public SerialQueues {
 public:
  explicit LoopQueues(RunLoop& loop) : loop_(loop) {}
  std::unique_ptr<SerialQueue> make(std::string_view label) override;

 private:
  RunLoop& loop_;
};

class LiveCrowd {
 public:
  /// Every phone's application is opened, and listens. `seats` outlive the crowd, like the parts.
  /// Before `mayHaveChanged` is called for the first time, somebody has to look.
  LiveCrowd(RunLoop& loop, const CrowdParts& parts, std::span<const CrowdSeat> seats);
  ~LiveCrowd();
  LiveCrowd(const LiveCrowd&) = delete;
  LiveCrowd& operator=(const LiveCrowd&) = delete;

  /// A packet is on the air. Of its phones each misses that share, by chances of its own.
  void hear(std::span<const std::uint8_t> packet, double loss);
  /// Every phone's application is opened again, which makes it forget the show within a second.
  void becomeActive();

  std::size_t size() const { return members_.size(); }
  CrowdPhone& phone(std::size_t index);

  /// The packet whose look the phone shows; none before the first.
  const std::optional<BroadcastBytes>& obeyed(std::size_t index) const;

  /// The lights as `look` found them.
  std::span<const CrowdLight> lights() const { return lights_; }
  /// Looks at the phones whose lights may have changed since the last time, and adds those that
  /// have to `changed`.
  void look(std::vector<std::uint32_t>& changed);
  /// Whether a later look may find another light without any further change.
  bool isAnimating() const { return isAnimating_; }
  /// Called once after a look, when a phone's light may have changed; may stay absent. It must not
  /// look itself: more phones may be about to change.
  std::function<void()> mayHaveChanged;

 private:
  struct Member;

  void touch(std::size_t index);

  LoopQueues queues_;
  CrowdGround ground_;
  std::vector<CrowdLight> lights_;
  /// Phones to be looked at.
  std::vector<std::uint32_t> touched_;
  bool isAnimating_ = false;
  bool isAnnounced_ = false;
  std::uint64_t sent_ = 0;
  /// Last: phones that go may still touch what is above.
  std::vector<std::unique_ptr<Member>> members_;
};

}  // namespace halvora
