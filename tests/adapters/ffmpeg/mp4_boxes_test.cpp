// SPDX-License-Identifier: Apache-2.0
// Boxes of a header at the edge of what they may be: a byte too short, one too many, the last
// number that is allowed.
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/adapters/ffmpeg/mp4_maker.h"

namespace halvora {
namespace {

using namespace mp4_maker;

constexpr std::uint32_t kWide = 1U << 24;

// A box in the innermost of those around it.
std::string within(const std::vector<std::string>& around, std::string inner) {
  for (auto name = around.rbegin(); name != around.rend(); ++name) inner = box(*name, inner);
  return inner;
}

std::string inTrack(const std::vector<std::string>& around, const std::string& inner) {
  return file(header(track({.more = within(around, inner)})));
}

std::string inTable(const std::string& inner) { return inTrack({"mdia", "minf", "stbl"}, inner); }

struct Shortest {
  const char* type;
  /// Of exactly the length that is needed.
  std::string body;
  /// Of the boxes around it.
  std::vector<std::string> around;
};

const std::vector<std::string> kMediaBox = {"mdia"};
const std::vector<std::string> kTable = {"mdia", "minf", "stbl"};

TEST(FfmpegBoxes, OfATrackAreReadAtTheirShortestAndNotBelow) {
  const std::string edit = u32s({0, 1, 10, 0});
  const std::vector<Shortest> cases = {
      {"tkhd", u32s({0, 0, 0, 5}), {}},
      {"tkhd", u32s({kWide, 0, 0, 0, 0, 5}), {}},
      {"mdhd", u32s({0, 0, 0, 600, 600}), kMediaBox},
      {"mdhd", u32s({kWide, 0, 0, 0, 0, 600, 0, 600}), kMediaBox},
      {"hdlr", u32s({0, 0}) + "vide", kMediaBox},
      {"elst", u32s({0, 0}), {"edts"}},
      {"elst", u32s({0, 1, 10, 0, 1 << 16}), {"edts"}},
      {"elst", u32s({kWide, 1, 0, 10, 0, 0, 1 << 16}), {"edts"}},
      {"dref", u32s({0, 0}), {"mdia", "minf", "dinf"}},
      {"stts", u32s({0, 0}), kTable},
      {"stts", u32s({0, 1, 30, 512}), kTable},
      {"ctts", u32s({0, 1, 30, 512}), kTable},
      {"stsc", u32s({0, 1, 1, 30, 1}), kTable},
      {"stss", u32s({0, 1, 1}), kTable},
      {"stps", u32s({0, 1, 1}), kTable},
      {"stsz", u32s({0, 1, 0}), kTable},
      {"stz2", u32s({0, 4, 0}), kTable},
      {"stco", u32s({0, 1, 48}), kTable},
      {"co64", u32s({0, 1, 0, 48}), kTable},
  };
  for (const Shortest& one : cases) {
    SCOPED_TRACE(one.type + std::string(" of ") + std::to_string(one.body.size()));
    EXPECT_EQ(reasonAgainst(inTrack(one.around, box(one.type, one.body))), "none");
    const std::string shorter = one.body.substr(0, one.body.size() - 1);
    EXPECT_EQ(reasonAgainst(inTrack(one.around, box(one.type, shorter))), kNonsense);
  }
}

TEST(FfmpegBoxes, OfTheMovieAreReadAtTheirShortestAndNotBelow) {
  const std::vector<Shortest> cases = {
      {"mvhd", u32s({0, 0, 0, 600, 600}), {}},
      {"mvhd", u32s({kWide, 0, 0, 0, 0, 600, 0, 600}), {}},
      {"mehd", u32s({0, 600}), {"mvex"}},
      {"mehd", u32s({kWide, 0, 600}), {"mvex"}},
      {"trex", u32s({0, 1, 1, 512, 0, 0}), {"mvex"}},
  };
  for (const Shortest& one : cases) {
    SCOPED_TRACE(one.type + std::string(" of ") + std::to_string(one.body.size()));
    const auto with = [&](const std::string& body) {
      return reasonAgainst(file(box("moov", track() + within(one.around, box(one.type, body)))));
    };
    EXPECT_EQ(with(one.body), "none");
    EXPECT_EQ(with(one.body.substr(0, one.body.size() - 1)), kNonsense);
  }
}

TEST(FfmpegBoxes, WideAndNarrowOnesSayTheSame) {
  const auto idBy = [](const std::string& head) {
    const auto outline = outlineOf(inTrack({}, box("tkhd", head)));
    return outline ? outline->trackId : 0;
  };
  EXPECT_EQ(idBy(u32s({0, 11, 12, 5, 13, 14})), 5U);
  EXPECT_EQ(idBy(u32s({kWide, 11, 12, 13, 14, 5, 15})), 5U);
  EXPECT_EQ(idBy(u32s({0, 0, 0, 0x7FFFFFFF})), 0x7FFFFFFFU) << "the largest there is";

  const auto secondsBy = [](const std::string& head) {
    return outlineOf(file(box("moov", box("mvhd", head) + track())))->durationSeconds;
  };
  EXPECT_EQ(secondsBy(u32s({0, 11, 12, 1000, 5000, 13})), 5);
  EXPECT_EQ(secondsBy(u32s({kWide, 11, 12, 13, 14, 1000, 0, 5000, 15})), 5);
  EXPECT_EQ(secondsBy(u32s({kWide, 11, 12, 13, 14, 1000, 0, UINT32_MAX})), 4294967.295)
      << "unknown is what has all of its own bits set";
  EXPECT_EQ(secondsBy(u32s({0, 0, 0, 1000, UINT32_MAX - 1})), 4294967.294);
}

TEST(FfmpegBoxes, ANameThatIsTakenIsNoNumberOfAnotherTrack) {
  EXPECT_EQ(reasonAgainst(file(header(track() + track({.id = 2})))), "none");
  EXPECT_EQ(reasonAgainst(inTrack({}, box("tkhd", u32s({0, 0, 0, 1})))), kNonsense);
}

TEST(FfmpegBoxes, TwoHundredTracksAreEnough) {
  std::string tracks;
  for (std::uint32_t id = 1; id <= 200; ++id) tracks += track({.id = id});
  EXPECT_EQ(reasonAgainst(file(header(tracks))), "none");
  EXPECT_EQ(reasonAgainst(file(header(tracks + track({.id = 201})))), kNonsense);
}

TEST(FfmpegBoxes, TwoHundredTracksOfChaptersAreEnough) {
  const auto with = [](std::size_t count) {
    std::string list;
    for (std::size_t entry = 0; entry < count; ++entry) list += u32s({7});
    return reasonAgainst(inTrack({"tref"}, box("chap", list)));
  };
  EXPECT_EQ(with(200), "none");
  EXPECT_EQ(with(201), kNonsense);
}

TEST(FfmpegBoxes, EveryTrackOfChaptersIsOne) {
  const std::string chapters = box("tref", box("chap", u32s({1, 2, 4}) + "abc"));
  const std::string tracks = track({.id = 1}) + track({.id = 2}) +
                             track({.id = 3, .references = chapters}) + track({.id = 4});
  EXPECT_EQ(outlineOf(file(header(tracks)))->trackId, 3U);
  const std::string bytes = file(header(tracks));
  EXPECT_TRUE(isHidden(bytes, "tref")) << "the demuxer would look for them";
  EXPECT_FALSE(isHidden(bytes, "chap"));
  // The size of what is behind it is no track.
  const std::string references =
      box("tref", box("chap", u32s({1})) + box("hint", std::string(20 - 8, '\0')));
  const std::string two = track({.id = 1}) + track({.id = 20, .references = references});
  EXPECT_EQ(outlineOf(file(header(two)))->trackId, 20U);
}

TEST(FfmpegBoxes, ATrackOfTwoKindsIsNoVideo) {
  const std::string sound = box("hdlr", u32s({0, 0}) + "soun");
  EXPECT_EQ(reasonAgainst(inTrack({"mdia"}, sound)), kNoTrack);
  const std::string video = box("hdlr", u32s({0, 0}) + "vide");
  EXPECT_EQ(reasonAgainst(inTrack({"mdia"}, video)), "none");
}

TEST(FfmpegBoxes, AMovieMayBeShorterThanASecond) {
  EXPECT_EQ(outlineOf(file(header(track(), 600, 300)))->durationSeconds, 0.5);
}

TEST(FfmpegBoxes, AMillionAreEnough) {
  const auto references = [](int count) {
    const std::string one = box("url ", u32s({1}));
    std::string all;
    for (int entry = 0; entry < count; ++entry) all += one;
    return all;
  };
  const auto first = [&](int count) {
    return reasonAgainst(file(header(track({.dataReference = references(count)}))));
  };
  // Besides the references there are 18 boxes, and mdat is the last one.
  EXPECT_EQ(first(1'000'000 - 18), "none");
  EXPECT_EQ(first(1'000'000 - 17), kNonsense);
  const auto last = [&](int count) {
    const std::string list =
        within({"mdia", "minf", "dinf"}, box("dref", u32s({0, 1}) + references(count)));
    return reasonAgainst(box("mdat", std::string(2000, 'x')) + header(track({.more = list})));
  };
  // 22, and the references are behind all others.
  EXPECT_EQ(last(1'000'000 - 22), "none");
  EXPECT_EQ(last(1'000'000 - 21), kNonsense);
}

TEST(FfmpegBoxes, EachDataReferenceCounts) {
  const auto with = [](const std::string& references) {
    return reasonAgainst(file(header(track({.dataReference = references}))));
  };
  constexpr const char* kElsewhere = "its samples are in another file";
  const std::string here = box("url ", u32s({1}));
  EXPECT_EQ(with(here + box("alis", u32s({0}) + "x")), kElsewhere);
  EXPECT_EQ(with(box("alis", u32s({0xFFFFFFFE}) + "x") + here), kElsewhere);
  EXPECT_EQ(with(here + box("cios", u32s({0}) + "x")), kElsewhere) << "whatever it is called";
  EXPECT_EQ(with(here + box("alis", u32s({0}))), "none");
  EXPECT_EQ(with(here + number(7, 4) + "url " + u32s({1})), kNonsense);
  EXPECT_EQ(with(here + number(13, 4) + "url " + u32s({1})), kNonsense);
  EXPECT_EQ(with(here + number(9, 4) + "url abc"), "none") << "too little for one";
  EXPECT_EQ(with(here + number(9000, 4) + "url abcd"), kNonsense);
}

TEST(FfmpegBoxes, EditsOfAllListsAddUp) {
  const auto list = [](std::uint32_t count, std::uint32_t start) {
    std::string edits = u32s({0, count});
    for (std::uint32_t edit = 0; edit < count; ++edit) edits += u32s({10, start, 1 << 16});
    return box("elst", edits);
  };
  const auto outline = outlineOf(inTrack({"edts"}, list(2, 0) + list(3, 7)));
  ASSERT_TRUE(outline);
  EXPECT_EQ(outline->edits, 5U);
  EXPECT_EQ(reasonAgainst(inTrack({"edts"}, list(400, 0) + list(600, 0))), "none");
  EXPECT_EQ(reasonAgainst(inTrack({"edts"}, list(401, 0) + list(600, 0))), kTooManyEdits);

  const std::string wide =
      box("elst", u32s({kWide, 3}) +                              //
                      u32s({0, UINT32_MAX, 0, UINT32_MAX, 1}) +   // begins late
                      u32s({0, 10, UINT32_MAX, UINT32_MAX, 1}) +  // shows nothing
                      u32s({UINT32_MAX, UINT32_MAX, 0, 0, 1}));
  const auto of = outlineOf(inTrack({"edts"}, wide));
  ASSERT_TRUE(of);
  EXPECT_EQ(of->edits, 2U);
}

TEST(FfmpegBoxes, EditsAndSamplesTogetherAreLimited) {
  std::string list = u32s({0, 1000});
  for (int edit = 0; edit < 1000; ++edit) list += u32s({10, 0, 1 << 16});
  const auto with = [&](std::uint32_t samples) {
    return reasonAgainst(file(header(track(
        {.edits = box("edts", box("elst", list)), .sizes = box("stsz", u32s({0, 1, samples}))}))));
  };
  EXPECT_EQ(with(4000), "none");
  EXPECT_EQ(with(4001), kTooManyEdits);
}

TEST(FfmpegBoxes, SamplesAreAtMostAsManyAsBytesInTheFile) {
  const auto with = [](std::uint32_t samples) {
    return file(header(track({.sizes = box("stsz", u32s({0, 1, samples}))})));
  };
  const auto size = static_cast<std::uint32_t>(with(0).size());
  EXPECT_EQ(reasonAgainst(with(size)), "none");
  EXPECT_EQ(reasonAgainst(with(size + 1)), kTooMany);
  // Thirty are in the first table.
  const auto withTwo = [](std::uint32_t samples) {
    return inTable(box("stsz", u32s({0, 1, samples})));
  };
  const auto both = static_cast<std::uint32_t>(withTwo(0).size());
  EXPECT_EQ(reasonAgainst(withTwo(both - 30)), "none");
  EXPECT_EQ(reasonAgainst(withTwo(both - 29)), kTooMany);
}

TEST(FfmpegBoxes, SizesHaveRoomForEachSample) {
  const auto with = [](const std::string& type, std::uint32_t bits, std::uint32_t samples,
                       std::size_t bytes) {
    return reasonAgainst(
        inTable(box(type, u32s({0xABCDEF, bits, samples}) + std::string(bytes, 'x'))));
  };
  EXPECT_EQ(with("stz2", 0xABCD04, 3, 2), "none") << "only the last byte says how many bits";
  for (const auto& [bits, samples, bytes] : {std::array{4U, 3U, 2U}, std::array{4U, 4U, 2U},
                                             std::array{8U, 5U, 5U}, std::array{16U, 5U, 10U}}) {
    EXPECT_EQ(with("stz2", bits, samples, bytes), "none") << bits;
    EXPECT_EQ(with("stz2", bits, samples, bytes - 1), kTooMany) << bits;
  }
  EXPECT_EQ(with("stz2", 5, 1, 8), kNonsense);
  EXPECT_EQ(with("stsz", 0, 5, 20), "none");
  EXPECT_EQ(with("stsz", 0, 5, 19), kTooMany);
  EXPECT_EQ(with("stsz", 7, 5, 0), "none") << "all of one size";
  EXPECT_EQ(with("stsz", 1U << 24, 5, 0), "none");
  const std::string sound =
      track({.id = 2, .handler = "soun", .sizes = box("stsz", u32s({0, 0, 1U << 24}))});
  EXPECT_EQ(reasonAgainst(file(header(track() + sound))), kTooMany) << "in no track";
}

TEST(FfmpegBoxes, TheLastSampleLastsAsLongAsTheLastEntrySays) {
  const auto lastBy = [](const std::string& times) {
    return outlineOf(file(header(track({.times = box("stts", times)}))))->lastSampleDuration;
  };
  EXPECT_EQ(lastBy(u32s({0, 3, 20, 512, 9, 256, 1, 100, 7, 7})), 100U);
  EXPECT_EQ(lastBy(u32s({0, 0, 20, 512})), 0U);
  const auto outline = outlineOf(inTable(box("stts", u32s({0, 0}))));
  ASSERT_TRUE(outline);
  EXPECT_EQ(outline->lastSampleDuration, 512U) << "an empty list says nothing";
}

TEST(FfmpegBoxes, TracksThatAreNotReadAreHiddenAsFarAsTheyHaveSamples) {
  const std::string none = box("stco", u32s({0, 0}));
  const auto with = [](const std::string& chunks) {
    return file(header(track() + track({.id = 2, .handler = "soun", .chunks = chunks})));
  };
  EXPECT_FALSE(isHidden(with(none), "trak", 2)) << "fragments may refer to it";
  EXPECT_TRUE(isHidden(with(none), "stsd", 2));
  EXPECT_FALSE(isHidden(with(none), "stsd", 1));
  EXPECT_FALSE(isHidden(with(box("stco", u32s({0, 0}) + "x")), "trak", 2));
  EXPECT_TRUE(isHidden(with(box("stco", u32s({0, 2, 48, 96})) + none), "trak", 2));
  EXPECT_TRUE(isHidden(with(none + box("co64", u32s({0, 1, 0, 48}))), "trak", 2));
}

TEST(FfmpegBoxes, AnEndThatIsCutOffIsHiddenUnlessItIsPictures) {
  const std::string whole = file(header(track()));
  EXPECT_TRUE(isHidden(whole + number(100, 4) + "mooffew", "moof"));
  EXPECT_FALSE(isHidden(whole + number(100, 4) + "mdatfew", "mdat", 2));
  EXPECT_EQ(reasonAgainst(whole + number(3, 4) + "abcd"), "none") << "and what is no box ends it";
  EXPECT_EQ(reasonAgainst(number(3, 4) + "abcd" + whole), kNonsense);
  EXPECT_EQ(reasonAgainst(box("moov", "")), kNoTrack) << "eight bytes are a file";
}

// A large file that is empty but for its first box's header and what is behind that box.
class Sparse final : public ByteSource {
 public:
  Sparse(std::uint32_t first, const std::string& rest)
      : first_(first), head_(number(first, 4) + "free"), rest_(rest) {}
  std::uint64_t size() const override { return first_ + rest_.size(); }
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> into) const override {
    for (std::size_t at = 0; at < into.size(); ++at, ++offset) {
      if (offset >= size()) return at;
      const char byte = offset < head_.size() ? head_[offset]
                        : offset < first_     ? '\0'
                                              : rest_[offset - first_];
      into[at] = static_cast<std::uint8_t>(byte);
    }
    return into.size();
  }

