// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace halvora {

namespace {

using Rgb = std::array<std::uint8_t, 3>;

constexpr Rgb kHall{12, 13, 16};
constexpr Rgb kTorch{255, 255, 255};
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

constexpr std::uint32_t wordOf(const Rgb& colour) {
  return 0xFF000000U | std::uint32_t{colour[0]} << 16 | std::uint32_t{colour[1]} << 8 | colour[2];
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

std::vector<CrowdDisc> discsOf(std::span<const CrowdSeat> seats, int width, int height) {
  if (seats.empty()) return {};
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
  std::vector<CrowdDisc> discs;
  for (std::size_t at = 0; at < seats.size(); ++at) {
    const CrowdSeat& seat = seats[at];
    const double own = distances[at] > 0 ? distances[at] : usual;
    const double half = scale / 2 * (seat.isStanding ? own : std::min(own, usual) * kDiscShare);
    discs.push_back({originX + (static_cast<double>(seat.at.x) + 0.5) * scale,
                     originY + (static_cast<double>(seat.at.y) + 0.5) * scale,
                     std::clamp(half, kLeastRadius, kMostRadius), seat.isStanding});
  }
  return discs;
}

namespace {

// What of a pixel belongs to whom.
struct Share {
  std::uint32_t seat = 0;
  std::uint8_t cover = 0;
  bool isCore = false;
};

// Calls `take` with the pixels that the disc covers, and how much of each.
template <class Take>
void forEachPixel(const CrowdDisc& disc, int width, int height, const Take& take) {
  const auto first = [](double value, int size) {
    return static_cast<int>(std::clamp(std::floor(value), 0.0, size * 1.0));
  };
  const auto last = [](double value, int size) {
    return static_cast<int>(std::clamp(std::ceil(value), -1.0, size - 1.0));
  };
  const double reach = disc.radius + 1;
  for (int row = first(disc.y - reach, height); row <= last(disc.y + reach, height); ++row) {
    for (int column = first(disc.x - reach, width); column <= last(disc.x + reach, width);
         ++column) {
      const double across = std::abs(column + 0.5 - disc.x);
      const double down = std::abs(row + 0.5 - disc.y);
      const double distance = disc.isSquare ? std::max(across, down) : std::hypot(across, down);
      // Squares meet without a seam; a disc's rim is smooth.
      const double within = disc.radius + 0.5 - distance;
      const double cover = disc.isSquare ? (within >= 0 ? 1 : 0) : std::clamp(within, 0.0, 1.0);
      const auto covered = static_cast<std::uint8_t>(std::lround(cover * 255));
      if (covered == 0) continue;
      take(static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(column),
           covered, distance <= disc.radius * kCoreShare);
    }
  }
}

}  // namespace

CrowdPicture::CrowdPicture(std::span<const CrowdDisc> discs, int width, int height)
    : size_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
      firsts_(discs.size() + 1) {
  // A pixel is whose covers most of it.
  std::vector<Share> shares(size_);
  for (std::size_t seat = 0; seat < discs.size(); ++seat) {
    forEachPixel(discs[seat], width, height, [&](std::size_t at, std::uint8_t cover, bool isCore) {
      if (cover <= shares[at].cover) return;
      shares[at] = {static_cast<std::uint32_t>(seat), cover, isCore};
    });
  }
  for (const Share& share : shares) {
    if (share.cover > 0) ++firsts_[share.seat + 1];
  }
  for (std::size_t seat = 0; seat < discs.size(); ++seat) firsts_[seat + 1] += firsts_[seat];
  pixels_.resize(firsts_.back());
  std::vector<std::uint32_t> next = firsts_;
  for (std::size_t at = 0; at < size_; ++at) {
    const Share& share = shares[at];
    if (share.cover == 0) continue;
    pixels_[next[share.seat]++] = {static_cast<std::uint32_t>(at), share.cover, share.isCore};
  }
}

template <class Put>
void CrowdPicture::drawSeat(std::uint32_t seat, const CrowdLight& light, const Put& put) const {
  const Rgb screen{onDarkSeat(light.red), onDarkSeat(light.green), onDarkSeat(light.blue)};
  for (std::uint32_t index = firsts_[seat]; index < firsts_[seat + 1]; ++index) {
    const Pixel& pixel = pixels_[index];
    const Rgb& front = light.isTorchOn && pixel.isCore ? kTorch : screen;
    if (pixel.cover == 255) {
      put(pixel.at, front);
    } else {
      put(pixel.at, Rgb{mix(kHall[0], front[0], pixel.cover), mix(kHall[1], front[1], pixel.cover),
                        mix(kHall[2], front[2], pixel.cover)});
    }
  }
}

void CrowdPicture::draw(std::span<const CrowdLight> lights, std::span<std::uint8_t> rgb) const {
  const auto put = [&rgb](std::size_t at, const Rgb& colour) {
    std::copy(colour.begin(), colour.end(), rgb.begin() + static_cast<std::ptrdiff_t>(at * 3));
  };
  for (std::size_t at = 0; at < size_; ++at) put(at, kHall);
  for (std::uint32_t seat = 0; seat + 1 < firsts_.size(); ++seat) {
    drawSeat(seat, lights[seat], put);
  }
}

void CrowdPicture::drawHall(std::span<std::uint32_t> words) const {
  std::fill(words.begin(), words.end(), wordOf(kHall));
}

void CrowdPicture::drawSeats(std::span<const CrowdLight> lights,
                             std::span<const std::uint32_t> seats,
                             std::span<std::uint32_t> words) const {
  for (const std::uint32_t seat : seats) {
    drawSeat(seat, lights[seat],
             [&words](std::size_t at, const Rgb& colour) { words[at] = wordOf(colour); });
  }
}

}  // namespace halvora
