// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/movie_file.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "adapters/ffmpeg/local_file.h"

namespace halvora {

std::unique_ptr<const MovieFile> MovieFile::open(const std::string& path, std::string* reason) {
  std::unique_ptr<LocalFile> file = LocalFile::open(path);
  if (file == nullptr) {
    if (reason != nullptr) *reason = "cannot be read";
    return nullptr;
  }
  std::optional<Mp4Outline> outline = readMp4Outline(*file, reason);
  if (!outline) return nullptr;
  return std::make_unique<const MovieFile>(MovieFile{std::move(file), *std::move(outline)});
}

std::size_t MovieFile::read(std::uint64_t offset, std::span<std::uint8_t> into) const {
  // Not "free", which a demuxer may search for a header.
  constexpr std::string_view kHidden = "skip";
  const std::size_t count = bytes->read(offset, into);
  // A name may have begun before the place that is read from.
  const std::uint64_t from = offset - std::min<std::uint64_t>(offset, kHidden.size() - 1);
  const auto& hidden = outline.hiddenTypes;
  for (auto type = std::lower_bound(hidden.begin(), hidden.end(), from);
       type != hidden.end() && *type < offset + count; ++type) {
    for (std::size_t letter = 0; letter < kHidden.size(); ++letter) {
      const std::uint64_t at = *type + letter;
      if (at < offset || at - offset >= count) continue;
      into[static_cast<std::size_t>(at - offset)] = static_cast<std::uint8_t>(kHidden[letter]);
    }
  }
  return count;
}

}  // namespace halvora
