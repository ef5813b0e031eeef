// SPDX-License-Identifier: Apache-2.0
#include "light/gobo_animator.h"

#include <algorithm>
#include <utility>

#include "light/gobo_names.h"
#include "light/mode_tables.h"
#include "text/asset_paths.h"
#include "text/numbers.h"

namespace halvora {

namespace {

constexpr std::string_view kExtension = ".png";

}  // namespace

std::optional<std::int64_t> variantsNamedBy(std::string_view name, int gobo) {
  if (!name.starts_with(std::to_string(gobo) + "_1")) return std::nullopt;
  const std::size_t first = name.find('_');
  const std::size_t second = name.find('_', first + 1);
  const bool hasThreeParts =
      second != std::string_view::npos && name.find('_', second + 1) == std::string_view::npos;
  return hasThreeParts ? integerValue(name.substr(second + 1)) : -1;
}

void GoboAnimator::build(SharedText documents) {
  documents_ = std::move(documents);
  showBundled(kFirstGobo);
}

void GoboAnimator::changeGobo() {
  const std::string name = std::to_string(state_.currentGobo) + std::string(kExtension);
  if (documents_ && isFile(files_, *documents_ + "/" + name)) return showDownloaded(name);
  if (const auto count = variantsAmong(documents_ ? files_.list(*documents_) : std::nullopt)) {
    return showDownloaded(drawVariant(*count));
  }
  if (const auto count = variantsAmong(bundle_.list(kGoboFolder))) {
    return showBundled(goboResource(drawVariant(*count)));
  }
  showBundled(goboResource(name));
}

// Systems list a folder in any order; by taking the greatest name for the last one every phone of a
// venue agrees.
std::optional<std::int64_t> GoboAnimator::variantsAmong(Names names) const {
  std::optional<std::int64_t> count;
  if (!names) return count;
  std::string lastName;
  for (std::string& name : *names) {
    const auto variants = variantsNamedBy(name, state_.currentGobo);
    if (!variants) continue;
    if (!count) count = 0;
    if (*variants < 0 || name < lastName) continue;
    count = variants;
    lastName = std::move(name);
  }
  return count;
}

std::string GoboAnimator::drawVariant(std::int64_t count) {
  const auto bound = static_cast<std::uint32_t>(std::clamp<std::int64_t>(count, 0, UINT32_MAX));
  const std::int64_t drawn = random_.below(bound);
  std::int64_t variant = drawn + 1;
  if (variant == state_.currentRandomIndex) variant = drawn == 0 ? 2 : drawn;
  state_.currentRandomIndex = variant;
  return std::to_string(state_.currentGobo) + "_" + std::to_string(variant) + "_" +
         std::to_string(count) + std::string(kExtension);
}

void GoboAnimator::showDownloaded(const std::string& name) {
  const std::string path = *documents_ + "/" + name;
  views_.setText(ViewId::goboImage, isFile(files_, path) ? path : std::string());
}

void GoboAnimator::showBundled(std::string_view path) {
  const auto attributes = bundle_.attributes(path);
  const bool isThere = attributes && !attributes->isFolder;
  views_.setText(ViewId::goboImage, isThere ? goboName(bundle_, path) : std::string());
}

void GoboAnimator::goboPulse() {
  views_.removeAnimations(ViewId::goboView);
  pulse(kGoboPulseMode, Duration::zero());
}

void GoboAnimator::goboPulseRandom() {
  pulse(kGoboRandomPulseMode, fromSeconds(static_cast<double>(state_.goboDelay)));
}

void GoboAnimator::pulse(std::uint32_t mode, Duration delay) {
  state_.goboIsAnimating = true;
  // Taken once a cycle: a look that comes during the fade out does not change the fade in.
  const Duration fade = milliseconds(kGoboFade.at(percentageSpeed(state_.currentGoboSpeed)));
  if (views_.alpha(ViewId::goboView) != 1) {
    changeGobo();
    return fadeIn(mode, {.duration = fade, .delay = delay});
  }
  views_.animateAlpha({{ViewId::goboView, 0}}, {.duration = fade, .delay = delay},
                      [this, mode, fade](bool) {
                        changeGobo();
                        fadeIn(mode, {.duration = fade});
                      });
}

void GoboAnimator::fadeIn(std::uint32_t mode, const AnimationTiming& timing) {
  views_.animateAlpha({{ViewId::goboView, 1}}, timing,
                      [this, mode](bool finished) { endCycle(mode, finished); });
}

void GoboAnimator::endCycle(std::uint32_t mode, bool finished) {
  const bool isRandom = mode == kGoboRandomPulseMode;
  if (finished && state_.currentGoboMode == mode) {
    if (isRandom) {
      state_.goboDelay = 0;
      goboPulseRandom();
    } else {
      goboPulse();
    }
  }
  if (finished || !isRandom) state_.goboIsAnimating = false;
}

}  // namespace halvora
