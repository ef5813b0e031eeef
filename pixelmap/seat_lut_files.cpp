// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <locale>
#include <memory>
#include <new>
#include <sstream>
#include <vector>

#include "text/rows.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestMeta = 64 << 10;
constexpr std::size_t kLargestData = 16 << 20;
constexpr std::size_t kWordBytes = 4;
constexpr double kSameTimeSeconds = 0.5;

struct FaultRow {
  SeatLutFault fault;
  std::string_view text;
};

constexpr std::array<FaultRow, 11> kFaults = {{
    {SeatLutFault::noVideo, "there is no video"},
    {SeatLutFault::noDataFile, "the data file is missing"},
    {SeatLutFault::noMetaFile, "the meta file is missing"},
    {SeatLutFault::noSignature, "the video cannot be looked at"},
    {SeatLutFault::metaUnreadable, "the meta file is empty or cannot be read"},
    {SeatLutFault::metaNotAnObject, "the meta file is not a JSON object"},
    {SeatLutFault::metaIncomplete, "the meta file lacks fileSize, modifiedAt or frameCount"},
    {SeatLutFault::sizeDiffers, "the video's size has changed"},
    {SeatLutFault::timeDiffers, "the video's modification time has changed"},
    {SeatLutFault::dataTooShort, "the data file is too short"},
    {SeatLutFault::dataLengthDiffers, "the data file's length is not that of its frames"},
}};
static_assert(areInOrder(kFaults, &FaultRow::fault));

// The alphabet of file names, without padding.
std::string fileNameBase64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::string text;
  text.reserve((bytes.size() * 4 + 2) / 3);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char byte : bytes) {
    bits = bits << 8 | static_cast<std::uint8_t>(byte);
    for (count += 8; count >= 6; count -= 6) text += kDigits[bits >> (count - 6) & 63];
  }
  if (count > 0) text += kDigits[bits << (6 - count) & 63];
  return text;
}

std::string bytesOfWords(std::span<const std::uint32_t> words) {
  std::string bytes(words.size() * kWordBytes, '\0');
  char* to = bytes.data();
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) {
      *to++ = static_cast<char>(static_cast<std::uint8_t>(word >> shift));
    }
  }
  return bytes;
}

SeatLut wordsOfBytes(std::string_view bytes) {
  std::vector<std::uint32_t> words(bytes.size() / kWordBytes);
  const char* from = bytes.data();
  for (std::uint32_t& word : words) {
    for (int shift = 0; shift < 32; shift += 8) {
      word |= std::uint32_t{static_cast<std::uint8_t>(*from++)} << shift;
    }
  }
  return SeatLut(std::move(words));
}

// A text that reads back as the same number. Not by printf: a host that sets the user's locale
// would have it write a decimal comma.
std::string exactText(double value) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::setprecision(17) << value;
  // Streams keep want of memory to themselves.
  if (!text) throw std::bad_alloc();
  return text.str();
}

std::string metaText(std::size_t frameCount, SeatPosition seat,
                     const VideoFileSignature& signature) {
  return "{\"frameCount\":" + std::to_string(frameCount) + ",\"seatX\":" + std::to_string(seat.x) +
         ",\"seatY\":" + std::to_string(seat.y) +
         ",\"fileSize\":" + std::to_string(signature.fileSize) +
         ",\"modifiedAt\":" + exactText(signature.modifiedAt) + "}";
}

struct Meta {
  double fileSize;
  double modifiedAt;
  std::int64_t frameCount;
};

std::variant<Meta, SeatLutFault> parseMeta(const std::string& text, const JsonReader& json) {
  const std::optional<JsonValue> document = json.parse(text);
  if (!document || document->object() == nullptr) return SeatLutFault::metaNotAnObject;
  const JsonValue* fileSize = document->find("fileSize");
  const JsonValue* modifiedAt = document->find("modifiedAt");
  const JsonValue* frameCount = document->find("frameCount");
  const auto isNumber = [](const JsonValue* value) {
    return value != nullptr && value->number().has_value();
  };
  if (!isNumber(fileSize) || !isNumber(modifiedAt) || !isNumber(frameCount)) {
    return SeatLutFault::metaIncomplete;
  }
  return Meta{*fileSize->number(), *modifiedAt->number(), *frameCount->wholeNumber()};
}

}  // namespace

std::string_view describe(SeatLutFault fault) {
  return kFaults[static_cast<std::size_t>(fault)].text;
}

std::string pixelMapSeatLUTCacheKeyForVideoPath(std::string_view videoPath, SeatPosition seat) {
  return std::string(videoPath) + "|" + std::to_string(seat.x) + "|" + std::to_string(seat.y);
}

std::optional<VideoFileSignature> SeatLutFiles::pixelMapVideoFileSignatureForURL(
    const std::string& videoPath) const {
  if (videoPath.empty()) return std::nullopt;
  const std::optional<FileAttributes> attributes = files_.attributes(videoPath);
  if (!attributes) return std::nullopt;
  return VideoFileSignature{attributes->size, attributes->modifiedAt};
}

