// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_run.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <utility>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/stopwatch.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"
#include "adapters/virtual/virtual_video.h"
#include "pixelmap/frame_time.h"
#include "seats/seat_map_document.h"
#include "text/asset_paths.h"
#include "venue/base/progress_bar.h"
#include "venue/crowd/crowd_output.h"
#include "venue/crowd/crowd_picture.h"
#include "venue/crowd/crowd_summary.h"
#include "venue/crowd/crowd_venue.h"
#include "venue/crowd/shared_stills.h"
#include "venue/show/signed_show.h"

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

  std::variant<CrowdFlashes, CommandResult> measure() {
    for (const auto step :
         {&CrowdRun::readVenue, &CrowdRun::fillAir, &CrowdRun::buildTables, &CrowdRun::show}) {
      if (const Failure failure = (this->*step)()) return *failure;
    }
    if (outside_.isInterrupted) return interrupted();
    return std::move(flashes_);
  }

 private:
  Failure readVenue();
  Failure fillAir();
  Failure openOutput();
  Failure buildTables();
  Failure buildTable(const PixelMapVideoEntry& map);
  Failure show();
  Duration firstAttack() const;
  bool drawSlice(const Crowd& crowd, const CrowdPicture& picture);

  const CrowdRequest& request_;
  const Outside& outside_;
  const ExactJsonReader json_{};
  LinuxFiles files_;
  ThreadWorkers workers_;
  FolderBundle mainBundle_;
  VirtualBundle kitBundle_{"com.halvora.sdk"};
  const Bundles bundles_{mainBundle_, kitBundle_};
  const PixelMapAssets assets_{bundles_, files_, outside_.videos, outside_.images};
  std::optional<CrowdVenue> venue_;
  Scenario scenario_;
  std::optional<TrueShow> truth_;
  std::optional<Air> air_;
  /// Null where nobody wants pictures.
  std::unique_ptr<CrowdOutput> output_;
  CrowdFlashes flashes_;
  std::size_t framesWritten_ = 0;
  std::vector<std::uint8_t> rgb_;
  std::string report_;
};

Failure CrowdRun::readVenue() {
  const std::string path = seatMapFile(request_.venueId);
  const auto document = mainBundle_.readResource(path, kLargestSeatMap);
  if (!document) return unusable(request_.assets + "/" + path + ": cannot be read");
  venue_.emplace(*document, seatMapTexts(kitBundle_), json_, request_.phones, spreadOver);
  if (venue_->seatCount() == 0) return unusable(request_.assets + "/" + path + ": has no seats");
  if (request_.phones <= venue_->seatCount()) return std::nullopt;
  return unusable("--phones " + std::to_string(request_.phones) + ": venue " +
                  std::to_string(request_.venueId) + " has only " +
                  std::to_string(venue_->seatCount()) + " seats");
}

Failure CrowdRun::fillAir() {
  const Duration end = request_.settings.end;
  scenario_ = request_.scenario;
  if (request_.airOptions.showKey) {
    const auto code =
        outside_.codes != nullptr ? outside_.codes->withKey(*request_.airOptions.showKey) : nullptr;
    if (code == nullptr) return failed("this build has no cipher for show keys");
    const VirtualRunLoop atBegin;
    scenario_ = signedShow(scenario_, *code, VirtualWallClock(atBegin).now(), end);
  }
  if (!request_.rogues.empty()) {
    truth_.emplace(scenario_, end);
    scenario_ = withRogues(scenario_, *truth_, request_.rogues);
  }
  air_ = Air::of(scenario_, request_.air, end);
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
  std::set<std::pair<int, int>> maps;
  for (const Sent& sent : air_->sent()) {
    const auto& broadcast = air_->packet(sent).broadcast;
    if (!broadcast || broadcast->pixelMapId == 0 || broadcast->mode == 0) continue;
    maps.emplace(broadcast->venueId, broadcast->pixelMapId);
  }
  for (const auto& [venue, map] : maps) {
    const std::string video = assets_.pixelMapVideoURLForVenueId(venue, map);
    if (video.empty()) {
      return unusable(request_.assets + "/" + pixelMapFolder(venue, map) +
                      "/video.mp4: missing, and the show uses it");
    }
    if (Failure failure = buildTable({std::to_string(map), video})) return failure;
  }
  return std::nullopt;
}

