// SPDX-License-Identifier: Apache-2.0
#include "platform/ffmpeg/mp4_outline.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "platform/ffmpeg/mp4_bytes.h"

namespace halvora {
namespace {

constexpr const char* kUnreadable = "cannot be read";
constexpr const char* kNonsense = "its header makes no sense";
constexpr const char* kTooMany = "its tables claim more samples than it can hold";

// What a track's boxes say, and those of its fragments.
struct TrackClaims {
  std::uint64_t typeAt = 0;
  std::uint32_t id = 0;
  bool isVideo = false;
  bool isOther = false;
  bool isElsewhere = false;
  std::uint32_t timescale = 0;
  // In units of the timescale.
  std::uint64_t end = 0;
  std::uint32_t lastSampleDuration = 0;
  std::uint32_t defaultDuration = 0;
  std::uint64_t samples = 0;
  std::uint64_t chunks = 0;
  std::uint64_t editEntries = 0;
  std::uint64_t edits = 0;
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

class OutlineWalk {
 public:
  explicit OutlineWalk(const ByteSource& source) : bytes_(source) {}

  std::optional<Mp4Outline> outline();
  const char* fault() const { return bytes_.isCut() ? kUnreadable : fault_; }

 private:
  using Enter = bool (OutlineWalk::*)(const Mp4Box&);
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

  bool walkFile();
  bool walkInside(std::uint32_t parent, std::uint64_t at, std::uint64_t end);
  bool visit(std::uint32_t parent, const Mp4Box& box);

  bool lengthOf(const Mp4Box& box, std::uint32_t& timescale, std::uint64_t& duration);
  bool inside(const Mp4Box& box) { return walkInside(box.type, box.body, box.end); }
  bool movie(const Mp4Box& box);
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

