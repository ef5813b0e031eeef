// SPDX-License-Identifier: Apache-2.0
// One phone of a crowd: a real engine on the smallest of phones, at a seat of the venue, in the
// time of any run loop. The ground, the seat and what all phones have in common must outlive it.
// One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "adapters/standard/seeded_random.h"
#include "engine/show_engine.h"
#include "venue/crowd/crowd_devices.h"
#include "venue/show/scenario.h"

namespace halvora {

/// What the phones of a crowd share. Nothing of it changes while they run. They have no clips, and
/// decode nothing: their seats' tables are there already.
struct CrowdParts {
  const Bundles& bundles;
  const JsonReader& json;
  const ImageDecoder& images;
  Files& files;
  ShowEngineOptions engine;
  ScenarioDevice device;
  std::vector<std::string> allowedTransmitterIds = {};
  /// Null where there is no cipher.
  const MessageCodes* codes = nullptr;
};

/// What a phone shows at a moment.
struct CrowdLight {
  /// As seen: with its master and its fade.
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  /// Whether the show is on the screen, bright or black.
  bool isShowing : 1 = false;
  bool isTorchOn : 1 = false;
  friend bool operator==(const CrowdLight&, const CrowdLight&) = default;
};

class CrowdPhone {
 public:
  CrowdPhone(CrowdGround& ground, const CrowdParts& parts, const CrowdSeat& seat,
             std::uint64_t seed);
  CrowdPhone(const CrowdPhone&) = delete;
  CrowdPhone& operator=(const CrowdPhone&) = delete;

  const CrowdSeat& seat() const { return seat_; }
  ViewStack& views() { return engine_.views(); }
  const ViewStack& views() const { return engine_.views(); }
  const EngineState& state() const { return engine_.state(); }
  CrowdTorch& torch() { return torch_; }
  void setLimits(const LightLimits& limits) { engine_.setLimits(limits); }
  const LightLimits& limits() const { return engine_.limits(); }

  /// The application is closed: what is on the air reaches nobody any more.
  void leave();
  bool isScanning() const { return radio_.isScanning(); }
  /// An action of the scenario that is no packet. What concerns one seat concerns this phone's.
  void act(const ScenarioAction& action);
  enum class Heard : std::uint8_t {
    /// The phone did not hear it, or does not obey it.
    nothing,
    /// It shows that look already.
    sameLook,
    newLook,
  };
  Heard hear(std::span<const std::uint8_t> data);
  /// Whether the engine could not do what was asked of it, for want of memory as a rule.
  bool hasFailed() const {
    const ScanDiagnostics& diagnostics = engine_.diagnostics();
    return diagnostics.failedCalls > 0 || diagnostics[PacketFate::failed] > 0;
  }

  /// The look in force, whoever sent it; none before the first and where the show was dropped.
  std::optional<BroadcastKeyBytes> look() const;
  CrowdLight light() const;
  /// What leaves the phone now, for eyes; nothing once its owner has left.
  Emission emission();
  /// Whether its backlight was written since the last time that somebody asked.
  bool takeBacklightChange() { return screen_.takeChange(); }
  /// The light as the show set it, before master and fade; black for none.
  Colour plainLight() const;

 private:
  struct Actor;

  void write(const DefaultsAction& action);
  Platform platform(CrowdGround& ground, const CrowdParts& parts);

  SeededRandom random_;
  CrowdRadio radio_;
  CrowdScreen screen_;
  CrowdApplication application_;
  CrowdDefaults defaults_;
  CrowdTorch torch_;
  const CrowdSeat& seat_;
  bool hasLeft_ = false;
  ShowEngine engine_;
};

}  // namespace halvora
