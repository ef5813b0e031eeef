// SPDX-License-Identifier: Apache-2.0
// What the small parts of a phone promise: torch, haptics, the application, a screen whose
// backlight nobody can set, chance, the calendar and codes. What they do to the phone the caller
// reads.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "conformance/promises.h"
#include "halvora/platform/application.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/random.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/wall_clock.h"

namespace halvora::conformance {

/// A torch, and how its lamp is looked at.
struct TorchUnderTest {
  /// Outlives the torch.
  std::shared_ptr<void> world;
  std::unique_ptr<Torch> torch;  ///< Goes in the middle of the checks.
  /// Lets what was asked for arrive at the lamp.
  std::function<void()> settle;
  std::function<bool()> isLit;  ///< The lamp, after `settle`.
};

/// A lamp that is there and out at first.
std::vector<BrokenPromise> checkTorch(const std::function<TorchUnderTest()>& make);
/// A phone without a lamp.
std::vector<BrokenPromise> checkNoTorch(const std::function<std::unique_ptr<Torch>()>& make);

/// What can be felt, and how that is counted.
struct HapticsUnderTest {
  /// Outlives the haptics.
  std::shared_ptr<void> world;
  std::unique_ptr<Haptics> haptics;  ///< Nothing felt yet.
  /// Lets what was asked for be felt.
  std::function<void()> settle;
  /// How often the phone has moved so far.
  std::function<int()> felt;
};

/// Each touch felt once; sounds that end.
std::vector<BrokenPromise> checkHaptics(const std::function<HapticsUnderTest()>& make);

/// An application, and what its system does with it.
struct ApplicationUnderTest {
  /// Outlives the application.
  std::shared_ptr<void> world;
  std::unique_ptr<Application> application;  ///< Not active yet.
  /// What the system does with an application that was not active.
  std::function<void()> becomeActive;
  std::function<void()> resignActive;  ///< And with one that was.
};

/// Who is told what; observers that go while they are told.
std::vector<BrokenPromise> checkApplication(const std::function<ApplicationUnderTest()>& make);

/// A screen whose backlight cannot be set: it ignores every level and is as bright as it was.
std::vector<BrokenPromise> checkFixedScreen(const std::function<std::unique_ptr<Screen>()>& make);

/// Bounds, and that every number has its share of some thousand draws.
std::vector<BrokenPromise> checkRandom(const std::function<std::unique_ptr<Random>()>& make);

/// In whichever time zone the phone is.
std::vector<BrokenPromise> checkCalendar(const std::function<std::unique_ptr<Calendar>()>& make);

/// The codes of RFC 4493, and keys that do not mix.
std::vector<BrokenPromise> checkCodes(const std::function<std::unique_ptr<MessageCodes>()>& make);

}  // namespace halvora::conformance