std::string SeatLutFiles::pixelMapSeatLUTDirectoryURLForVideoURL(std::string_view videoPath) const {
  if (videoPath.empty() || documents_.empty()) return {};
  return documents_ + "/SeatLUTCache/" + fileNameBase64(videoPath);
}

std::string SeatLutFiles::pixelMapSeatLUTFilenameForSeatX(SeatPosition seat,
                                                          std::string_view extension) {
  return "seat_" + std::to_string(seat.x) + "_" + std::to_string(seat.y) + "." +
         std::string(extension);
}

std::string SeatLutFiles::pixelMapSeatLUTDataURLForVideoURL(std::string_view videoPath,
                                                            SeatPosition seat) const {
  const std::string folder = pixelMapSeatLUTDirectoryURLForVideoURL(videoPath);
  return folder.empty() ? folder : folder + "/" + pixelMapSeatLUTFilenameForSeatX(seat, "bin");
}

std::string SeatLutFiles::pixelMapSeatLUTMetaURLForVideoURL(std::string_view videoPath,
                                                            SeatPosition seat) const {
  const std::string folder = pixelMapSeatLUTDirectoryURLForVideoURL(videoPath);
  return folder.empty() ? folder : folder + "/" + pixelMapSeatLUTFilenameForSeatX(seat, "json");
}

bool SeatLutFiles::persistPixelMapSeatLUTData(
    const SeatLut& lut, const std::string& videoPath, SeatPosition seat,
    const std::optional<VideoFileSignature>& builtFrom) const {
  if (videoPath.empty() || frameCountOf(lut) == 0) return false;
  const auto signature = pixelMapVideoFileSignatureForURL(videoPath);
  if (!signature || (builtFrom && *builtFrom != *signature)) return false;
  const std::string folder = pixelMapSeatLUTDirectoryURLForVideoURL(videoPath);
  if (folder.empty() || !files_.makeFolder(folder)) return false;
  return files_.replace(pixelMapSeatLUTDataURLForVideoURL(videoPath, seat),
                        bytesOfWords(lut.words())) &&
         files_.replace(pixelMapSeatLUTMetaURLForVideoURL(videoPath, seat),
                        metaText(lut.words().size(), seat, *signature));
}

void SeatLutFiles::removeLeftovers(std::string_view videoPath) const {
  const std::string folder = pixelMapSeatLUTDirectoryURLForVideoURL(videoPath);
  if (!folder.empty()) files_.removeLeftovers(folder + "/");
}

std::variant<SeatLut, SeatLutFault> SeatLutFiles::read(const std::string& videoPath,
                                                       SeatPosition seat) const {
  const std::string dataURL = pixelMapSeatLUTDataURLForVideoURL(videoPath, seat);
  const std::string metaURL = pixelMapSeatLUTMetaURLForVideoURL(videoPath, seat);
  if (dataURL.empty()) return SeatLutFault::noVideo;
  if (!files_.attributes(dataURL)) return SeatLutFault::noDataFile;
  if (!files_.attributes(metaURL)) return SeatLutFault::noMetaFile;
  const auto signature = pixelMapVideoFileSignatureForURL(videoPath);
  if (!signature) return SeatLutFault::noSignature;

  const auto text = files_.read(metaURL, kLargestMeta);
  if (!text || text->empty()) return SeatLutFault::metaUnreadable;
  const auto parsed = parseMeta(*text, json_);
  if (const auto* fault = std::get_if<SeatLutFault>(&parsed)) return *fault;
  const Meta& meta = std::get<Meta>(parsed);
  if (meta.fileSize != static_cast<double>(signature->fileSize)) return SeatLutFault::sizeDiffers;
  // Written so that a time that is no number fails too.
  if (!(std::abs(meta.modifiedAt - signature->modifiedAt) <= kSameTimeSeconds)) {
    return SeatLutFault::timeDiffers;
  }

  const auto data = files_.read(dataURL, kLargestData);
  if (!data || data->size() < kWordBytes) return SeatLutFault::dataTooShort;
  const std::size_t words = data->size() / kWordBytes;
  const bool isCounted = meta.frameCount >= 1;
  const bool isRight = data->size() % kWordBytes == 0 &&
                       (!isCounted || static_cast<std::uint64_t>(meta.frameCount) == words);
  if (!isRight) return SeatLutFault::dataLengthDiffers;
  return wordsOfBytes(*data);
}

SeatLut SeatLutFiles::loadPersistedPixelMapSeatLUTForVideoURL(const std::string& videoPath,
                                                              SeatPosition seat) const {
  auto result = read(videoPath, seat);
  SeatLut* lut = std::get_if<SeatLut>(&result);
  return lut != nullptr ? std::move(*lut) : nullptr;
}

void SeatLutFiles::removeTables(std::string_view videoPath) const {
  const std::string folder = pixelMapSeatLUTDirectoryURLForVideoURL(videoPath);
  if (!folder.empty() && files_.attributes(folder)) files_.removeFolder(folder);
}

}  // namespace halvora
