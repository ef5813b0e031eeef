// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <string>
#include <string_view>

#include <unistd.h>

#include "platform/ffmpeg/ffmpeg_movies.h"
#include "platform/ffmpeg/ffmpeg_videos.h"
#include "platform/image/picture_decoder.h"
#include "platform/image/png_writer.h"
#include "platform/standard/stopwatch.h"
#include "tools/halvora/commands.h"
#include "tools/halvora/interruption.h"
#ifdef HALVORA_HAS_BLUETOOTH
#include "tools/halvora/bluez/system_transmitter.h"
#include "tools/halvora/system_radio.h"
#endif

namespace {

bool writeTo(std::FILE* file, std::string_view text) {
  return std::fwrite(text.data(), 1, text.size(), file) == text.size();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const halvora::PictureDecoder images;
  const halvora::FfmpegVideoAssets videos;
  const halvora::Stopwatch watch;
  halvora::Outside outside{images, videos, halvora::interruptedBySignals()};
  outside.encodePicture = halvora::pngOf;
  const halvora::FfmpegMovies movies;
  outside.movies = &movies;
#ifdef HALVORA_HAS_BLUETOOTH
  outside.openRadio = [](const std::string& adapter) { return halvora::openSystemRadio(adapter); };
  outside.openTransmitter = [] { return halvora::openSystemTransmitter(); };
#endif
  if (isatty(STDERR_FILENO) != 0) {
    outside.terminal = {[](std::string_view text) { writeTo(stderr, text); },
                        [&watch] { return watch.elapsed(); }};
  }
  const halvora::CommandResult result =
      halvora::runCommand(argumentCount, arguments, outside,
                          [](std::string_view text) { return writeTo(stdout, text); });
  if (!result.error.empty()) std::fprintf(stderr, "halvora: %s\n", result.error.c_str());
  if (std::fflush(stdout) == 0) return result.status;
  if (result.status == 0) std::fputs("halvora: standard output cannot be written\n", stderr);
  return result.status == 0 ? 1 : result.status;
}
