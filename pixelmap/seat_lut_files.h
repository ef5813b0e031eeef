// SPDX-License-Identifier: Apache-2.0
// Seat tables on disk: a data file and a meta file a seat, in one folder a video, under the
// application's private documents. A table counts only with the very video it was made from, which
// size and modification time tell. Has no state but its folder; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "halvora/platform/files.h"
#include "halvora/platform/json.h"
#include "pixelmap/seat_lut.h"

namespace halvora {

struct VideoFileSignature {
  /// Bytes.
  std::uint64_t fileSize = 0;
  /// Seconds since 1970.
  double modifiedAt = 0;
  friend bool operator==(const VideoFileSignature&, const VideoFileSignature&) = default;
};

/// What keeps a stored table from being used, in the order in which it is looked for.
enum class SeatLutFault : std::uint8_t {
  noVideo,
  noDataFile,
  noMetaFile,
  noSignature,
  metaUnreadable,
  metaNotAnObject,
  metaIncomplete,
  sizeDiffers,
  timeDiffers,
  dataTooShort,
  dataLengthDiffers,
};

/// A short text: "the video's size has changed".
std::string_view describe(SeatLutFault fault);

/// Names a table in memory: "path|x|y".
std::string pixelMapSeatLUTCacheKeyForVideoPath(std::string_view videoPath, SeatPosition seat);

class SeatLutFiles {
 public:
  SeatLutFiles(Files& files, const JsonReader& json, std::string documents)
      : files_(files), json_(json), documents_(std::move(documents)) {}

  /// None where there is no such file.
  std::optional<VideoFileSignature> pixelMapVideoFileSignatureForURL(
      const std::string& videoPath) const;

  /// The folder of a video's tables; empty where there is no video or no documents folder. A path
  /// of more than 191 bytes has a name that common file systems cannot hold: its tables are never
  /// stored.
  std::string pixelMapSeatLUTDirectoryURLForVideoURL(std::string_view videoPath) const;
  static std::string pixelMapSeatLUTFilenameForSeatX(SeatPosition seat, std::string_view extension);
  std::string pixelMapSeatLUTDataURLForVideoURL(std::string_view videoPath,
                                                SeatPosition seat) const;
  std::string pixelMapSeatLUTMetaURLForVideoURL(std::string_view videoPath,
                                                SeatPosition seat) const;

  /// Writes both files, the data first. With `builtFrom`, only if the video still has that
  /// signature: a file that was replaced while it was read must not lend its name to another's
  /// colours. False where anything failed.
  bool persistPixelMapSeatLUTData(const SeatLut& lut, const std::string& videoPath,
                                  SeatPosition seat,
                                  const std::optional<VideoFileSignature>& builtFrom = {}) const;

  /// Removes what killed builds of a video's tables have left, which takes as long as listing its
  /// folder: once a build, not once a table.
  void removeLeftovers(std::string_view videoPath) const;

  /// The table, or the first check that it does not pass.
  std::variant<SeatLut, SeatLutFault> read(const std::string& videoPath, SeatPosition seat) const;
  /// Null for a table that passes not every check.
  SeatLut loadPersistedPixelMapSeatLUTForVideoURL(const std::string& videoPath,
                                                  SeatPosition seat) const;

  /// Removes every seat's tables of a video.
  void removeTables(std::string_view videoPath) const;

 private:
  Files& files_;
  const JsonReader& json_;
  std::string documents_;
};

}  // namespace halvora
