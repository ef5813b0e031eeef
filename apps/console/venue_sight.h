// SPDX-License-Identifier: Apache-2.0
// Which part of a picture is looked at, and how closely. Values; any thread.
#pragma once

#include "halvora/platform/screen.h"
#include "venue/crowd/crowd_picture.h"

namespace halvora {

struct VenueSight {
  static constexpr double kMostZoom = 60;

  /// What of the picture is in the upper left corner.
  double left = 0;
  double top = 0;
  /// 1 for the whole picture.
  double zoom = 1;

  friend bool operator==(const VenueSight&, const VenueSight&) = default;
};

/// The nearest sight that is not beside the picture.
VenueSight fitted(const VenueSight& sight, Size picture);

/// So many times closer; what is seen at (x, y) stays there.
VenueSight zoomedAt(const VenueSight& sight, double x, double y, double factor);

/// The place of the picture that is looked at from so close is seen at (x, y).
VenueSight sightOf(const CrowdDisc& place, double zoom, double x, double y);

/// The way from one sight to another, at a share of it: as if one straight move.
VenueSight between(const VenueSight& from, const VenueSight& to, double share);

CrowdDisc seen(const CrowdDisc& disc, const VenueSight& sight);

}  // namespace halvora
