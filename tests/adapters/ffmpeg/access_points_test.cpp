// SPDX-License-Identifier: Apache-2.0
// Where decoding may begin, by samples that are made up byte by byte: nothing here is decoded.
#include "adapters/ffmpeg/access_points.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/adapters/ffmpeg/mp4_maker.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

using namespace mp4_maker;

using Cuts = std::vector<std::size_t>;

struct Sample {
  std::string bytes;
  bool isKey = true;
};

struct Codec {
  std::string entry;
  /// In the entry, behind its header.
  std::string boxes = {};
  std::uint32_t entries = 1;
};

// How a camera says that lengths of so many bytes stand before the parts of a sample.
Codec h264(int lengthBytes = 4) {
  return {"avc1", box("avcC", std::string("\1\x42\0\x0A", 4) +
                                  static_cast<char>(0xFC | (lengthBytes - 1)) + "more")};
}

Codec hevc(int lengthBytes = 4) {
  return {"hvc1", box("hvcC", "\1" + std::string(20, '\0') +
                                  static_cast<char>(0xFC | (lengthBytes - 1)) + "more")};
}

/// A file of these samples, and where it can be entered.
class Movie {
 public:
  Movie(const Codec& codec, const std::vector<Sample>& samples, const std::string& edits = "") {
    std::string bytes, sizes, keys;
    std::uint32_t keyCount = 0;
    for (std::size_t at = 0; at < samples.size(); ++at) {
      bytes += samples[at].bytes;
      sizes += number(samples[at].bytes.size(), 4);
      if (!samples[at].isKey) continue;
      keys += number(at + 1, 4);
      ++keyCount;
    }
    std::string entry(78, '\0');
    entry[75] = 24;
    const auto count = static_cast<std::uint32_t>(samples.size());
    std::string entries;
    for (std::uint32_t at = 0; at < codec.entries; ++at) {
      entries += box(codec.entry, entry + codec.boxes);
    }
    const std::string start = box("ftyp", "isom" + std::string(4, '\0'));
    const auto dataAt = static_cast<std::uint32_t>(start.size() + 8);
    const TrackParts parts{
        .edits = edits,
        .description = box("stsd", u32s({0, codec.entries}) + entries),
        .times = box("stts", u32s({0, 1, count, 512})),
        .sizes = box("stsz", u32s({0, 0, count}) + sizes) + box("stss", u32s({0, keyCount}) + keys),
        .chunks = box("stco", u32s({0, 1, dataAt})),
        .samplesOfAChunk = count};
    const std::string path =
        folder_.write("movie.mp4", start + box("mdat", bytes) + header(track(parts)));
    file_ = MovieFile::open(path, nullptr);
    if (file_ != nullptr) demuxer_ = MovieDemuxer::open(*file_);
    EXPECT_TRUE(demuxer_);
  }

  AccessPoints points() const { return AccessPoints(*file_, *demuxer_); }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<const MovieFile> file_;
  std::unique_ptr<MovieDemuxer> demuxer_;
};

/// Whether decoding may begin with such a sample, and whether what follows it is shown after all
/// that is before it.
struct Serves {
  bool isEntry = false;
  bool isCut = false;

