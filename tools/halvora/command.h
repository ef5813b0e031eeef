// SPDX-License-Identifier: Apache-2.0
// What the commands of the tool have in common: what they get from the process that they run in,
// what they answer, and the small things that most of them need. Main thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/image.h"
#include "platform/movie_writer.h"
#include "platform/time.h"
#include "platform/video_asset.h"
#include "tools/halvora/radio.h"
#include "tools/halvora/transmitter.h"

namespace halvora {

class CommandOptions;

/// Takes whole lines for standard output, which whoever reads along a pipe sees at once; false when
/// they cannot be written.
using Output = std::function<bool(std::string_view)>;

struct CommandResult {
  int status = 0;
  /// One line, for standard error; empty for none.
  std::string error;
};

/// A picture as the bytes of a file, empty where that failed.
using PictureEncoder = std::string (*)(const Image& image);

/// Where a long command shows how far it is. Any thread.
struct Terminal {
  /// Absent where nobody looks.
  std::function<void(std::string_view)> write = {};
  /// A clock that only goes forward; there where `write` is.
  std::function<Duration()> now = {};
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
  /// Null where movies cannot be written.
  const MovieWriters* movies = nullptr;
  /// The machine's radio, never null, on that adapter ("hci1") or, where none is named, on
  /// whichever works; absent where there is no way to one.
  std::function<std::unique_ptr<Radio>(const std::string& adapter)> openRadio = {};
  /// The machine's transmitter, likewise.
  std::function<std::unique_ptr<Transmitter>()> openTransmitter = {};
};

struct Call {
  /// As the process got them, its own name first.
  std::span<const char* const> arguments;
  const Outside& outside;
  const Output& output;
};

class ToolCommand {
 public:
  virtual ~ToolCommand() = default;
  /// Adds its options; their values come before it runs.
  virtual void describe(CommandOptions& options) = 0;
  /// Once, after the options have been read.
  virtual CommandResult run(const Call& call) = 0;
};

CommandResult done();
/// The command line or an input file is unusable: exit status 2.
CommandResult unusable(std::string what);
/// Any other failure: exit status 1.
CommandResult failed(std::string what);
CommandResult interrupted();
CommandResult writeAll(std::string_view text, const Output& output);

/// Decimal digits and nothing else, up to `largest`.
std::optional<std::uint64_t> decimal(std::string_view text, std::uint64_t largest);
/// The same with a minus sign allowed.
std::optional<std::int64_t> wholeNumber(std::string_view text);

/// A plain decimal number, fraction and exponent allowed, and nothing around it.
std::optional<double> plainNumber(const std::string& text);

/// The path from the root, without empty names, "." and "..". Links stay as they are, and so does a
/// ".." behind one: it leads elsewhere than the names suggest. Empty for an empty path.
std::string absolutePath(std::string_view path);

/// Whether a folder is there, or could be made there.
bool mayBeFolder(const std::string& path);

}  // namespace halvora
