// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/pixel_map_assets.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

#include "light/bitmap.h"
#include "pixelmap/frame_time.h"
#include "text/asset_paths.h"

namespace halvora {

namespace {

bool isVideoName(std::string_view name) {
  constexpr std::string_view kName = "video.mp4";
  return std::equal(name.begin(), name.end(), kName.begin(), kName.end(),
                    [](char left, char right) {
                      return (left >= 'A' && left <= 'Z' ? left - 'A' + 'a' : left) == right;
                    });
}

std::array<const Bundle*, 2> inOrder(const Bundles& bundles) {
  return {&bundles.main, &bundles.kit};
}

bool isFolder(const Bundle& bundle, const std::string& path) {
  const std::optional<FileAttributes> attributes = bundle.attributes(path);
  return attributes && attributes->isFolder;
}

std::string pathIn(std::string folder, const std::string& name) {
  folder += '/';
  return folder += name;
}

}  // namespace

std::string pixelMapVideoIn(const Bundle& bundle, const std::string& folder) {
  if (!isFolder(bundle, folder)) return {};
  for (const std::string& name : bundle.list(folder).value_or(std::vector<std::string>())) {
    if (isVideoName(name)) return bundle.location(pathIn(folder, name));
  }
  return {};
}

std::string PixelMapAssets::pixelMapVideoURLForVenueId(std::int64_t venueId,
                                                       std::int64_t pixelMapId) const {
  for (const Bundle* bundle : inOrder(bundles_)) {
    std::string video = pixelMapVideoIn(*bundle, pixelMapFolder(venueId, pixelMapId));
    if (!video.empty()) return video;
  }
  return {};
}

std::vector<PixelMapVideoEntry> PixelMapAssets::pixelMapVideoEntriesForVenueId(
    std::int64_t venueId) const {
  std::vector<PixelMapVideoEntry> entries;
  if (venueId < 1) return entries;
  std::set<std::string> mapIds;
  std::set<std::string> videos;
  for (const Bundle* bundle : inOrder(bundles_)) {
    const std::string folder = venueFolder(venueId);
    if (!isFolder(*bundle, folder)) continue;
    for (std::string& name : bundle->list(folder).value_or(std::vector<std::string>())) {
      if (name.empty()) continue;
      std::string video = pixelMapVideoIn(*bundle, pathIn(folder, name));
      if (video.empty() || mapIds.contains(name) || videos.contains(video)) continue;
      mapIds.insert(name);
      videos.insert(video);
      entries.push_back({std::move(name), std::move(video)});
    }
  }
  return entries;
}

std::shared_ptr<const Image> PixelMapAssets::copyPixelMapFrameImageForVenueId(
    std::int64_t venueId, std::int64_t pixelMapId, std::int64_t frameIndex) {
  if (frameIndex < 0) return nullptr;
  const std::string video = pixelMapVideoURLForVenueId(venueId, pixelMapId);
  if (video.empty()) {
    setPixelMapDebugText("Missing video.mp4 (Venue-" + std::to_string(venueId) + "/" +
                         std::to_string(pixelMapId) + ")");
    return nullptr;
  }
  setPixelMapDebugText(std::nullopt);
  if (video != cache_.pixelMapVideoPath) {
    // The generator goes before its asset.
    cache_.pixelMapVideoFrameGenerator.reset();
    cache_ = {};
    cache_.pixelMapVideoPath = video;
  }
  if (!cache_.pixelMapVideoFrameGenerator) {
    cache_.asset = videos_.open(video);
    if (!cache_.asset) return nullptr;
    cache_.pixelMapVideoFrameGenerator = cache_.asset->generator();
    cache_.pixelMapVideoFrameCount = pixelMapFrameCount(cache_.asset->durationSeconds());
    if (!cache_.pixelMapVideoFrameGenerator) return nullptr;
  }
  const int frame = normalizedPixelMapFrameIndex(frameIndex, cache_.pixelMapVideoFrameCount);
  if (cache_.pixelMapVideoCachedFrameImage && cache_.pixelMapVideoCachedFrameIndex == frame) {
    return cache_.pixelMapVideoCachedFrameImage;
  }
  // Back in its place only where it did not throw: one that memory was short for is worth no more.
  auto generator = std::move(cache_.pixelMapVideoFrameGenerator);
  std::optional<Image> image = generator->imageAt(pixelMapFrameTime(frame));
  cache_.pixelMapVideoFrameGenerator = std::move(generator);
  if (!image) return nullptr;
  cache_.pixelMapVideoCachedFrameImage = std::make_shared<const Image>(std::move(*image));
  cache_.pixelMapVideoCachedFrameIndex = frame;
  return cache_.pixelMapVideoCachedFrameImage;
}

MaybeColour PixelMapAssets::colorFromPixelMapVideoFrameForVenueId(std::int64_t venueId,
                                                                  std::int64_t pixelMapId,
                                                                  std::int64_t frameIndex,
                                                                  std::int64_t seatX,
                                                                  std::int64_t seatY) {
  const auto image = copyPixelMapFrameImageForVenueId(venueId, pixelMapId, frameIndex);
  return image ? sampleColorFromImage(*image, seatX, seatY) : std::nullopt;
}

MaybeColour PixelMapAssets::colorFromPixelMapJPGFallbackForVenueId(std::int64_t venueId,
                                                                   std::int64_t pixelMapId,
                                                                   std::int64_t frameIndex,
                                                                   std::int64_t seatX,
                                                                   std::int64_t seatY) const {
  if (seatX < 0 || seatY < 0) return std::nullopt;
  const std::int64_t first = std::max<std::int64_t>(frameIndex, 1);
  for (const std::int64_t frame : {first, first + (first < INT64_MAX ? 1 : 0)}) {
    const std::string name =
        pixelMapFolder(venueId, pixelMapId) + "/f" + std::to_string(frame) + ".jpg";
    auto bytes = bundles_.main.readResource(name, kLargestPicture);
    if (!bytes) bytes = bundles_.kit.readResource(name, kLargestPicture);
    if (!bytes) continue;
    const std::optional<Image> image = images_.decode(*bytes);
    if (!image) continue;
    if (const MaybeColour colour = sampleColorFromImage(*image, seatX, seatY)) return colour;
  }
  return std::nullopt;
}

MaybeColour PixelMapAssets::sampleColorFromImage(const Image& image, std::int64_t seatX,
                                                 std::int64_t seatY) {
  std::optional<BitmapContext> bitmap = createARGBBitmapContextFromImage(image);
  if (!bitmap) return std::nullopt;
  const std::uint8_t* pixel = bitmap->pixelAt(seatX, seatY);
  if (pixel == nullptr) return std::nullopt;
  drawRow(image, seatY, *bitmap);
  return Colour{levelOf(pixel[1]), levelOf(pixel[2]), levelOf(pixel[3]), levelOf(pixel[0])};
}

}  // namespace halvora
