// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/failures/trial.h"

namespace halvora {

namespace {

std::string& clip() {
  static std::string path;
  return path;
}

}  // namespace

const std::string& preparedClip() { return clip(); }

void prepareInputs(const std::string& folder) {
  clip() = folder + "/clip.mp4";
  const std::string command =
      "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=64x64:r=30 -frames:v 32 -c:v libx264 "
      "-preset ultrafast -g 4 -pix_fmt yuv420p " +
      clip() + " 2> /dev/null";
  if (std::system(command.c_str()) == 0) return;
  std::fprintf(stderr, "no clip could be made: %s\n", command.c_str());
  std::exit(1);
}

}  // namespace halvora
