// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <optional>
#include <set>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_files.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/pixelmap/seat_lut_bench.h"

namespace halvora {
namespace {

using Fault = SeatLutFault;

const std::string kVideo = "/a";
const std::string kData = "/documents/SeatLUTCache/L2E/seat_12_40.bin";
const std::string kMeta = "/documents/SeatLUTCache/L2E/seat_12_40.json";
constexpr SeatPosition kSeat{12, 40};
constexpr double kTime = 1e9;

/// A table of 300 frames that passes every check, to be spoilt.
class SeatLutLoad : public testing::Test {
 protected:
  SeatLutLoad() {
    files_.put(kVideo, "video", kTime);
    EXPECT_TRUE(luts_.persistPixelMapSeatLUTData(lutOf(countedWords(300)), kVideo, kSeat));
  }

  SeatLut load() const { return luts_.loadPersistedPixelMapSeatLUTForVideoURL(kVideo, kSeat); }
  int frames() const { return frameCountOf(load()); }
  /// None for a table that passes.
  std::optional<Fault> fault() const {
    const auto result = luts_.read(kVideo, kSeat);
    const Fault* fault = std::get_if<Fault>(&result);
    EXPECT_EQ(load() == nullptr, fault != nullptr);
    return fault != nullptr ? std::optional(*fault) : std::nullopt;
  }
  void putMeta(const std::string& text) { files_.put(kMeta, text); }
  /// A meta file of the video as it is, with that text as its number of frames.
  void putFrameCount(const std::string& frames) {
    putMeta(R"({"fileSize":5,"modifiedAt":1000000000,"frameCount":)" + frames + "}");
  }
  void putData(std::size_t bytes) { files_.put(kData, std::string(bytes, 'x')); }

