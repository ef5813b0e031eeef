// SPDX-License-Identifier: Apache-2.0
// The needs that an engine in guarded air reaches through bounds, so that nobody who floods it can
// do more to a phone than a show would: touches, stores to disk, and the torch, which is off while
// the show is contested. Owned by the engine, made before all that uses them; main thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "halvora/platform/haptics.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

/// At most two touches a second while it is bounded; others are not felt.
class BoundedHaptics final : public Haptics {
 public:
  BoundedHaptics(Haptics& haptics, const RunLoop& loop) : haptics_(haptics), loop_(loop) {}

  void impact(ImpactStyle style) override;
  void playSystemSound(std::uint32_t sound) override;
  void disposeSystemSound(std::uint32_t sound) override { haptics_.disposeSystemSound(sound); }
  std::uint64_t heldBack() const { return heldBack_; }
  void setBounded(bool isBounded) { isBounded_ = isBounded; }

 private:
  bool isDue();

  Haptics& haptics_;
  const RunLoop& loop_;
  bool isBounded_ = true;
  /// When the last two were, older first.
  std::array<std::optional<Duration>, 2> last_;
  std::uint64_t heldBack_ = 0;
};

/// Writes at most once a second while it is bounded; what comes meanwhile is kept and is read as if
/// it were written.
class JoinedDefaults final : public UserDefaults {
 public:
  JoinedDefaults(UserDefaults& defaults, RunLoop& loop) : defaults_(defaults), loop_(loop) {}
  ~JoinedDefaults() override;

  const DefaultsValue* find(std::string_view key) const override;
  void set(std::string_view key, DefaultsValue value) override;
  void remove(std::string_view key) override;
  void synchronize() override;
  void setBounded(bool isBounded);

 private:
  /// None removes the key.
  using Write = std::pair<std::string, std::optional<DefaultsValue>>;

  void keep(std::string_view key, std::optional<DefaultsValue> value);
  void writeAll();

  UserDefaults& defaults_;
  RunLoop& loop_;
  bool isBounded_ = true;
  /// One a key; the kit has few.
  std::vector<Write> kept_;
  std::optional<Duration> lastWrite_;
  Timer next_;
};

/// A torch that may be held off; what it should be meanwhile is done when it is let go.
class HeldTorch final : public Torch {
 public:
  explicit HeldTorch(Torch& torch) : torch_(torch) {}

  bool hasTorch() const override { return torch_.hasTorch(); }
  bool hasFlash() const override { return torch_.hasFlash(); }
  void setOn(bool on) override;
  void setHeld(bool isHeld);

 private:
  Torch& torch_;
  bool isWanted_ = false;
  bool isHeld_ = false;
};

struct GuardedNeeds {
  explicit GuardedNeeds(const Platform& platform);
  Platform platform(const Platform& platform);
  /// As they are made they are; else they pass on what they are told.
  void setBounded(bool isBounded);
  bool isBounded() const { return isBounded_; }

  BoundedHaptics haptics;
  JoinedDefaults defaults;
  HeldTorch torch;

 private:
  bool isBounded_ = true;
};

}  // namespace halvora
