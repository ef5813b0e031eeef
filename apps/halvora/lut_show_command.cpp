// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <span>
#include <string>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/lut_commands.h"
#include "pixelmap/seat_lut_files.h"
#include "text/rows.h"
#include "venue/base/json_line.h"

namespace halvora {

namespace {

enum class LutPart { video, data, meta };

struct BlamedRow {
  SeatLutFault fault;
  LutPart part;
};

// Which file a check that failed speaks of.
constexpr std::array<BlamedRow, 11> kBlamed = {{
    {SeatLutFault::noVideo, LutPart::video},
    {SeatLutFault::noDataFile, LutPart::data},
    {SeatLutFault::noMetaFile, LutPart::meta},
    {SeatLutFault::noSignature, LutPart::video},
    {SeatLutFault::metaUnreadable, LutPart::meta},
    {SeatLutFault::metaNotAnObject, LutPart::meta},
    {SeatLutFault::metaIncomplete, LutPart::meta},
    {SeatLutFault::sizeDiffers, LutPart::video},
    {SeatLutFault::timeDiffers, LutPart::video},
    {SeatLutFault::dataTooShort, LutPart::data},
    {SeatLutFault::dataLengthDiffers, LutPart::data},
}};
static_assert(areInOrder(kBlamed, &BlamedRow::fault));

std::string wordsText(std::span<const std::uint32_t> words) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "[";
  text.reserve(words.size() * 11 + 2);
  for (const std::uint32_t word : words) {
    text += text.size() > 1 ? ",\"" : "\"";
    for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[word >> shift & 15];
    text += '"';
  }
  return text += ']';
}

class ShowCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("VIDEO", video_, "the video that the table was made from");
    options.required("--seat", seat_, "the seat, as X,Y: its pixel in the video");
    options.required("--documents", documents_, "the private documents folder with the tables");
  }

  CommandResult run(const Call& call) override {
    const auto seat = seatOf(seat_);
    if (!seat) return notASeat(seat_);
    if (video_.empty()) return unusable("VIDEO must not be empty");
    if (!mayBeFolder(documents_)) return notAFolder(documents_);
    LinuxFiles files;
    const ExactJsonReader json;
    const SeatLutFiles luts(files, json, absolutePath(documents_));
    const std::string video = absolutePath(video_);
    const auto result = luts.read(video, *seat);
    if (const auto* fault = std::get_if<SeatLutFault>(&result)) {
      const LutPart blamed = kBlamed[static_cast<std::size_t>(*fault)].part;
      const std::string file = blamed == LutPart::video ? video_
                               : blamed == LutPart::data
                                   ? luts.pixelMapSeatLUTDataURLForVideoURL(video, *seat)
                                   : luts.pixelMapSeatLUTMetaURLForVideoURL(video, *seat);
      return failed(file + ": " + std::string(halvora::describe(*fault)));
    }
    const SeatLut& lut = std::get<SeatLut>(result);
    JsonLine line;
    line.begin()
        .add("frameCount", std::int64_t{frameCountOf(lut)})
        .addRaw("words", wordsText(lut.words()));
    return writeAll(line.end(), call.output);
  }

 private:
  std::string video_;
  std::string seat_;
  std::string documents_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeLutShowCommand() { return std::make_unique<ShowCommand>(); }

}  // namespace halvora
