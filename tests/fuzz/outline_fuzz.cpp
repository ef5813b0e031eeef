// SPDX-License-Identifier: Apache-2.0
// Any bytes as the boxes of a video file: what is hidden lies in the file, in order, and the claims
// that are let through keep to their limits. The same bytes give the same answer twice.
#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>

#include "adapters/ffmpeg/mp4_outline.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

class Input final : public ByteSource {
 public:
  explicit Input(FuzzBytes bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> into) const override {
    if (offset >= bytes_.size()) return 0;
    const auto rest = bytes_.subspan(static_cast<std::size_t>(offset));
    const std::size_t count = std::min(into.size(), rest.size());
    std::copy_n(rest.begin(), count, into.begin());
    return count;
  }

 private:
  FuzzBytes bytes_;
};

}  // namespace

int fuzzOutline(FuzzBytes bytes) {
  const Input input(bytes);
  std::string reason;
  const std::optional<Mp4Outline> outline = readMp4Outline(input, &reason);
  require(outline.has_value() == reason.empty(), "a file is refused with a reason");
  if (!outline) return 0;
  require(outline->trackId != 0 && outline->sampleDescriptions != 0, "a video has a track");
  require(std::isfinite(outline->durationSeconds) && outline->durationSeconds >= 0,
          "a video has a length");
  require(outline->edits <= Mp4Outline::kMostEdits, "a video has a bounded number of edits");
  const auto& hidden = outline->hiddenTypes;
  require(std::adjacent_find(hidden.begin(), hidden.end(), std::greater_equal<std::uint64_t>()) ==
              hidden.end(),
          "what is hidden is in order");
  require(hidden.empty() || hidden.back() + 4 <= bytes.size(), "what is hidden lies in the file");

  const auto again = readMp4Outline(input, nullptr);
  require(again && again->hiddenTypes == hidden && again->trackId == outline->trackId,
          "a file says the same twice");
  return 0;
}

}  // namespace halvora
