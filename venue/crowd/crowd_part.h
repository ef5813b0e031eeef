// SPDX-License-Identifier: Apache-2.0
// A shard of a crowd on disk: what its phones did, slice by slice, for whoever puts all shards
// together. A file of records, each with its length before it and behind it the fingerprint of the
// file so far; numbers are packed. A part that was cut short, damaged or put together from several,
// or is none, is refused with a reason. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "venue/base/packed_bytes.h"
#include "venue/base/placed_file.h"
#include "venue/crowd/coverage.h"
#include "venue/crowd/crowd_output.h"
#include "venue/crowd/crowd_shard.h"
#include "venue/crowd/crowd_slice.h"
#include "venue/crowd/rogues.h"

namespace halvora {

/// What the shards of one show have in common, and who is in this one.
struct CrowdPartHead {
  CrowdPartHead() = default;
  CrowdPartHead(CrowdPartHead&&) = default;
  CrowdPartHead& operator=(CrowdPartHead&&) = default;
  CrowdPartHead(const CrowdPartHead&) = delete;
  CrowdPartHead& operator=(const CrowdPartHead&) = delete;

  CrowdShard shard;
  /// Whatever the show follows from, each with its name: "--loss 0.1".
  std::vector<std::string> facts;
  /// Of the venue.
  std::size_t seats = 0;
  /// Of all shards.
  std::size_t phones = 0;
  int width = 0;
  int height = 0;
  int framesPerSecond = 0;
  Duration from{};
  Duration end{};
  std::uint64_t packetsSent = 0;
  /// Only the frames of a sheet have lights.
  bool isForSheet = false;
  std::vector<Rogue> rogues;
  /// Their names; those of the seats are views of them.
  std::vector<std::string> sections;
  /// Of this shard.
  std::vector<CrowdSeat> places;
  /// None where nobody asked.
  std::optional<Coverage> coverage;
};

class CrowdPartWriter final : public CrowdSink {
 public:
  explicit CrowdPartWriter(const std::string& path);

  /// False where the file cannot be made.
  bool begin(const CrowdPartHead& head);
  bool add(const CrowdSlice& slice) override;
  /// Makes it a whole part.
  bool finish(const CrowdEnd& end);

 private:
  void write(std::string_view bytes);
  bool writeRecord(char kind);

  PlacedFile file_;
  std::ofstream stream_;
  FieldSections sections_{{}};
  bool isForSheet_ = false;
  SheetTiles tiles_{1};
  /// Of the frame before.
  std::vector<CrowdLight> lights_;
  PackedWriter record_;
  /// Of all that was written.
  std::uint64_t print_ = kNoFingerprint;
};

class CrowdPartReader {
 public:
  /// Opens it and reads its head; or why not.
  static std::variant<std::unique_ptr<CrowdPartReader>, std::string> open(const std::string& path);

  const CrowdPartHead& head() const { return head_; }
  const std::string& path() const { return path_; }

  enum class Next : std::uint8_t { slice, end, bad };
  /// Takes the next record in.
  Next next();
  /// The lights of its frames live until the next. Each light's section is the part's own.
  const CrowdSlice& slice() const { return slice_; }
  const CrowdEnd& end() const { return end_; }

 private:
  explicit CrowdPartReader(std::string path);

  bool read(std::span<char> bytes);
  bool readPrint();
  bool readRecord(char& kind);
  bool readHead(PackedReader& reader);
  bool readPlaces(PackedReader& reader);
  bool readSlice(PackedReader& reader);
  void readFrame(PackedReader& reader, CrowdFrame& frame);
  void readLights(PackedReader& reader);
  void readLook(PackedReader& reader);
  void readField(PackedReader& reader);
  bool readEnd(PackedReader& reader);

  std::string path_;
  std::ifstream stream_;
  std::uint64_t left_ = 0;
  /// Of all that was read.
  std::uint64_t print_ = kNoFingerprint;
  std::string record_;
  CrowdPartHead head_;
  CrowdSlice slice_;
  CrowdEnd end_;
  SheetTiles tiles_{1};
  /// Of the frame before.
  std::vector<CrowdLight> lights_;
  /// Of the slice's frames, one after the other.
  std::vector<CrowdLight> frameLights_;
  /// Of each section so far, which no phones can give more of than they have.
  std::vector<FieldLight> field_;
};

}  // namespace halvora
