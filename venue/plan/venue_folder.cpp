// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/venue_folder.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "adapters/linux/linux_files.h"
#include "adapters/standard/folder_bundle.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/pixel_map_assets.h"
#include "seats/standing_overlay.h"
#include "text/asset_paths.h"
#include "venue/base/input_text.h"
#include "venue/base/progress_bar.h"
#include "venue/plan/placed_seats.h"

namespace halvora {

namespace {

constexpr std::uint64_t kLastMap = 255;

// Tried twice: a decoder that has no memory for a moment may keep that to itself.
std::unique_ptr<VideoFrame> anyPictureOf(const VideoAsset& asset) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    const auto reader = asset.reader();
    if (auto frame = reader ? reader->next() : nullptr) return frame;
  }
  return nullptr;
}

class FolderVisit {
 public:
  FolderVisit(std::string folder, const Outside& outside)
      : folder_(std::move(folder)), outside_(outside) {}

  VenueAssets run() {
    for (const std::string& name : namesIn("")) {
      const auto attributes = files_.attributes(folder_ + "/" + name);
      if (attributes && attributes->isFolder) visitMap(name);
    }
    visitOverlays();
    return std::move(found_);
  }

 private:
  void visitMap(const std::string& id);
  void visitVideo(const std::string& id, const std::string& name);
  void visitStills(const std::string& id, const std::vector<std::uint64_t>& numbers);
  void findGaps(const std::string& id, const std::vector<std::uint64_t>& numbers);
  void visitOverlays();

  std::vector<std::string> namesIn(const std::string& name) const {
    return files_.list(folder_ + "/" + name).value_or(std::vector<std::string>());
  }
  std::optional<FoundPicture> pictureOf(const std::string& name, std::size_t limit) const;
  void add(std::string kind, std::string text) {
    found_.findings.push_back({std::move(kind), std::move(text), 1, {}});
  }

  const std::string folder_;
  const Outside& outside_;
  const LinuxFiles files_{};
  const FolderBundle bundle_{files_, folder_, "venue"};
  VenueAssets found_;
};

// A packet has one byte for the map, of which 0 means none.
bool isMapId(const std::string& name) {
  const auto number = decimal(name, kLastMap);
  return number && *number > 0 && name.front() != '0';
}

std::string stillName(std::uint64_t number) { return "f" + std::to_string(number) + ".jpg"; }

// The numbers of the stills among these names, in ascending order.
std::vector<std::uint64_t> stillsAmong(const std::vector<std::string>& names) {
  constexpr std::uint64_t kLastStill = 1'000'000'000;
  constexpr std::string_view kEnding = ".jpg";
  std::vector<std::uint64_t> numbers;
  for (const std::string& name : names) {
    if (name.size() <= kEnding.size() + 1) continue;
    const auto number = decimal(name.substr(1, name.size() - kEnding.size() - 1), kLastStill);
    if (number && *number > 0 && stillName(*number) == name) numbers.push_back(*number);
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

void FolderVisit::visitMap(const std::string& id) {
  const std::string video = pixelMapVideoIn(bundle_, id);
  const std::vector<std::uint64_t> stills = stillsAmong(namesIn(id));
  if (!isMapId(id)) {
    if (video.empty() && stills.empty()) return;
    add("unreachableMap", id + " looks like a pixel map, but no packet can ask for it: maps are "
                               "called 1 to 255");
    return;
  }
  if (video.empty() && stills.empty()) {
    add("videoMissing",
        "map " + id + " has no video.mp4, and no stills f1.jpg, f2.jpg ... instead");
    return;
  }
  if (video.empty()) {
    findGaps(id, stills);
  } else {
    visitVideo(id, id + video.substr(video.rfind('/')));
  }
  if (!stills.empty()) visitStills(id, stills);
}

void FolderVisit::visitVideo(const std::string& id, const std::string& name) {
  std::string reason;
  const auto asset = outside_.videos.open(folder_ + "/" + name, &reason);
  if (!asset) return add("videoUnreadable", name + " cannot be played: " + reason);
  const double seconds = asset->durationSeconds();
  if (!std::isfinite(seconds) || seconds <= 0) {
    return add("videoEmpty", name + " has no length: it counts as one frame");
  }
  const auto frame = anyPictureOf(*asset);
  if (!frame) {
    return add("videoUnreadable", name + " cannot be played: no picture of it can be read");
  }
  const FoundPicture picture{name, {frame->width(), frame->height()}};
  found_.videos.push_back({id, picture, seconds, pixelMapFrameCount(seconds)});
  found_.pictures.push_back(picture);
}

void FolderVisit::visitStills(const std::string& id, const std::vector<std::uint64_t>& numbers) {
  found_.stills.push_back({id, numbers.size()});
  ProgressBar bar(outside_.terminal, "reading", "stills", numbers.size());
  Finding broken{"stillUnreadable", "", 0, {}};
  for (std::size_t at = 0; at < numbers.size() && !outside_.isInterrupted; ++at) {
    std::string name = id + "/" + stillName(numbers[at]);
    if (auto picture = pictureOf(name, kLargestPicture)) {
      found_.pictures.push_back(std::move(*picture));
    } else {
      ++broken.count;
      if (broken.wantsExamples()) broken.examples.push_back(std::move(name));
    }
    bar.show(at + 1);
  }
  if (broken.count == 0) return;
  broken.text = counted(broken.count, "still", "stills") + " of map " + id + " cannot be read";
  found_.findings.push_back(std::move(broken));
}

// One missing still is bridged by the next one; two in a row leave a frame without a picture.
void FolderVisit::findGaps(const std::string& id, const std::vector<std::uint64_t>& numbers) {
  Finding gaps{"stillsMissing", "", 0, {}};
  std::uint64_t before = 0;
  for (const std::uint64_t number : numbers) {
    const std::uint64_t missing = number - before - 1;
    if (missing > 1) {
      gaps.count += missing;
      if (gaps.wantsExamples()) {
        gaps.examples.push_back(stillName(before + 1) + " to " + stillName(number - 1));
      }
    }
    before = number;
  }
  if (gaps.count == 0) return;
  gaps.text = "map " + id + " has no video, and " + counted(gaps.count, "still", "stills") +
              " in a row are missing";
  found_.findings.push_back(std::move(gaps));
}

void FolderVisit::visitOverlays() {
  for (const char* name : kStandingOverlayNames) {
    found_.overlay = pictureOf(name, kLargestPicture);
    if (found_.overlay) return;
    if (files_.attributes(folder_ + "/" + name)) {
      add("overlayUnreadable", std::string(name) + " is not a picture that can be read");
    }
  }
}

std::optional<FoundPicture> FolderVisit::pictureOf(const std::string& name,
                                                   std::size_t limit) const {
  const auto bytes = files_.read(folder_ + "/" + name, limit);
  const auto image = bytes ? outside_.images.decode(*bytes) : std::nullopt;
  if (!image) return std::nullopt;
  return FoundPicture{name, {image->width, image->height}};
}

}  // namespace

VenueAssets venueAssetsIn(const std::string& folder, const Outside& outside) {
  return FolderVisit(folder, outside).run();
}

}  // namespace halvora
