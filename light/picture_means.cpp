// SPDX-License-Identifier: Apache-2.0
#include "light/picture_means.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace halvora {

namespace {

void addTo(PictureMean& sum, const PictureMean& more, double share = 1) {
  sum.levels.red += more.levels.red * share;
  sum.levels.green += more.levels.green * share;
  sum.levels.blue += more.levels.blue * share;
  sum.alpha += more.alpha * share;
}

// A place between two of the sums lies on the line between them.
PictureMean sumUpTo(const std::vector<PictureMean>& sums, double place) {
  const auto at = std::min(static_cast<std::size_t>(place), sums.size() - 1);
  PictureMean sum = sums[at];
  const double rest = place - static_cast<double>(at);
  if (rest > 0 && at + 1 < sums.size()) {
    addTo(sum, sums[at + 1], rest);
    addTo(sum, sums[at], -rest);
  }
  return sum;
}

void sumUp(std::vector<PictureMean>& sums) {
  for (std::size_t at = 1; at < sums.size(); ++at) addTo(sums[at], sums[at - 1]);
}

}  // namespace

bool PictureMeans::bringToFront(const std::string& path) {
  const auto found =
      std::ranges::find_if(kept_, [&path](const Kept& kept) { return kept.path == path; });
  if (found == kept_.end()) return false;
  kept_.splice(kept_.begin(), kept_, found);
  return true;
}

// Of no screen yet: whoever asks for the mean says of which.
void PictureMeans::add(const std::string& path, Sums sums) {
  kept_.push_front({path, std::move(sums), {}, {}});
  kept_.front().mean = meanOf(kept_.front().sums, {});
  if (kept_.size() > kMostKept) kept_.pop_back();
}

PictureMean PictureMeans::of(const std::string& path, Size screen) {
  const std::lock_guard lock(mutex_);
  if (!bringToFront(path)) {
    try {
      add(path, read(path));
    } catch (...) {
      // Short of memory for it: nobody can draw it then, either.
      return {};
    }
  }
  Kept& kept = kept_.front();
  if (kept.screen != screen) {
    kept.screen = screen;
    kept.mean = meanOf(kept.sums, screen);
  }
  return kept.mean;
}

bool PictureMeans::has(const std::string& path) {
  const std::lock_guard lock(mutex_);
  return bringToFront(path);
}

void PictureMeans::keep(const std::string& path, Sums sums) {
  const std::lock_guard lock(mutex_);
  if (!bringToFront(path)) add(path, std::move(sums));
}

PictureMeans::Sums PictureMeans::read(const std::string& path) const {
  const auto image = pictures_.read(path);
  Sums sums;
  if (!image || image->width == 0 || image->height == 0) return sums;
  sums.rows.resize(image->height + std::size_t{1});
  sums.columns.resize(image->width + std::size_t{1});
  const auto level = [](std::uint8_t byte) { return static_cast<double>(byte) / 255; };
  const std::uint8_t* pixel = image->rgba.data();
  for (std::size_t y = 1; y < sums.rows.size(); ++y) {
    for (std::size_t x = 1; x < sums.columns.size(); ++x, pixel += 4) {
      const double alpha = level(pixel[3]);
      const PictureMean one{
          {level(pixel[0]) * alpha, level(pixel[1]) * alpha, level(pixel[2]) * alpha}, alpha};
      addTo(sums.rows[y], one);
      addTo(sums.columns[x], one);
    }
  }
  sumUp(sums.rows);
  sumUp(sums.columns);
  return sums;
}

// Of a picture that is cut above and below the rows count, else the columns.
PictureMean PictureMeans::meanOf(const Sums& sums, Size screen) {
  if (sums.rows.empty()) return {};
  const auto width = static_cast<double>(sums.columns.size() - 1);
  const auto height = static_cast<double>(sums.rows.size() - 1);
  const bool hasShape = screen.width > 0 && screen.height > 0;
  const double shape = hasShape ? screen.width / screen.height : width / height;
  const bool isCutAbove = width / height < shape;
  const std::vector<PictureMean>& along = isCutAbove ? sums.rows : sums.columns;
  const double whole = isCutAbove ? height : width;
  const double part = isCutAbove ? width / shape : height * shape;
  PictureMean sum = sumUpTo(along, (whole + part) / 2);
  addTo(sum, sumUpTo(along, (whole - part) / 2), -1);
  PictureMean mean;
  addTo(mean, sum, 1 / (part * (isCutAbove ? width : height)));
  return mean;
}

}  // namespace halvora