  const TrackClaims* chosenTrack();
  bool isWithinLimits(const TrackClaims& track);
  bool descriptionsOf(const TrackClaims& track);
  double durationSeconds() const;
  std::uint64_t mostSamples() const {
    return std::min(Mp4Outline::kMostSamples, bytes_.fileSize());
  }

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

constexpr std::uint32_t kFile = 0;
constexpr std::uint32_t kMovie = fourLetters("moov");
constexpr std::uint32_t kTrack = fourLetters("trak");
constexpr std::uint32_t kEdits = fourLetters("edts");
constexpr std::uint32_t kMedia = fourLetters("mdia");
constexpr std::uint32_t kMediaInformation = fourLetters("minf");
constexpr std::uint32_t kSampleTable = fourLetters("stbl");
constexpr std::uint32_t kDescriptions = fourLetters("stsd");
constexpr std::uint32_t kExtension = fourLetters("mvex");
constexpr std::uint32_t kFragment = fourLetters("moof");
constexpr std::uint32_t kTrackFragment = fourLetters("traf");
constexpr std::uint32_t kMediaData = fourLetters("mdat");

// What the demuxer sees. The set is closed: it looks for tables in places where none belongs, and
// skips what it is not shown.
const OutlineWalk::Rule OutlineWalk::kRules[] = {
    {kFile, fourLetters("ftyp"), nullptr},
    {kFile, kMovie, &OutlineWalk::movie},
    {kFile, kFragment, &OutlineWalk::inside},
    {kFile, kMediaData, nullptr},
    {kMovie, fourLetters("mvhd"), &OutlineWalk::movieHeader},
    {kMovie, fourLetters("cmov"), &OutlineWalk::compressedHeader},
    {kMovie, kTrack, &OutlineWalk::newTrack},
    {kMovie, kExtension, &OutlineWalk::inside},
    {kExtension, fourLetters("mehd"), &OutlineWalk::fragmentedDuration},
    {kExtension, fourLetters("trex"), &OutlineWalk::trackDefaults},
    {kTrack, fourLetters("tkhd"), &OutlineWalk::trackHeader},
    {kTrack, fourLetters("tref"), &OutlineWalk::trackUses},
    {fourLetters("tref"), fourLetters("chap"), &OutlineWalk::chapters},
    {kTrack, kEdits, &OutlineWalk::inside},
    {kEdits, fourLetters("elst"), &OutlineWalk::editList},
    {kTrack, kMedia, &OutlineWalk::inside},
    {kMedia, fourLetters("mdhd"), &OutlineWalk::mediaHeader},
    {kMedia, fourLetters("hdlr"), &OutlineWalk::handler},
    {kMedia, kMediaInformation, &OutlineWalk::inside},
    {kMediaInformation, fourLetters("vmhd"), nullptr},
    {kMediaInformation, fourLetters("dinf"), &OutlineWalk::dataInformation},
    {fourLetters("dinf"), fourLetters("dref"), &OutlineWalk::dataReferences},
    {kMediaInformation, kSampleTable, &OutlineWalk::inside},
    {kSampleTable, kDescriptions, &OutlineWalk::descriptions},
    {kSampleTable, fourLetters("stts"), &OutlineWalk::timeTable},
    {kSampleTable, fourLetters("ctts"), &OutlineWalk::table<8>},
    {kSampleTable, fourLetters("stsc"), &OutlineWalk::table<12>},
    {kSampleTable, fourLetters("stss"), &OutlineWalk::table<4>},
    {kSampleTable, fourLetters("stps"), &OutlineWalk::table<4>},
    {kSampleTable, fourLetters("stsz"), &OutlineWalk::sizeTable},
    {kSampleTable, fourLetters("stz2"), &OutlineWalk::sizeTable},
    {kSampleTable, fourLetters("stco"), &OutlineWalk::chunkTable<4>},
    {kSampleTable, fourLetters("co64"), &OutlineWalk::chunkTable<8>},
    {kDescriptions, fourLetters("avcC"), nullptr},
    {kDescriptions, fourLetters("hvcC"), nullptr},
    {kDescriptions, fourLetters("av1C"), nullptr},
    {kDescriptions, fourLetters("vpcC"), nullptr},
    {kDescriptions, fourLetters("esds"), nullptr},
    {kDescriptions, fourLetters("glbl"), nullptr},
    {kDescriptions, fourLetters("jp2h"), nullptr},
    {kDescriptions, fourLetters("SMI "), nullptr},
    {kDescriptions, fourLetters("ACLR"), nullptr},
    {kDescriptions, fourLetters("ARES"), nullptr},
    {kDescriptions, fourLetters("APRG"), nullptr},
    {kDescriptions, fourLetters("AALP"), nullptr},
    {kDescriptions, fourLetters("colr"), nullptr},
    {kDescriptions, fourLetters("fiel"), nullptr},
    {kFragment, kTrackFragment, &OutlineWalk::trackFragment},
    {kTrackFragment, fourLetters("tfhd"), &OutlineWalk::fragmentHeader},
    {kTrackFragment, fourLetters("tfdt"), &OutlineWalk::fragmentTime},
    {kTrackFragment, fourLetters("trun"), &OutlineWalk::fragmentRun},
};

TrackClaims* OutlineWalk::trackOf(std::uint32_t id) {
  const auto found = std::find_if(tracks_.begin(), tracks_.end(),
                                  [id](const TrackClaims& one) { return one.id == id; });
  return found != tracks_.end() ? &*found : nullptr;
}

// The last box of a file may be cut short, unless it is the header.
bool OutlineWalk::walkFile() {
  const std::uint64_t size = bytes_.fileSize();
  // A tag of this kind in front would shift everything for the demuxer, and for it alone.
  if (size < 8 || bytes_.number(0, 3) == 0x494433) return fail(kUnreadable);
  for (std::uint64_t at = 0; size - at >= 8 && !bytes_.isCut();) {
    const Mp4Box box = bytes_.boxAt(at, size);
    if (box.end == at) return movie_.isSeen || fail(kNonsense);
    if (box.end > size) {
      if (box.type != kMediaData) hide(box);
      return true;
    }
    if (!visit(kFile, box)) return false;
    at = box.end;
  }
  return true;
}

bool OutlineWalk::walkInside(std::uint32_t parent, std::uint64_t at, std::uint64_t end) {
  while (end - at >= 8) {
    const Mp4Box box = bytes_.boxAt(at, end);
    if (box.end == at || box.end > end || bytes_.isCut()) return fail(kNonsense);
    if (!visit(parent, box)) return false;
    at = box.end;
  }
  return true;
}

bool OutlineWalk::visit(std::uint32_t parent, const Mp4Box& box) {
  if (++boxes_ > Mp4Outline::kMostBoxes) return fail(kNonsense);
  const auto* rule = std::find_if(std::begin(kRules), std::end(kRules), [&](const Rule& one) {
    return one.parent == parent && one.type == box.type;
  });
  if (rule == std::end(kRules)) {
    hide(box);
    return true;
  }
  return rule->enter == nullptr || (this->*rule->enter)(box);
}

bool OutlineWalk::movie(const Mp4Box& box) {
  if (movie_.isSeen) {
    hide(box);
    return true;
  }
  movie_.isSeen = true;
  return inside(box);
}

// A movie's header and a track's media header begin alike; version 1 has wider times.
bool OutlineWalk::lengthOf(const Mp4Box& box, std::uint32_t& timescale, std::uint64_t& duration) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 32 : 20)) return false;
  timescale = bytes_.number32(box.body + (isWide ? 20 : 12));
  duration = isWide ? bytes_.number(box.body + 24, 8) : bytes_.number(box.body + 16, 4);
  // All bits set: unknown.
  if (duration == (isWide ? UINT64_MAX : UINT32_MAX)) duration = 0;
  return true;
}

bool OutlineWalk::fragmentedDuration(const Mp4Box& box) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 12 : 8)) return false;
  movie_.durationWithFragments = bytes_.number(box.body + 4, isWide ? 8 : 4);
  return true;
}

