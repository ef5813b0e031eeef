// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_record.h"

#include <algorithm>
#include <cmath>

#include "venue/base/written_files.h"

namespace halvora {

std::int64_t frameCountOf(Duration from, Duration end, int framesPerSecond) {
  const auto last = static_cast<std::int64_t>(toSeconds(end) * framesPerSecond);
  const auto first = static_cast<std::int64_t>(std::ceil(toSeconds(from) * framesPerSecond));
  return std::max<std::int64_t>(last - first + 1, 0);
}

CrowdRecord::CrowdRecord(std::span<const CrowdSeat> phones, CrowdOutput* output, int width,
                         int height)
    : summary_(phones), output_(output) {
  if (output_ == nullptr) return;
  picture_.emplace(phones, width, height);
  rgb_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
}

bool CrowdRecord::add(const CrowdSlice& slice) {
  summary_.add(slice);
  if (output_ == nullptr) return true;
  for (const CrowdFrame& frame : slice.frames) {
    const bool isWanted = output_->wantsNext();
    if (isWanted) {
      picture_->draw(frame.lights, rgb_);
      ++framesWritten_;
    }
    if (!output_->add(isWanted ? std::span<const std::uint8_t>(rgb_)
                               : std::span<const std::uint8_t>()))
      return false;
  }
  return true;
}

std::optional<CommandResult> writeCoverageTo(const std::string& path, const Coverage& coverage,
                                             std::span<const CrowdSeat> seats, int width,
                                             int height, const Outside& outside) {
  const Image picture = drawCoverage(coverage, seats, width, height);
  const std::string bytes =
      outside.encodePicture != nullptr ? outside.encodePicture(picture) : std::string();
  WrittenFiles files(outside.isInterrupted);
  if (!bytes.empty() && files.replace(path, bytes)) return std::nullopt;
  return outside.isInterrupted ? interrupted() : unusable(path + ": cannot be written");
}

}  // namespace halvora
