// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/failures/trial.h"
#include "tests/support/source_tree.h"

namespace halvora {

namespace {

std::string& clip() {
  static std::string path;
  return path;
}

std::string& assets() {
  static std::string path;
  return path;
}

}  // namespace

const std::string& preparedClip() { return clip(); }
const std::string& preparedAssets() { return assets(); }

void prepareInputs(const std::string& folder) {
  namespace fs = std::filesystem;
  assets() = folder + "/assets";
  const std::string venue = assets() + "/HVAssets/Maps/Venue-7";
  fs::create_directories(venue + "/1");
  fs::copy_file(sourceTree() + "/tests/failures/map.json", venue + "/map.json");
  clip() = venue + "/1/video.mp4";
  const std::string command =
      "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=64x64:r=30 -frames:v 32 -c:v libx264 "
      "-preset ultrafast -g 4 -pix_fmt yuv420p " +
      clip() + " 2> /dev/null";
  if (std::system(command.c_str()) == 0) return;
  std::fprintf(stderr, "no clip could be made: %s\n", command.c_str());
  std::exit(1);
}

}  // namespace halvora
