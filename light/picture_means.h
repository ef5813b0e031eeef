// SPDX-License-Identifier: Apache-2.0
// The mean colour of a picture over a screen that it covers, for whoever has to know what a gobo
// does to the light. A picture is read and decoded once; those that were asked for last are kept.
// Any thread.
#pragma once

#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "halvora/pictures.h"
#include "halvora/platform/screen.h"
#include "light/emission.h"

namespace halvora {

/// Levels premultiplied with the picture's alpha; nothing of a picture that cannot be read.
struct PictureMean {
  Levels levels;
  double alpha = 0;
};

class PictureMeans {
 public:
  /// What they read with must outlive it.
  explicit PictureMeans(const Pictures& pictures) : pictures_(pictures) {}

  /// Sums of red, green, blue and alpha up to each row, and up to each column; empty for a picture
  /// that cannot be read.
  struct Sums {
    std::vector<PictureMean> rows;
    std::vector<PictureMean> columns;
  };

  /// Of the middle part that has the screen's shape. Reads what is not kept; one thread at a time
  /// does.
  PictureMean of(const std::string& path, Size screen);
  /// Whether that would read nothing.
  bool has(const std::string& path);
  /// Takes as much time as the picture has pixels, and keeps nobody waiting meanwhile. Throws where
  /// memory is short.
  Sums read(const std::string& path) const;
  /// What `read` has made of a picture.
  void keep(const std::string& path, Sums sums);

 private:
  static constexpr std::size_t kMostKept = 32;

  struct Kept {
    std::string path;
    Sums sums;
    Size screen;
    PictureMean mean;
  };

  bool bringToFront(const std::string& path);
  void add(const std::string& path, Sums sums);
  static PictureMean meanOf(const Sums& sums, Size screen);

  const Pictures pictures_;
  std::mutex mutex_;
  /// The one that was asked for last in front.
  std::list<Kept> kept_;
};

}  // namespace halvora
