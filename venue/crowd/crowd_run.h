// SPDX-License-Identifier: Apache-2.0
// One run of a crowd from files to files: reads the venue, builds its tables, runs the show, draws
// it and reports. One thread, which waits for those that it starts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "halvora/safety.h"
#include "venue/base/outside.h"
#include "venue/crowd/air.h"
#include "venue/crowd/crowd.h"
#include "venue/crowd/crowd_part.h"
#include "venue/crowd/cue_watch.h"
#include "venue/crowd/rogues.h"
#include "venue/show/flash_meter.h"
#include "venue/show/scenario.h"

namespace halvora {

struct CrowdRequest {
  /// Absolute paths; without `out` nothing is simulated.
  std::string assets;
  std::string out;
  /// Where the picture of who could hear goes; empty for none.
  std::string coverage = {};
  std::int64_t venueId = 0;
  Scenario scenario;
  /// Of the show that the scenario was compiled from, or none.
  std::vector<WatchedCue> cues = {};
  AirSettings air;
  /// What phones believe. With a key the show is signed.
  AirOptions airOptions = {};
  std::vector<Rogue> rogues = {};
  /// Signed by a row of keys that are disclosed later, which phones judge by; without a key.
  bool isProvenLater = false;
  CrowdSettings settings;
  std::vector<std::string> allowedTransmitterIds;
  /// 0 for one a seat.
  std::uint64_t phones = 0;
  int threads = 0;
  int width = 1280;
  int height = 720;
  FlashPolicy policy = FlashPolicy::exact;
  /// Where seat tables are kept between runs; empty for nowhere.
  std::string tables = {};
  /// With one, its phones alone are simulated, and what they did is written beside `out`.
  std::optional<CrowdShard> shard = {};
  /// All that the show follows from, as `CrowdPartHead` has it; for a shard.
  std::vector<std::string> facts = {};
};

/// Of a shard: beside the pictures that all of them will make.
std::string crowdPartFile(const std::string& out, const CrowdShard& shard);

CommandResult runCrowd(const CrowdRequest& request, const Call& call);

struct CrowdFlashes {
  std::size_t phones = 0;
  /// Of the worst phone.
  FlashFigures phone;
  FlashCurve phoneCurve;
  FlashFigures hall;
  FlashCurve hallCurve;
  /// The one whose mean flashes most.
  std::string section;
  FlashFigures sectionFigures;
};

/// The same run without pictures; or what to end with.
std::variant<CrowdFlashes, CommandResult> measureCrowd(const CrowdRequest& request,
                                                       const Outside& outside);

}  // namespace halvora
