// SPDX-License-Identifier: Apache-2.0
// The walk through the boxes of an MP4 file: what they claim is written down and held against the
// size of the file; what nobody needs is noted to be hidden. One thread.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "adapters/ffmpeg/mp4_bytes.h"
#include "adapters/ffmpeg/mp4_outline.h"

namespace halvora {

/// Why a file is not read.
inline constexpr const char* kUnreadable = "cannot be read";
inline constexpr const char* kNonsense = "its header makes no sense";
inline constexpr const char* kTooManySamples = "its tables claim more samples than it can hold";
inline constexpr const char* kTooManyEdits = "its edit list is too long";

/// What a track's boxes say, and those of its fragments.
struct TrackClaims {
  std::uint64_t typeAt = 0;
  std::uint32_t id = 0;
  bool isVideo = false;
  bool isOther = false;
  bool isElsewhere = false;
  std::uint32_t timescale = 0;
  /// In units of the timescale.
  std::uint64_t end = 0;
  std::uint32_t lastSampleDuration = 0;
  std::uint32_t defaultDuration = 0;
  std::uint64_t samples = 0;
  std::uint64_t chunks = 0;
  std::uint64_t editEntries = 0;
  std::uint64_t edits = 0;
  std::uint32_t sampleDescriptions = 0;
  std::vector<Mp4Box> descriptions;

  double endSeconds() const { return timescale > 0 ? static_cast<double>(end) / timescale : 0; }
};

struct MovieClaims {
  std::uint32_t timescale = 0;
  std::uint64_t duration = 0;
  std::uint64_t durationWithFragments = 0;
  bool isSeen = false;
  bool hasFragments = false;
};

class Mp4Walk {
 public:
  explicit Mp4Walk(const ByteSource& source) : bytes_(source) {}

  /// Through the whole file; false where it must not be read.
  bool walkFile();
  /// Through what a track says about its samples, which shows only once it is clear which track
  /// counts; false as before.
  bool walkDescriptions(const TrackClaims& track);

  const char* fault() const { return bytes_.isCut() ? kUnreadable : fault_; }
  bool isCut() const { return bytes_.isCut(); }
  const MovieClaims& movie() const { return movie_; }
  const std::vector<TrackClaims>& tracks() const { return tracks_; }
  /// Tracks that others use for the names or pictures of chapters.
  const std::vector<std::uint32_t>& chapterTracks() const { return chapterTracks_; }
  /// Where the names of boxes begin that the demuxer must not see.
  const std::vector<std::uint64_t>& hiddenTypes() const { return hidden_; }
  std::uint64_t mostSamples() const {
    return std::min(Mp4Outline::kMostSamples, bytes_.fileSize());
  }

 private:
  using Enter = bool (Mp4Walk::*)(const Mp4Box&);
  struct Rule {
    std::uint32_t parent;
    std::uint32_t type;
    /// Nothing: the box is left to the demuxer as it is.
    Enter enter;
  };
  static const Rule kRules[];

  bool fail(const char* fault) {
    fault_ = fault;
    return false;
  }
  void hide(const Mp4Box& box) { hidden_.push_back(box.begin + 4); }
  bool hasBody(const Mp4Box& box, std::uint64_t size) {
    return box.bodySize() >= size || fail(kNonsense);
  }
  TrackClaims& track() { return tracks_.back(); }
  TrackClaims* trackOf(std::uint32_t id);

  bool walkInside(std::uint32_t parent, std::uint64_t at, std::uint64_t end);
  bool visit(std::uint32_t parent, const Mp4Box& box);

  bool lengthOf(const Mp4Box& box, std::uint32_t& timescale, std::uint64_t& duration);
  bool inside(const Mp4Box& box) { return walkInside(box.type, box.body, box.end); }
  bool movieBox(const Mp4Box& box);
  bool movieHeader(const Mp4Box& box) { return lengthOf(box, movie_.timescale, movie_.duration); }
  bool compressedHeader(const Mp4Box&) { return fail("its header is compressed"); }
  bool fragmentedDuration(const Mp4Box& box);
  bool trackDefaults(const Mp4Box& box);
  bool newTrack(const Mp4Box& box);
  bool trackHeader(const Mp4Box& box);
  bool trackUses(const Mp4Box& box);
  bool chapters(const Mp4Box& box);
  bool mediaHeader(const Mp4Box& box) { return lengthOf(box, track().timescale, track().end); }
  bool handler(const Mp4Box& box);
  bool editList(const Mp4Box& box);
  bool dataInformation(const Mp4Box& box);
  bool dataReferences(const Mp4Box& box);
  bool descriptions(const Mp4Box& box);
  template <std::uint64_t kEntrySize>
  bool table(const Mp4Box& box);
  template <std::uint64_t kEntrySize>
  bool chunkTable(const Mp4Box& box);
  bool timeTable(const Mp4Box& box);
  bool sizeTable(const Mp4Box& box);
  bool trackFragment(const Mp4Box& box);
  bool fragmentHeader(const Mp4Box& box);
  bool fragmentTime(const Mp4Box& box);
  bool fragmentRun(const Mp4Box& box);

  Mp4Bytes bytes_;
  const char* fault_ = kNonsense;
  int boxes_ = 0;
  MovieClaims movie_;
  std::vector<TrackClaims> tracks_;
  std::vector<std::uint32_t> chapterTracks_;
  // The track of the fragment that is being walked, and the duration of its samples.
  TrackClaims* fragmentTrack_ = nullptr;
  std::uint32_t fragmentDuration_ = 0;
  std::vector<std::uint64_t> hidden_;
};

}  // namespace halvora
