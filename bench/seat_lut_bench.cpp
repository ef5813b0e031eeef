// SPDX-License-Identifier: Apache-2.0
// Seat tables without any decoding: looking up a frame's colour, a packet of a pixel map whose
// table is in memory, reading a table from disk, and gathering the pixels of many seats into their
// tables, each beside the plainest way to do it.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "adapters/standard/standard_files.h"
#include "bench/bench_phone.h"
#include "bench/heap_count.h"
#include "bench/require.h"
#include "pixelmap/pixel_map_seat_luts.h"
#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_files.h"

namespace halvora {

namespace {

constexpr int kThreeMinutes = 3 * 60 * 30;
constexpr const char* kVideo = "/bundle/HVAssets/Maps/Venue-7/1/video.mp4";
constexpr SeatPosition kSeat{12, 40};

std::vector<std::uint32_t> tableOfThreeMinutes() {
  std::vector<std::uint32_t> words;
  for (std::uint32_t frame = 0; frame < kThreeMinutes; ++frame) {
    words.push_back(0xFF000000U | frame * 2654435761U >> 8);
  }
  return words;
}

class NoShow final : public SeatLutListener {
  int currentVideoMinutes() const override { return 0; }
  void refreshMode21ColorIfNeeded() override {}
};

// A phone whose seat has its table on the disk of the virtual phone.
class SeatPhone {
 public:
  SeatPhone() {
    keepNoLogs(phone_);
    phone_.virtualFiles.reads.isKept = false;
    phone_.mainBundle.folder = "/bundle";
    phone_.virtualFiles.put(kVideo, "a video");
    const auto words = tableOfThreeMinutes();
    const SeatLutFiles files(phone_.virtualFiles, json_, "/documents");
    require(files.persistPixelMapSeatLUTData(SeatLut(words), kVideo, kSeat),
            "the table cannot be stored");
    luts.preloadPixelMapSeatLUTForVenueId(7, 1, kSeat.x, kSeat.y);
    require(luts.state().pixelMapSeatLUTFrameCount == kThreeMinutes, "the table is not there");
  }

 private:
  static VirtualPhoneSetup setup() {
    VirtualPhoneSetup setup;
    setup.documents = "/documents";
    return setup;
  }

  ExactJsonReader json_;
  VirtualPhone phone_{json_, setup()};
  const Platform platform_ = phone_.platform();

 public:
  NoShow show;
  PixelMapSeatLuts luts{platform_, show};
};

void lookUp(benchmark::State& state) {
  SeatPhone phone;
  const auto words = tableOfThreeMinutes();
  for (const int frame : {0, 1, kThreeMinutes - 1, kThreeMinutes, kThreeMinutes + 7}) {
    require(phone.luts.colorFromActivePixelMapSeatLUTForFrameIndex(frame) ==
                colourOfWord(words[static_cast<std::size_t>(frame % kThreeMinutes)]),
            "the lookup gives another colour");
  }
  int frame = 0;
  const AllocationsAnIteration allocations(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(phone.luts.colorFromActivePixelMapSeatLUTForFrameIndex(frame++));
  }
}
BENCHMARK(lookUp)->Name("TableLookup/engine");

void lookUpPlainly(benchmark::State& state) {
  const auto words = tableOfThreeMinutes();
  int frame = 0;
  for (auto _ : state) {
    const auto word = words[static_cast<std::size_t>(frame++ % kThreeMinutes)];
    benchmark::DoNotOptimize(word == 0 ? std::nullopt : std::optional(colourOfWord(word)));
  }
}
BENCHMARK(lookUpPlainly)->Name("TableLookup/plain");

void preloadFromMemory(benchmark::State& state) {
  SeatPhone phone;
  const AllocationsAnIteration allocations(state);
  for (auto _ : state) phone.luts.preloadPixelMapSeatLUTForVenueId(7, 1, kSeat.x, kSeat.y);
}
BENCHMARK(preloadFromMemory)->Name("PreloadFromMemory");

// A folder of its own below the temporary one.
class TableFolder {
 public:
  TableFolder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "halvora-bench-XXXXXX").string();
    require(mkdtemp(pattern.data()) != nullptr, "no temporary folder");
    path = pattern;
    std::ofstream(video()) << "a video";
    require(files().persistPixelMapSeatLUTData(SeatLut(tableOfThreeMinutes()), video(), kSeat),
            "the table cannot be stored");
  }
  ~TableFolder() { standard_.removeFolder(path); }
  TableFolder(const TableFolder&) = delete;
  TableFolder& operator=(const TableFolder&) = delete;

  std::string video() const { return path + "/video.mp4"; }
  SeatLutFiles files() { return {standard_, json_, path}; }

  std::string path;

 private:
  StandardFiles standard_;
  ExactJsonReader json_;
};

