// SPDX-License-Identifier: Apache-2.0
#include "seats/status_panel_views.h"

namespace halvora {

namespace {

double eased(AnimationCurve curve, double share) {
  return curve == AnimationCurve::easeIn ? share * share : 1 - (1 - share) * (1 - share);
}

double between(double from, double to, double share) { return from + (to - from) * share; }

}  // namespace

DotPose dotPoseInPulse(Duration sinceBegin) {
  DotPose from;
  for (const DotAnimation& animation : kDotPulse) {
    if (sinceBegin < animation.duration) {
      const double share = toSeconds(sinceBegin) / toSeconds(animation.duration);
      const double done = eased(animation.curve, share);
      return {between(from.scale, animation.to.scale, done),
              between(from.alpha, animation.to.alpha, done)};
    }
    sinceBegin -= animation.duration;
    from = animation.to;
  }
  return from;
}

}  // namespace halvora
