// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_files.h"

#include <map>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/standard_files.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/pixelmap/seat_lut_bench.h"
#include "tests/support/files_with_faults.h"
#include "tests/support/other_country.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kVideo = "/a";
const std::string kFolder = "/documents/SeatLUTCache/L2E";
const std::string kData = kFolder + "/seat_12_40.bin";
const std::string kMeta = kFolder + "/seat_12_40.json";
constexpr SeatPosition kSeat{12, 40};

/// A documents folder in memory, and a video of 5 bytes that was changed a quarter second after
/// 2001-09-09.
class SeatLutFilesTest : public testing::Test {
 protected:
  SeatLutFilesTest() { files_.files.put(kVideo, "video", 1e9 + 0.25); }

  bool persist(const SeatLut& lut, const std::string& video = kVideo, SeatPosition seat = kSeat) {
    return luts_.persistPixelMapSeatLUTData(lut, video, seat);
  }
  std::string directoryOf(const std::string& video) const {
    return luts_.pixelMapSeatLUTDirectoryURLForVideoURL(video);
  }
  std::string bytesOf(const std::string& path) const {
    return files_.files.read(path, 1 << 20).value_or("(none)");
  }
  std::optional<JsonValue> storedMeta() const {
    return static_cast<const JsonReader&>(json_).parse(bytesOf(kMeta));
  }
  bool isThere(const std::string& path) const { return files_.attributes(path).has_value(); }

  ExactJsonReader json_;
  FilesWithFaults files_;
  SeatLutFiles luts_{files_, json_, "/documents"};
};

using SeatLutNames = SeatLutFilesTest;
using SeatLutSignature = SeatLutFilesTest;
using SeatLutPersist = SeatLutFilesTest;
using SeatLutRemoval = SeatLutFilesTest;

TEST_F(SeatLutNames, CacheKeyIsPathAndSeat) {
  EXPECT_EQ(pixelMapSeatLUTCacheKeyForVideoPath("/a/video.mp4", kSeat), "/a/video.mp4|12|40");
  EXPECT_EQ(pixelMapSeatLUTCacheKeyForVideoPath("", {0, -1}), "|0|-1");
}

TEST_F(SeatLutNames, FolderIsThePathInBase64WithoutPadding) {
  EXPECT_EQ(directoryOf("/"), "/documents/SeatLUTCache/Lw") << "padded with two characters";
  EXPECT_EQ(directoryOf("/a"), "/documents/SeatLUTCache/L2E") << "padded with one";
  EXPECT_EQ(directoryOf("/ab"), "/documents/SeatLUTCache/L2Fi");
  EXPECT_EQ(directoryOf("/main/HVAssets/Maps/Venue-7/5/video.mp4"),
            "/documents/SeatLUTCache/L21haW4vSFZBc3NldHMvTWFwcy9WZW51ZS03LzUvdmlkZW8ubXA0");
}

TEST_F(SeatLutNames, FolderHasNeitherSlashesNorPluses) {
  EXPECT_EQ(directoryOf("???"), "/documents/SeatLUTCache/Pz8_");
  EXPECT_EQ(directoryOf("~~~"), "/documents/SeatLUTCache/fn5-");
}

TEST_F(SeatLutNames, PathIsEncodedAsUtf8) {
  EXPECT_EQ(directoryOf("/\u00E9"), "/documents/SeatLUTCache/L8Op");
}

TEST_F(SeatLutNames, OnePathHasOneFolderAndAnotherPathAnother) {
  const SeatLutFiles others(files_, json_, "/documents");
  EXPECT_EQ(directoryOf("/x/video.mp4"),
            others.pixelMapSeatLUTDirectoryURLForVideoURL("/x/video.mp4"));
  EXPECT_NE(directoryOf("/x/video.mp4"), directoryOf("/y/video.mp4"));
}

