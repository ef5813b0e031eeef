// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/crowd_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace halvora {

namespace {

using Rgb = std::array<std::uint8_t, 3>;

constexpr Rgb kHall{12, 13, 16};
// What a dark seat looks like, so that it is not lost in the hall.
constexpr std::uint8_t kDarkSeat = 26;
constexpr double kMargin = 12;
constexpr double kLeastRadius = 0.6;
constexpr double kMostRadius = 14;
// Of half the distance to the next seat.
constexpr double kDiscShare = 0.92;
constexpr double kCoreShare = 0.45;
// A map may have all its seats in one column; for a picture, the nearest of some is near enough.
constexpr std::size_t kMostLooked = 512;

double middle(std::vector<double> values) {
  std::erase_if(values, [](double value) { return value <= 0; });
  if (values.empty()) return 1;
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

std::uint8_t mix(int back, int front, int cover) {
  return static_cast<std::uint8_t>((back * (255 - cover) + front * cover + 127) / 255);
}

std::uint8_t onDarkSeat(std::uint8_t level) {
  return static_cast<std::uint8_t>(kDarkSeat + level * (255 - kDarkSeat) / 255);
}

}  // namespace

std::vector<double> distancesToNearest(std::span<const CrowdSeat> seats) {
  // In the order of their columns, a nearer seat is never far away in the list.
  std::vector<std::size_t> order(seats.size());
  for (std::size_t at = 0; at < order.size(); ++at) order[at] = at;
  std::sort(order.begin(), order.end(), [&](std::size_t one, std::size_t other) {
    return std::pair(seats[one].at.x, seats[one].at.y) <
           std::pair(seats[other].at.x, seats[other].at.y);
  });
  const auto nearestOf = [&](std::size_t at) {
    const SeatPosition& here = seats[order[at]].at;
    double nearest = std::numeric_limits<double>::infinity();
    // False once no seat further that way can be nearer.
    const auto tryWith = [&](std::size_t other) {
      const SeatPosition& there = seats[order[other]].at;
      const double across = std::abs(static_cast<double>(there.x) - static_cast<double>(here.x));
      if (across >= nearest) return false;
      nearest = std::min(
          nearest, std::hypot(across, static_cast<double>(there.y) - static_cast<double>(here.y)));
      return true;
    };
    const std::size_t end = std::min(order.size(), at + 1 + kMostLooked);
    for (std::size_t next = at + 1; next < end && tryWith(next);) ++next;
    const std::size_t first = at < kMostLooked ? 0 : at - kMostLooked;
    for (std::size_t before = at; before > first && tryWith(before - 1);) --before;
    return std::isinf(nearest) ? 0 : nearest;
  };
  std::vector<double> distances(seats.size());
  for (std::size_t at = 0; at < order.size(); ++at) distances[order[at]] = nearestOf(at);
  return distances;
}

CrowdPicture::CrowdPicture(std::span<const CrowdSeat> seats, int width, int height)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
  if (seats.empty()) return;
  auto [left, right] = std::minmax_element(
      seats.begin(), seats.end(),
      [](const CrowdSeat& one, const CrowdSeat& other) { return one.at.x < other.at.x; });
  auto [top, bottom] = std::minmax_element(
      seats.begin(), seats.end(),
      [](const CrowdSeat& one, const CrowdSeat& other) { return one.at.y < other.at.y; });
  const auto spanX = static_cast<double>(right->at.x) - static_cast<double>(left->at.x) + 1;
  const auto spanY = static_cast<double>(bottom->at.y) - static_cast<double>(top->at.y) + 1;
  const double scale = std::min(std::max(width - 2 * kMargin, 1.0) / spanX,
                                std::max(height - 2 * kMargin, 1.0) / spanY);
  const double originX = (width - spanX * scale) / 2 - static_cast<double>(left->at.x) * scale;
  const double originY = (height - spanY * scale) / 2 - static_cast<double>(top->at.y) * scale;

  const std::vector<double> distances = distancesToNearest(seats);
  const double usual = middle(distances);
  for (std::size_t at = 0; at < seats.size(); ++at) {
    const CrowdSeat& seat = seats[at];
    const double own = distances[at] > 0 ? distances[at] : usual;
    const double half = scale / 2 * (seat.isStanding ? own : std::min(own, usual) * kDiscShare);
    place(static_cast<std::uint32_t>(at), originX + (static_cast<double>(seat.at.x) + 0.5) * scale,
          originY + (static_cast<double>(seat.at.y) + 0.5) * scale,
          std::clamp(half, kLeastRadius, kMostRadius), seat.isStanding);
  }
}

void CrowdPicture::place(std::uint32_t seat, double x, double y, double radius, bool isSquare) {
  const auto first = [](double value) { return std::max(0, static_cast<int>(std::floor(value))); };
  const auto last = [](double value, int size) {
    return std::min(size - 1, static_cast<int>(std::ceil(value)));
  };
  for (int row = first(y - radius - 1); row <= last(y + radius + 1, height_); ++row) {
    for (int column = first(x - radius - 1); column <= last(x + radius + 1, width_); ++column) {
      const double across = std::abs(column + 0.5 - x);
      const double down = std::abs(row + 0.5 - y);
      const double distance = isSquare ? std::max(across, down) : std::hypot(across, down);
      // Squares meet without a seam; a disc's rim is smooth.
      const double within = radius + 0.5 - distance;
      const double cover = isSquare ? (within >= 0 ? 1 : 0) : std::clamp(within, 0.0, 1.0);
      Pixel& pixel = pixels_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) +
                             static_cast<std::size_t>(column)];
      const auto covered = static_cast<std::uint8_t>(std::lround(cover * 255));
      if (covered <= pixel.cover) continue;
      pixel = {seat, covered, distance <= radius * kCoreShare};
    }
  }
}

void CrowdPicture::draw(std::span<const CrowdLight> lights, std::span<std::uint8_t> rgb) const {
  std::uint8_t* to = rgb.data();
  for (const Pixel& pixel : pixels_) {
    Rgb front = kHall;
    if (pixel.cover > 0) {
      const CrowdLight& light = lights[pixel.seat];
      front = {onDarkSeat(light.red), onDarkSeat(light.green), onDarkSeat(light.blue)};
      if (light.isTorchOn && pixel.isCore) front = {255, 255, 255};
    }
    for (std::size_t channel = 0; channel < 3; ++channel) {
      *to++ = mix(kHall[channel], front[channel], pixel.cover);
    }
  }
}

}  // namespace halvora
