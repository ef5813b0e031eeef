// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/mp4_walk.h"

#include <bit>
#include <iterator>

namespace halvora {
namespace {

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

}  // namespace

// What the demuxer sees. The set is closed: it looks for tables in places where none belongs, and
// skips what it is not shown.
const Mp4Walk::Rule Mp4Walk::kRules[] = {
    {kFile, fourLetters("ftyp"), nullptr},
    {kFile, kMovie, &Mp4Walk::movieBox},
    {kFile, kFragment, &Mp4Walk::inside},
    {kFile, kMediaData, nullptr},
    {kMovie, fourLetters("mvhd"), &Mp4Walk::movieHeader},
    {kMovie, fourLetters("cmov"), &Mp4Walk::compressedHeader},
    {kMovie, kTrack, &Mp4Walk::newTrack},
    {kMovie, kExtension, &Mp4Walk::inside},
    {kExtension, fourLetters("mehd"), &Mp4Walk::fragmentedDuration},
    {kExtension, fourLetters("trex"), &Mp4Walk::trackDefaults},
    {kTrack, fourLetters("tkhd"), &Mp4Walk::trackHeader},
    {kTrack, fourLetters("tref"), &Mp4Walk::trackUses},
    {fourLetters("tref"), fourLetters("chap"), &Mp4Walk::chapters},
    {kTrack, kEdits, &Mp4Walk::inside},
    {kEdits, fourLetters("elst"), &Mp4Walk::editList},
    {kTrack, kMedia, &Mp4Walk::inside},
    {kMedia, fourLetters("mdhd"), &Mp4Walk::mediaHeader},
    {kMedia, fourLetters("hdlr"), &Mp4Walk::handler},
    {kMedia, kMediaInformation, &Mp4Walk::inside},
    {kMediaInformation, fourLetters("vmhd"), nullptr},
    {kMediaInformation, fourLetters("dinf"), &Mp4Walk::dataInformation},
    {fourLetters("dinf"), fourLetters("dref"), &Mp4Walk::dataReferences},
    {kMediaInformation, kSampleTable, &Mp4Walk::inside},
    {kSampleTable, kDescriptions, &Mp4Walk::descriptions},
    {kSampleTable, fourLetters("stts"), &Mp4Walk::timeTable},
    {kSampleTable, fourLetters("ctts"), &Mp4Walk::table<8>},
    {kSampleTable, fourLetters("stsc"), &Mp4Walk::table<12>},
    {kSampleTable, fourLetters("stss"), &Mp4Walk::table<4>},
    {kSampleTable, fourLetters("stps"), &Mp4Walk::table<4>},
    {kSampleTable, fourLetters("stsz"), &Mp4Walk::sizeTable},
    {kSampleTable, fourLetters("stz2"), &Mp4Walk::sizeTable},
    {kSampleTable, fourLetters("stco"), &Mp4Walk::chunkTable<4>},
    {kSampleTable, fourLetters("co64"), &Mp4Walk::chunkTable<8>},
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
    {kFragment, kTrackFragment, &Mp4Walk::trackFragment},
    {kTrackFragment, fourLetters("tfhd"), &Mp4Walk::fragmentHeader},
    {kTrackFragment, fourLetters("tfdt"), &Mp4Walk::fragmentTime},
    {kTrackFragment, fourLetters("trun"), &Mp4Walk::fragmentRun},
};

TrackClaims* Mp4Walk::trackOf(std::uint32_t id) {
  const auto found = std::find_if(tracks_.begin(), tracks_.end(),
                                  [id](const TrackClaims& one) { return one.id == id; });
  return found != tracks_.end() ? &*found : nullptr;
}

// The last box of a file may be cut short, unless it is the header.
bool Mp4Walk::walkFile() {
  const std::uint64_t size = bytes_.fileSize();
  // A tag of this kind in front would shift everything for the demuxer, and for it alone.
  if (size < 8 || bytes_.number(0, 3) == 0x494433) return fail(kUnreadable);
  for (std::uint64_t at = 0; size - at >= 8 && !bytes_.isCut();) {
    const Mp4Box box = bytes_.boxAt(at, size);
    if (box.end == at) return movie_.isSeen || fail(kNonsense);
    if (box.end > size) {
      if (box.type != kMediaData) hide(box);
      break;
    }
    if (!visit(kFile, box)) return false;
    at = box.end;
  }
  return movie_.isSeen || fail(kUnreadable);
}

bool Mp4Walk::walkInside(std::uint32_t parent, std::uint64_t at, std::uint64_t end) {
  while (end - at >= 8) {
    const Mp4Box box = bytes_.boxAt(at, end);
    if (box.end == at || box.end > end || bytes_.isCut()) return fail(kNonsense);
    if (!visit(parent, box)) return false;
    at = box.end;
  }
  return true;
}

bool Mp4Walk::visit(std::uint32_t parent, const Mp4Box& box) {
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

bool Mp4Walk::movieBox(const Mp4Box& box) {
  if (movie_.isSeen) {
    hide(box);
    return true;
  }
  movie_.isSeen = true;
  return inside(box);
}

// A movie's header and a track's media header begin alike; version 1 has wider times.
bool Mp4Walk::lengthOf(const Mp4Box& box, std::uint32_t& timescale, std::uint64_t& duration) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 32 : 20)) return false;
  timescale = bytes_.number32(box.body + (isWide ? 20 : 12));
  duration = isWide ? bytes_.number(box.body + 24, 8) : bytes_.number(box.body + 16, 4);
  // All bits set: unknown.
  if (duration == (isWide ? UINT64_MAX : UINT32_MAX)) duration = 0;
  return true;
}

bool Mp4Walk::fragmentedDuration(const Mp4Box& box) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 12 : 8)) return false;
  movie_.durationWithFragments = bytes_.number(box.body + 4, isWide ? 8 : 4);
  return true;
}