bool OutlineWalk::trackDefaults(const Mp4Box& box) {
  if (!hasBody(box, 24)) return false;
  TrackClaims* track = trackOf(bytes_.number32(box.body + 4));
  if (track != nullptr) track->defaultDuration = bytes_.number32(box.body + 12);
  return true;
}

bool OutlineWalk::newTrack(const Mp4Box& box) {
  if (tracks_.size() >= Mp4Outline::kMostTracks) return fail(kNonsense);
  tracks_.emplace_back().typeAt = box.begin + 4;
  return inside(box);
}

bool OutlineWalk::trackHeader(const Mp4Box& box) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 24 : 16)) return false;
  const std::uint32_t id = bytes_.number32(box.body + (isWide ? 20 : 12));
  if (id == 0 || id > INT32_MAX || trackOf(id) != nullptr) return fail(kNonsense);
  track().id = id;
  return true;
}

bool OutlineWalk::trackUses(const Mp4Box& box) {
  hide(box);
  return inside(box);
}

bool OutlineWalk::chapters(const Mp4Box& box) {
  const std::uint64_t count = box.bodySize() / 4;
  if (count > Mp4Outline::kMostTracks) return fail(kNonsense);
  for (std::uint64_t index = 0; index < count; ++index) {
    chapterTracks_.push_back(bytes_.number32(box.body + index * 4));
  }
  return true;
}

bool OutlineWalk::handler(const Mp4Box& box) {
  if (!hasBody(box, 12)) return false;
  const std::uint32_t type = bytes_.number32(box.body + 8);
  (type == fourLetters("vide") ? track().isVideo : track().isOther) = true;
  return true;
}

bool OutlineWalk::editList(const Mp4Box& box) {
  if (!hasBody(box, 8)) return false;
  const std::uint64_t entrySize = bytes_.number(box.body, 1) == 1 ? 20 : 12;
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  track().editEntries += count;
  if (track().editEntries > Mp4Outline::kMostEdits) return fail("its edit list is too long");
  if (!hasBody(box, 8 + count * entrySize)) return false;
  for (std::uint64_t index = 0; index < count; ++index) {
    const std::uint64_t at = box.body + 8 + index * entrySize;
    // All bits set: nothing is shown for a while.
    const bool isEmpty = entrySize == 20 ? bytes_.number(at + 8, 8) == UINT64_MAX
                                         : bytes_.number(at + 4, 4) == UINT32_MAX;
    if (!isEmpty) ++track().edits;
  }
  return true;
}

bool OutlineWalk::dataInformation(const Mp4Box& box) {
  hide(box);
  return inside(box);
}

