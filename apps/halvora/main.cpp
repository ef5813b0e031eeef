// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <string>
#include <string_view>

#include <unistd.h>

#include "adapters/ffmpeg/ffmpeg_movies.h"
#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "adapters/image/png_writer.h"
#include "adapters/standard/stopwatch.h"
#include "apps/halvora/commands.h"
#include "apps/halvora/interruption.h"
#include "apps/halvora/spoken_lines.h"
#include "apps/halvora/whole_lines.h"
#include "venue/live/system_ground.h"
#ifdef HALVORA_HAS_CIPHER
#include "adapters/nettle/nettle_codes.h"
#endif
#ifdef HALVORA_HAS_BLUETOOTH
#include "venue/air/system_radio.h"
#include "venue/air/system_transmitter.h"
#endif

int main(int argumentCount, char** arguments) {
  const halvora::PictureDecoder images;
  const halvora::FfmpegVideoAssets videos;
  const halvora::Stopwatch watch;
  halvora::Outside outside{images, videos, halvora::interruptedBySignals()};
  outside.encodePicture = halvora::pngOf;
  const halvora::FfmpegMovies movies;
  outside.movies = &movies;
#ifdef HALVORA_HAS_CIPHER
  const halvora::NettleCodes codes;
  outside.codes = &codes;
#endif
#ifdef HALVORA_HAS_BLUETOOTH
  outside.openRadio = [](const std::string& adapter) { return halvora::openSystemRadio(adapter); };
  outside.openTransmitter = [] { return halvora::openSystemTransmitter(); };
  outside.openLive = [] {
    return halvora::openSystemGround([](halvora::RunLoop& loop, halvora::Descriptors& descriptors) {
      return halvora::makeSystemAdvertiser(loop, descriptors);
    });
  };
#else
  outside.openLive = [] { return halvora::openSystemGround({}); };
#endif
  halvora::SpokenLines spoken(STDERR_FILENO);
  outside.terminal.now = [&watch] { return watch.elapsed(); };
  if (isatty(STDERR_FILENO) != 0) {
    outside.terminal.write = [&spoken](std::string_view text) { spoken.say(text); };
  }
  outside.messages = [&spoken](std::string_view lines) {
    spoken.say(lines);
    return true;
  };
  halvora::WholeLines output(STDOUT_FILENO);
  const halvora::CommandResult result =
      halvora::runCommand(argumentCount, arguments, outside,
                          [&output](std::string_view text) { return output.write(text); });
  // Whoever closes the pipe has what they wanted.
  if (output.isClosed()) return 0;
  if (!result.error.empty()) std::fprintf(stderr, "halvora: %s\n", result.error.c_str());
  for (const std::string& line : result.more) std::fprintf(stderr, "halvora: %s\n", line.c_str());
  return result.status;
}
