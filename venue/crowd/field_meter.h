// SPDX-License-Identifier: Apache-2.0
// Measures the flashes of a hall: of the mean light of all phones, and of each section's. It is
// told of changes only, as whole numbers, so that neither the order nor the number of those who
// tell it matters. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "halvora/platform/time.h"
#include "venue/crowd/crowd_devices.h"
#include "venue/show/flash_meter.h"

namespace halvora {

/// The light of so many open phones, both of screen and torch, or how it has changed.
struct FieldLight {
  /// 0 to 65535 a phone.
  std::int64_t red = 0;
  std::int64_t green = 0;
  std::int64_t blue = 0;
  std::int64_t phones = 0;

  static FieldLight of(const PhoneLight& light);
  FieldLight& operator+=(const FieldLight& other);
  FieldLight& operator-=(const FieldLight& other);
  LinearColour mean() const;
  friend bool operator==(const FieldLight&, const FieldLight&) = default;
};

/// Which section each phone is in, as numbers from 0.
class FieldSections {
 public:
  explicit FieldSections(std::span<const CrowdSeat> seats);
  std::size_t count() const { return names_.size(); }
  std::size_t of(std::size_t phone) const { return sections_[phone]; }
  std::string_view name(std::size_t section) const { return names_[section]; }

 private:
  std::vector<std::string_view> names_;
  std::vector<std::uint32_t> sections_;
};

class FieldMeter {
 public:
  explicit FieldMeter(std::size_t sections) : sections_(sections) {}

  /// What has changed in each section by that time, which only goes forward.
  void add(Duration time, std::span<const FieldLight> changes);

  FlashFigures hall() const { return hall_.meter.worst(); }
  const FlashCurve& hallCurve() const { return hallCurve_; }
  struct Worst {
    std::size_t section = 0;
    FlashFigures figures;
  };
  /// The first section where none flashes.
  Worst worstSection() const;

 private:
  /// One red phone in a dark hall of a thousand makes no red hall.
  static constexpr double kDarkHall = 0.0005;

  struct Part {
    FieldLight light;
    EyeMeter meter{kDarkHall};
  };

  Part hall_;
  FlashCurve hallCurve_;
  std::vector<Part> sections_;
};

}  // namespace halvora
