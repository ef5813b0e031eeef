// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_run.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <optional>
#include <set>
#include <utility>

#include "adapters/json/rapid_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/stopwatch.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_storage.h"
#include "adapters/virtual/virtual_video.h"
#include "seats/seat_map_document.h"
#include "venue/base/progress_bar.h"
#include "venue/crowd/crowd_output.h"
#include "venue/crowd/crowd_picture.h"
#include "venue/crowd/crowd_summary.h"
#include "venue/crowd/crowd_venue.h"
#include "venue/crowd/shared_stills.h"

namespace halvora {

namespace {

using Failure = std::optional<CommandResult>;

class CrowdRun {
 public:
  CrowdRun(const CrowdRequest& request, const Outside& outside)
      : request_(request),
        outside_(outside),
        workers_(request.threads),
        mainBundle_(request.assets, "com.example.host") {}

  CommandResult run(const Output& output) {
    for (const auto step : {&CrowdRun::readVenue, &CrowdRun::fillAir, &CrowdRun::openOutput,
                            &CrowdRun::buildTables, &CrowdRun::show}) {
      if (const Failure failure = (this->*step)()) return *failure;
    }
    const CommandResult written = writeAll(report_, output);
    return outside_.isInterrupted ? interrupted() : written;
  }

 private:
  Failure readVenue();
  Failure fillAir();
  Failure openOutput();
  Failure buildTables();
  Failure buildTable(const PixelMapVideoEntry& map);
  Failure show();
  bool drawSlice(const Crowd& crowd, const CrowdPicture& picture);