  ExactJsonReader json_;
  VirtualFiles files_;
  SeatLutFiles luts_{files_, json_, "/documents"};
};

TEST_F(SeatLutLoad, GivesBackWhatWasPersisted) {
  EXPECT_EQ(wordsOf(load()), countedWords(300));
  EXPECT_EQ(fault(), std::nullopt);
}

TEST_F(SeatLutLoad, BytesOfAFrameAreBlueGreenRedAlpha) {
  files_.put(kData, std::string("\x30\x20\x10\xFF\x04\x03\x02\x81", 8));
  putFrameCount("2");
  EXPECT_EQ(wordsOf(load()), (Words{0xFF102030, 0x81020304}));
}

TEST_F(SeatLutLoad, EveryCheckIsMadeBeforeTheNext) {
  struct Spoil {
    Fault fault;
    std::function<void()> spoil;
  };
  const std::vector<Spoil> spoils = {
      {Fault::noDataFile, [this] { files_.remove(kData); }},
      {Fault::noMetaFile, [this] { files_.remove(kMeta); }},
      {Fault::noSignature, [this] { files_.remove(kVideo); }},
      {Fault::metaUnreadable, [this] { putMeta(""); }},
      {Fault::metaNotAnObject, [this] { putMeta("{"); }},
      {Fault::metaIncomplete, [this] { putMeta("{}"); }},
      {Fault::sizeDiffers,
       [this] { files_.put(kVideo, "a video", files_.attributes(kVideo)->modifiedAt); }},
      {Fault::timeDiffers, [this] { files_.touch(kVideo, kTime + 0.75); }},
      {Fault::dataTooShort, [this] { putData(3); }},
      {Fault::dataLengthDiffers, [this] { putData(1196); }},
  };
  for (std::size_t last = 0; last < spoils.size(); ++last) {
    spoils[last].spoil();
    EXPECT_EQ(fault(), spoils[last].fault);
    // Whatever is wrong behind it, the first fault is the one that is found.
    for (std::size_t at = last + 1; at < spoils.size(); ++at) {
      files_.put(kVideo, "video", kTime);
      EXPECT_TRUE(luts_.persistPixelMapSeatLUTData(lutOf(countedWords(300)), kVideo, kSeat));
      ASSERT_EQ(fault(), std::nullopt);
      spoils[at].spoil();
      EXPECT_EQ(fault(), spoils[at].fault);
      spoils[last].spoil();
      EXPECT_EQ(fault(), spoils[last].fault) << describe(spoils[at].fault);
    }
    files_.put(kVideo, "video", kTime);
    EXPECT_TRUE(luts_.persistPixelMapSeatLUTData(lutOf(countedWords(300)), kVideo, kSeat));
  }
}

TEST_F(SeatLutLoad, NothingIsLoadedWithoutAVideoOrDocuments) {
  EXPECT_EQ(std::get<Fault>(luts_.read("", kSeat)), Fault::noVideo);
  const SeatLutFiles nowhere(files_, json_, "");
  EXPECT_EQ(std::get<Fault>(nowhere.read(kVideo, kSeat)), Fault::noVideo);
  EXPECT_EQ(std::get<Fault>(luts_.read(kVideo, {40, 12})), Fault::noDataFile) << "another seat";
}

TEST_F(SeatLutLoad, EveryFaultHasATextOfItsOwn) {
  std::set<std::string_view> texts;
  for (int fault = 0; fault <= static_cast<int>(Fault::dataLengthDiffers); ++fault) {
    texts.insert(describe(static_cast<Fault>(fault)));
  }
  EXPECT_EQ(texts.size(), 11U);
  EXPECT_FALSE(texts.contains(""));
}

TEST_F(SeatLutLoad, TimeMayDifferByHalfASecondAndNoMore) {
  for (const double move : {0.4, -0.4, 0.5, -0.5, 0.0}) {
    files_.touch(kVideo, kTime + move);
    EXPECT_EQ(fault(), std::nullopt) << move;
  }
  for (const double move : {0.6, -0.6, 0.5001, -0.5001, 3600.0, -kTime}) {
    files_.touch(kVideo, kTime + move);
    EXPECT_EQ(fault(), Fault::timeDiffers) << move;
  }
  files_.touch(kVideo, kTime);
  EXPECT_EQ(fault(), std::nullopt) << "readable again";
}

TEST_F(SeatLutLoad, SizeMustBeTheSame) {
  for (const char* video : {"vide", "videos", ""}) {
    files_.put(kVideo, video, kTime);
    EXPECT_EQ(fault(), Fault::sizeDiffers) << video;
  }
}

TEST_F(SeatLutLoad, FrameCountZeroIsTheDatasLength) {
  putData(1200);
  putFrameCount("0");
  EXPECT_EQ(frames(), 300);
  putFrameCount("-7");
  EXPECT_EQ(frames(), 300);
  putData(4);
  EXPECT_EQ(frames(), 1);
  putData(1201);
  EXPECT_EQ(fault(), Fault::dataLengthDiffers) << "not whole words";
  putData(6);
  EXPECT_EQ(fault(), Fault::dataLengthDiffers);
}

TEST_F(SeatLutLoad, FrameCountMustBeThatOfTheData) {
  putData(1200);
  putFrameCount("300");
  EXPECT_EQ(frames(), 300);
  for (const char* count :
       {"299", "301", "1", "4611686018427387904", "9223372036854775807", "1e300"}) {
    putFrameCount(count);
    EXPECT_EQ(fault(), Fault::dataLengthDiffers) << count;
  }
}

TEST_F(SeatLutLoad, DataCutShortIsRejected) {
  const std::string whole = files_.read(kData, 1200).value();
  for (const std::size_t bytes :
       {std::size_t{1199}, std::size_t{1196}, std::size_t{600}, std::size_t{4}}) {
    files_.put(kData, whole.substr(0, bytes));
    EXPECT_EQ(fault(), Fault::dataLengthDiffers) << bytes;
  }
  for (const std::size_t bytes : {std::size_t{3}, std::size_t{0}}) {
    files_.put(kData, whole.substr(0, bytes));
    EXPECT_EQ(fault(), Fault::dataTooShort) << bytes;
  }
  files_.put(kData, whole + "more");
  EXPECT_EQ(fault(), Fault::dataLengthDiffers);
}

TEST_F(SeatLutLoad, NumbersOfAnyKindCount) {
  putFrameCount("300.9");
  EXPECT_EQ(frames(), 300);
  putMeta(R"({"fileSize":5.0,"modifiedAt":1e9,"frameCount":3e2})");
  EXPECT_EQ(frames(), 300);
  putMeta(R"({"fileSize":5.5,"modifiedAt":1e9,"frameCount":300})");
  EXPECT_EQ(fault(), Fault::sizeDiffers);
  putData(4);
  putFrameCount("true");
  EXPECT_EQ(frames(), 1) << "a boolean is a number";
}

TEST_F(SeatLutLoad, ThreeNumbersAreNeeded) {
  for (const char* key : {"fileSize", "modifiedAt", "frameCount"}) {
    for (const char* value : {"\"5\"", "null", "[5]", "{}"}) {
      putMeta(std::string(R"({"fileSize":5,"modifiedAt":1e9,"frameCount":300})")
                  .replace(0, 1, std::string("{\"") + key + "\":" + value + ","));
      EXPECT_EQ(fault(), Fault::metaIncomplete) << key << " " << value;
    }
  }
  putMeta(R"({"modifiedAt":1e9,"frameCount":300})");
  EXPECT_EQ(fault(), Fault::metaIncomplete);
  putMeta(R"({"fileSize":5,"frameCount":300})");
  EXPECT_EQ(fault(), Fault::metaIncomplete);
  putMeta(R"({"fileSize":5,"modifiedAt":1e9})");
  EXPECT_EQ(fault(), Fault::metaIncomplete);
}

TEST_F(SeatLutLoad, MetaMustBeAnObject) {
  for (const char* text : {"[]", "[1]", "{", "5", "seat", "{\"fileSize\":5,}", " "}) {
    putMeta(text);
    EXPECT_EQ(fault(), Fault::metaNotAnObject) << text;
  }
}

TEST_F(SeatLutLoad, StoredSeatDoesNotCount) {
  putMeta(R"({"fileSize":5,"modifiedAt":1e9,"frameCount":300,"seatX":1,"seatY":"2","more":[]})");
  EXPECT_EQ(fault(), std::nullopt) << "the file's name says whose it is";
}

TEST_F(SeatLutLoad, FoldersInThePlaceOfFilesAreNoTable) {
  files_.remove(kData);
  files_.put(kData + "/file", "");
  EXPECT_EQ(fault(), Fault::dataTooShort);
  files_.remove(kMeta);
  files_.put(kMeta + "/file", "");
  EXPECT_EQ(fault(), Fault::metaUnreadable);
}

}  // namespace
}  // namespace halvora
