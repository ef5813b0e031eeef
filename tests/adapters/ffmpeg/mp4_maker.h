// SPDX-License-Identifier: Apache-2.0
// Headers of MP4 files, put together box by box, and what the kit makes of them. The functions have
// short names, so they are in a namespace of their own, for a test to use.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/mp4_outline.h"

namespace halvora::mp4_maker {

class Memory final : public ByteSource {
 public:
  explicit Memory(std::string bytes) : bytes_(std::move(bytes)) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> into) const override {
    ++reads;
    if (offset >= bytes_.size()) return 0;
    const auto count = std::min<std::size_t>(into.size(), bytes_.size() - offset);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), count, into.begin());
    return count;
  }

  mutable int reads = 0;

 private:
  std::string bytes_;
};

inline std::string number(std::uint64_t value, int bytes) {
  std::string text;
  for (int byte = bytes - 1; byte >= 0; --byte) text += static_cast<char>(value >> 8 * byte);
  return text;
}

inline std::string u32s(std::initializer_list<std::uint32_t> values) {
  std::string text;
  for (const std::uint32_t value : values) text += number(value, 4);
  return text;
}

inline std::string box(const std::string& type, const std::string& body) {
  return number(body.size() + 8, 4) + type + body;
}

// Sample descriptions as a camera writes them; boxes may be added to the one entry.
inline std::string descriptions(const std::string& boxes = "") {
  std::string entry(78, '\0');
  entry[75] = 24;
  return box("stsd", u32s({0, 1}) + box("avc1", entry + boxes));
}

struct TrackParts {
  std::uint32_t id = 1;
  std::string handler = "vide";
  std::string edits = {};
  std::string references = {};
  std::string dataReference = box("url ", u32s({1}));
  std::string description = descriptions();
  std::string times = box("stts", u32s({0, 1, 30, 512}));
  std::string sizes = box("stsz", u32s({0, 10, 30}));
  std::string chunks = box("stco", u32s({0, 1, 48}));
  std::uint32_t samplesOfAChunk = 30;
  std::uint32_t duration = 15360;
  std::string more = {};
};

inline std::string track(const TrackParts& parts = {}) {
  const std::string table =
      box("stbl", parts.description + parts.times + parts.sizes +
                      box("stsc", u32s({0, 1, 1, parts.samplesOfAChunk, 1})) + parts.chunks);
  const std::string dinf = box("dinf", box("dref", u32s({0, 1}) + parts.dataReference));
  const std::string media = box("mdhd", u32s({0, 0, 0, 15360, parts.duration, 0})) +
                            box("hdlr", u32s({0, 0}) + parts.handler + std::string(13, '\0')) +
                            box("minf", dinf + table);
  return box("trak", box("tkhd", u32s({0, 0, 0, parts.id, 0}) + std::string(64, '\0')) +
                         parts.references + parts.edits + box("mdia", media) + parts.more);
}

inline std::string header(const std::string& tracks, std::uint32_t timescale = 600,
                          std::uint32_t duration = 1201) {
  return box("moov",
             box("mvhd", u32s({0, 0, 0, timescale, duration}) + std::string(80, '\0')) + tracks);
}

inline std::string file(const std::string& moov, const std::string& behind = "") {
  return box("ftyp", "isom") + moov + box("mdat", std::string(2000, 'x')) + behind;
}

inline std::string fragment(std::uint32_t trackId, const std::string& run,
                            const std::string& time = "") {
  const std::string head = box("tfhd", u32s({8, trackId, 1000}));
  return box("moof", box("mfhd", u32s({0, 1})) + box("traf", head + time + box("trun", run)));
}

inline std::string fragmentedHeader(std::uint32_t duration) {
  const std::string none = u32s({0, 0});
  const TrackParts empty{.times = box("stts", none),
                         .sizes = box("stsz", u32s({0, 0, 0})),
                         .chunks = box("stco", none),
                         .duration = 0};
  const std::string length = duration > 0 ? box("mehd", u32s({0, duration})) : "";
  return header(track(empty) + box("mvex", length + box("trex", u32s({0, 1, 1, 512, 0, 0}))), 600,
                0);
}

inline std::optional<Mp4Outline> outlineOf(const std::string& bytes) {
  return readMp4Outline(Memory(bytes), nullptr);
}

inline std::string reasonAgainst(const std::string& bytes) {
  std::string reason;
  return readMp4Outline(Memory(bytes), &reason) ? "none" : reason;
}

/// Whether the box whose type begins there is hidden: the n-th of that name.
inline bool isHidden(const std::string& bytes, std::string_view type, int nth = 1) {
  std::size_t at = bytes.find(type);
  while (--nth > 0) at = bytes.find(type, at + 1);
  const auto outline = outlineOf(bytes);
  EXPECT_TRUE(outline);
  EXPECT_NE(at, std::string::npos) << type;
  return outline &&
         std::binary_search(outline->hiddenTypes.begin(), outline->hiddenTypes.end(), at);
}

inline constexpr const char* kNonsense = "its header makes no sense";
inline constexpr const char* kTooMany = "its tables claim more samples than it can hold";
inline constexpr const char* kTooManyEdits = "its edit list is too long";
inline constexpr const char* kUnreadable = "cannot be read";
inline constexpr const char* kNoTrack = "no video track in it";

}  // namespace halvora::mp4_maker