bool Mp4Walk::trackDefaults(const Mp4Box& box) {
  if (!hasBody(box, 24)) return false;
  TrackClaims* track = trackOf(bytes_.number32(box.body + 4));
  if (track != nullptr) track->defaultDuration = bytes_.number32(box.body + 12);
  return true;
}

bool Mp4Walk::newTrack(const Mp4Box& box) {
  if (tracks_.size() >= Mp4Outline::kMostTracks) return fail(kNonsense);
  tracks_.emplace_back().typeAt = box.begin + 4;
  return inside(box);
}

bool Mp4Walk::trackHeader(const Mp4Box& box) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 24 : 16)) return false;
  const std::uint32_t id = bytes_.number32(box.body + (isWide ? 20 : 12));
  if (id == 0 || id > INT32_MAX || trackOf(id) != nullptr) return fail(kNonsense);
  track().id = id;
  return true;
}

bool Mp4Walk::trackUses(const Mp4Box& box) {
  hide(box);
  return inside(box);
}

bool Mp4Walk::chapters(const Mp4Box& box) {
  const std::uint64_t count = box.bodySize() / 4;
  if (count > Mp4Outline::kMostTracks) return fail(kNonsense);
  for (std::uint64_t index = 0; index < count; ++index) {
    chapterTracks_.push_back(bytes_.number32(box.body + index * 4));
  }
  return true;
}

bool Mp4Walk::handler(const Mp4Box& box) {
  if (!hasBody(box, 12)) return false;
  const std::uint32_t type = bytes_.number32(box.body + 8);
  (type == fourLetters("vide") ? track().isVideo : track().isOther) = true;
  return true;
}

bool Mp4Walk::editList(const Mp4Box& box) {
  if (!hasBody(box, 8)) return false;
  const std::uint64_t entrySize = bytes_.number(box.body, 1) == 1 ? 20 : 12;
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  track().editEntries += count;
  if (track().editEntries > Mp4Outline::kMostEdits) return fail(kTooManyEdits);
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

bool Mp4Walk::dataInformation(const Mp4Box& box) {
  hide(box);
  return inside(box);
}

bool Mp4Walk::dataReferences(const Mp4Box& box) {
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

bool Mp4Walk::descriptions(const Mp4Box& box) {
  track().descriptions.push_back(box);
  track().sampleDescriptions = bytes_.number32(box.body + 4);
  return hasBody(box, 8);
}

template <std::uint64_t kEntrySize>
bool Mp4Walk::table(const Mp4Box& box) {
  return hasBody(box, 8) && hasBody(box, 8 + bytes_.number(box.body + 4, 4) * kEntrySize);
}

template <std::uint64_t kEntrySize>
bool Mp4Walk::chunkTable(const Mp4Box& box) {
  if (!table<kEntrySize>(box)) return false;
  track().chunks += bytes_.number(box.body + 4, 4);
  return true;
}

bool Mp4Walk::timeTable(const Mp4Box& box) {
  if (!table<8>(box)) return false;
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  if (count > 0) track().lastSampleDuration = bytes_.number32(box.body + 8 + (count - 1) * 8 + 4);
  return true;
}

bool Mp4Walk::sizeTable(const Mp4Box& box) {
  if (!hasBody(box, 12)) return false;
  const std::uint64_t count = bytes_.number(box.body + 8, 4);
  track().samples += count;
  const bool isCompact = box.type == fourLetters("stz2");
  const std::uint64_t bits = isCompact                             ? bytes_.number(box.body + 7, 1)
                             : bytes_.number(box.body + 4, 4) == 0 ? 32
                                                                   : 0;
  if (isCompact && bits != 4 && bits != 8 && bits != 16) return fail(kNonsense);
  return box.bodySize() - 12 >= (count * bits + 7) / 8 || fail(kTooManySamples);
}

bool Mp4Walk::trackFragment(const Mp4Box& box) {
  fragmentTrack_ = nullptr;
  return inside(box);
}

bool Mp4Walk::fragmentHeader(const Mp4Box& box) {
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

bool Mp4Walk::fragmentTime(const Mp4Box& box) {
  const bool isWide = bytes_.number(box.body, 1) == 1;
  if (!hasBody(box, isWide ? 12 : 8)) return false;
  if (fragmentTrack_ != nullptr) {
    fragmentTrack_->end = bytes_.number(box.body + 4, isWide ? 8 : 4);
  }
  return true;
}

bool Mp4Walk::fragmentRun(const Mp4Box& box) {
  if (!hasBody(box, 8)) return false;
  if (fragmentTrack_ == nullptr) return true;
  const std::uint64_t flags = bytes_.number(box.body + 1, 3);
  const std::uint64_t count = bytes_.number(box.body + 4, 4);
  TrackClaims& track = *fragmentTrack_;
  track.samples += count;
  if (track.samples > mostSamples()) return fail(kTooManySamples);
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

bool Mp4Walk::walkDescriptions(const TrackClaims& track) {
  constexpr std::uint64_t kEntryHeader = 78;
  constexpr std::uint64_t kMostDescriptions = 100;
  const Mp4Box& box = track.descriptions.front();
  const std::uint64_t count = track.sampleDescriptions;
  if (count == 0 || count > kMostDescriptions) return fail(kNonsense);
  std::uint64_t at = box.body + 8;
  for (std::uint64_t index = 0; index < count; ++index) {
    if (box.end - at < 8 + kEntryHeader) return fail(kNonsense);
    const Mp4Box entry = bytes_.boxAt(at, box.end);
    if (entry.end == at || entry.end > box.end || entry.body != at + 8) return fail(kNonsense);
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

}  // namespace halvora