TEST_F(SeatLutNames, FilesAreNamedByTheSeat) {
  EXPECT_EQ(SeatLutFiles::pixelMapSeatLUTFilenameForSeatX(kSeat, "bin"), "seat_12_40.bin");
  EXPECT_EQ(SeatLutFiles::pixelMapSeatLUTFilenameForSeatX({-1, 0}, "json"), "seat_-1_0.json");
  EXPECT_EQ(luts_.pixelMapSeatLUTDataURLForVideoURL(kVideo, kSeat), kData);
  EXPECT_EQ(luts_.pixelMapSeatLUTMetaURLForVideoURL(kVideo, kSeat), kMeta);
}

TEST_F(SeatLutNames, NothingIsNamedWithoutAVideoOrDocuments) {
  EXPECT_EQ(directoryOf(""), "");
  EXPECT_EQ(luts_.pixelMapSeatLUTDataURLForVideoURL("", kSeat), "");
  EXPECT_EQ(luts_.pixelMapSeatLUTMetaURLForVideoURL("", kSeat), "");
  const SeatLutFiles nowhere(files_, json_, "");
  EXPECT_EQ(nowhere.pixelMapSeatLUTDirectoryURLForVideoURL(kVideo), "");
  EXPECT_EQ(nowhere.pixelMapSeatLUTDataURLForVideoURL(kVideo, kSeat), "");
  EXPECT_EQ(nowhere.pixelMapSeatLUTMetaURLForVideoURL(kVideo, kSeat), "");
}

TEST_F(SeatLutSignature, IsSizeAndTimeOfTheVideo) {
  const auto signature = luts_.pixelMapVideoFileSignatureForURL(kVideo);
  ASSERT_TRUE(signature.has_value());
  EXPECT_EQ(signature->fileSize, 5U);
  EXPECT_EQ(signature->modifiedAt, 1e9 + 0.25);
}

TEST_F(SeatLutSignature, IsNoneWithoutAVideo) {
  EXPECT_EQ(luts_.pixelMapVideoFileSignatureForURL(""), std::nullopt);
  EXPECT_EQ(luts_.pixelMapVideoFileSignatureForURL("/b"), std::nullopt);
}

TEST_F(SeatLutPersist, BytesOfAFrameAreBlueGreenRedAlpha) {
  EXPECT_TRUE(persist(lutOf({0xFF102030, 0x01020304, 0})));
  EXPECT_EQ(bytesOf(kData), std::string("\x30\x20\x10\xFF\x04\x03\x02\x01\0\0\0\0", 12));
}

TEST_F(SeatLutPersist, MetaIsAnObjectOfExactlyFiveKeys) {
  EXPECT_TRUE(persist(lutOf(Words(300, 1))));
  const auto meta = storedMeta();
  ASSERT_TRUE(meta.has_value());
  ASSERT_NE(meta->object(), nullptr);
  std::map<std::string, double> members;
  for (const JsonMember& member : *meta->object()) {
    members[member.name] = member.value.number().value_or(-1);
  }
  EXPECT_THAT(members, ElementsAre(std::pair("fileSize", 5), std::pair("frameCount", 300),
                                   std::pair("modifiedAt", 1e9 + 0.25), std::pair("seatX", 12),
                                   std::pair("seatY", 40)));
  EXPECT_EQ(meta->object()->size(), 5U);
}

TEST_F(SeatLutPersist, MetaKeepsTheTimeToTheLastBit) {
  for (const double time : {1767268800.1234567, 0.1, 1e-300, 123456789012345680.0, -1.5}) {
    files_.files.touch(kVideo, time);
    EXPECT_TRUE(persist(lutOf({1})));
    const auto meta = storedMeta();
    ASSERT_TRUE(meta && meta->find("modifiedAt") != nullptr);
    EXPECT_EQ(meta->find("modifiedAt")->number(), time);
  }
}

TEST_F(SeatLutPersist, MetaIsTheSameInEveryCountry) {
  EXPECT_TRUE(persist(lutOf(Words(2000, 1))));
  const std::string usual = bytesOf(kMeta);
  const OtherCountry abroad;
  EXPECT_TRUE(persist(lutOf(Words(2000, 1))));
  EXPECT_EQ(bytesOf(kMeta), usual);
  EXPECT_NE(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat), nullptr);
  if (!abroad.isWhole()) GTEST_SKIP() << "no locale with a decimal comma can be had here";
}

