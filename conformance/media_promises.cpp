// SPDX-License-Identifier: Apache-2.0
#include "conformance/media_promises.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "conformance/samples.h"

namespace halvora::conformance {

namespace {

constexpr std::uint32_t kSide = 64;
constexpr int kFrames = 12;
constexpr int kRate = 25;
/// Left, upper right, lower right.
constexpr std::array<PixelPosition, 3> kPlaces{{{16, 32}, {48, 16}, {48, 48}}};

int channelOf(std::uint32_t word, int shift) { return static_cast<int>(word >> shift & 255U); }

bool isNear(std::uint32_t word, std::array<int, 3> colour, int tolerance) {
  return channelOf(word, 24) == 255 && std::abs(channelOf(word, 16) - colour[0]) <= tolerance &&
         std::abs(channelOf(word, 8) - colour[1]) <= tolerance &&
         std::abs(channelOf(word, 0) - colour[2]) <= tolerance;
}

/// Whether these are the pixels of that frame of the sample. Which matrix of colours a decoder
/// takes moves the coloured ones a little.
bool areOfFrame(std::span<const std::uint32_t, 3> words, int frame) {
  const int grey = 17 * frame;
  return isNear(words[0], {grey, grey, grey}, 8) && isNear(words[1], {220, 40, 40}, 45) &&
         isNear(words[2], {40, 40, 220}, 45);
}

std::array<std::uint32_t, 3> wordsOf(const VideoFrame& frame) {
  std::array<std::uint32_t, 3> words{};
  if (frame.width() == kSide && frame.height() == kSide) frame.sample(kPlaces, words);
  return words;
}

std::uint32_t wordAt(const Image& image, PixelPosition place) {
  const std::size_t at = (std::size_t{place.y} * image.width + place.x) * 4;
  if (at + 4 > image.rgba.size()) return 0;
  const auto byte = [&image, at](std::size_t index) {
    return std::uint32_t{image.rgba[at + index]};
  };
  return byte(3) << 24 | byte(0) << 16 | byte(1) << 8 | byte(2);
}

bool isAtItsTime(const VideoFrame& frame, int number) {
  return std::abs(frame.seconds() - static_cast<double>(number) / kRate) < 0.001;
}

/// The numbers of the frames that a reader gives, by their times; -1 for one of no such time.
std::vector<int> numbersOf(FrameReader& reader) {
  std::vector<int> numbers;
  // A reader that never ends is found out soon enough.
  while (const std::unique_ptr<VideoFrame> frame = reader.next()) {
    const double number = std::round(frame->seconds() * kRate);
    numbers.push_back(number >= 0 && number < kFrames ? static_cast<int>(number) : -1);
    if (numbers.size() > 2 * kFrames) break;
  }
  return numbers;
}

std::vector<int> fromTo(int begin, int end) {
  std::vector<int> numbers;
  for (int number = begin; number < end; ++number) numbers.push_back(number);
  return numbers;
}

void checkOpening(const VideosUnderTest& its, Promises& promises) {
  for (const std::string& path : {its.path + ".none", its.brokenPath}) {
    std::string reason;
    promises.expect(its.assets->open(path, &reason) == nullptr,
                    "what is missing or no video does not open", path);
    promises.expect(!reason.empty(), "a video that does not open has a reason", path);
    promises.expect(its.assets->open(path) == nullptr, "nobody has to ask for the reason");
  }
}

void checkFrames(const VideoAsset& asset, Promises& promises) {
  promises.expect(std::abs(asset.durationSeconds() - static_cast<double>(kFrames) / kRate) < 0.05,
                  "a video says how long it is", std::to_string(asset.durationSeconds()));
  const std::unique_ptr<FrameReader> reader = asset.reader();
  promises.expect(reader != nullptr, "a video that opened can be read");
  if (reader == nullptr) return;
  int count = 0;
  for (; count < 2 * kFrames; ++count) {
    const std::unique_ptr<VideoFrame> frame = reader->next();
    if (frame == nullptr) break;
    const std::string number = "frame " + std::to_string(count);
    promises.expect(frame->width() == kSide && frame->height() == kSide,
                    "frames have the size of the video", number);
    promises.expect(isAtItsTime(*frame, count), "each frame says when it is presented", number);
    promises.expect(areOfFrame(wordsOf(*frame), count),
                    "pixels are words 0xAARRGGBB, rows from the top", number);
  }
  promises.expect(count == kFrames, "every frame is read, and each once", std::to_string(count));
  promises.expect(!reader->hasLostPictures(), "of a whole video no picture is lost");
  promises.expect(reader->next() == nullptr, "behind the end there is nothing more");
}

void checkStandingAlone(std::unique_ptr<VideoAsset> asset, Promises& promises) {
  std::unique_ptr<FrameReader> reader = asset->reader();
  std::unique_ptr<FrameReader> beside = asset->reader();
  if (reader == nullptr || beside == nullptr) return;
  std::unique_ptr<VideoFrame> kept = reader->next();
  const std::vector<int> others = numbersOf(*beside);
  promises.expect(others == fromTo(0, kFrames),
                  "readers of one video go side by side, each from its beginning", listed(others));
  const std::vector<int> rest = numbersOf(*reader);
  promises.expect(rest == fromTo(1, kFrames), "a reader goes on where it was", listed(rest));
  reader.reset();
  beside.reset();
  asset.reset();
  promises.expect(kept != nullptr && areOfFrame(wordsOf(*kept), 0),
                  "a frame stands alone: it outlives its reader and its video");
}

void checkStretches(const VideoAsset& asset, Promises& promises) {
  const std::unique_ptr<FrameReader> part = asset.reader(MediaTimeRange{{4, kRate}, {8, kRate}});
  const std::vector<int> within = part != nullptr ? numbersOf(*part) : std::vector<int>();
  promises.expect(within == fromTo(4, 8),
                  "a range has the frames from its begin on, up to but not including its end",
                  listed(within));
  const std::vector<std::unique_ptr<FrameReader>> readers = asset.readers(3);
  promises.expect(!readers.empty() && readers.size() <= 3, "readers are no more than asked for",
                  std::to_string(readers.size()));
  std::vector<int> all;
  for (const std::unique_ptr<FrameReader>& reader : readers) {
    const std::vector<int> its = numbersOf(*reader);
    all.insert(all.end(), its.begin(), its.end());
  }
  promises.expect(all == fromTo(0, kFrames),
                  "readers share all frames among them, each has what is before the next one's",
                  listed(all));
}

void checkStills(const VideoAsset& asset, Promises& promises) {
  const std::unique_ptr<FrameGenerator> generator = asset.generator();
  promises.expect(generator != nullptr, "a video that opened gives single pictures");
  if (generator == nullptr) return;
  // Forwards, backwards, and just before the next one.
  for (const int half : {0, 1, 11, 10, 23, 6}) {
    const std::optional<Image> image = generator->imageAt({half, 2 * kRate});
    std::array<std::uint32_t, 3> words{};
    const bool isWhole = image && image->width == kSide && image->height == kSide;
    for (std::size_t at = 0; isWhole && at < words.size(); ++at) {
      words[at] = wordAt(*image, kPlaces[at]);
    }
    promises.expect(isWhole && areOfFrame(words, half / 2),
                    "the picture at a time is the one on show then, whole and opaque",
                    std::to_string(half) + " fiftieths of a second");
  }
  promises.expect(!generator->imageAt({-1, kRate}) && !generator->imageAt({kFrames, kRate}) &&
                      !generator->imageAt({1'000, 1}),
                  "there is no picture before the first one and after the last one");
}

/// Whether it is so after the player has had all the time that it needs.
bool becomesSo(const PlayerUnderTest& its, const std::function<bool()>& isSo) {
  try {
    its.workUntil(isSo);
  } catch (const std::exception&) {
    // Waiting in vain may be told by throwing.
  }
  return isSo();
}

void checkWithoutClip(PlayerUnderTest its, Promises& promises) {
  VideoPlayer& player = *its.player;
  promises.expect(!player.isItemReadyToPlay(), "without a clip nothing is ready to play");
  player.play();
  player.pause();
  player.load({"missing", ""});
  player.play();
  its.work();
  promises.expect(!player.isItemReadyToPlay(), "a clip that is missing is never ready");
  player.load(its.broken);
  player.play();
  its.work();
  promises.expect(!player.isItemReadyToPlay(), "a clip that is broken is never ready");
  int seeks = 0;
  player.seek(milliseconds(100), [&seeks] { ++seeks; });
  promises.expect(becomesSo(its, [&seeks] { return seeks > 0; }),
                  "a seek completes, also without a clip");
  player.load(its.clip);
  promises.expect(becomesSo(its, [&player] { return player.isItemReadyToPlay(); }),
                  "a clip is ready after one that was broken");
}

void checkClip(PlayerUnderTest its, Promises& promises) {
  VideoPlayer& player = *its.player;
  player.load(its.clip);
  player.setPreferredForwardBuffer(milliseconds(1000));
  promises.expect(becomesSo(its, [&player] { return player.isItemReadyToPlay(); }),
                  "a clip that can be played becomes ready");
  promises.expect(player.isReadyToPlay(), "the player itself is ready with its clip");
  std::vector<int> seeks;
  player.seek(milliseconds(200), [&seeks] { seeks.push_back(1); });
  player.seek(milliseconds(100), [&seeks] { seeks.push_back(2); });
  promises.expect(seeks.empty(), "a seek completes in a turn of its own, not within the call");
  becomesSo(its, [&seeks] { return seeks.size() >= 2; });
  its.work();
  promises.expect(seeks == std::vector{1, 2}, "each seek completes once, in order", listed(seeks));
  player.play();
  player.play();
  its.work();
  player.pause();
  promises.expect(player.isItemReadyToPlay(), "a clip that has played is still ready");
  player.load({"missing", ""});
  promises.expect(!player.isItemReadyToPlay(), "loading drops the clip that was there");
  player.load(its.clip);
  player.seek(milliseconds(100), [] {});
  its.player.reset();
  // A completion that comes now must not touch the player.
  its.work();
}

void checkWholePictures(const ImageDecoder& decoder, Promises& promises) {
  const std::vector<std::uint8_t> pixels{255, 0, 0, 255, 0,  255, 0,  128, 0,   0,   255, 0,
                                         1,   2, 3, 255, 10, 20,  30, 4,   250, 251, 252, 253};
  const std::optional<Image> png = decoder.decode(samplePng());
  promises.expect(png && png->width == 3 && png->height == 2, "a PNG has its size");
  promises.expect(png && png->rgba == pixels,
                  "pixels are red, green, blue, alpha, rows from the top, not premultiplied");
  const std::optional<Image> jpeg = decoder.decode(sampleJpeg());
  promises.expect(jpeg && jpeg->width == 16 && jpeg->height == 16 &&
                      isNear(wordAt(*jpeg, {8, 2}), {220, 40, 40}, 12) &&
                      isNear(wordAt(*jpeg, {8, 13}), {40, 40, 220}, 12),
                  "a JPEG has its colours, opaque, rows from the top");
  const std::string_view whole = samplePng();
  for (const std::string_view bytes :
       {std::string_view(), std::string_view("no picture"), whole.substr(0, whole.size() / 2),
        sampleJpeg().substr(0, 20), sampleClip()}) {
    promises.expect(!decoder.decode(bytes), "what is no whole picture is none",
                    std::to_string(bytes.size()) + " bytes");
  }
  promises.expect(!decoder.decode(vastPng()), "a picture that claims too many pixels is refused");
}

void checkRows(const ImageDecoder& decoder, Promises& promises) {
  for (const std::string_view bytes : {samplePng(), sampleJpeg()}) {
    const std::optional<Image> image = decoder.decode(bytes);
    if (!image) continue;
    const std::size_t size = std::size_t{4} * image->width;
    for (const std::int64_t row : {0, 1}) {
      const std::optional<ImageRow> found = decoder.decodeRow(bytes, row);
      const auto begin = image->rgba.begin() + static_cast<std::ptrdiff_t>(size) * row;
      promises.expect(found && found->width == image->width && found->height == image->height &&
                          found->rgba == std::vector<std::uint8_t>(
                                             begin, begin + static_cast<std::ptrdiff_t>(size)),
                      "a row is what the whole picture has there", std::to_string(row));
    }
    for (const std::int64_t row : {std::int64_t{-1}, std::int64_t{image->height}}) {
      const std::optional<ImageRow> found = decoder.decodeRow(bytes, row);
      promises.expect(found && found->rgba.empty() && found->height == image->height,
                      "a row that the picture does not have is empty, and the size is told",
                      std::to_string(row));
    }
  }
  promises.expect(!decoder.decodeRow("no picture", 0) && !decoder.decodeRow(vastPng(), 0),
                  "where there is no picture there is no row");
}

}  // namespace

std::vector<BrokenPromise> checkPictures(
    const std::function<std::unique_ptr<ImageDecoder>()>& make) {
  Promises promises("ImageDecoder");
  const std::unique_ptr<ImageDecoder> decoder = make();
  checkWholePictures(*decoder, promises);
  checkRows(*decoder, promises);
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkVideos(const std::function<VideosUnderTest()>& make) {
  Promises promises("VideoAssets");
  const VideosUnderTest its = make();
  checkOpening(its, promises);
  std::string reason;
  std::unique_ptr<VideoAsset> asset = its.assets->open(its.path, &reason);
  promises.expect(asset != nullptr, "a video opens", reason);
  if (asset == nullptr) return std::move(promises).broken();
  checkFrames(*asset, promises);
  checkStretches(*asset, promises);
  checkStills(*asset, promises);
  checkStandingAlone(std::move(asset), promises);
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkPlayer(const std::function<PlayerUnderTest()>& make) {
  Promises promises("VideoPlayer");
  checkWithoutClip(make(), promises);
  checkClip(make(), promises);
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
