// SPDX-License-Identifier: Apache-2.0
// What stays of a crowd's show: its report and its pictures, made slice by slice from what all
// phones did, whoever simulated them. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "venue/crowd/crowd_output.h"
#include "venue/crowd/crowd_picture.h"
#include "venue/crowd/crowd_slice.h"
#include "venue/crowd/crowd_summary.h"

namespace halvora {

/// Of the time that is looked at, as many as a show from there to then has.
std::int64_t frameCountOf(Duration from, Duration end, int framesPerSecond);

class CrowdRecord final : public CrowdSink {
 public:
  /// Null for no pictures. The phones and the output outlive it.
  CrowdRecord(std::span<const CrowdSeat> phones, CrowdOutput* output, int width, int height);

  /// False where a picture cannot be written.
  bool add(const CrowdSlice& slice) override;

  const CrowdSummary& summary() const { return summary_; }
  std::size_t framesWritten() const { return framesWritten_; }

 private:
  CrowdSummary summary_;
  CrowdOutput* output_;
  std::optional<CrowdPicture> picture_;
  std::vector<std::uint8_t> rgb_;
  std::size_t framesWritten_ = 0;
};

/// Draws it into a PNG, whole or not at all; or what to end with.
std::optional<CommandResult> writeCoverageTo(const std::string& path, const Coverage& coverage,
                                             std::span<const CrowdSeat> seats, int width,
                                             int height, const Outside& outside);

}  // namespace halvora