bool OutlineWalk::dataReferences(const Mp4Box& box) {
  if (!hasBody(box, 8)) return false;
  for (std::uint64_t at = box.body + 8; box.end - at >= 12;) {
    const Mp4Box entry = bytes_.boxAt(at, box.end);
    if (entry.end == at || entry.end > box.end || bytes_.isCut()) return fail(kNonsense);
    if (++boxes_ > Mp4Outline::kMostBoxes) return fail(kNonsense);
    const bool isHere = (bytes_.number(entry.body + 3, 1) & 1) != 0;
    if (!isHere && entry.bodySize() > 4) track().isElsewhere = true;
    at = entry.end;
  }
  return true;
}

// Looked into once it is clear which track they belong to, as the handler may come later.
bool OutlineWalk::descriptions(const Mp4Box& box) {
  track().descriptions.push_back(box);
  return hasBody(box, 8);
}

template <std::uint64_t kEntrySize>
bool OutlineWalk::table(const Mp4Box& box) {
  return hasBody(box, 8) && hasBody(box, 8 + bytes_.number(box.body + 4, 4) * kEntrySize);
}

template <std::uint64_t kEntrySize>
bool OutlineWalk::chunkTable(const Mp4Box& box) {
  if (!table<kEntrySize>(box)) return false;
  track().chunks += bytes_.number(box.body + 4, 4);
  return true;
}

bool OutlineWalk::timeTable(const Mp4Box& box) {
  if (!table<8>(box)) return false;
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  if (count > 0) track().lastSampleDuration = bytes_.number32(box.body + 8 + (count - 1) * 8 + 4);
  return true;
}

bool OutlineWalk::sizeTable(const Mp4Box& box) {
  if (!hasBody(box, 12)) return false;
  const std::uint64_t count = bytes_.number(box.body + 8, 4);
  track().samples += count;
  const bool isCompact = box.type == fourLetters("stz2");
  const std::uint64_t bits = isCompact                             ? bytes_.number(box.body + 7, 1)
                             : bytes_.number(box.body + 4, 4) == 0 ? 32
                                                                   : 0;
  if (isCompact && bits != 4 && bits != 8 && bits != 16) return fail(kNonsense);
  return box.bodySize() - 12 >= (count * bits + 7) / 8 || fail(kTooMany);
}

bool OutlineWalk::trackFragment(const Mp4Box& box) {
  fragmentTrack_ = nullptr;
  return inside(box);
}

bool OutlineWalk::fragmentHeader(const Mp4Box& box) {
  if (!hasBody(box, 8)) return false;
  const std::uint64_t flags = bytes_.number(box.body + 1, 3);
  fragmentTrack_ = trackOf(bytes_.number32(box.body + 4));
  if (fragmentTrack_ == nullptr) return true;
  // Before the duration may come where the data is, and which kind of sample.
  const std::uint64_t before = ((flags & 1) != 0 ? 8 : 0) + ((flags & 2) != 0 ? 4 : 0);
  fragmentDuration_ = fragmentTrack_->defaultDuration;
  if ((flags & 8) == 0) return true;
  fragmentDuration_ = bytes_.number32(box.body + 8 + before);
  return hasBody(box, 12 + before);
}

bool OutlineWalk::fragmentTime(const Mp4Box& box) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 12 : 8)) return false;
  if (fragmentTrack_ != nullptr) {
    fragmentTrack_->end = bytes_.number(box.body + 4, isWide ? 8 : 4);
  }
  return true;
}

bool OutlineWalk::fragmentRun(const Mp4Box& box) {
  if (!hasBody(box, 8)) return false;
  if (fragmentTrack_ == nullptr) return true;
  const std::uint64_t flags = bytes_.number(box.body + 1, 3);
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  TrackClaims& track = *fragmentTrack_;
  track.samples += count;
  if (track.samples > mostSamples()) return fail(kTooMany);
  const std::uint64_t entries =
      box.body + 8 + ((flags & 1) != 0 ? 4 : 0) + ((flags & 4) != 0 ? 4 : 0);
  const auto entrySize = static_cast<std::uint64_t>(std::popcount(flags & 0xF00)) * 4;
  if (!hasBody(box, entries - box.body + count * entrySize)) return false;
  movie_.hasFragments = true;
  const bool areListed = (flags & 0x100) != 0;
  for (std::uint64_t index = 0; index < count; ++index) {
    track.lastSampleDuration =
        areListed ? bytes_.number32(entries + index * entrySize) : fragmentDuration_;
    track.end += track.lastSampleDuration;
  }
  return true;
}

