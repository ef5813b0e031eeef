// SPDX-License-Identifier: Apache-2.0
// What is killed: a build of many seats' tables, a precompute of several maps, and defaults.
#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_phone.h"
#include "apps/halvora/commands.h"
#include "engine/show_engine.h"
#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/failures/kills.h"
#include "tests/failures/trial.h"
#include "tests/support/pixmap_decoder.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::uint32_t>;

const ExactJsonReader kJson;
const FfmpegVideoAssets kVideos;

Words wordsOf(const SeatLut& lut) {
  return lut ? Words(lut.words().begin(), lut.words().end()) : Words();
}

SeatPosition seatAt(int number) { return {number, number * 7 % 64}; }

/// Of these seats, those whose tables pass the checks of loading, as bits.
std::string tablesOf(const std::string& documents, const std::string& video, int seats,
                     std::uint64_t& done) {
  LinuxFiles files;
  const SeatLutFiles tables(files, kJson, documents);
  ThreadWorkers workers(1);
  for (int seat = 0; seat < seats; ++seat) {
    const SeatLut table = tables.loadPersistedPixelMapSeatLUTForVideoURL(video, seatAt(seat));
    if (!table) continue;
    const Words right = wordsOf(
        buildPixelMapSeatLUTForVideoURL(kVideos, video, seatAt(seat), {.workers = workers}));
    if (wordsOf(table) != right) return "a wrong table of seat " + std::to_string(seat);
    done |= std::uint64_t{1} << seat;
  }
  return {};
}

// The command builds all of them each time, and puts one after the other in place.
struct ManySeats {
  static constexpr int kSeats = 24;

  static void work(const std::string& folder, std::atomic<std::uint64_t>& /*said*/) {
    std::vector<std::string> words{"halvora",     "lut",  "build",     preparedClip(),
                                   "--documents", folder, "--threads", "1"};
    for (int seat = 0; seat < kSeats; ++seat) {
      words.emplace_back("--seat");
      words.push_back(std::to_string(seatAt(seat).x) + "," + std::to_string(seatAt(seat).y));
    }
    std::vector<const char*> arguments;
    for (const std::string& word : words) arguments.push_back(word.c_str());
    const PixmapDecoder images;
    const std::atomic<bool> isNotInterrupted{false};
    const Outside outside{images, kVideos, isNotInterrupted};
    const CommandResult result = runCommand(static_cast<int>(arguments.size()), arguments.data(),
                                            outside, [](std::string_view) { return true; });
    if (result.status != 0) std::_Exit(1);
  }
  static std::string look(const std::string& folder, std::uint64_t& done) {
    return tablesOf(folder, preparedClip(), kSeats, done);
  }
};

/// A phone that has pixel maps of one venue and builds what is missing for its seat.
struct Precompute {
  static constexpr int kMaps = 4;

  static std::string videoOf(const std::string& folder, int map) {
    return folder + "/main/HVAssets/Maps/Venue-7/" + std::to_string(map + 1) + "/video.mp4";
  }
  static void prepare(const std::string& folder) {
    for (int map = 0; map < kMaps; ++map) {
      const std::string video = videoOf(folder, map);
      if (fs::exists(video)) continue;
      fs::create_directories(fs::path(video).parent_path());
      fs::create_hard_link(preparedClip(), video);
    }
  }

  static void work(const std::string& folder, std::atomic<std::uint64_t>& said) {
    prepare(folder);
    LinuxFiles files;
    ThreadWorkers workers(1);
    VirtualPhoneSetup setup;
    setup.documents = folder + "/documents";
    setup.files = &files;
    setup.videoAssets = &kVideos;
    setup.workers = &workers;
    VirtualPhone phone(kJson, std::move(setup));
    phone.mainBundle.folder = folder + "/main";
    ShowEngine engine(phone.platform());
    engine.viewDidLoad();
    bool isComplete = false;
    phone.loop.actAt(phone.loop.now(), [&] {
      engine.precomputePixelMapLUTsForVenueId(
          7, seatAt(3).x, seatAt(3).y,
          [&said](int done, int /*total*/, const std::string& /*map*/) {
            said = (std::uint64_t{1} << done) - 1;
          },
          [&isComplete](int /*done*/, int /*total*/) { isComplete = true; });
    });
    phone.loop.runFor(milliseconds(1000));
    if (!isComplete) std::_Exit(1);
  }
  static std::string look(const std::string& folder, std::uint64_t& done) {
    for (int map = 0; map < kMaps; ++map) {
      LinuxFiles files;
      const SeatLutFiles tables(files, kJson, folder + "/documents");
      const std::string video = videoOf(folder, map);
      const SeatLut table = tables.loadPersistedPixelMapSeatLUTForVideoURL(video, seatAt(3));
      if (!table) continue;
      ThreadWorkers workers(1);
      const Words right =
          wordsOf(buildPixelMapSeatLUTForVideoURL(kVideos, video, seatAt(3), {.workers = workers}));
      if (wordsOf(table) != right) return "a wrong table of map " + std::to_string(map + 1);
      done |= std::uint64_t{1} << map;
    }
    return {};
  }
};

/// Counts on from what is stored, ten times.
struct Defaults {
  struct Room {
    explicit Room(const std::string& folder)
        : defaults(folder + "/defaults.json", {files, kJson, loop, queues}) {}
    LinuxFiles files;
    VirtualRunLoop loop;
    VirtualQueues queues{loop};
    FileDefaults defaults;
  };
  static std::string textOf(std::int64_t number) {
    return std::string(20'000, static_cast<char>('a' + number % 26));
  }

  static void work(const std::string& folder, std::atomic<std::uint64_t>& said) {
    Room room(folder);
    const std::int64_t from = integerForKey(room.defaults, "first");
    for (std::int64_t number = from + 1; number <= from + 10; ++number) {
      room.loop.actAt(room.loop.now(), [&] {
        room.defaults.set("first", number);
        room.defaults.set("text", textOf(number));
        room.defaults.set("zLast", number);
        room.defaults.synchronize();
      });
      said = static_cast<std::uint64_t>(number);
    }
  }
  static std::string look(const std::string& folder, std::uint64_t& done) {
    const Room room(folder);
    const std::int64_t number = integerForKey(room.defaults, "first");
    if (integerForKey(room.defaults, "zLast") != number) return "a mixture of two states";
    if (number > 0 && textForKey(room.defaults, "text") != textOf(number)) return "half a state";
    for (const auto& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename().string();
      if (name != "defaults.json") return name + " is left after a start";
    }
    done = static_cast<std::uint64_t>(number);
    return {};
  }
};

constexpr KillCase kCases[] = {
    {"kill-many-seats", ManySeats::work, ManySeats::look, true,
     (std::uint64_t{1} << ManySeats::kSeats) - 1},
    {"kill-precompute", Precompute::work, Precompute::look, true,
     (std::uint64_t{1} << Precompute::kMaps) - 1},
    {"kill-defaults", Defaults::work, Defaults::look, false, 0},
};

}  // namespace

std::span<const KillCase> killCases() { return kCases; }

}  // namespace halvora
