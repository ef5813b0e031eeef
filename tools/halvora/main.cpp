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
#include "tools/halvora/whole_lines.h"
#ifdef HALVORA_HAS_BLUETOOTH
#include "tools/halvora/bluez/system_transmitter.h"
#include "tools/halvora/system_radio.h"
#endif

namespace {

void writeTo(std::FILE* file, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), file);
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
  halvora::WholeLines output(STDOUT_FILENO);
  const halvora::CommandResult result =
      halvora::runCommand(argumentCount, arguments, outside,
                          [&output](std::string_view text) { return output.write(text); });
  // Whoever closes the pipe has what they wanted.
  if (output.isClosed()) return 0;
  if (!result.error.empty()) std::fprintf(stderr, "halvora: %s\n", result.error.c_str());
  return result.status;
}
