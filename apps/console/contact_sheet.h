// SPDX-License-Identifier: Apache-2.0
// A whole show as one picture: the phone's screen at every half second, small, row by row. Plays in
// virtual time, so an hour of show takes seconds; needs an application object for its fonts.
#pragma once

#include <QImage>

#include "apps/console/libraries.h"
#include "apps/console/show_files.h"
#include "halvora/platform/json.h"
#include "halvora/platform/time.h"

namespace halvora {

inline constexpr Duration kTilePause = milliseconds(500);
/// A show longer than these tiles last is looked at half as often, or half as often again.
inline constexpr int kMostTiles = 1200;

struct ContactSheet {
  /// Null if the phone came to an instant at which its turns never end.
  QImage picture;
  int tiles = 0;
};

ContactSheet drawContactSheet(const ShowFiles& files, DemoLibraries& libraries);

}  // namespace halvora
