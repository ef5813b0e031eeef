// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gtest/gtest.h>

#include "tests/adapters/ffmpeg/mp4_maker.h"

namespace halvora {
namespace {

using namespace mp4_maker;

TEST(FfmpegOutline, SaysWhatTheTrackSays) {
  const auto outline = outlineOf(file(header(track({.id = 7}))));
  ASSERT_TRUE(outline);
  EXPECT_EQ(outline->trackId, 7U);
  EXPECT_EQ(outline->durationSeconds, 1201.0 / 600);
  EXPECT_EQ(outline->edits, 0U);
  EXPECT_EQ(outline->sampleDescriptions, 1U);
  EXPECT_EQ(outline->lastSampleDuration, 512U);
}

TEST(FfmpegOutline, WideHeadersCountAsWell) {
  const std::string wide = box("mvhd", u32s({1U << 24}) + number(0, 8) + number(0, 8) +
                                           number(1000, 4) + number(5'000'000'000, 8));
  EXPECT_EQ(outlineOf(file(box("moov", wide + track())))->durationSeconds, 5'000'000);
  const std::string unknown = box("mvhd", u32s({1U << 24}) + number(0, 8) + number(0, 8) +
                                              number(1000, 4) + number(UINT64_MAX, 8));
  EXPECT_EQ(outlineOf(file(box("moov", unknown + track())))->durationSeconds, 1);
}

TEST(FfmpegOutline, AnUnknownDurationIsThatOfTheLongestTrack) {
  const std::string tracks = track() + track({.id = 2, .handler = "soun", .duration = 30720});
  EXPECT_EQ(outlineOf(file(header(tracks, 600, 0)))->durationSeconds, 2);
  EXPECT_EQ(outlineOf(file(header(tracks, 600, UINT32_MAX)))->durationSeconds, 2);
  EXPECT_EQ(outlineOf(file(header(tracks, 0, 1201)))->durationSeconds, 2);
  EXPECT_EQ(outlineOf(file(header(track({.duration = 0}), 600, 0)))->durationSeconds, 0);
}

TEST(FfmpegOutline, HidesWhateverTheVideoDoesNotNeed) {
  const std::string bytes =
      file(header(box("udta", "names") +
                  track({.description = descriptions(box("avcC", "x") + box("stsz", "hidden")),
                         .more = box("meta", "more")}) +
                  track({.id = 2, .handler = "soun"}) + box("trak", box("abcd", "x"))),
           box("free", header(track())));
  for (const char* type : {"udta", "meta", "dinf", "free"})
    EXPECT_TRUE(isHidden(bytes, type)) << type;
  for (const char* type : {"ftyp", "moov", "mvhd", "mdhd", "stbl", "stco", "mdat", "avcC"}) {
    EXPECT_FALSE(isHidden(bytes, type)) << type;
  }
  EXPECT_TRUE(isHidden(bytes, "stsz", 1)) << "in the sample description";
  EXPECT_FALSE(isHidden(bytes, "stsz", 2)) << "the table itself";
  EXPECT_FALSE(isHidden(bytes, "trak", 1));
  EXPECT_TRUE(isHidden(bytes, "trak", 2)) << "sound";
  EXPECT_TRUE(isHidden(bytes, "trak", 3)) << "no identity";
}

TEST(FfmpegOutline, ASecondHeaderIsHidden) {
  const std::string bytes = file(header(track({.id = 3})), header(track({.id = 4})));
  EXPECT_EQ(outlineOf(bytes)->trackId, 3U);
  EXPECT_TRUE(isHidden(bytes, "moov", 2));
}

TEST(FfmpegOutline, TheFirstVideoTrackIsChosenButNotPicturesForChapters) {
  const std::string chapters = box("tref", box("chap", u32s({1})));
  const std::string tracks = track({.id = 1}) + track({.id = 2, .handler = "soun"}) +
                             track({.id = 3, .references = chapters}) + track({.id = 4});
  EXPECT_EQ(outlineOf(file(header(tracks)))->trackId, 3U);
  EXPECT_EQ(reasonAgainst(file(header(track({.handler = "soun"})))), "no video track in it");
  EXPECT_EQ(reasonAgainst(file(header(""))), "no video track in it");
  EXPECT_EQ(reasonAgainst(file(header(track({.description = ""})))), "no video track in it");
}

TEST(FfmpegOutline, NumbersOfTracksAreUnlikeAndSmall) {
  EXPECT_EQ(reasonAgainst(file(header(track() + track()))), kNonsense);
  EXPECT_EQ(reasonAgainst(file(header(track({.id = 0})))), kNonsense);
  EXPECT_EQ(reasonAgainst(file(header(track({.id = 0x80000000})))), kNonsense);
}

TEST(FfmpegOutline, SamplesInAnotherFileAreRefused) {
  const auto with = [](const std::string& reference) {
    return reasonAgainst(file(header(track({.dataReference = reference}))));
  };
  EXPECT_EQ(with(box("url ", u32s({0}) + "other.mp4")), "its samples are in another file");
  EXPECT_EQ(with(box("alis", u32s({0}) + std::string(150, '\0'))),
            "its samples are in another file");
  EXPECT_EQ(with(box("url ", u32s({0}))), "none") << "no place is named";
  EXPECT_EQ(with(box("alis", u32s({1}))), "none");
}

TEST(FfmpegOutline, CompressedHeadersAreRefused) {
  EXPECT_EQ(reasonAgainst(file(box("moov", box("cmov", "x")))), "its header is compressed");
}

TEST(FfmpegOutline, SamplesAreNoMoreThanBytes) {
  const auto with = [](const std::string& sizes) {
    return reasonAgainst(file(header(track({.sizes = sizes}))));
  };
  EXPECT_EQ(with(box("stsz", u32s({0, 1, 2000}))), "none");
  EXPECT_EQ(with(box("stsz", u32s({0, 1, 5000}))), kTooMany);
  EXPECT_EQ(with(box("stsz", u32s({0, 0, 3, 1, 1}))), kTooMany) << "a number is missing";
  EXPECT_EQ(with(box("stsz", u32s({0, 0, 2, 1, 1}))), "none");
  EXPECT_EQ(with(box("stz2", u32s({0, 4, 4}) + "ab")), "none");
  EXPECT_EQ(with(box("stz2", u32s({0, 4, 5}) + "ab")), kTooMany);
  EXPECT_EQ(with(box("stz2", u32s({0, 3, 4}) + "abcd")), kNonsense);
}

TEST(FfmpegOutline, NoTrackHasMoreThanTwoMillionSamples) {
  const auto with = [](std::uint32_t samples) {
    const std::string sizes = box("stsz", u32s({0, 1, samples}));
    return reasonAgainst(file(header(track({.sizes = sizes}))) +
                         box("mdat", std::string(2'100'000, 'x')));
  };
  EXPECT_EQ(with(2'000'000), "none");
  EXPECT_EQ(with(2'000'001), kTooMany);
}

TEST(FfmpegOutline, SoundMayHaveAsManySamplesAsItLikes) {
  const std::string sound = track({.id = 2,
                                   .handler = "soun",
                                   .times = box("stts", u32s({0, 1, 0x70000000, 1})),
                                   .sizes = box("stsz", u32s({0, 4, 0x70000000}))});
  EXPECT_EQ(reasonAgainst(file(header(track() + sound))), "none");
}

TEST(FfmpegOutline, TablesFitTheirBoxes) {
  for (const char* type : {"ctts", "stss", "stps", "co64"}) {
    const auto with = [type](std::uint32_t count) {
      return reasonAgainst(file(header(
          track({.sizes = box("stsz", u32s({0, 10, 30})) + box(type, u32s({0, count, 1, 1}))}))));
    };
    EXPECT_EQ(with(1), "none") << type;
    EXPECT_EQ(with(3), kNonsense) << type;
    EXPECT_EQ(with(UINT32_MAX), kNonsense) << type;
  }
}

TEST(FfmpegOutline, EditsAreCountedAndLimited) {
  const auto edits = [](std::uint32_t count, std::uint32_t listed) {
    std::string list = u32s({0, count});
    for (std::uint32_t edit = 0; edit < listed; ++edit) {
      list += u32s({100, edit % 2 == 0 ? UINT32_MAX : 5, 1 << 16});
    }
    return box("edts", box("elst", list));
  };
  const auto with = [](const std::string& list, const std::string& sizes) {
    return file(header(track({.edits = list, .sizes = sizes})));
  };
  const std::string few = box("stsz", u32s({0, 1, 30}));
  EXPECT_EQ(outlineOf(with(edits(3, 3), few))->edits, 1U) << "two of them show nothing";
  EXPECT_EQ(reasonAgainst(with(edits(1000, 1000), few)), "none");
  EXPECT_EQ(reasonAgainst(with(edits(1001, 1001), few)), kTooManyEdits);
  EXPECT_EQ(reasonAgainst(with(edits(UINT32_MAX, 2), few)), kTooManyEdits);
  EXPECT_EQ(reasonAgainst(with(edits(9, 2), few)), kNonsense);
  const std::string many = box("stsz", u32s({0, 1, 4001}));
  EXPECT_EQ(reasonAgainst(with(edits(1000, 1000), many)), kTooManyEdits);
}

TEST(FfmpegOutline, SizesOfBoxesMakeSense) {
  const std::string good = track();
  EXPECT_EQ(reasonAgainst(file(header(good + number(7, 4) + "abcd"))), kNonsense);
  EXPECT_EQ(reasonAgainst(file(header(good + number(9000, 4) + "abcd"))), kNonsense);
  EXPECT_EQ(reasonAgainst(file(header(good + "abc"))), "none") << "too little for a box";
  EXPECT_EQ(reasonAgainst(file(header(good + number(0, 4) + "abcdrest"))), "none");
  EXPECT_EQ(reasonAgainst(number(1, 4) + "mdat" + number(15, 8)), kNonsense);
  const std::string wide = number(1, 4) + "mdat" + number(20, 8) + "1234";
  EXPECT_EQ(reasonAgainst(wide + header(good)), "none");
  EXPECT_EQ(reasonAgainst(number(1, 4) + "mdat" + number(UINT64_MAX, 8) + header(good)),
            kUnreadable);
}

TEST(FfmpegOutline, TheEndOfAFileMayBeMissing) {
  const std::string whole = file(header(track()));
  EXPECT_EQ(reasonAgainst(whole.substr(0, whole.size() - 1990)), "none");
  EXPECT_EQ(reasonAgainst(whole.substr(0, 12) + header(track())), "none");
  EXPECT_EQ(reasonAgainst(whole.substr(0, 300)), kUnreadable) << "within the header";
  EXPECT_EQ(reasonAgainst(whole + "rubbish that is no box"), "none");
  EXPECT_EQ(reasonAgainst(""), kUnreadable);
  EXPECT_EQ(reasonAgainst("1234567"), kUnreadable);
}

TEST(FfmpegOutline, ATagInFrontIsRefused) {
  EXPECT_EQ(reasonAgainst("ID3" + file(header(track()))), kUnreadable);
}

TEST(FfmpegOutline, PalettesAreRefused) {
  std::string entry(78, '\0');
  entry[75] = 8;
  const auto with = [](const std::string& bytes) {
    const std::string list = box("stsd", u32s({0, 1}) + box("rle ", bytes));
    return reasonAgainst(file(header(track({.description = list}))));
  };
  EXPECT_EQ(with(entry), "its colours are a palette");
  entry[76] = entry[77] = '\xFF';
  EXPECT_EQ(with(entry), "none") << "a usual palette is not in the file";
}

TEST(FfmpegOutline, ALargeTableCostsFewReads) {
  std::string sizes = u32s({0, 0, 100'000});
  for (int sample = 0; sample < 100'000; ++sample) sizes += number(9, 4);
  const Memory source(file(header(track({.sizes = box("stsz", sizes)}))));
  EXPECT_TRUE(readMp4Outline(source, nullptr));
  EXPECT_LT(source.reads, 40);
}

}  // namespace
}  // namespace halvora
