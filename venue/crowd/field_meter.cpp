// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/field_meter.h"

#include <cmath>
#include <unordered_map>

namespace halvora {

namespace {

constexpr double kWhole = 65535;

std::int64_t wholeOf(double level) { return std::llround(level * kWhole); }

}  // namespace

FieldLight FieldLight::of(const PhoneLight& light) {
  const LinearColour colour = lightOf(light);
  return {wholeOf(colour.red), wholeOf(colour.green), wholeOf(colour.blue), 1};
}

FieldLight& FieldLight::operator+=(const FieldLight& other) {
  red += other.red;
  green += other.green;
  blue += other.blue;
  phones += other.phones;
  return *this;
}

FieldLight& FieldLight::operator-=(const FieldLight& other) {
  red -= other.red;
  green -= other.green;
  blue -= other.blue;
  phones -= other.phones;
  return *this;
}

LinearColour FieldLight::mean() const {
  if (phones <= 0) return {};
  const double whole = kWhole * static_cast<double>(phones);
  return {static_cast<double>(red) / whole, static_cast<double>(green) / whole,
          static_cast<double>(blue) / whole};
}

FieldSections::FieldSections(std::span<const CrowdSeat> seats) {
  std::unordered_map<std::string_view, std::uint32_t> known;
  sections_.reserve(seats.size());
  for (const CrowdSeat& seat : seats) {
    const auto [found, isNew] =
        known.try_emplace(seat.section, static_cast<std::uint32_t>(names_.size()));
    if (isNew) names_.push_back(seat.section);
    sections_.push_back(found->second);
  }
}

void FieldMeter::add(Duration time, std::span<const FieldLight> changes) {
  const FieldLight before = hall_.light;
  for (std::size_t at = 0; at < changes.size(); ++at) {
    if (changes[at] == FieldLight{}) continue;
    Part& section = sections_[at];
    section.light += changes[at];
    section.meter.add(time, section.light.mean());
    hall_.light += changes[at];
  }
  if (hall_.light != before) hall_.meter.add(time, hall_.light.mean(), &hallCurve_);
}

FieldMeter::Worst FieldMeter::worstSection() const {
  Worst worst;
  int most = -1;
  for (std::size_t at = 0; at < sections_.size(); ++at) {
    const FlashFigures figures = sections_[at].meter.worst();
    const int flashes = figures.general.flashes + figures.red.flashes;
    if (flashes <= most) continue;
    most = flashes;
    worst = {at, figures};
  }
  return worst;
}

}  // namespace halvora
