// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_output.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <unistd.h>

#include "adapters/linux/linux_files.h"
#include "venue/base/placed_file.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

constexpr int kSheetColumns = 4;
constexpr int kSheetGap = 6;

Image imageOf(std::span<const std::uint8_t> rgb, int width, int height) {
  Image image{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}};
  image.rgba.reserve(rgb.size() / 3 * 4);
  for (std::size_t at = 0; at + 2 < rgb.size(); at += 3) {
    image.rgba.insert(image.rgba.end(), {rgb[at], rgb[at + 1], rgb[at + 2], 255});
  }
  return image;
}

class MovieOutput final : public CrowdOutput {
 public:
  explicit MovieOutput(const std::string& path) : file_(path) {}

  bool begin(const MovieWriters& movies, const CrowdOutputFormat& format) {
    if (!file_.begin()) return false;
    movie_ = movies.make(file_.part(), {format.width, format.height, format.framesPerSecond});
    return movie_ != nullptr;
  }

  bool add(std::span<const std::uint8_t> rgb) override { return movie_->add(rgb); }
  bool finish() override { return movie_->finish() && file_.place(); }

 private:
  PlacedFile file_;
  std::unique_ptr<MovieWriter> movie_;
};

class FolderOutput final : public CrowdOutput {
 public:
  /// A folder that is new goes again if nothing comes.
  FolderOutput(std::string folder, bool isNew, const CrowdOutputFormat& format,
               PictureEncoder encode)
      : folder_(std::move(folder)), isNew_(isNew), format_(format), encode_(encode) {}
  ~FolderOutput() override {
    if (isNew_ && frames_ == 0) rmdir(folder_.c_str());
  }

  bool add(std::span<const std::uint8_t> rgb) override {
    ++frames_;
    const std::string bytes = encode_(imageOf(rgb, format_.width, format_.height));
    isGood_ = isGood_ && !bytes.empty() && files_.replace(nameOf(frames_), bytes);
    return isGood_;
  }
  bool finish() override {
    removeOlder();
    files_.removeLeftovers(folder_ + "/frame-");
    return isGood_;
  }

 private:
  std::string nameOf(std::int64_t frame) const {
    char name[32];
    std::snprintf(name, sizeof name, "/frame-%06lld.png", static_cast<long long>(frame));
    return folder_ + name;
  }
  // Pictures of a longer show before this one would be taken for its end.
  void removeOlder() const {
    std::error_code error;
    for (std::int64_t frame = frames_ + 1; fs::remove(nameOf(frame), error); ++frame) {
    }
  }

  std::string folder_;
  bool isNew_;
  CrowdOutputFormat format_;
  PictureEncoder encode_;
  LinuxFiles files_;
  std::int64_t frames_ = 0;
  bool isGood_ = true;
};

// So many tiles, evenly spread over the frames that were announced.
class SheetOutput final : public CrowdOutput {
 public:
  SheetOutput(std::string path, const CrowdOutputFormat& format, PictureEncoder encode)
      : path_(std::move(path)), format_(format), encode_(encode), tiles_(format.frames) {}

  bool wantsNext() const override { return tiles_.wantsNext(); }
  bool add(std::span<const std::uint8_t> rgb) override {
    const bool isTaken = wantsNext() && !rgb.empty();
    if (isTaken) {
      pixels_.insert(pixels_.end(), rgb.begin(), rgb.end());
      ++taken_;
    }
    tiles_.next(isTaken);
    return true;
  }
  bool finish() override {
    if (taken_ == 0) return false;
    const std::string bytes = encode_(sheet());
    LinuxFiles files;
    const std::string file = fileAt(path_);
    files.removeLeftovers(file);
    return !bytes.empty() && !file.empty() && files.replace(file, bytes);
  }

