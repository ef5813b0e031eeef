// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/map_commands.h"
#include "apps/halvora/map_input.h"
#include "pixelmap/frame_time.h"
#include "venue/base/json_line.h"
#include "venue/base/written_files.h"
#include "venue/plan/artwork.h"
#include "venue/plan/clip_fit.h"
#include "venue/plan/placed_seats.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSizeHelp =
    "the canvas, as WIDTHxHEIGHT, even (default: as large as the seats need)";

std::optional<CommandResult> readCanvas(const SeatMap& map, const std::string& file,
                                        const std::string& size, ArtworkCanvas& canvas) {
  canvas = canvasFor(map);
  if (map.isEmpty()) return unusable(file + ": holds no seats");
  if (canvas.width == 0) {
    return unusable(file + ": has seats outside of the 4096 pixels each way that phones decode");
  }
  if (size.empty()) return std::nullopt;
  const std::size_t cross = size.find('x');
  const auto width = decimal(size.substr(0, cross), 4096);
  const auto height =
      cross == std::string::npos ? std::nullopt : decimal(size.substr(cross + 1), 4096);
  if (!width || !height || *width < 16 || *height < 16 || *width % 2 != 0 || *height % 2 != 0) {
    return unusable("--size must be WIDTHxHEIGHT, even, 16 to 4096 each, not \"" + size + "\"");
  }
  for (const PlacedSeat& seat : placedSeatsOf(map)) {
    if (seat.x < static_cast<std::int64_t>(*width) && seat.y < static_cast<std::int64_t>(*height)) {
      continue;
    }
    return unusable("--size " + size + ": " + seatLabel(map, seat.index) + " of " + file +
                    " lies outside of it");
  }
  canvas = {static_cast<int>(*width), static_cast<int>(*height)};
  return std::nullopt;
}

/// The map that a command is given, and the canvas that its artwork has.
struct Hall {
  SeatMap map;
  ArtworkCanvas canvas;
};

std::variant<Hall, CommandResult> readHall(MapInput& input, const std::string& size,
                                           const Outside& outside) {
  const ExactJsonReader json;
  if (const auto refusal = input.read(json, outside.isInterrupted)) return *refusal;
  Hall hall{seatMapOf(input.document(), input.strings(), json), {}};
  if (auto refusal = readCanvas(hall.map, input.file(), size, hall.canvas)) {
    return std::move(*refusal);
  }
  return hall;
}

class TemplateCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    input_.describe(options);
    options.required("--out", out_, "the folder that is made: guide.png, mask.png, artwork.html");
    options.optional("--size", size_, kSizeHelp);
    options.footer(
        "Makes what an artist needs to light the hall: a guide picture with every seat, a mask of "
        "what\nanybody sees, and a page with size, rate and the smallest letter that reads. Prints "
        "them as one\nJSON object.");
  }

  CommandResult run(const Call& call) override {
    const auto hall = readHall(input_, size_, call.outside);
    if (const auto* refusal = std::get_if<CommandResult>(&hall)) return *refusal;
    const auto& [map, canvas] = std::get<Hall>(hall);
    if (call.outside.encodePicture == nullptr) return failed("this build writes no pictures");
    WrittenFiles files(call.outside.isInterrupted);
    const std::string folder = absolutePath(out_);
    const std::string title = "Artwork for " + fs::path(input_.file()).filename().string();
    const bool isWritten =
        files.makeFolder(folder) &&
        files.replace(folder + "/guide.png", call.outside.encodePicture(drawGuide(map, canvas))) &&
        files.replace(folder + "/mask.png", call.outside.encodePicture(drawMask(map, canvas))) &&
        files.replace(folder + "/artwork.html", artworkPage(map, canvas, title));
    if (!isWritten) {
      files.takeBack();
      return call.outside.isInterrupted ? interrupted()
                                        : unusable(out_ + ": cannot be written (--out)");
    }
    return writeAll(reportOf(map, canvas), call.output);
  }

 private:
  static std::string reportOf(const SeatMap& map, ArtworkCanvas canvas) {
    std::string sections;
    for (const SectionDetail& section : detailsOf(map)) {
      JsonLine line;
      line.begin().add("section", section.name);
      line.add("seats", static_cast<std::int64_t>(section.seats));
      if (section.letter > 0) {
        line.add("letter", std::int64_t{section.letter});
      } else {
        line.addNull("letter");
      }
      const std::string_view text = line.end();
      sections += (sections.empty() ? "" : ",") + std::string(text.substr(0, text.size() - 1));
    }
    JsonLine line;
    line.begin().add("width", std::int64_t{canvas.width});
    line.add("height", std::int64_t{canvas.height});
    line.add("framesPerSecond", static_cast<std::int64_t>(kPixelMapFramesPerSecond));
    line.addRaw("sections", "[" + sections + "]");
    return std::string(line.end());
  }

  MapInput input_;
  std::string out_;
  std::string size_;
};

class FitCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("CLIP", clip_, "the video that is to light the hall");
    input_.describe(options, "--map");
    options.optional("--size", size_, kSizeHelp);
    options.optional("--out", out_,
                     "a copy that fits is written there (NAME.mp4): of the canvas's size, what "
                     "does not fit cut off on both sides, thirty frames a second");
    options.footer(
        "Prints what the clip is and what it lacks as one JSON object; with --out that of the "
        "copy. Exit\nstatus 0: it fits; 1: it does not.");
  }

  CommandResult run(const Call& call) override {
    const auto hall = readHall(input_, size_, call.outside);
    if (const auto* refusal = std::get_if<CommandResult>(&hall)) return *refusal;
    const ArtworkCanvas canvas = std::get<Hall>(hall).canvas;
    if (auto refusal = checkOut()) return std::move(*refusal);
    const std::string clip = absolutePath(clip_);
    if (out_.empty()) return report(clip_, clip, canvas, call);
    const std::string out = absolutePath(out_);
    if (auto refusal = convertClip(clip, out, canvas, call.outside)) return std::move(*refusal);
    return report(out_, out, canvas, call);
  }

 private:
  std::optional<CommandResult> checkOut() const {
    if (out_.empty()) return std::nullopt;
    std::error_code error;
    if (!out_.ends_with(".mp4")) return unusable(out_ + ": must be a movie, NAME.mp4 (--out)");
    if (fs::equivalent(out_, clip_, error)) return unusable(out_ + ": is the clip itself (--out)");
    if (fs::is_directory(out_, error)) return unusable(out_ + ": is a folder (--out)");
    return std::nullopt;
  }

  static CommandResult report(const std::string& name, const std::string& file,
                              ArtworkCanvas canvas, const Call& call) {
    const auto read = readClip(file, call.outside);
    if (const auto* refusal = std::get_if<CommandResult>(&read)) return *refusal;
    const auto& clip = std::get<ClipFacts>(read);
    const std::vector<std::string> lacks = lacksOf(clip, canvas);
    JsonLine line;
    line.begin().add("clip", name);
    line.add("width", std::int64_t{clip.width}).add("height", std::int64_t{clip.height});
    line.addLevel("framesPerSecond", clip.framesPerSecond());
    line.addLevel("seconds", clip.seconds);
    line.add("pictures", static_cast<std::int64_t>(clip.pictures));
    line.addRaw("lacks", listText(lacks));
    CommandResult printed = writeAll(line.end(), call.output);
    if (printed.status != 0 || lacks.empty()) return printed;
    return failed(name + ": " + lacks.front() + (lacks.size() > 1 ? ", and more (lacks)" : "") +
                  "; --out converts it");
  }

  std::string clip_;
  MapInput input_;
  std::string size_;
  std::string out_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeMapTemplateCommand() {
  return std::make_unique<TemplateCommand>();
}

std::unique_ptr<ToolCommand> makeMapFitCommand() { return std::make_unique<FitCommand>(); }

}  // namespace halvora