TEST_F(SeatLutPersist, MakesTheFoldersAndWritesTheDataFirst) {
  EXPECT_FALSE(isThere("/documents"));
  EXPECT_TRUE(persist(lutOf({1})));
  EXPECT_THAT(files_.files.writes.entries, ElementsAre(kData, kMeta));
}

TEST_F(SeatLutPersist, TwoSeatsOfAVideoShareItsFolder) {
  EXPECT_TRUE(persist(lutOf({1}), kVideo, {12, 40}));
  EXPECT_TRUE(persist(lutOf({2}), kVideo, {13, 40}));
  EXPECT_THAT(files_.list(kFolder).value(), ElementsAre("seat_12_40.bin", "seat_12_40.json",
                                                        "seat_13_40.bin", "seat_13_40.json"));
  EXPECT_EQ(wordsOf(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, {12, 40})), Words{1});
  EXPECT_EQ(wordsOf(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, {13, 40})), Words{2});
}

TEST_F(SeatLutPersist, TakesThePlaceOfAnOlderTable) {
  EXPECT_TRUE(persist(lutOf(Words(7, 7))));
  EXPECT_TRUE(persist(lutOf(Words(3, 3))));
  EXPECT_EQ(wordsOf(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat)), Words(3, 3));
}

TEST_F(SeatLutPersist, NothingIsWrittenWithoutATableAVideoOrDocuments) {
  EXPECT_FALSE(persist(nullptr));
  EXPECT_FALSE(persist(lutOf({})));
  EXPECT_FALSE(persist(lutOf({1}), ""));
  EXPECT_FALSE(persist(lutOf({1}), "/missing"));
  const SeatLutFiles nowhere(files_, json_, "");
  EXPECT_FALSE(nowhere.persistPixelMapSeatLUTData(lutOf({1}), kVideo, kSeat));
  EXPECT_THAT(files_.files.writes.entries, IsEmpty());
  EXPECT_FALSE(isThere("/documents"));
}

TEST_F(SeatLutPersist, ReadOnlyDocumentsStayAsTheyAre) {
  files_.files.isReadOnly = true;
  EXPECT_FALSE(persist(lutOf({1})));
  EXPECT_FALSE(isThere("/documents"));
}

TEST_F(SeatLutPersist, FullDiskLeavesTheOldTable) {
  EXPECT_TRUE(persist(lutOf({7})));
  files_.files.isFull = true;
  EXPECT_FALSE(persist(lutOf({1})));
  EXPECT_EQ(wordsOf(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat)), Words{7});
}

TEST_F(SeatLutPersist, DataStaysWhereTheMetaFileCannotBeWritten) {
  files_.unwritable = kMeta;
  EXPECT_FALSE(persist(lutOf({1})));
  EXPECT_TRUE(isThere(kData));
  EXPECT_FALSE(isThere(kMeta));
  EXPECT_EQ(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat), nullptr);
}

TEST_F(SeatLutPersist, MetaIsNotWrittenWhereTheDataCannotBe) {
  files_.unwritable = kData;
  EXPECT_FALSE(persist(lutOf({1})));
  EXPECT_FALSE(isThere(kMeta));
}

TEST_F(SeatLutPersist, VideoThatWasReplacedSinceLendsItsNameToNothing) {
  const auto builtFrom = luts_.pixelMapVideoFileSignatureForURL(kVideo);
  const auto persistBuilt = [&] {
    return luts_.persistPixelMapSeatLUTData(lutOf({1}), kVideo, kSeat, builtFrom);
  };
  files_.files.put(kVideo, "other video", 1e9 + 0.25);
  EXPECT_FALSE(persistBuilt());
  files_.files.put(kVideo, "video", 1e9 + 0.375);
  EXPECT_FALSE(persistBuilt());
  files_.files.remove(kVideo);
  EXPECT_FALSE(persistBuilt());
  EXPECT_THAT(files_.files.writes.entries, IsEmpty());
  files_.files.put(kVideo, "VIDEO", 1e9 + 0.25);
  EXPECT_TRUE(persistBuilt()) << "size and time are all that tells one from another";
}

