// SPDX-License-Identifier: Apache-2.0
// The report on a crowd's show: gathers what the slices counted and writes it as one JSON document.
// Everything in it but the speed follows from the inputs and the seed. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/time.h"
#include "venue/base/json_buffer.h"
#include "venue/crowd/coverage.h"
#include "venue/crowd/crowd_slice.h"
#include "venue/crowd/rogues.h"

namespace halvora {

/// The picture of a pixel map that the phones together showed, against its video.
struct CrowdMapFrame {
  Duration time{};
  int frame = 0;
  std::uint32_t phones = 0;
  std::uint64_t squaredError = 0;
  std::uint32_t worstError = 0;
  std::uint32_t worstPhone = 0;
};

class CrowdSummary {
 public:
  /// The phones outlive it.
  explicit CrowdSummary(std::span<const CrowdSeat> phones);

  /// Slice after slice, each of all phones.
  void add(const CrowdSlice& slice);

  const FlashCurve& phoneCurve() const { return phoneCurve_; }
  /// Of the mean light of all phones, and of each section's.
  const FieldMeter& field() const { return field_; }
  std::string_view nameOfSection(std::size_t section) const { return sections_.name(section); }

  struct Facts {
    std::size_t seats = 0;
    std::uint64_t packetsSent = 0;
    std::size_t framesWritten = 0;
    /// Of the simulated time.
    Duration simulated{};
    /// Empty where nobody attacked.
    std::span<const Rogue> rogues = {};
    /// Null where nobody asked.
    const Coverage* coverage = nullptr;
    int framesPerSecond = 30;
  };
  std::string json(const CrowdEnd& end, const Facts& facts) const;

 private:
  /// How long the looks took to reach that share of the phones.
  struct Reach {
    std::vector<Duration> times;
    std::uint64_t never = 0;
  };

  void addLook(const ClosedLook& look);
  void addFrame(const CrowdFrame& frame);
  void writeLooks(PrettyJsonWriter& writer) const;
  void writeFlashes(PrettyJsonWriter& writer, const CrowdEnd& end) const;
  void writeRogues(PrettyJsonWriter& writer, const CrowdEnd& end, const Facts& facts) const;

  std::span<const CrowdSeat> phones_;
  FieldSections sections_;
  FieldMeter field_;
  FlashCurve phoneCurve_;
  PacketCounts packets_;
  std::size_t frames_ = 0;
  std::size_t looks_ = 0;
  Reach reaches_[3];
  std::uint64_t lit_ = 0;
  std::uint64_t dark_ = 0;
  double darkest_ = 0;
  Duration darkestTime_{};
  std::uint32_t mostTorches_ = 0;
  std::uint32_t mostLost_ = 0;
  /// Phones times frames.
  std::uint64_t lost_ = 0;
  std::optional<Duration> lastLost_;
  bool isLostNow_ = false;
  std::vector<CrowdMapFrame> map_;
};

/// The peak signal-to-noise ratio in decibels of 8-bit levels; none where there is no error.
std::optional<double> psnr(std::uint64_t squaredError, std::uint64_t values);

}  // namespace halvora