 private:
  Image sheet() const {
    const int columns = static_cast<int>(std::min<std::int64_t>(taken_, kSheetColumns));
    const int rows = (static_cast<int>(taken_) + columns - 1) / columns;
    const int width = columns * (format_.width + kSheetGap) + kSheetGap;
    const int height = rows * (format_.height + kSheetGap) + kSheetGap;
    std::vector<std::uint8_t> rgb(
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 40);
    const std::size_t line = static_cast<std::size_t>(format_.width) * 3;
    const std::uint8_t* from = pixels_.data();
    for (int tile = 0; tile < static_cast<int>(taken_); ++tile) {
      const int left = kSheetGap + tile % columns * (format_.width + kSheetGap);
      const int top = kSheetGap + tile / columns * (format_.height + kSheetGap);
      for (int row = 0; row < format_.height; ++row, from += line) {
        const auto at = static_cast<std::size_t>(top + row) * static_cast<std::size_t>(width) +
                        static_cast<std::size_t>(left);
        std::copy_n(from, line, rgb.begin() + static_cast<std::ptrdiff_t>(at * 3));
      }
    }
    return imageOf(rgb, width, height);
  }

  std::string path_;
  CrowdOutputFormat format_;
  PictureEncoder encode_;
  SheetTiles tiles_;
  std::int64_t taken_ = 0;
  std::vector<std::uint8_t> pixels_;
};

// Whether a file could be written there.
bool isWritable(const std::string& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) return false;
  return PlacedFile(path).begin();
}

// Names that people mean as one file: a folder of that name would not be what they asked for.
constexpr std::array<std::string_view, 13> kOtherKinds = {".avi",  ".bmp",  ".gif", ".jpeg", ".jpg",
                                                          ".m4v",  ".mkv",  ".mov", ".mpeg", ".mpg",
                                                          ".tiff", ".webm", ".webp"};

bool isFolderMade(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  return fs::is_directory(path, error) && isWritable(path + "/frame");
}

}  // namespace

SheetTiles::SheetTiles(std::int64_t frames)
    : frames_(std::max<std::int64_t>(frames, 1)), tiles_(std::min<std::int64_t>(frames_, kMost)) {}

bool SheetTiles::wantsNext() const { return taken_ < tiles_ && next_ >= taken_ * frames_ / tiles_; }

void SheetTiles::next(bool isTaken) {
  taken_ += isTaken ? 1 : 0;
  ++next_;
}

CrowdOutputKind crowdOutputKindOf(const std::string& path) {
  std::string kind = fs::path(path).extension().string();
  std::ranges::transform(kind, kind.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  if (kind == ".mp4") return CrowdOutputKind::movie;
  if (kind == ".png") return CrowdOutputKind::sheet;
  const bool isOther = std::ranges::find(kOtherKinds, kind) != kOtherKinds.end();
  return isOther ? CrowdOutputKind::other : CrowdOutputKind::folder;
}

std::unique_ptr<CrowdOutput> makeCrowdOutput(const std::string& path,
                                             const CrowdOutputFormat& format,
                                             const CrowdOutputTools& tools) {
  const CrowdOutputKind kind = crowdOutputKindOf(path);
  if (kind == CrowdOutputKind::other) return nullptr;
  if (kind == CrowdOutputKind::movie) {
    std::error_code error;
    if (tools.movies == nullptr || fs::is_directory(path, error)) return nullptr;
    auto output = std::make_unique<MovieOutput>(path);
    return output->begin(*tools.movies, format) ? std::move(output) : nullptr;
  }
  if (tools.encodePicture == nullptr) return nullptr;
  if (kind == CrowdOutputKind::sheet) {
    if (!isWritable(path)) return nullptr;
    return std::make_unique<SheetOutput>(path, format, tools.encodePicture);
  }
  std::error_code error;
  const bool isNew = !fs::exists(path, error);
  if (!isFolderMade(path)) return nullptr;
  return std::make_unique<FolderOutput>(path, isNew, format, tools.encodePicture);
}

}  // namespace halvora
