// SPDX-License-Identifier: Apache-2.0
// The movie writing need on libavformat and libavcodec: H.264 in MP4, or MPEG-4 where there is no
// H.264 encoder. Has no state.
#pragma once

#include "halvora/platform/movie_writer.h"

namespace halvora {

class FfmpegMovies final : public MovieWriters {
 public:
  std::unique_ptr<MovieWriter> make(const std::string& path,
                                    const MovieFormat& format) const override;
};

}  // namespace halvora
