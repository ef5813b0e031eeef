// SPDX-License-Identifier: Apache-2.0
// What the work for a venue's crew gets from the process that it is done in, and what it answers.
// Main thread.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/image.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/movie_writer.h"
#include "halvora/platform/time.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

class LiveGround;
class Radio;
class Transmitter;

/// Takes whole lines for standard output, which whoever reads along a pipe sees at once; false when
/// they cannot be written.
using Output = std::function<bool(std::string_view)>;

struct CommandResult {
  int status = 0;
  /// One line, for standard error; empty for none.
  std::string error;
  /// Further lines, where an input has several faults.
  std::vector<std::string> more = {};
};

/// A picture as the bytes of a file, empty where that failed.
using PictureEncoder = std::string (*)(const Image& image);

/// Where a long command shows how far it is. Any thread.
struct Terminal {
  /// Absent where nobody looks.
  std::function<void(std::string_view)> write = {};
  /// A clock that only goes forward; there where `write` is, and maybe where it is not.
  std::function<Duration()> now = {};
  /// What is written stays, a line each: a file, or the log of a job.
  bool isLog = false;
};

/// What a command needs from outside; outlives it.
struct Outside {
  /// Reads the stills of torch pixel maps.
  const ImageDecoder& images;
  const VideoAssets& videos;
  /// Set, at any time and once and for all, by a user who wants the command to end.
  const std::atomic<bool>& isInterrupted;
  Terminal terminal = {};
  /// Null where pictures cannot be written.
  PictureEncoder encodePicture = nullptr;
  /// Null where there is no cipher for show keys.
  const MessageCodes* codes = nullptr;
  /// Null where movies cannot be written.
  const MovieWriters* movies = nullptr;
  /// The machine's radio, never null, on that adapter ("hci1") or, where none is named, on
  /// whichever works; absent where there is no way to one.
  std::function<std::unique_ptr<Radio>(const std::string& adapter)> openRadio = {};
  /// The machine's transmitter, likewise.
  std::function<std::unique_ptr<Transmitter>()> openTransmitter = {};
  /// What a show is played on; absent where nothing can be played.
  std::function<std::unique_ptr<LiveGround>()> openLive = {};
  /// Whole lines for standard error while a command runs; absent where nobody reads them.
  Output messages = {};
};

struct Call {
  /// As the process got them, its own name first.
  std::span<const char* const> arguments;
  const Outside& outside;
  const Output& output;
};

CommandResult done();
/// The command line or an input file is unusable: exit status 2.
CommandResult unusable(std::string what);
/// Any other failure: exit status 1.
CommandResult failed(std::string what);
CommandResult interrupted();
CommandResult writeAll(std::string_view text, const Output& output);

}  // namespace halvora
