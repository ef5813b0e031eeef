// SPDX-License-Identifier: Apache-2.0
// Any bytes as the boxes of a video file: what is hidden lies in the file, in order, and the claims
// that are let through keep to their limits. The same bytes give the same answer twice.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "platform/ffmpeg/mp4_outline.h"

namespace {

class Input final : public halvora::ByteSource {
 public:
  explicit Input(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> into) const override {
    if (offset >= bytes_.size()) return 0;
    const auto rest = bytes_.subspan(static_cast<std::size_t>(offset));
    const std::size_t count = std::min(into.size(), rest.size());
    std::copy_n(rest.begin(), count, into.begin());
    return count;
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input({data, size});
  std::string reason;
  const std::optional<halvora::Mp4Outline> outline = halvora::readMp4Outline(input, &reason);
  if (outline.has_value() != reason.empty()) std::abort();
  if (!outline) return 0;
  if (outline->trackId == 0 || outline->sampleDescriptions == 0) std::abort();
  if (!std::isfinite(outline->durationSeconds) || outline->durationSeconds < 0) std::abort();
  if (outline->edits > halvora::Mp4Outline::kMostEdits) std::abort();
  const auto& hidden = outline->hiddenTypes;
  const auto unordered =
      std::adjacent_find(hidden.begin(), hidden.end(), std::greater_equal<std::uint64_t>());
  if (unordered != hidden.end()) std::abort();
  if (!hidden.empty() && hidden.back() + 4 > size) std::abort();

  const auto again = halvora::readMp4Outline(input, nullptr);
  if (!again || again->hiddenTypes != hidden || again->trackId != outline->trackId) std::abort();
  return 0;
}
