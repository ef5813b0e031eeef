// SPDX-License-Identifier: Apache-2.0
// Finds the picture of a gobo and pulses it. Pictures are named in the goboImage view by their full
// path, empty for none; a face loads them when it draws. Owned by the engine; main thread, where it
// lists at most one folder a place and change.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/platform/files.h"
#include "halvora/platform/random.h"
#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/view_stack.h"

namespace halvora {

/// The folders that gobos come from. An empty one holds no gobo.
struct GoboFolders {
  /// documents/bucket/Gobo, for a venue's downloaded content.
  std::string documents;
  /// resources/HVAssets/Gobos.
  std::string bundle;
};

class GoboAnimator final : public GoboPart {
 public:
  GoboAnimator(GoboState& state, ViewStack& views, const Files& files, Random& random)
      : state_(state), views_(views), files_(files), random_(random) {}

  /// Takes the folders, and shows the bundle's first gobo, hidden until a look asks for one.
  void build(std::shared_ptr<const GoboFolders> folders);

  void changeGobo() override;
  void goboPulse() override;
  void goboPulseRandom() override;

 private:
  /// The number of variants that a folder holds for the gobo in force: none without a set, 0 for
  /// names that do not say.
  std::optional<std::int64_t> variantsIn(const std::string& folder) const;
  std::string drawVariant(const std::string& folder, std::int64_t count);
  void show(const std::string& path);
  const GoboFolders& folders() const;
  /// One cycle of a pulse, again for as long as the gobo's mode is `mode`.
  void pulse(std::uint32_t mode, Duration delay);
  void fadeIn(std::uint32_t mode, const AnimationTiming& timing);
  void endCycle(std::uint32_t mode, bool finished);

  GoboState& state_;
  ViewStack& views_;
  const Files& files_;
  Random& random_;
  /// Null for no folders.
  std::shared_ptr<const GoboFolders> folders_;
};

/// How many variants the name of a gobo picture speaks of; -1 for a name that does not have three
/// parts. None ("3_1_4.png": 4), if it begins a variant set of that gobo.
std::optional<std::int64_t> variantsNamedBy(std::string_view name, int gobo);

}  // namespace halvora
