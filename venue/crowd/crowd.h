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
#include "venue/crowd/crowd_report.h"
#include "venue/crowd/field_meter.h"
#include "venue/crowd/rogues.h"
#include "venue/crowd/venue_tables.h"
#include "venue/show/flash_meter.h"
#include "venue/show/scenario_schedule.h"

namespace halvora {

class CueWatch;

struct CrowdSettings {
  int framesPerSecond = 30;
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

struct CrowdFrame {
  Duration time{};
  /// One a phone, in the order of the seats.
  std::span<const CrowdLight> lights;
  FrameCounts counts;
  /// Whether the newest look on the air is a show.
  bool isShowOnAir = false;
  /// Where that look is a pixel map: its frame.
  std::optional<int> mapFrame;
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
  };

  /// Throws std::bad_alloc where memory is short, as `run` does; the crowd is worth nothing then.
  Crowd(const Parts& parts, const CrowdSettings& settings);
  ~Crowd();
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  Duration now() const { return now_; }
  bool isOver() const { return now_ > settings_.end; }
  /// Runs on by a slice; false if a phone never comes to rest. `frames` are the slice's then, and
  /// live until the next one.
  bool run();
  std::span<const CrowdFrame> frames() const { return frames_; }

  const PacketCounts& packets() const { return packets_; }
  /// Whether a phone's application is open then.
  bool isOpen(std::size_t phone, Duration time) const { return presences_[phone].isOpen(time); }
  /// A look whose delays are complete, as soon as it is so old that later ones do not count.
  struct ClosedLook {
    Duration time{};
    std::uint64_t phones = 0;
    LookDelays delays;
  };
  /// The looks closed in the last slice; at the end, all that were left.
  const std::vector<ClosedLook>& closedLooks() const { return closedLooks_; }
  /// Of the worst phone. All are looked at 120 times a second.
  FlashFigures phoneFlashes() const;
  const FlashCurve& phoneCurve() const { return phoneCurve_; }
  /// Of the mean light of all phones, and of each section's.
  const FieldMeter& field() const { return field_; }
  std::string_view nameOfSection(std::size_t section) const { return sections_.name(section); }
  /// How many phones were lost to attackers at any time so far.
  std::size_t phonesLost() const;

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
  struct Slice;
  struct Chunk;

  void seatPhones();
  void seatBlock(std::size_t block);
  Presence presenceOf(std::size_t phone) const;
  const VenueTables::Block* tablesOf(const Broadcast& broadcast);
  void plan(Slice& slice);
  void runChunk(const Slice& slice, Chunk& chunk);
  std::size_t endOf(std::size_t block) const;
  bool runBlock(const Slice& slice, std::size_t block, Chunk& chunk);
  void collectMoments(const Slice& slice, std::size_t block, Chunk& chunk);
  void collectMomentsOf(const Slice& slice, std::size_t phone, Chunk& chunk);
  void act(const Moment& moment, Duration now, Chunk& chunk);
  void hear(std::size_t sent, std::size_t phone, Duration now, Chunk& chunk);
  void watch(const Slice& slice, std::size_t tick, std::size_t phone, Chunk& chunk);
  void measureField(const Slice& slice);
  /// The newest look on the air; null before the first.
  const Broadcast* onAir(Duration time) const;
  bool isShowOnAir(Duration time) const;
  void look(const Slice& slice, std::size_t frame, std::size_t index, Chunk& chunk);
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
  std::vector<CrowdFrame> frames_;
  /// Of the maps seen so far, by venue and map; null for one without.
  std::map<std::pair<std::uint16_t, std::uint16_t>, const VenueTables::Block*> tables_;
  PacketCounts packets_;
  OpenLooks looks_;
  std::uint32_t nextLook_ = 0;
  std::vector<ClosedLook> closedLooks_;
  FlashCurve phoneCurve_;
  FieldSections sections_;
  FieldMeter field_;
};

}  // namespace halvora
