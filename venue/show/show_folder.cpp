// SPDX-License-Identifier: Apache-2.0
#include "venue/show/show_folder.h"

#include <filesystem>
#include <map>
#include <memory>
#include <system_error>
#include <utility>

#include "adapters/linux/linux_files.h"
#include "adapters/standard/folder_bundle.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/pixel_map_assets.h"
#include "text/asset_paths.h"
#include "venue/base/input_text.h"

namespace halvora {

namespace fs = std::filesystem;

std::string assetsBeside(const std::string& file) {
  std::error_code error;
  for (fs::path folder = fs::path(absolutePath(file)).parent_path(); !folder.empty();
       folder = folder.parent_path()) {
    if (fs::is_directory(folder / kAssetFolder, error)) return folder.string();
    if (folder == folder.parent_path()) break;
  }
  return {};
}

MapFrames mapFramesIn(const std::string& assets, const VideoAssets& videos) {
  using Known = std::map<std::pair<int, int>, std::optional<int>>;
  return [assets, &videos, known = std::make_shared<Known>()](int venueId,
                                                              int mapId) -> std::optional<int> {
    const auto [entry, isNew] = known->try_emplace({venueId, mapId});
    std::error_code error;
    if (!isNew || assets.empty() || !fs::is_directory(assets + "/" + venueFolder(venueId), error)) {
      return entry->second;
    }
    const LinuxFiles files;
    const std::string video =
        pixelMapVideoIn(FolderBundle(files, assets, "show"), pixelMapFolder(venueId, mapId));
    const auto asset = video.empty() ? nullptr : videos.open(video);
    entry->second = asset ? pixelMapFrameCount(asset->durationSeconds()) : 0;
    return entry->second;
  };
}

}  // namespace halvora