  const CrowdRequest& request_;
  const Outside& outside_;
  const RapidJsonReader json_{};
  LinuxFiles files_;
  ThreadWorkers workers_;
  FolderBundle mainBundle_;
  VirtualBundle kitBundle_{"com.halvora.sdk"};
  const Bundles bundles_{mainBundle_, kitBundle_};
  const PixelMapAssets assets_{bundles_, files_, outside_.videos, outside_.images};
  SeatMap map_;
  std::vector<CrowdSeat> seats_;
  std::size_t seatCount_ = 0;
  std::optional<Air> air_;
  /// The memory that the tables lie in.
  TableRooms rooms_;
  std::optional<VenueTables> tables_;
  std::unique_ptr<CrowdOutput> output_;
  std::size_t framesWritten_ = 0;
  std::vector<std::uint8_t> rgb_;
  std::string report_;
};

Failure CrowdRun::readVenue() {
  const std::string path = seatMapPath(request_.venueId);
  const auto document = mainBundle_.readResource(path, kLargestSeatMap);
  if (!document) return unusable(request_.assets + "/" + path + ": cannot be read");
  map_ = parseSeatMapSectionsFromJSON(*document, seatMapTexts(kitBundle_), json_);
  seats_ = seatsOf(map_);
  seatCount_ = seats_.size();
  if (seats_.empty()) return unusable(request_.assets + "/" + path + ": has no seats");
  if (request_.phones > seatCount_) {
    return unusable("--phones " + std::to_string(request_.phones) + ": venue " +
                    std::to_string(request_.venueId) + " has only " + std::to_string(seatCount_) +
                    " seats");
  }
  if (request_.phones > 0) seats_ = spreadOver(std::move(seats_), request_.phones);
  return std::nullopt;
}

Failure CrowdRun::fillAir() {
  air_ = Air::of(request_.scenario, request_.air, request_.settings.end);
  if (air_) return std::nullopt;
  return unusable("the scenario sends more than " + std::to_string(Air::kMostSent) + " packets");
}

Failure CrowdRun::openOutput() {
  if (crowdOutputKindOf(request_.out) == CrowdOutputKind::other) {
    return unusable(request_.out +
                    ": only a movie NAME.mp4, a sheet NAME.png or a folder can be written");
  }
  const int fps = request_.settings.framesPerSecond;
  const auto frames = static_cast<std::int64_t>(toSeconds(request_.settings.end) * fps) + 1;
  output_ = makeCrowdOutput(request_.out, {request_.width, request_.height, fps, frames},
                            {outside_.movies, outside_.encodePicture});
  if (output_) return std::nullopt;
  return unusable(request_.out + ": cannot be written");
}

// Those of the maps that the show uses.
Failure CrowdRun::buildTables() {
  std::vector<SeatPosition> places;
  for (const CrowdSeat& seat : seats_) places.push_back(seat.at);
  tables_.emplace(places);
  std::set<std::pair<int, int>> maps;
  for (const Sent& sent : air_->sent()) {
    const auto& broadcast = air_->packet(sent).broadcast;
    if (!broadcast || broadcast->pixelMapId == 0 || broadcast->mode == 0) continue;
    maps.emplace(broadcast->venueId, broadcast->pixelMapId);
  }
  for (const auto& [venue, map] : maps) {
    const std::string video = assets_.pixelMapVideoURLForVenueId(venue, map);
    if (video.empty()) {
      return unusable(request_.assets + "/HVAssets/Maps/Venue-" + std::to_string(venue) + "/" +
                      std::to_string(map) + "/video.mp4: missing, and the show uses it");
    }
    if (Failure failure = buildTable({std::to_string(map), video})) return failure;
  }
  return std::nullopt;
}

Failure CrowdRun::buildTable(const PixelMapVideoEntry& map) {
  const auto asset = outside_.videos.open(map.videoURL);
  const auto frames =
      asset ? static_cast<std::uint64_t>(std::llround(asset->durationSeconds() * 30)) : 1;
  ProgressBar bar(outside_.terminal, "reading map " + map.mapId, "frames",
                  std::max<std::uint64_t>(frames, 1));
  const BuildControl control{
      .workers = workers_,
      .isCancelled = [this] { return outside_.isInterrupted.load(); },
      .onFrame = [&bar](int done) { bar.show(static_cast<std::uint64_t>(done)); }};
  const auto room = [this](std::size_t words) { return rooms_.make(words); };
  switch (tables_->build(map, outside_.videos, control, room)) {
    case VenueTables::End::built:
      return std::nullopt;
    case VenueTables::End::noVideo:
      return unusable(map.videoURL + ": cannot be read as a video");
    case VenueTables::End::noRoom:
      return failed("no room for the seat tables in the temporary folder");
    case VenueTables::End::noMemory:
      throw std::bad_alloc();
    case VenueTables::End::cancelled:
      break;
  }
  return interrupted();
}

Failure CrowdRun::show() {
  const SharedStills stills(mainBundle_, outside_.images);
  const CrowdParts parts{bundles_,
                         json_,
                         outside_.images,
                         files_,
                         {{}, loadShowAssets(bundles_, json_), &*tables_, &stills},
                         request_.scenario.device,
                         request_.allowedTransmitterIds};
  const CrowdPicture picture(seats_, request_.width, request_.height);
  rgb_.resize(static_cast<std::size_t>(request_.width) * static_cast<std::size_t>(request_.height) *
              3);
  Crowd crowd({parts, seats_, request_.scenario, *air_, *tables_, assets_, workers_},
              request_.settings);
  CrowdSummary summary;
  const Duration end = request_.settings.end;
  Duration spent{};
  {
    ProgressBar bar(
        outside_.terminal, "simulating", "seconds",
        static_cast<std::uint64_t>(std::max<std::int64_t>(end / milliseconds(1000), 1)));
    while (!crowd.isOver() && !outside_.isInterrupted) {
      const Stopwatch watch;
      if (!crowd.run()) return failed("a phone never comes to rest");
      spent += watch.elapsed();
      summary.add(crowd);
      if (!drawSlice(crowd, picture)) return failed(request_.out + ": cannot be written");
      bar.show(static_cast<std::uint64_t>(crowd.now() / milliseconds(1000)));
    }
  }
  if (!output_->finish()) return failed(request_.out + ": cannot be written");
  const Duration simulated = std::min(crowd.now(), end);
  report_ =
      summary.json(crowd, {seatCount_, seats_, air_->sent().size(), framesWritten_, simulated,
                           spent > Duration::zero() ? toSeconds(simulated) / toSeconds(spent) : 0});
  return std::nullopt;
}

bool CrowdRun::drawSlice(const Crowd& crowd, const CrowdPicture& picture) {
  for (const CrowdFrame& frame : crowd.frames()) {
    const bool isWanted = output_->wantsNext();
    if (isWanted) {
      picture.draw(frame.lights, rgb_);
      ++framesWritten_;
    }
    if (!output_->add(isWanted ? std::span<const std::uint8_t>(rgb_)
                               : std::span<const std::uint8_t>()))
      return false;
  }
  return true;
}

}  // namespace

CommandResult runCrowd(const CrowdRequest& request, const Call& call) {
  return CrowdRun(request, call.outside).run(call.output);
}

}  // namespace halvora
