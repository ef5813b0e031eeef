// SPDX-License-Identifier: Apache-2.0
#include "adapters/image/picture_decoder.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include <png.h>
#include <turbojpeg.h>

#include "adapters/image/jpeg_row.h"

namespace halvora {

namespace {

constexpr std::size_t kBytesPerPixel = 4;
constexpr std::string_view kPngMark = "\x89PNG\r\n\x1A\n";

bool isAllowed(std::uint64_t width, std::uint64_t height) {
  return width > 0 && height > 0 && width <= ImageDecoder::kMostPixels / height;
}

bool isJpeg(std::string_view bytes) { return bytes.starts_with("\xFF\xD8\xFF"); }

Image emptyImage(std::uint32_t width, std::uint32_t height) {
  return {width, height, std::vector<std::uint8_t>(std::size_t{width} * height * kBytesPerPixel)};
}

using JpegHandle = std::unique_ptr<void, int (*)(tjhandle)>;

const unsigned char* dataOf(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

struct JpegSize {
  int width = 0;
  int height = 0;
};

// None for what is no JPEG, of a kind that is not decoded, or too large.
std::optional<JpegSize> sizeOfJpeg(const JpegHandle& handle, std::string_view bytes) {
  JpegSize size;
  int subsampling = 0;
  int colourSpace = 0;
  const bool isRead =
      handle && tjDecompressHeader3(handle.get(), dataOf(bytes), bytes.size(), &size.width,
                                    &size.height, &subsampling, &colourSpace) == 0;
  const bool isGood = isRead && isAllowed(static_cast<std::uint64_t>(size.width),
                                          static_cast<std::uint64_t>(size.height));
  return isGood ? std::optional(size) : std::nullopt;
}

std::optional<Image> decodeJpeg(std::string_view bytes) {
  const JpegHandle handle(tjInitDecompress(), tjDestroy);
  const auto size = sizeOfJpeg(handle, bytes);
  if (!size) return std::nullopt;
  Image image =
      emptyImage(static_cast<std::uint32_t>(size->width), static_cast<std::uint32_t>(size->height));
  // A warning means that the data ended early or is damaged; half a picture is none.
  const int flags = TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;
  if (tjDecompress2(handle.get(), dataOf(bytes), bytes.size(), image.rgba.data(), size->width, 0,
                    size->height, TJPF_RGBA, flags) != 0) {
    return std::nullopt;
  }
  return image;
}

std::optional<ImageRow> decodeJpegRow(std::string_view bytes, std::int64_t row) {
  const auto size = sizeOfJpeg(JpegHandle(tjInitDecompress(), tjDestroy), bytes);
  if (!size) return std::nullopt;
  ImageRow found{
      static_cast<std::uint32_t>(size->width), static_cast<std::uint32_t>(size->height), {}};
  // Wherever the row is, a picture that is damaged anywhere is none.
  const bool isInside = row >= 0 && row < size->height;
  std::vector<std::uint8_t> rgba(std::size_t{found.width} * kBytesPerPixel);
  if (!readJpegRow(bytes, isInside ? static_cast<std::uint32_t>(row) : 0, rgba)) {
    return std::nullopt;
  }
  if (isInside) found.rgba = std::move(rgba);
  return found;
}

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (const char byte : bytes.substr(at, 4))
    number = number << 8 | static_cast<std::uint8_t>(byte);
  return number;
}

/// A PNG without the chunks that no pixel depends on. The library would read them before it has
/// seen a pixel, and unpack the compressed texts among them, each to a thousand times its size.
std::string_view withoutRemarks(std::string_view png, std::string& storage) {
  constexpr std::string_view kWanted[] = {"tRNS", "bKGD", "gAMA", "cHRM", "sRGB", "iCCP", "sBIT"};
  constexpr std::size_t kAround = 12;  // length, name and checksum
  constexpr char kSmallLetter = 0x20;
  bool isChanged = false;
  bool hasProfile = false;
  std::size_t kept = 0;
  for (std::size_t at = kPngMark.size(); png.size() - at >= kAround;) {
    const std::size_t size = kAround + numberAt(png, at);
    if (png.size() - at < size) break;
    const std::string_view name = png.substr(at + 4, 4);
    const bool isNeeded =
        (name[0] & kSmallLetter) == 0 ||
        std::find(std::begin(kWanted), std::end(kWanted), name) != std::end(kWanted);
    // A second profile counts for nothing, and is compressed too.
    const bool isKept = isNeeded && !(name == "iCCP" && std::exchange(hasProfile, true));
    if (!isKept) {
      storage += png.substr(kept, at - kept);
      kept = at + size;
      isChanged = true;
    }
    at += size;
  }
  if (!isChanged) return png;
  return storage += png.substr(kept);
}

// A picture for which there was no memory may be read another time.
std::optional<Image> nonePng(const png_image& png) {
  if (std::string_view(png.message).ends_with("out of memory")) throw std::bad_alloc();
  return std::nullopt;
}

std::optional<Image> decodePng(std::string_view whole) {
  std::string storage;
  const std::string_view bytes = withoutRemarks(whole, storage);
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()) == 0) return nonePng(png);
  const std::unique_ptr<png_image, void (*)(png_imagep)> release(&png, png_image_free);
  if (!isAllowed(png.width, png.height)) return std::nullopt;
  png.format = PNG_FORMAT_RGBA;
  // Without a word on its gamma a picture is meant for screens, however many bits it has.
  png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
  Image image = emptyImage(png.width, png.height);
  if (png_image_finish_read(&png, nullptr, image.rgba.data(), 0, nullptr) == 0) {
    return nonePng(png);
  }
  return image;
}

}  // namespace

std::optional<Image> PictureDecoder::decode(std::string_view bytes) const {
  if (isJpeg(bytes)) return decodeJpeg(bytes);
  if (bytes.starts_with(kPngMark)) return decodePng(bytes);
  return std::nullopt;
}

std::optional<ImageRow> PictureDecoder::decodeRow(std::string_view bytes, std::int64_t row) const {
  return isJpeg(bytes) ? decodeJpegRow(bytes, row) : ImageDecoder::decodeRow(bytes, row);
}

}  // namespace halvora
