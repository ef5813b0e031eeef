// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/mp4_outline.h"

#include <algorithm>

#include "adapters/ffmpeg/mp4_walk.h"

namespace halvora {
namespace {

// Pictures for chapters are a track as well, but not of the video.
const TrackClaims* chosenTrack(const Mp4Walk& walk) {
  const auto& chapters = walk.chapterTracks();
  for (const TrackClaims& track : walk.tracks()) {
    const bool isForChapters =
        std::find(chapters.begin(), chapters.end(), track.id) != chapters.end();
    const bool isWhole = track.id != 0 && track.descriptions.size() == 1;
    if (track.isVideo && !track.isOther && !isForChapters && isWhole) return &track;
  }
  return nullptr;
}

const char* faultOf(const TrackClaims& track, std::uint64_t mostSamples) {
  if (track.isElsewhere) return "its samples are in another file";
  if (track.samples > mostSamples) return kTooManySamples;
  if (track.editEntries * track.samples > Mp4Outline::kMostEditedSamples) return kTooManyEdits;
  return nullptr;
}

double durationSeconds(const Mp4Walk& walk) {
  double longest = 0;
  for (const TrackClaims& track : walk.tracks()) longest = std::max(longest, track.endSeconds());
  const MovieClaims& movie = walk.movie();
  if (movie.timescale == 0) return longest;
  const double said = static_cast<double>(movie.duration) / movie.timescale;
  if (!movie.hasFragments) return said > 0 ? said : longest;
  if (movie.durationWithFragments == 0) return std::max(said, longest);
  return static_cast<double>(movie.durationWithFragments) / movie.timescale;
}

std::vector<std::uint64_t> hiddenTypes(const Mp4Walk& walk, const TrackClaims& chosen) {
  std::vector<std::uint64_t> hidden = walk.hiddenTypes();
  for (const TrackClaims& track : walk.tracks()) {
    if (track.typeAt == chosen.typeAt) continue;
    // In a fragment the place of one track's samples may follow from another's.
    if (track.chunks > 0 || track.id == 0) hidden.push_back(track.typeAt);
    for (const Mp4Box& box : track.descriptions) hidden.push_back(box.begin + 4);
  }
  std::sort(hidden.begin(), hidden.end());
  return hidden;
}

}  // namespace

std::optional<Mp4Outline> readMp4Outline(const ByteSource& source, std::string* reason) {
  const auto refused = [reason](const char* fault) {
    if (reason != nullptr) *reason = fault;
    return std::nullopt;
  };
  Mp4Walk walk(source);
  if (!walk.walkFile()) return refused(walk.fault());
  const TrackClaims* chosen = chosenTrack(walk);
  if (chosen == nullptr) return refused("no video track in it");
  const char* fault = faultOf(*chosen, walk.mostSamples());
  if (fault != nullptr) return refused(fault);
  if (!walk.walkDescriptions(*chosen) || walk.isCut()) return refused(walk.fault());

  Mp4Outline outline;
  outline.trackId = chosen->id;
  outline.durationSeconds = durationSeconds(walk);
  outline.edits = chosen->edits;
  outline.sampleDescriptions = chosen->sampleDescriptions;
  outline.lastSampleDuration = chosen->lastSampleDuration;
  outline.hiddenTypes = hiddenTypes(walk, *chosen);
  return outline;
}

}  // namespace halvora