 private:
  std::uint32_t first_;
  std::string head_;
  std::string rest_;
};

// A demuxer takes such a box for a tag, and everything for being elsewhere.
TEST(FfmpegBoxes, ASizeThatIsATagIsRefused) {
  const auto with = [](std::uint32_t first) {
    std::string reason;
    return readMp4Outline(Sparse(first, file(header(track()))), &reason) ? "none" : reason;
  };
  EXPECT_EQ(with(0x49443300), kUnreadable);
  EXPECT_EQ(with(0x494433FF), kUnreadable);
  EXPECT_EQ(with(0x494432FF), "none");
  EXPECT_EQ(with(0x49443400), "none");
  EXPECT_EQ(with(0x00494433), "none");
}

// So many entries without boxes in them.
std::string entries(int count, const std::string& type = "avc1") {
  std::string entry(78, '\0');
  entry[75] = 24;
  std::string all;
  for (int at = 0; at < count; ++at) all += box(type, entry);
  return all;
}

TEST(FfmpegBoxes, DescriptionsAreOneToAHundred) {
  const auto with = [](std::uint32_t said, const std::string& list) {
    return reasonAgainst(file(header(track({.description = box("stsd", u32s({0, said}) + list)}))));
  };
  EXPECT_EQ(with(0, entries(1)), kNonsense);
  EXPECT_EQ(with(1, ""), kNonsense);
  EXPECT_EQ(with(100, entries(100)), "none");
  EXPECT_EQ(with(101, entries(101)), kNonsense);
  EXPECT_EQ(with(2, entries(1)), kNonsense) << "the second one is missing";
  EXPECT_EQ(with(2, entries(2)), "none");
  EXPECT_EQ(with(1, entries(2)), "none");
  const std::string cut = entries(2).substr(0, 2 * 86 - 1);
  EXPECT_EQ(with(2, cut), kNonsense);
  EXPECT_EQ(outlineOf(file(header(track({.description = box("stsd", u32s({9, 2}) + entries(2))}))))
                ->sampleDescriptions,
            2U);
}

TEST(FfmpegBoxes, OnlyTheChosenTracksDescriptionsAreLookedInto) {
  const auto with = [](const std::string& body) {
    const std::string sound = track({.id = 2, .handler = "soun", .description = box("stsd", body)});
    return reasonAgainst(file(header(track() + sound)));
  };
  EXPECT_EQ(with(u32s({0, 0})), "none");
  EXPECT_EQ(with(u32s({0, 5}) + "rubbish"), "none");
  EXPECT_EQ(with(u32s({0, 0}).substr(0, 7)), kNonsense) << "but each says how many there are";
}

TEST(FfmpegBoxes, ADescriptionIsOfItsOwnLength) {
  const auto with = [](const std::string& list) {
    return reasonAgainst(file(header(track({.description = box("stsd", u32s({0, 1}) + list)}))));
  };
  const std::string body = entries(1).substr(8);
  const std::string more(20, '\0');
  EXPECT_EQ(with(number(85, 4) + "avc1" + body + more), kNonsense) << "a byte is missing in it";
  EXPECT_EQ(with(number(7, 4) + "avc1" + body + more), kNonsense);
  EXPECT_EQ(with(number(87, 4) + "avc1" + body), kNonsense) << "beyond the list";
  EXPECT_EQ(with(number(1, 4) + "avc1" + number(94, 8) + body), kNonsense) << "a long header";
  EXPECT_EQ(with(number(0, 4) + "avc1" + body), "none") << "up to the end";
  EXPECT_EQ(with(number(94, 4) + "avc1" + body + number(7, 4) + "avcC"), kNonsense)
      << "a box in it that is none";
}

TEST(FfmpegBoxes, APaletteIsOfAtMost256Colours) {
  const auto with = [](std::uint32_t depth, std::uint32_t table, const std::string& more = "") {
    std::string entry = std::string(74, '\0') + number(depth, 2) + number(table, 2) + more;
    return reasonAgainst(
        file(header(track({.description = box("stsd", u32s({0, 1}) + box("rle ", entry))}))));
  };
  constexpr const char* kPalette = "its colours are a palette";
  for (const std::uint32_t depth : {1U, 2U, 4U, 8U, 33U, 40U}) {
    EXPECT_EQ(with(depth, 0), kPalette) << depth;
    EXPECT_EQ(with(depth, 1), "none") << depth << " and one that is not in the file";
  }
  EXPECT_EQ(with(8, 0, "x"), kPalette) << "whatever is behind it";
  EXPECT_EQ(with(8, 0x0100), "none");
  for (const std::uint32_t depth : {0U, 9U, 16U, 24U, 32U}) EXPECT_EQ(with(depth, 0), "none");
}

}  // namespace
}  // namespace halvora
