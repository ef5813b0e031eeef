// SPDX-License-Identifier: Apache-2.0
// A whole venue in virtual time: one engine a seat, all hearing the same show, each through its own
// air. It runs slice by slice, block after block within a slice: the phones of a block share a run
// loop, and their few kilobytes stay near the processor. Phones never hear of each other, so any
// number of threads gives the same result. Owned by whoever drives it, from one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "halvora/platform/workers.h"
#include "venue/crowd/air.h"
#include "venue/crowd/crowd_phone.h"
#include "venue/crowd/crowd_slice.h"
#include "venue/crowd/proof_trial.h"
#include "venue/crowd/rogues.h"
#include "venue/crowd/venue_tables.h"
#include "venue/show/flash_meter.h"
#include "venue/show/scenario_schedule.h"

namespace halvora {

class CueWatch;

struct CrowdSettings {
  int framesPerSecond = 30;
  /// What comes before it is played, but neither looked at nor counted.
  Duration from{};
  Duration end{};
  /// The share of phones that open the application late, and by how much at most.
  double lateShare = 0;
  Duration latest{};
  /// The share of phones that leave, at some time before the end.
  double leaveShare = 0;
  std::uint64_t seed = 1;
};

/// Which frame of which pixel map is on the air.
struct MapMoment {
  const VenueTables::Block* tables;
  int frame = 0;
};

class Crowd {
 public:
  /// Short, because the lights of all its frames are kept.
  static constexpr Duration kSlice = milliseconds(250);
  /// The phones of a block. Each has six timers at once when it is opened and its effects may add
  /// some later; 512 is what their loop then has room for.
  static constexpr std::size_t kBlock = 72;
  /// A phone that shows what the show did so long ago is late, not lost.
  static constexpr Duration kLate = milliseconds(1000);

  /// All of it must outlive the crowd.
  struct Parts {
    const CrowdParts& phones;
    /// Of all phones, or of those of a shard: so many neighbours in the venue's order.
    std::span<const CrowdSeat> seats;
    const Scenario& scenario;
    const Air& air;
    const VenueTables& tables;
    const PixelMapAssets& assets;
    Workers& workers;
    /// Null where nobody asks how the cues are followed.
    CueWatch* cues = nullptr;
    /// What phones are held against, from that time on; null where nobody attacks.
    const TrueShow* truth = nullptr;
    Duration attackedFrom{};
    /// Null where phones judge nothing afterwards.
    const ProofSettings* proof = nullptr;
    /// The number of the first phone in the whole venue, which all its chances follow from.
    std::size_t firstPhone = 0;
  };

  /// Throws std::bad_alloc where memory is short, as `run` does; the crowd is worth nothing then.
  Crowd(const Parts& parts, const CrowdSettings& settings);
  ~Crowd();
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  Duration now() const { return now_; }
  bool isOver() const { return now_ > settings_.end; }
  /// Runs on by a slice; false if a phone never comes to rest.
  bool run();
  /// The last one; lives until the next.
  const CrowdSlice& slice() const { return slice_; }

  /// Whether a phone's application is open then.
  bool isOpen(std::size_t phone, Duration time) const { return presences_[phone].isOpen(time); }
  /// Of the worst phone. All are looked at 120 times a second.
  FlashFigures phoneFlashes() const;
  /// How many phones were lost to attackers at any time so far.
  std::uint64_t phonesLost() const;
  /// Of all phones; none where they judge nothing.
  std::optional<ProofTally> proofTally() const;

 private:
  /// When a phone's application is open: from the first time to before the second.
  struct Presence {
    Duration opens{};
    /// After the end for those that stay.
    Duration leaves{};
    bool isOpen(Duration time) const { return opens <= time && time < leaves; }
  };
  struct Block;
  struct Member;
  struct Moment;
  struct Plan;
  struct Chunk;

  void seatPhones();
  void seatBlock(std::size_t block);
  Presence presenceOf(std::size_t phone) const;
  const VenueTables::Block* tablesOf(const Broadcast& broadcast);
  void makePlan(Plan& plan);
  void planMap(Plan& plan, Duration time);
  void runChunk(const Plan& plan, Chunk& chunk);
  std::size_t endOf(std::size_t block) const;
  bool isCounted(Duration time) const { return time >= settings_.from; }
  bool runBlock(const Plan& plan, std::size_t block, Chunk& chunk);
  void collectMoments(const Plan& plan, std::size_t block, Chunk& chunk);
  void collectMomentsOf(const Plan& plan, std::size_t phone, Chunk& chunk);
  void act(const Moment& moment, Duration now, Chunk& chunk);
  void hear(std::size_t sent, std::size_t phone, Duration now, Chunk& chunk);
  void watch(const Plan& plan, std::size_t tick, std::size_t phone, Chunk& chunk);
  void sumChunks(const Plan& plan);
  void sumField(const Plan& plan);
  /// The newest look on the air; null before the first.
  const Broadcast* onAir(Duration time) const;
  bool isShowOnAir(Duration time) const;
  void look(const Plan& plan, std::size_t frame, std::size_t index, Chunk& chunk);
  void closeLooks(Duration before);
  std::uint64_t openAt(Duration time) const;

  Parts parts_;
  CrowdSettings settings_;
  /// What the scenario does to a phone beside its packets, from the opening of its application on.
  std::vector<ScenarioMoment> acts_;
  std::vector<Presence> presences_;
  std::vector<std::unique_ptr<Block>> blocks_;
  std::vector<std::unique_ptr<Member>> members_;
  std::vector<Chunk> chunks_;
  Duration now_{};
  std::int64_t nextFrame_ = 0;
  std::int64_t nextWatch_ = 0;
  std::vector<CrowdLight> lights_;
  CrowdSlice slice_;
  /// Of the maps seen so far, by venue and map; null for one without.
  std::map<std::pair<std::uint16_t, std::uint16_t>, const VenueTables::Block*> tables_;
  OpenLooks looks_;
  std::uint32_t nextLook_ = 0;
  FieldSections sections_;
};

}  // namespace halvora
