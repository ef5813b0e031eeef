// SPDX-License-Identifier: Apache-2.0
// Runs one engine through a scenario in virtual time and says, line by line, what its phone does.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/air.h"
#include "halvora/platform/files.h"
#include "halvora/platform/image.h"
#include "halvora/platform/json.h"
#include "halvora/platform/random.h"
#include "halvora/platform/time.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/workers.h"
#include "halvora/safety.h"
#include "venue/show/flash_meter.h"
#include "venue/show/scenario.h"

namespace halvora {

struct TraceOptions {
  /// The folder that holds HVAssets; empty for none. Absolute, because the tables of a video bear
  /// its path.
  std::string assets;
  /// The phone's private documents folder, absolute; empty for none.
  std::string documents;
  std::vector<std::string> allowedTransmitterIds;
  /// Turns due at this time still run; without it the trace ends 10 s after the last action.
  std::optional<Duration> until;
  /// Whether what the phone emits is written too, and what the host allows of it.
  bool isShownWritten = false;
  FlashPolicy flash = FlashPolicy::exact;
  AirOptions air = {};
  /// Asked now and then; false ends the trace. Absent: it goes on.
  std::function<bool()> goesOn = {};
};

/// What a trace reads files with. Without files, videos and workers of their own, the phone has no
/// pixel maps.
struct TraceLibraries {
  const JsonReader& json;
  const ImageDecoder& images;
  Files* files = nullptr;
  const VideoAssets* videos = nullptr;
  Workers* workers = nullptr;
  /// Null where there is no cipher.
  const MessageCodes* codes = nullptr;
};

enum class TraceEnd : std::uint8_t {
  whole,
  /// The phone came to an instant at which its turns never end.
  endless,
  /// Memory or threads were short for something that the phone would have done.
  noMemory,
};

/// Writes JSON Lines through `write`, one or more whole lines a call. The engine draws from
/// `random`. Whatever the end, what the phone did before that has been written.
TraceEnd runTrace(const Scenario& scenario, const TraceOptions& options,
                  std::unique_ptr<Random> random, const TraceLibraries& libraries,
                  const std::function<void(std::string_view)>& write);

/// The same run for a meter, which is told of what the phone emits at the end of each turn, and
/// every 1/120 s while something moves; and its curve.
TraceEnd measureFlashes(const Scenario& scenario, const TraceOptions& options,
                        std::unique_ptr<Random> random, const TraceLibraries& libraries,
                        PhoneMeter& meter, FlashCurve& curve);

/// When a run of that scenario ends.
Duration endOf(const Scenario& scenario, const TraceOptions& options);

}  // namespace halvora
