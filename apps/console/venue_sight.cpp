// SPDX-License-Identifier: Apache-2.0
#include "apps/console/venue_sight.h"

#include <algorithm>
#include <cmath>

namespace halvora {

VenueSight fitted(const VenueSight& sight, Size picture) {
  VenueSight fit;
  fit.zoom = std::clamp(sight.zoom, 1.0, VenueSight::kMostZoom);
  // From close by, an edge may come to the middle; the whole picture stays where it is.
  const double free = 1 - 1 / fit.zoom;
  const double beyond = free / fit.zoom / 2;
  fit.left = std::clamp(sight.left, -beyond * picture.width, (free + beyond) * picture.width);
  fit.top = std::clamp(sight.top, -beyond * picture.height, (free + beyond) * picture.height);
  return fit;
}

VenueSight zoomedAt(const VenueSight& sight, double x, double y, double factor) {
  const double zoom = std::clamp(sight.zoom * factor, 1.0, VenueSight::kMostZoom);
  return {sight.left + x / sight.zoom - x / zoom, sight.top + y / sight.zoom - y / zoom, zoom};
}

VenueSight sightOf(const CrowdDisc& place, double zoom, double x, double y) {
  return {place.x - x / zoom, place.y - y / zoom, zoom};
}

VenueSight between(const VenueSight& from, const VenueSight& to, double share) {
  if (share >= 1) return to;
  const double zoom = from.zoom * std::pow(to.zoom / from.zoom, share);
  // The corners move as the width of what is seen does, so that one point stands still.
  const double whole = 1 / to.zoom - 1 / from.zoom;
  const double part = std::abs(whole) < 1e-9 ? share : (1 / zoom - 1 / from.zoom) / whole;
  return {from.left + (to.left - from.left) * part, from.top + (to.top - from.top) * part, zoom};
}

CrowdDisc seen(const CrowdDisc& disc, const VenueSight& sight) {
  return {(disc.x - sight.left) * sight.zoom, (disc.y - sight.top) * sight.zoom,
          disc.radius * sight.zoom, disc.isSquare};
}

}  // namespace halvora
