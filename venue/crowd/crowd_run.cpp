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
#include "venue/base/json_line.h"
#include "venue/base/packed_bytes.h"
#include "venue/base/progress_bar.h"
#include "venue/crowd/crowd_output.h"
#include "venue/crowd/crowd_part.h"
#include "venue/crowd/crowd_record.h"
#include "venue/crowd/crowd_venue.h"
#include "venue/crowd/shared_stills.h"
#include "venue/show/signed_show.h"

namespace halvora {

namespace {

using Failure = std::optional<CommandResult>;

constexpr std::uint64_t kChainDraw = 0x43484149;

class CrowdRun {
 public:
  CrowdRun(const CrowdRequest& request, const Outside& outside)
      : request_(request),
        outside_(outside),
        workers_(request.threads),
        mainBundle_(files_, request.assets, "com.example.host") {}

  CommandResult run(const Output& output) {
    for (const auto step :
         {&CrowdRun::readVenue, &CrowdRun::fillAir, &CrowdRun::cover, &CrowdRun::openOutput,
          &CrowdRun::buildTables, &CrowdRun::show, &CrowdRun::finish}) {
      if (const Failure failure = (this->*step)()) return *failure;
      if (step == &CrowdRun::cover && request_.out.empty()) break;
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
    const CrowdSummary& summary = record_->summary();
    const FieldMeter::Worst worst = summary.field().worstSection();
    return CrowdFlashes{venue_->seats().size(),
                        end_.phoneFlashes,
                        summary.phoneCurve(),
                        summary.field().hall(),
                        summary.field().hallCurve(),
                        std::string(summary.nameOfSection(worst.section)),
                        worst.figures};
  }

 private:
  Failure readVenue();
  Failure fillAir();
  Failure chainShow();
  Failure cover();
  Failure openOutput();
  Failure buildTables();
  Failure buildTable(const PixelMapVideoEntry& map);
  Failure show();
  Failure play(Crowd& crowd);
  Failure finish();
  Failure finishPart();
  Failure openPart();
  CrowdSink& sink();
  ShowEngineOptions engineOptions(const SharedStills& stills, PictureMeans& pictures) const;
  Duration firstAttack() const;
  /// The phones that are simulated.
  std::span<const CrowdSeat> phones() const { return venue_->simulated(); }

  const CrowdRequest& request_;
  const Outside& outside_;
  const ExactJsonReader json_{};
  LinuxFiles files_;
  ThreadWorkers workers_;
  FolderBundle mainBundle_;
  VirtualBundle kitBundle_{"com.halvora.sdk"};
  const Bundles bundles_{mainBundle_, kitBundle_};
  const PixelMapAssets assets_{bundles_, outside_.videos, outside_.images};
  std::optional<CrowdVenue> venue_;
  /// Of its document.
  std::uint64_t mapPrint_ = 0;
  Scenario scenario_;
  std::optional<TrueShow> truth_;
  std::optional<ProofSettings> proof_;
  std::optional<Air> air_;
  /// Null where nobody wants pictures.
  std::unique_ptr<CrowdOutput> output_;
  /// One of both, once the output is open.
  std::optional<CrowdRecord> record_;
  std::optional<CrowdPartWriter> part_;
  /// When the simulation ended.
  Duration now_{};
  std::optional<Coverage> coverage_;
  CrowdEnd end_;
  std::string report_;
};

Failure CrowdRun::readVenue() {
  const std::string path = seatMapFile(request_.venueId);
  const auto document = mainBundle_.readResource(path, kLargestSeatMap);
  if (!document) return unusable(request_.assets + "/" + path + ": cannot be read");
  venue_.emplace(*document, seatMapTexts(kitBundle_), json_, request_.phones, spreadOver,
                 request_.shard.value_or(CrowdShard{}));
  mapPrint_ = fingerprintOf(*document);
  if (venue_->seatCount() == 0) return unusable(request_.assets + "/" + path + ": has no seats");
  for (const TransmitterZone& zone : request_.air.zones) {
    const auto isThere = [&](const CrowdSeat& seat) { return seat.section == zone.section; };
    if (std::ranges::any_of(venue_->seats(), isThere)) continue;
    return unusable("--zone " + std::to_string(zone.transmitter) + "=" + zone.section +
                    ": the venue has no such section with a phone");
  }
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
  if (request_.isProvenLater) {
    if (Failure failure = chainShow()) return failure;
  }
  if (!request_.rogues.empty()) {
    truth_.emplace(scenario_, end);
    scenario_ = withRogues(scenario_, *truth_, request_.rogues);
  }
  air_ = Air::of(scenario_, request_.air, end);
  if (air_) return std::nullopt;
  return unusable("the scenario sends more than " + std::to_string(Air::kMostSent) + " packets");
}

// One application's packets; the row is this run's own, from its seed.
Failure CrowdRun::chainShow() {
  ChainKey secret{};
  for (std::size_t at = 0; at < secret.size(); ++at) {
    secret[at] = static_cast<std::uint8_t>(mixed(request_.settings.seed, at, kChainDraw));
  }
  const std::uint32_t intervals = KeyChain::intervalAt(request_.settings.end);
  if (intervals > kLongestChain) return unusable("--delayed-proof: the show is longer than 18 h");
  const auto chain =
      outside_.codes != nullptr ? KeyChain::of(secret, intervals, *outside_.codes) : std::nullopt;
  auto chained =
      chain ? chainedShow(scenario_, *chain, *outside_.codes, request_.settings.end) : std::nullopt;
  if (!chained) return failed("this build has no cipher for show keys");
  const TrueShow plain(scenario_, request_.settings.end);
  const auto* const first = plain.at(request_.settings.end);
  scenario_ = *std::move(chained);
  proof_.emplace();
  proof_->applicationId = first != nullptr ? first->fields.applicationId : std::uint16_t{0};
  proof_->anchor = chain->anchor();
  proof_->codes = outside_.codes;
  proof_->limits.flash = request_.policy;
  return std::nullopt;
}

Failure CrowdRun::cover() {
  if (request_.coverage.empty()) return std::nullopt;
  coverage_ = coverageOf(*air_, phones(), venue_->firstSimulated(), request_.settings.from,
                         workers_, [this] { return !outside_.isInterrupted; });
  if (outside_.isInterrupted) return interrupted();
  if (request_.out.empty()) {
    JsonBuffer buffer;
    PrettyJsonWriter writer(buffer);
    writer.SetIndent(' ', 2);
    writeCoverage(writer, *coverage_);
    report_ = std::string(buffer.GetString(), buffer.GetSize()) + "\n";
  }
  if (request_.shard) return std::nullopt;
  return writeCoverageTo(request_.coverage, *coverage_, venue_->seats(), request_.width,
                         request_.height, outside_);
}

Failure CrowdRun::openOutput() {
  if (crowdOutputKindOf(request_.out) == CrowdOutputKind::other) {
    return unusable(request_.out +
                    ": only a movie NAME.mp4, a sheet NAME.png or a folder can be written");
  }
  if (request_.shard) return openPart();
  const int fps = request_.settings.framesPerSecond;
  const auto frames = frameCountOf(request_.settings.from, request_.settings.end, fps);
  output_ = makeCrowdOutput(request_.out, {request_.width, request_.height, fps, frames},
                            {outside_.movies, outside_.encodePicture});
  if (output_) return std::nullopt;
  return unusable(request_.out + ": cannot be written");
}

Failure CrowdRun::openPart() {
  CrowdPartHead head;
  head.shard = *request_.shard;
  head.facts = request_.facts;
  head.facts.push_back("map " + std::to_string(mapPrint_));
  head.seats = venue_->seatCount();
  head.phones = venue_->seats().size();
  head.width = request_.width;
  head.height = request_.height;
  head.framesPerSecond = request_.settings.framesPerSecond;
  head.from = request_.settings.from;
  head.end = request_.settings.end;
  head.packetsSent = air_->sent().size();
  head.isForSheet = crowdOutputKindOf(request_.out) == CrowdOutputKind::sheet;
  head.rogues = request_.rogues;
  head.coverage = coverage_;
  head.places.assign(phones().begin(), phones().end());
  part_.emplace(crowdPartFile(request_.out, head.shard));
  if (part_->begin(head)) return std::nullopt;
  return unusable(crowdPartFile(request_.out, head.shard) + ": cannot be written");
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
  const auto asset = outside_.videos.open(map.videoPath);
  const int frames = asset ? pixelMapFrameCount(asset->durationSeconds()) : 1;
  std::string kept;
  if (!request_.tables.empty()) kept = venue_->keptFile(request_.tables, map, frames, files_);
  if (!kept.empty() && venue_->takeKept(map, frames, kept)) return std::nullopt;
  ProgressBar bar(outside_.terminal, "reading map " + map.mapId, "frames",
                  static_cast<std::uint64_t>(frames));
  const BuildControl control{
      .workers = workers_,
      .isCancelled = [this] { return outside_.isInterrupted.load(); },
      .onFrame = [&bar](int done) { bar.show(static_cast<std::uint64_t>(done)); }};
  switch (venue_->build(map, outside_.videos, control)) {
    case VenueTables::End::built:
      // A video that was replaced while it was read has another name by now.
      if (!kept.empty() && kept == venue_->keptFile(request_.tables, map, frames, files_) &&
          !venue_->keep(map, kept, files_) && outside_.messages) {
        outside_.messages("halvora: " + kept + ": cannot be written; the tables are not kept\n");
      }
      return std::nullopt;
    case VenueTables::End::noVideo:
      return unusable(map.videoPath + ": cannot be read as a video");
    case VenueTables::End::noRoom:
      return failed("no room for the seat tables in the temporary folder");
    case VenueTables::End::cancelled:
      break;
  }
  return interrupted();
}

ShowEngineOptions CrowdRun::engineOptions(const SharedStills& stills,
                                          PictureMeans& pictures) const {
  ShowEngineOptions engine;
  engine.limits.flash = request_.policy;
  engine.assets = loadShowAssets(bundles_, json_);
  engine.seatLuts = &venue_->tables();
  engine.stills = &stills;
  engine.pictures = &pictures;
  engine.air = request_.airOptions;
  return engine;
}

CrowdSink& CrowdRun::sink() {
  if (part_) return *part_;
  if (!record_) {
    record_.emplace(venue_->seats(), output_.get(), request_.width, request_.height);
  }
  return *record_;
}

Failure CrowdRun::show() {
  const SharedStills stills(mainBundle_, outside_.images);
  PictureMeans pictures{Pictures(files_, mainBundle_, outside_.images)};
  const CrowdParts parts{bundles_,
                         json_,
                         outside_.images,
                         files_,
                         engineOptions(stills, pictures),
                         request_.scenario.device,
                         request_.allowedTransmitterIds,
                         outside_.codes};
  std::optional<CueWatch> cues;
  if (!request_.cues.empty()) cues.emplace(request_.cues, *air_, phones());
  Crowd crowd({parts, phones(), scenario_, *air_, venue_->tables(), assets_, workers_,
               cues ? &*cues : nullptr, truth_ ? &*truth_ : nullptr, firstAttack(),
               proof_ ? &*proof_ : nullptr, venue_->firstSimulated()},
              request_.settings);
  if (Failure failure = play(crowd)) return failure;
  now_ = crowd.now();
  end_.phoneFlashes = crowd.phoneFlashes();
  end_.phonesLost = crowd.phonesLost();
  end_.proof = crowd.proofTally();
  if (cues) {
    end_.cues = cues->tallies(
        [&crowd](std::size_t phone, Duration time) { return crowd.isOpen(phone, time); });
  }
  return std::nullopt;
}

Failure CrowdRun::play(Crowd& crowd) {
  CrowdSink& sink = this->sink();
  ProgressBar bar(outside_.terminal, "simulating", "seconds",
                  static_cast<std::uint64_t>(
                      std::max<std::int64_t>(request_.settings.end / milliseconds(1000), 1)));
  while (!crowd.isOver() && !outside_.isInterrupted) {
    const Stopwatch watch;
    if (!crowd.run()) return failed("a phone never comes to rest");
    end_.spent += watch.elapsed();
    if (!sink.add(crowd.slice())) return failed(request_.out + ": cannot be written");
    bar.show(static_cast<std::uint64_t>(crowd.now() / milliseconds(1000)));
  }
  return std::nullopt;
}

Failure CrowdRun::finish() {
  if (part_) return finishPart();
  if (!output_->finish()) return failed(request_.out + ": cannot be written");
  const Duration simulated =
      std::max(std::min(now_, request_.settings.end) - request_.settings.from, Duration::zero());
  report_ = record_->summary().json(
      end_,
      {venue_->seatCount(), air_->sent().size(), record_->framesWritten(), simulated,
       request_.rogues, coverage_ ? &*coverage_ : nullptr, request_.settings.framesPerSecond});
  return std::nullopt;
}

// Half a shard fits to no other.
Failure CrowdRun::finishPart() {
  if (outside_.isInterrupted) return interrupted();
  const std::string file = crowdPartFile(request_.out, *request_.shard);
  if (!part_->finish(end_)) return failed(file + ": cannot be written");
  JsonLine line;
  line.begin().add("part", file);
  line.add("shard", static_cast<std::int64_t>(request_.shard->number));
  line.add("of", static_cast<std::int64_t>(request_.shard->of));
  line.add("phones", static_cast<std::int64_t>(phones().size()));
  report_ = line.end();
  return std::nullopt;
}

Duration CrowdRun::firstAttack() const {
  Duration first = Duration::max();
  for (const Rogue& rogue : request_.rogues) first = std::min(first, rogue.at);
  return first;
}

}  // namespace

std::variant<CrowdFlashes, CommandResult> measureCrowd(const CrowdRequest& request,
                                                       const Outside& outside) {
  return CrowdRun(request, outside).measure();
}

std::string crowdPartFile(const std::string& out, const CrowdShard& shard) {
  return out + ".shard-" + std::to_string(shard.number) + "-of-" + std::to_string(shard.of);
}

CommandResult runCrowd(const CrowdRequest& request, const Call& call) {
  return CrowdRun(request, call.outside).run(call.output);
}

}  // namespace halvora
