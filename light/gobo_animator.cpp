// SPDX-License-Identifier: Apache-2.0
#include "light/gobo_animator.h"

#include <algorithm>
#include <utility>

#include "light/mode_tables.h"
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

void GoboAnimator::build(std::shared_ptr<const GoboFolders> folders) {
  folders_ = std::move(folders);
  const std::string& bundle = this->folders().bundle;
  show(bundle.empty() ? "" : bundle + "/1" + std::string(kExtension));
}

const GoboFolders& GoboAnimator::folders() const {
  static const GoboFolders kNone;
  return folders_ ? *folders_ : kNone;
}

void GoboAnimator::changeGobo() {
  const GoboFolders& from = folders();
  const std::string name = "/" + std::to_string(state_.currentGobo) + std::string(kExtension);
  if (!from.documents.empty() && isFile(files_, from.documents + name)) {
    return show(from.documents + name);
  }
  for (const std::string& folder : {from.documents, from.bundle}) {
    if (const auto count = variantsIn(folder)) return show(drawVariant(folder, *count));
  }
  show(from.bundle.empty() ? "" : from.bundle + name);
}

// Systems list a folder in any order; by taking the greatest name for the last one every phone of a
// venue agrees.
std::optional<std::int64_t> GoboAnimator::variantsIn(const std::string& folder) const {
  std::optional<std::int64_t> count;
  if (folder.empty()) return count;
  std::string lastName;
  for (std::string& name : files_.list(folder).value_or(std::vector<std::string>())) {
    const auto variants = variantsNamedBy(name, state_.currentGobo);
    if (!variants) continue;
    if (!count) count = 0;
    if (*variants < 0 || name < lastName) continue;
    count = variants;
    lastName = std::move(name);
  }
  return count;
}

std::string GoboAnimator::drawVariant(const std::string& folder, std::int64_t count) {
  const auto bound = static_cast<std::uint32_t>(std::clamp<std::int64_t>(count, 0, UINT32_MAX));
  const std::int64_t drawn = random_.below(bound);
  std::int64_t variant = drawn + 1;
  if (variant == state_.currentRandomIndex) variant = drawn == 0 ? 2 : drawn;
  state_.currentRandomIndex = variant;
  return folder + "/" + std::to_string(state_.currentGobo) + "_" + std::to_string(variant) + "_" +
         std::to_string(count) + std::string(kExtension);
}

void GoboAnimator::show(const std::string& path) {
  views_.setText(ViewId::goboImage, isFile(files_, path) ? path : std::string());
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