void loadFromDisk(benchmark::State& state) {
  TableFolder folder;
  const SeatLutFiles files = folder.files();
  require(frameCountOf(files.loadPersistedPixelMapSeatLUTForVideoURL(folder.video(), kSeat)) ==
              kThreeMinutes,
          "the table cannot be read");
  for (auto _ : state) {
    benchmark::DoNotOptimize(files.loadPersistedPixelMapSeatLUTForVideoURL(folder.video(), kSeat));
  }
}
BENCHMARK(loadFromDisk)->Name("TableLoad/engine");

// The bytes of both files, unchecked.
void loadPlainly(benchmark::State& state) {
  TableFolder folder;
  const SeatLutFiles files = folder.files();
  for (auto _ : state) {
    for (const std::string& path :
         {files.pixelMapSeatLUTDataURLForVideoURL(folder.video(), kSeat),
          files.pixelMapSeatLUTMetaURLForVideoURL(folder.video(), kSeat)}) {
      std::ifstream file(path, std::ios::binary);
      std::string bytes(std::filesystem::file_size(path), '\0');
      file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      benchmark::DoNotOptimize(bytes.data());
    }
  }
}
BENCHMARK(loadPlainly)->Name("TableLoad/plain");

// Frames that cost nothing to make, so that only the way into the tables is measured.
class CountedFrame final : public VideoFrame {
 public:
  explicit CountedFrame(std::uint32_t number) : number_(number) {}
  double seconds() const override { return number_ / 30.0; }
  std::uint32_t width() const override { return 1280; }
  std::uint32_t height() const override { return 720; }
  void sample(std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) const override {
    for (std::size_t at = 0; at < positions.size(); ++at) {
      words[at] = 0xFF000000U | (positions[at].x << 12 ^ positions[at].y ^ number_ << 2);
    }
  }

 private:
  std::uint32_t number_;
};

class CountedReader final : public FrameReader {
 public:
  explicit CountedReader(std::uint32_t frames) : frames_(frames) {}
  std::unique_ptr<VideoFrame> next() override {
    return next_ < frames_ ? std::make_unique<CountedFrame>(next_++) : nullptr;
  }
  bool hasLostPictures() const override { return false; }

 private:
  std::uint32_t frames_;
  std::uint32_t next_ = 0;
};

class CountedAsset final : public VideoAsset {
 public:
  double durationSeconds() const override { return kFrames / 30.0; }
  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>&) const override {
    return std::make_unique<CountedReader>(kFrames);
  }
  std::vector<std::unique_ptr<FrameReader>> readers(int) const override {
    std::vector<std::unique_ptr<FrameReader>> all;
    all.push_back(reader(std::nullopt));
    return all;
  }
  std::unique_ptr<FrameGenerator> generator() const override { return nullptr; }

  static constexpr std::uint32_t kFrames = kThreeMinutes;
};

// As many as make the tables far larger than any cache, and no larger than a small machine.
constexpr std::size_t kManySeats = 10'000;

std::vector<SeatPosition> manySeats() {
  std::vector<SeatPosition> seats;
  for (std::size_t at = 0; at < kManySeats; ++at) {
    seats.push_back({static_cast<std::int64_t>(at * 7 % 1280),
                     static_cast<std::int64_t>(at * 7 / 1280 * 2 % 720)});
  }
  return seats;
}

void gatherPlainly(std::span<const SeatPosition> seats, std::vector<std::uint32_t>& table) {
  std::vector<PixelPosition> positions;
  for (const SeatPosition& seat : seats) {
    positions.push_back({static_cast<std::uint32_t>(seat.x), static_cast<std::uint32_t>(seat.y)});
  }
  std::vector<std::uint32_t> words(seats.size());
  CountedReader reader(CountedAsset::kFrames);
  for (std::size_t frame = 0; const auto picture = reader.next(); ++frame) {
    picture->sample(positions, words);
    for (std::size_t seat = 0; seat < seats.size(); ++seat) {
      table[seat * CountedAsset::kFrames + frame] = words[seat];
    }
  }
}

void gatherVenue(benchmark::State& state) {
  const auto seats = manySeats();
  const CountedAsset asset;
  InlineWorkers workers;
  std::vector<std::uint32_t> table(seats.size() * CountedAsset::kFrames);
  std::vector<std::uint32_t> plain(table.size());
  gatherPlainly(seats, plain);
  require(buildSeatTables(asset, seats, table, {.workers = workers}) == BuildEnd::built &&
              table == plain,
          "the tables differ");
  for (auto _ : state) {
    buildSeatTables(asset, seats, table, {.workers = workers});
    benchmark::DoNotOptimize(table.data());
  }
  state.counters["nanosecondsAWord"] = benchmark::Counter(
      static_cast<double>(table.size()) * 1e-9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(gatherVenue)->Name("GatherVenue/engine")->Unit(benchmark::kMillisecond);

void gatherVenuePlainly(benchmark::State& state) {
  const auto seats = manySeats();
  std::vector<std::uint32_t> table(seats.size() * CountedAsset::kFrames);
  for (auto _ : state) {
    gatherPlainly(seats, table);
    benchmark::DoNotOptimize(table.data());
  }
}
BENCHMARK(gatherVenuePlainly)->Name("GatherVenue/plain")->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace halvora