TEST(SeatLutLongPath, TablesOfAPathThatNoFolderCanBeNamedAfterAreNotStored) {
  const TemporaryFolder folder;
  std::string path = folder.path() + "/";
  path += std::string(192 - path.size(), 'v');
  StandardFiles files;
  ASSERT_TRUE(files.replace(path, "video"));
  const ExactJsonReader json;
  const SeatLutFiles luts(files, json, folder.path());
  EXPECT_FALSE(luts.persistPixelMapSeatLUTData(lutOf({1}), path, kSeat));
  EXPECT_EQ(std::get<SeatLutFault>(luts.read(path, kSeat)), SeatLutFault::noDataFile);
}

TEST_F(SeatLutPersist, TheLongestTableIsKept) {
  Words words(65'025);
  std::iota(words.begin(), words.end(), 0xFF000000U);
  EXPECT_TRUE(persist(lutOf(words)));
  const SeatLut back = luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(Words(back.words().begin(), back.words().end()), words);
}

TEST_F(SeatLutPersist, TablesUpToTheirLimitAreReadAndLargerOnesAreNot) {
  const std::string meta = R"({"frameCount": 0, "fileSize": 5, "modifiedAt": 1000000000.25})";
  const auto isRead = [&](std::size_t data, std::size_t metaSize) {
    std::string text = meta;
    text.resize(metaSize, ' ');
    files_.files.put(kMeta, text);
    files_.files.put(kData, std::string(data, 'x'));
    return luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat) != nullptr;
  };
  constexpr std::size_t kLargest = std::size_t{16} << 20;
  constexpr std::size_t kLargestMeta = std::size_t{64} << 10;
  EXPECT_TRUE(isRead(kLargest, meta.size()));
  EXPECT_FALSE(isRead(kLargest + 4, meta.size()));
  EXPECT_TRUE(isRead(4, kLargestMeta));
  EXPECT_FALSE(isRead(4, kLargestMeta + 1));
}

TEST_F(SeatLutRemoval, LeftoversOfAVideosBuildsGoAndItsTablesStay) {
  EXPECT_TRUE(persist(lutOf({1})));
  const std::string left = ".new-0123456789abcdef";
  files_.files.put(kFolder + "/seat_1_2.bin" + left, "half");
  files_.files.put(kData + left, "half");
  files_.files.put("/documents/SeatLUTCache/other/seat_1_2.bin" + left, "another video's");
  luts_.removeLeftovers(kVideo);
  luts_.removeLeftovers("");
  EXPECT_THAT(files_.list(kFolder).value(), ElementsAre("seat_12_40.bin", "seat_12_40.json"));
  EXPECT_TRUE(isThere("/documents/SeatLUTCache/other/seat_1_2.bin" + left));
}

TEST_F(SeatLutRemoval, TakesEverySeatOfTheVideoAndNoOther) {
  files_.files.put("/b", "video", 1);
  EXPECT_TRUE(persist(lutOf({1}), kVideo, {1, 1}));
  EXPECT_TRUE(persist(lutOf({1}), kVideo, {2, 1}));
  EXPECT_TRUE(persist(lutOf({1}), "/b", {1, 1}));
  luts_.removeTables(kVideo);
  EXPECT_FALSE(isThere(kFolder));
  EXPECT_EQ(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, {1, 1}), nullptr);
  EXPECT_EQ(luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, {2, 1}), nullptr);
  EXPECT_NE(luts_.loadPersistedPixelMapSeatLUTForVideoURL("/b", {1, 1}), nullptr);
}

TEST_F(SeatLutRemoval, TakesNothingWithoutAVideo) {
  EXPECT_TRUE(persist(lutOf({1})));
  luts_.removeTables("");
  luts_.removeTables("/never stored");
  const SeatLutFiles nowhere(files_, json_, "");
  nowhere.removeTables(kVideo);
  EXPECT_TRUE(isThere(kData));
  EXPECT_TRUE(isThere(kMeta));
}

}  // namespace
}  // namespace halvora