  bool operator==(const Serves&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Serves& serves) {
  return out << (serves.isEntry ? "entry" : "no entry") << (serves.isCut ? ", cut" : ", no cut");
}

constexpr Serves kNeither{};
constexpr Serves kEntry{.isEntry = true};
constexpr Serves kBoth{.isEntry = true, .isCut = true};

Serves served(const Codec& codec, const Sample& sample, const std::string& edits = "") {
  const Movie movie(codec, {sample, sample}, edits);
  return {movie.points().atOrBefore(1) == 1, movie.points().cuts(2) == Cuts{1}};
}

std::string unit(std::string body, int lengthBytes = 4) {
  return number(body.size(), lengthBytes) + std::move(body);
}

TEST(FfmpegAccess, OfH264IsAPictureThatResetsTheDecoder) {
  for (int type = 0; type < 32; ++type) {
    const Serves expected = type == 5 ? kBoth : kNeither;
    const auto header = static_cast<char>(0x60 | type);
    EXPECT_EQ(served(h264(), {unit(std::string{header, 'x', 'x'})}), expected) << type;
    // The first picture counts, whatever comes before it.
    const bool isPicture = type >= 1 && type <= 5;
    const std::string reset = unit("\x65xx");
    EXPECT_EQ(served(h264(), {unit(std::string{header, 'x', 'x'}) + reset}),
              isPicture ? expected : kBoth)
        << type;
  }
  EXPECT_EQ(served(h264(), {unit("\x65xx"), false}), kNeither) << "the file says that it is not";
}

TEST(FfmpegAccess, LengthsAreOfOneToFourBytes) {
  for (const int bytes : {1, 2, 4}) {
    const std::string sample = unit("\6xxxx", bytes) + unit("\x65xx", bytes);
    EXPECT_EQ(served(h264(bytes), {sample}), kBoth) << bytes;
    EXPECT_EQ(served(hevc(bytes), {unit("\x50\1xx", bytes) + unit("\x26\1\x80x", bytes)}), kBoth);
  }
  const std::string longer = "\6" + std::string(299, 'x');
  EXPECT_EQ(served(h264(2), {unit(longer, 2) + unit("\x65xx", 2)}), kBoth);
  EXPECT_EQ(served(h264(2), {unit(longer, 2) + unit("\x41xx", 2)}), kNeither);
  EXPECT_EQ(served(h264(1), {unit("\x65xx", 4)}), kNeither) << "the file has others";
}

TEST(FfmpegAccess, WithoutLengthsThereIsNone) {
  const Sample sample{unit("\x65xx")};
  const auto with = [](const char* entry, const char* type, const std::string& bytes) {
    return Codec{entry, box(type, bytes)};
  };
  EXPECT_EQ(served(with("avc1", "avcC", std::string("\1\x42\0\x0A\xFF", 5)), sample), kBoth);
  EXPECT_EQ(served(with("avc1", "avcC", std::string("\1\x42\0\x0A", 4)), sample), kNeither);
  EXPECT_EQ(served(with("avc1", "avcC", std::string("\0\x42\0\x0A\xFF", 5)), sample), kNeither);
  const Sample other{unit("\x26\1\x80x")};
  const std::string config = "\1" + std::string(20, '\0') + "\xFF";
  EXPECT_EQ(served(with("hvc1", "hvcC", config), other), kBoth);
  EXPECT_EQ(served(with("hvc1", "hvcC", config.substr(0, 21)), other), kNeither);
}

TEST(FfmpegAccess, APictureIsNotLookedForWithoutEnd) {
  std::string remarks;
  for (int count = 0; count < 63; ++count) remarks += unit("\6xx");
  EXPECT_EQ(served(h264(), {remarks + unit("\x65xx")}), kBoth);
  EXPECT_EQ(served(h264(), {remarks + unit("\6xx") + unit("\x65xx")}), kNeither);
  EXPECT_EQ(served(h264(), {remarks}), kNeither);
  // Three bytes of the picture are looked at.
  EXPECT_EQ(served(h264(), {unit("\6xx") + number(2, 4) + "\x65x"}), kNeither);
  EXPECT_EQ(served(h264(), {unit("\6xx") + number(100, 4) + "\x65xx"}), kBoth);
  EXPECT_EQ(served(h264(), {number(0xFFFFFFFF, 4) + "\6xx" + unit("\x65xx")}), kNeither);
}

TEST(FfmpegAccess, OfHevcIsAnyOfSixKindsAndACutOneOfTwo) {
  for (int type = 0; type < 64; ++type) {
    const std::string header{static_cast<char>(type << 1), '\1'};
    const bool isEntry = type >= 16 && type <= 21;
    const bool isCut = type == 19 || type == 20;
    const Serves expected{isEntry, isCut};
    EXPECT_EQ(served(hevc(), {unit(header + "\x80x")}), expected) << type;
    EXPECT_EQ(served(hevc(), {unit(header + "\xC0x")}), (Serves{isEntry, false}))
        << type << ", which hides what comes before";
    const std::string reset = unit("\x26\1\x80x");
    EXPECT_EQ(served(hevc(), {unit(header + "\x80x") + reset}), type < 32 ? expected : kBoth)
        << type;
  }
}

TEST(FfmpegAccess, OfVp9IsAKeyAndACutSaysSoItself) {
  const Codec vp9{"vp09"};
  const auto first = [&](int byte) {
    return served(vp9, {std::string(1, static_cast<char>(byte)) + "xx"});
  };
  for (const int profile : {0x80, 0x90, 0xA0}) {
    EXPECT_EQ(first(profile), kBoth) << profile;
    EXPECT_EQ(first(profile | 3), kBoth) << profile;
    EXPECT_EQ(first(profile | 4), kEntry) << profile << ", made from others";
    EXPECT_EQ(first(profile | 8), kEntry) << profile << ", an old one";
  }
  EXPECT_EQ(first(0xB0), kBoth) << "the profile of one bit more";
  EXPECT_EQ(first(0xB1), kBoth);
  EXPECT_EQ(first(0xB2), kEntry);
  EXPECT_EQ(first(0xB4), kEntry);
  EXPECT_EQ(first(0x40), kEntry) << "no frame at all";
  EXPECT_EQ(first(0xC0), kEntry);
  EXPECT_EQ(served(vp9, {"\x80xx", false}), kNeither);
}

TEST(FfmpegAccess, OfOthersIsWhatTheFileSays) {
  EXPECT_EQ(served({"mp4v"}, {"abc"}), kEntry);
  EXPECT_EQ(served({"mp4v"}, {"abc", false}), kNeither);
  EXPECT_EQ(served({"jpeg"}, {"abc"}), kBoth);
  EXPECT_EQ(served({"jpeg"}, {"abc", false}), kBoth) << "each picture stands for itself";
}

TEST(FfmpegAccess, IsTheBeginningAloneWhereSamplesAreNotShownInOneGo) {
  const auto edits = [](int count) {
    std::string list = u32s({0, static_cast<std::uint32_t>(count)});
    for (int edit = 0; edit < count; ++edit) list += u32s({600, 0, 1 << 16});
    return box("edts", box("elst", list));
  };
  EXPECT_EQ(served({"jpeg"}, {"abc"}, edits(1)), kBoth);
  EXPECT_EQ(served({"jpeg"}, {"abc"}, edits(2)), kNeither);
  EXPECT_EQ(served({"jpeg", "", 2}, {"abc"}), kNeither);
}

TEST(FfmpegAccess, TheNearestOneBeforeIsFound) {
  const Sample key{"abc"};
  const Sample other{"abc", false};
  const Movie movie({"mp4v"}, {other, other, key, other, key, other});
  const AccessPoints points = movie.points();
  const Cuts expected = {0, 0, 2, 2, 4, 4};
  for (std::size_t sample = 0; sample < expected.size(); ++sample) {
    EXPECT_EQ(points.atOrBefore(sample), expected[sample]) << sample;
  }
}

// Pictures of so many bytes each; a negative number is one that cannot be cut at.
Cuts cutsOf(const std::vector<int>& sizes, int parts) {
  std::vector<Sample> samples;
  for (const int size : sizes) {
    const auto bytes = static_cast<std::size_t>(size < 0 ? -size : size);
    samples.push_back({unit("\x65" + std::string(bytes - 5, 'x')), size > 0});
  }
  return Movie(h264(), samples).points().cuts(parts);
}

TEST(FfmpegAccess, CutsMakePartsOfEquallyManyBytes) {
  const std::vector<int> alike(12, 100);
  EXPECT_EQ(cutsOf(alike, 2), (Cuts{6}));
  EXPECT_EQ(cutsOf(alike, 3), (Cuts{4, 8}));
  EXPECT_EQ(cutsOf(alike, 4), (Cuts{3, 6, 9}));
  EXPECT_EQ(cutsOf({1000, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100}, 2), (Cuts{1}));
  EXPECT_EQ(cutsOf({100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 1000}, 2), (Cuts{10}));
  for (const int parts : {-1, 0, 1}) EXPECT_EQ(cutsOf(alike, parts), Cuts{}) << parts;
}

TEST(FfmpegAccess, ACutIsTheNearestOneToEqualParts) {
  // Of 1600 bytes, at 800; 200 off at most.
  const auto with = [](const std::vector<std::size_t>& keys) {
    std::vector<int> sizes(16, -100);
    sizes[0] = 100;
    for (const std::size_t key : keys) sizes[key] = 100;
    return cutsOf(sizes, 2);
  };
  EXPECT_EQ(with({8}), (Cuts{8}));
  EXPECT_EQ(with({6, 9}), (Cuts{9}));
  EXPECT_EQ(with({7, 10}), (Cuts{7}));
  EXPECT_EQ(with({7, 9}), (Cuts{9})) << "of two as near the later";
  EXPECT_EQ(with({6}), (Cuts{6}));
  EXPECT_EQ(with({10}), (Cuts{10}));
  EXPECT_EQ(with({9, 10}), (Cuts{9}));
  EXPECT_EQ(with({6, 7}), (Cuts{7}));
  EXPECT_EQ(with({5}), Cuts{}) << "too far off";
  EXPECT_EQ(with({11}), Cuts{});
  EXPECT_EQ(with({5, 11}), Cuts{});
}

TEST(FfmpegAccess, WithoutAllCutsThereIsNone) {
  // 200 bytes between them: each to be found within 50.
  EXPECT_EQ(cutsOf({100, 100, 100, 100, 100, 100, 100, 100}, 4), (Cuts{2, 4, 6}));
  EXPECT_EQ(cutsOf({100, 100, 100, 100, -100, 100, 100, 100}, 4), Cuts{});
  EXPECT_EQ(cutsOf({100, 100, 100, 100, 100, 100, -100, 100}, 4), Cuts{});
  EXPECT_EQ(cutsOf({100, 100, -100, 100, 100, 100, 100, 100}, 4), Cuts{});
  EXPECT_EQ(cutsOf({100, -100}, 2), Cuts{}) << "the beginning is no cut";
  EXPECT_EQ(cutsOf({10, 1000, 10}, 3), Cuts{}) << "nor is one place two";
}

}  // namespace
}  // namespace halvora