Failure CrowdRun::buildTable(const PixelMapVideoEntry& map) {
  const auto asset = outside_.videos.open(map.videoURL);
  const int frames = asset ? pixelMapFrameCount(asset->durationSeconds()) : 1;
  ProgressBar bar(outside_.terminal, "reading map " + map.mapId, "frames",
                  static_cast<std::uint64_t>(frames));
  const BuildControl control{
      .workers = workers_,
      .isCancelled = [this] { return outside_.isInterrupted.load(); },
      .onFrame = [&bar](int done) { bar.show(static_cast<std::uint64_t>(done)); }};
  switch (venue_->build(map, outside_.videos, control)) {
    case VenueTables::End::built:
      return std::nullopt;
    case VenueTables::End::noVideo:
      return unusable(map.videoURL + ": cannot be read as a video");
    case VenueTables::End::noRoom:
      return failed("no room for the seat tables in the temporary folder");
    case VenueTables::End::cancelled:
      break;
  }
  return interrupted();
}

Failure CrowdRun::show() {
  const SharedStills stills(mainBundle_, outside_.images);
  PictureMeans pictures(files_, outside_.images);
  ShowEngineOptions engine;
  engine.limits.flash = request_.policy;
  engine.assets = loadShowAssets(bundles_, json_);
  engine.seatLuts = &venue_->tables();
  engine.stills = &stills;
  engine.pictures = &pictures;
  engine.air = request_.airOptions;
  const CrowdParts parts{bundles_,
                         json_,
                         outside_.images,
                         files_,
                         std::move(engine),
                         request_.scenario.device,
                         request_.allowedTransmitterIds,
                         outside_.codes};
  const CrowdPicture picture(venue_->seats(), request_.width, request_.height);
  rgb_.resize(static_cast<std::size_t>(request_.width) * static_cast<std::size_t>(request_.height) *
              3);
  std::optional<CueWatch> cues;
  if (!request_.cues.empty()) cues.emplace(request_.cues, *air_, venue_->seats());
  Crowd crowd({parts, venue_->seats(), scenario_, *air_, venue_->tables(), assets_, workers_,
               cues ? &*cues : nullptr, truth_ ? &*truth_ : nullptr, firstAttack()},
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
  const FieldMeter::Worst worst = crowd.field().worstSection();
  flashes_ = {venue_->seats().size(),
              crowd.phoneFlashes(),
              crowd.phoneCurve(),
              crowd.field().hall(),
              crowd.field().hallCurve(),
              std::string(crowd.nameOfSection(worst.section)),
              worst.figures};
  if (output_ == nullptr) return std::nullopt;
  if (!output_->finish()) return failed(request_.out + ": cannot be written");
  const Duration simulated = std::min(crowd.now(), end);
  report_ = summary.json(
      crowd, {venue_->seatCount(), venue_->seats(), air_->sent().size(), framesWritten_, simulated,
              spent > Duration::zero() ? toSeconds(simulated) / toSeconds(spent) : 0,
              cues ? &*cues : nullptr, request_.rogues});
  return std::nullopt;
}

Duration CrowdRun::firstAttack() const {
  Duration first = Duration::max();
  for (const Rogue& rogue : request_.rogues) first = std::min(first, rogue.at);
  return first;
}

bool CrowdRun::drawSlice(const Crowd& crowd, const CrowdPicture& picture) {
  if (output_ == nullptr) return true;
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

std::variant<CrowdFlashes, CommandResult> measureCrowd(const CrowdRequest& request,
                                                       const Outside& outside) {
  return CrowdRun(request, outside).measure();
}

CommandResult runCrowd(const CrowdRequest& request, const Call& call) {
  return CrowdRun(request, call.outside).run(call.output);
}

}  // namespace halvora
