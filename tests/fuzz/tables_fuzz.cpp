// SPDX-License-Identifier: Apache-2.0
// Any bytes as the two files of a stored seat table: a table is handed out only where both say what
// the video says, and its words are the file's.
#include <algorithm>
#include <string>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_files.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

constexpr SeatPosition kSeat{3, 4};
constexpr const char* kVideo = "/v.mp4";
constexpr std::size_t kVideoSize = 5;
constexpr double kVideoTime = 1000;

// The meta is up to the first line end, the data what follows.
struct TableFiles {
  std::string meta;
  std::string data;
};

TableFiles filesOf(FuzzBytes bytes) {
  const std::string_view text = textOf(bytes);
  const std::size_t end = std::min(text.find('\n'), text.size());
  return {std::string(text.substr(0, end)),
          std::string(text.substr(std::min(end + 1, text.size())))};
}

void checkTable(const SeatLut& table, const TableFiles& files, const JsonReader& json) {
  require(!table.words().empty() && table.words().size() * 4 == files.data.size(),
          "a table has the file's length");
  for (std::size_t at = 0; at < table.words().size(); ++at) {
    const auto byte = [&](std::size_t k) {
      return std::uint32_t{static_cast<std::uint8_t>(files.data[at * 4 + k])};
    };
    require(table.words()[at] == (byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24),
            "a word has its low byte first");
  }
  const auto meta = json.parse(files.meta);
  require(meta && meta->find("frameCount") != nullptr && meta->find("fileSize") != nullptr &&
              meta->find("modifiedAt") != nullptr,
          "a table has a whole meta file");
  // A count below 1 leaves it to the data's length.
  const std::int64_t frames = meta->find("frameCount")->wholeNumber().value_or(-1);
  require(frames < 1 || frames == static_cast<std::int64_t>(table.words().size()),
          "a table has so many frames as are said");
  require(meta->find("fileSize")->number() == static_cast<double>(kVideoSize),
          "a table is of this video");
  const double off = *meta->find("modifiedAt")->number() - kVideoTime;
  require(off < 1 && off > -1, "and of its time");
}

}  // namespace

int fuzzTables(FuzzBytes bytes) {
  const ExactJsonReader json;
  VirtualFiles disk;
  disk.reads.isKept = disk.writes.isKept = false;
  disk.put(kVideo, std::string(kVideoSize, 'v'), kVideoTime);
  const SeatLutFiles luts(disk, json, "/d");
  const TableFiles files = filesOf(bytes);
  disk.put(luts.pixelMapSeatLUTMetaURLForVideoURL(kVideo, kSeat), files.meta);
  disk.put(luts.pixelMapSeatLUTDataURLForVideoURL(kVideo, kSeat), files.data);
  const auto read = luts.read(kVideo, kSeat);
  if (const auto* fault = std::get_if<SeatLutFault>(&read)) {
    require(!describe(*fault).empty(), "a fault has a text");
    return 0;
  }
  const SeatLut& table = std::get<SeatLut>(read);
  checkTable(table, files, json);
  require(luts.persistPixelMapSeatLUTData(table, kVideo, kSeat), "a table can be kept");
  const SeatLut again = luts.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat);
  require(again && std::ranges::equal(again.words(), table.words()), "and reads back");
  return 0;
}

}  // namespace halvora