// Pictures for chapters are a track as well, but not of the video.
const TrackClaims* OutlineWalk::chosenTrack() {
  for (const TrackClaims& track : tracks_) {
    const bool isForChapters =
        std::find(chapterTracks_.begin(), chapterTracks_.end(), track.id) != chapterTracks_.end();
    const bool isWhole = track.id != 0 && track.descriptions.size() == 1;
    if (track.isVideo && !track.isOther && !isForChapters && isWhole) {
      return &track;
    }
  }
  fail("no video track in it");
  return nullptr;
}

bool OutlineWalk::isWithinLimits(const TrackClaims& track) {
  if (track.isElsewhere) return fail("its samples are in another file");
  if (track.samples > mostSamples()) return fail(kTooMany);
  if (track.editEntries * track.samples > Mp4Outline::kMostEditedSamples) {
    return fail("its edit list is too long");
  }
  return true;
}

bool OutlineWalk::descriptionsOf(const TrackClaims& track) {
  constexpr std::uint64_t kEntryHeader = 78;
  constexpr std::uint64_t kMostDescriptions = 100;
  const Mp4Box& box = track.descriptions.front();
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  if (count == 0 || count > kMostDescriptions) return fail(kNonsense);
  std::uint64_t at = box.body + 8;
  for (std::uint64_t index = 0; index < count; ++index) {
    if (box.end - at < 8 + kEntryHeader) return fail(kNonsense);
    const Mp4Box entry = bytes_.boxAt(at, box.end);
    if (entry.end > box.end || entry.body != at + 8) return fail(kNonsense);
    if (!hasBody(entry, kEntryHeader)) return false;
    // A palette would lie between the header and the boxes.
    const std::uint64_t depth = bytes_.number(entry.body + 74, 2);
    const bool isPaletted = (depth & 0x1F) <= 8 && bytes_.number(entry.body + 76, 2) == 0;
    if (isPaletted && (depth & 0x1F) != 0) return fail("its colours are a palette");
    if (!walkInside(kDescriptions, entry.body + kEntryHeader, entry.end)) return false;
    at = entry.end;
  }
  return true;
}

double OutlineWalk::durationSeconds() const {
  double longest = 0;
  for (const TrackClaims& track : tracks_) longest = std::max(longest, track.endSeconds());
  if (movie_.timescale == 0) return longest;
  const double said = static_cast<double>(movie_.duration) / movie_.timescale;
  if (!movie_.hasFragments) return said > 0 ? said : longest;
  if (movie_.durationWithFragments == 0) return std::max(said, longest);
  return static_cast<double>(movie_.durationWithFragments) / movie_.timescale;
}

std::optional<Mp4Outline> OutlineWalk::outline() {
  if (!walkFile()) return std::nullopt;
  if (!movie_.isSeen) {
    fail(kUnreadable);
    return std::nullopt;
  }
  const TrackClaims* chosen = chosenTrack();
  if (chosen == nullptr || !isWithinLimits(*chosen) || !descriptionsOf(*chosen) || bytes_.isCut()) {
    return std::nullopt;
  }
  for (const TrackClaims& track : tracks_) {
    if (&track == chosen) continue;
    // In a fragment the place of one track's samples may follow from another's.
    if (track.chunks > 0 || track.id == 0) hidden_.push_back(track.typeAt);
    for (const Mp4Box& box : track.descriptions) hide(box);
  }
  std::sort(hidden_.begin(), hidden_.end());
  Mp4Outline outline;
  outline.trackId = chosen->id;
  outline.durationSeconds = durationSeconds();
  outline.edits = chosen->edits;
  outline.sampleDescriptions =
      static_cast<std::uint32_t>(bytes_.number(chosen->descriptions.front().body + 4, 4));
  outline.lastSampleDuration = chosen->lastSampleDuration;
  outline.hiddenTypes = std::move(hidden_);
  return outline;
}

}  // namespace

std::optional<Mp4Outline> readMp4Outline(const ByteSource& source, std::string* reason) {
  OutlineWalk walk(source);
  std::optional<Mp4Outline> outline = walk.outline();
  if (!outline && reason != nullptr) *reason = walk.fault();
  return outline;
}

}  // namespace halvora
