// SPDX-License-Identifier: Apache-2.0
// Finds the picture of a gobo and pulses it. Pictures are named in the goboImage view by where they
// are, empty for none; a face loads them when it draws. They come from a venue's downloaded content
// before they come from the host's bundle. Owned by the engine; main thread, where it lists at most
// one folder a place and change.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/random.h"
#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/view_stack.h"

namespace halvora {

class GoboAnimator final : public GoboPart {
 public:
  GoboAnimator(GoboState& state, ViewStack& views, const Files& files, const Bundle& bundle,
               Random& random)
      : state_(state), views_(views), files_(files), bundle_(bundle), random_(random) {}

  /// Takes the folder of downloaded gobos, null for none, and shows the bundle's first one, hidden
  /// until a look asks for it.
  void build(SharedText documents);

  void changeGobo() override;
  void goboPulse() override;
  void goboPulseRandom() override;

 private:
  using Names = std::optional<std::vector<std::string>>;

  /// The number of variants that a folder holds for the gobo in force: none without a set, 0 for
  /// names that do not say.
  std::optional<std::int64_t> variantsAmong(Names names) const;
  std::string drawVariant(std::int64_t count);
  void showDownloaded(const std::string& name);
  void showBundled(std::string_view path);
  /// One cycle of a pulse, again for as long as the gobo's mode is `mode`.
  void pulse(std::uint32_t mode, Duration delay);
  void fadeIn(std::uint32_t mode, const AnimationTiming& timing);
  void endCycle(std::uint32_t mode, bool finished);

  GoboState& state_;
  ViewStack& views_;
  const Files& files_;
  const Bundle& bundle_;
  Random& random_;
  SharedText documents_;
};

/// How many variants the name of a gobo picture speaks of; -1 for a name that does not have three
/// parts. None ("3_1_4.png": 4), if it begins a variant set of that gobo.
std::optional<std::int64_t> variantsNamedBy(std::string_view name, int gobo);

}  // namespace halvora
