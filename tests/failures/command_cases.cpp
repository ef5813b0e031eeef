// SPDX-License-Identifier: Apache-2.0
// Every command of `halvora`: it ends with a status, and a reason where that is not 0; what it
// printed or wrote is what it would have without a failure, or nothing.
#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "adapters/ffmpeg/ffmpeg_movies.h"
#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "adapters/image/png_writer.h"
#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "apps/halvora/commands.h"
#include "engine/broadcast.h"
#include "tests/failures/faults.h"
#include "tests/failures/trial.h"
#include "tests/support/source_tree.h"
#include "venue/air/radio.h"
#include "venue/air/transmitter.h"
#include "venue/plan/lut_build.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

const FfmpegVideoAssets kVideos;
const FfmpegMovies kMovies;
const PictureDecoder kPictures;

std::string bytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// All files and folders below one, with their bytes.
Tree treeOf(const std::string& folder) {
  Tree tree;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    tree[fs::relative(entry.path(), folder).string()] =
        entry.is_regular_file() ? bytesOf(entry.path()) : std::string();
  }
  return tree;
}

/// A phone's own loop goes on after a turn that failed; a command's ends.
void runAll(VirtualRunLoop& loop, const std::function<bool()>& isDone) {
  while (!isDone() && loop.failures() == 0 && loop.now() < std::chrono::hours(1)) {
    loop.runFor(milliseconds(1));
  }
  if (loop.failures() > 0) std::rethrow_exception(loop.firstFailure());
}

/// Hears three packets in the first second.
class QuietRadio final : public Radio {
 public:
  QuietRadio() {
    for (int number = 1; number <= 3; ++number) {
      loop_.after(milliseconds(100 * number), [this, number] {
        Broadcast broadcast{.applicationId = 258, .venueId = 7, .red = 255, .mode = 1};
        broadcast.sequence = static_cast<std::uint16_t>(number);
        radio_.advertise(encodeBroadcast(broadcast));
      });
    }
  }
  RunLoop& loop() override { return loop_; }
  BluetoothCentral& bluetooth() override { return radio_; }
  void runUntil(const std::function<bool()>& isDone) override { runAll(loop_, isDone); }

 private:
  VirtualRunLoop loop_;
  VirtualBluetooth radio_{loop_};
};

class QuietTransmitter final : public Transmitter {
 public:
  RunLoop& loop() override { return loop_; }
  void runUntil(const std::function<bool()>& isDone) override { runAll(loop_, isDone); }
  void open(const TransmitterSettings& /*settings*/) override {}
  void show(std::span<const std::uint8_t> /*manufacturerData*/) override {}
  void end() override {}
  bool isBusy() const override { return false; }
  const std::string& failure() const override { return failure_; }

 private:
  VirtualRunLoop loop_;
  std::string failure_;
};

using Command = std::function<CommandResult(const Outside&, const Output&)>;

/// `halvora WORDS`.
Command commandOf(Words words) {
  std::vector<const char*> arguments{"halvora"};
  // The letters of a word stay where they are only if the words do.
  const auto kept = std::make_shared<const Words>(std::move(words));
  for (const std::string& word : *kept) arguments.push_back(word.c_str());
  return [kept, arguments = std::move(arguments)](const Outside& outside, const Output& output) {
    return runCommand(static_cast<int>(arguments.size()), arguments.data(), outside, output);
  };
}

/// A command with what the program itself hands over. What a process has before its `main` begins
/// is made beforehand.
class Run {
 public:
  explicit Run(Command command) : command_(std::move(command)) {
    outside_.encodePicture = pngOf;
    outside_.movies = &kMovies;
    outside_.openRadio = [](const std::string& /*adapter*/) {
      return std::make_unique<QuietRadio>();
    };
    outside_.openTransmitter = [] { return std::make_unique<QuietTransmitter>(); };
    printed_.reserve(1 << 20);
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  void run() {
    printed_.clear();
    result_ = command_(outside_, output_);
  }
  int status() const { return result_.status; }
  const std::string& error() const { return result_.error; }
  const std::string& printed() const { return printed_; }

 private:
  static inline const std::atomic<bool> kIsNotInterrupted{false};

  const Command command_;
  Outside outside_{kPictures, kVideos, kIsNotInterrupted};
  CommandResult result_;
  std::string printed_;
  const Output output_ = [this](std::string_view text) {
    // Not by the heap: a pipe takes what it is given.
    if (printed_.size() + text.size() > printed_.capacity()) return false;
    printed_ += text;
    return true;
  };
};

/// A command, as it was before anything failed: what it printed, and what its folder held then.
struct Right {
  std::string printed;
  Tree tree;
};

class CommandTrial final : public Trial {
 public:
  template <class Which>
  CommandTrial(const std::string& folder, const Which& which, Right& right)
      : folder_(folder),
        right_(right),
        tellsWhatItFinds_(requires { Which::kTellsWhatItFinds; }),
        looksAtPictures_(requires { Which::kLooksAtPictures; }),
        varies_(requires { Which::kVaries; }),
        grows_(requires { Which::kGrows; }),
        run_(commandIn(folder, which)) {
    if constexpr (requires { which.before(); }) {
      Run(commandOf(placed(which.before(), folder))).run();
    }
  }

  void act() override { run_.run(); }

  Verdict judge() override {
    const Tree tree = treeOf(folder_);
    if (right_.printed.empty() && right_.tree.empty()) right_ = {run_.printed(), tree};
    if (run_.status() == 0) {
      if (!run_.error().empty()) return wrong("done, and yet: " + run_.error());
      if (mayDiffer() || isAnotherPage(tree)) return refused();
      if (!varies_ && run_.printed() != right_.printed) return wrong(otherPrint());
      return tree == right_.tree ? whole() : wrong("wrote something else" + difference(tree));
    }
    if (run_.error().empty()) return wrong("ended without a reason");
    const bool isPart = varies_ || mayDiffer() || right_.printed.starts_with(run_.printed());
    if (!isPart) return wrong(otherPrint());
    for (const auto& [name, bytes] : tree) {
      const auto known = right_.tree.find(name);
      if (known == right_.tree.end()) return wrong("left " + name + " behind");
      const bool hasGrown = grows_ && known->second.starts_with(bytes);
      if (known->second != bytes && !hasGrown) return wrong("left half of " + name);
    }
    run_.run();
    if (run_.status() != 0) return wrong("cannot be run afterwards: " + run_.error());
    if (treeOf(folder_) != right_.tree) return wrong("wrote something else afterwards");
    return refused();
  }

 private:
  /// What a command finds is what it could read: it says so, or shows what a phone shows that
  /// cannot read it either.
  bool mayDiffer() const {
    const faults::Kind* kind = faults::plan().kind;
    const bool isFound =
        tellsWhatItFinds_ && kind != nullptr && kind->call != faults::Call::allocate;
    return (isFound || looksAtPictures_) && run_.printed() != right_.printed;
  }

  /// A page has what was printed and more, such as the curve of a phone that could not read a gobo.
  bool isAnotherPage(const Tree& tree) const {
    const auto name = [](const auto& file) { return file.first; };
    return looksAtPictures_ && tree != right_.tree &&
           std::ranges::equal(tree, right_.tree, {}, name, name);
  }

  std::string otherPrint() const {
    const std::string& printed = run_.printed();
    std::size_t at = 0;
    while (at < printed.size() && at < right_.printed.size() && printed[at] == right_.printed[at]) {
      ++at;
    }
    return "printed something else, and ended with " + std::to_string(run_.status()) + " (" +
           run_.error() + "): ..." + printed.substr(at, 120);
  }

  std::string difference(const Tree& tree) const {
    for (const auto& [name, bytes] : tree) {
      const auto known = right_.tree.find(name);
      if (known == right_.tree.end()) return ": " + name + " too";
      if (known->second != bytes) return ": another " + name;
    }
    for (const auto& [name, bytes] : right_.tree) {
      if (!tree.contains(name)) return ": no " + name;
    }
    return "";
  }

  template <class Which>
  static Command commandIn(const std::string& folder, const Which& which) {
    if constexpr (requires { which.command(folder); }) return which.command(folder);
    if constexpr (requires { which.words(); }) return commandOf(placed(which.words(), folder));
  }

  /// In a word, % is the trial's folder.
  static Words placed(Words words, const std::string& folder) {
    for (std::string& word : words) {
      const std::size_t at = word.find('%');
      if (at != std::string::npos) word.replace(at, 1, folder);
    }
    return words;
  }

  std::string folder_;
  Right& right_;
  bool tellsWhatItFinds_;
  /// A library that lacks memory for a picture may say that there is none.
  bool looksAtPictures_;
  /// It prints how long it took.
  bool varies_;
  /// What it writes grows with what happens, as a recording does.
  bool grows_;
  Run run_;
};

template <class Which>
std::unique_ptr<Trial> make(const std::string& folder) {
  static Right right;
  return std::make_unique<CommandTrial>(folder, Which(), right);
}

struct PacketDecode {
  static Words words() {
    return {"packet", "decode", "09C9109200000000000000038000000000000000000000000001"};
  }
};
struct PacketEncode {
  static Words words() {
    return {"packet", "encode", "--applicationId", "4242", "--mode", "3", "--transmitter", "1"};
  }
};
struct MapDump {
  static Words words() { return {"map", "dump", sourceTree() + "/tests/failures/map.json"}; }
};
struct MapCheck {
  static constexpr bool kTellsWhatItFinds = true;
  static Words words() {
    return {"map", "check", preparedAssets() + "/HVAssets/Maps/Venue-7/map.json"};
  }
};
struct MapDraw {
  static Words words() {
    return {"map",    "draw", sourceTree() + "/tests/failures/map.json", "--out", "%/plan.png",
            "--size", "200"};
  }
};
struct LutBuild {
  static Words words() {
    return {"lut",  "build",       preparedClip(), "--seat",    "1,2", "--seat",
            "30,9", "--documents", "%/documents",  "--threads", "2"};
  }
};
struct LutRaw {
  static Words words() {
    return {"lut", "build", preparedClip(), "--seat", "1,2", "--raw", "%/raw", "--threads", "1"};
  }
};
/// As with more seats than the heap should hold: the tables lie in a file.
struct LutInFile {
  static Command command(const std::string& folder) {
    LutBuildRequest request;
    request.video = preparedClip();
    request.seats = {{1, 2}, {30, 9}};
    request.documents = folder + "/documents";
    request.threads = 2;
    request.mostHeapBytes = 0;
    return [request](const Outside& outside, const Output& output) {
      try {
        return buildLuts(request, outside, output);
      } catch (const std::bad_alloc&) {
        return CommandResult{1, "out of memory"};
      }
    };
  }
};
struct LutShow {
  static Words before() {
    return {"lut", "build", preparedClip(), "--seat", "1,2", "--documents", "%/documents"};
  }
  static Words words() {
    return {"lut", "show", preparedClip(), "--seat", "1,2", "--documents", "%/documents"};
  }
};
struct Trace {
  static constexpr bool kTellsWhatItFinds = true;
  static Words words() {
    return {"trace", sourceTree() + "/tests/failures/show.jsonl", "--assets",
            sourceTree() + "/assets/demo"};
  }
};
struct CrowdRun {
  static constexpr bool kTellsWhatItFinds = true;
  static constexpr bool kVaries = true;
  static Words words() {
    return {"crowd",
            "--assets",
            preparedAssets(),
            "--venue",
            "7",
            "--scenario",
            sourceTree() + "/tests/failures/show.jsonl",
            "--out",
            "%/sheet.png",
            "--size",
            "64x32",
            "--threads",
            "2",
            "--fps",
            "2"};
  }
};
/// A map whose tables all phones share, in a file.
struct CrowdMap {
  static constexpr bool kTellsWhatItFinds = true;
  static constexpr bool kVaries = true;
  static Words words() {
    return {"crowd",
            "--assets",
            preparedAssets(),
            "--venue",
            "7",
            "--scenario",
            sourceTree() + "/tests/failures/pixel_map_show.jsonl",
            "--out",
            "%/sheet.png",
            "--size",
            "64x32",
            "--threads",
            "2",
            "--fps",
            "2"};
  }
};
struct Listen {
  static constexpr bool kGrows = true;
  static Words words() { return {"listen", "--for", "1", "--record", "%/heard.jsonl"}; }
};
struct TransmitRun {
  static Words words() {
    return {"transmit", "--scenario", sourceTree() + "/tests/failures/show.jsonl"};
  }
};

struct TraceShown {
  static constexpr bool kTellsWhatItFinds = true;
  static constexpr bool kLooksAtPictures = true;
  static Words words() {
    return {"trace",    sourceTree() + "/tests/failures/show.jsonl",
            "--assets", sourceTree() + "/assets/demo",
            "--shown",  "--flash",
            "limited",  "--air",
            "guarded"};
  }
};
struct Safety {
  static constexpr bool kTellsWhatItFinds = true;
  static constexpr bool kLooksAtPictures = true;
  static Words words() {
    return {"safety",   sourceTree() + "/tests/failures/show.jsonl",
            "--assets", sourceTree() + "/assets/demo",
            "--html",   "%/safety.html",
            "--flash",  "limited"};
  }
};
struct ShowCheck {
  static Words words() {
    return {"show", "check", sourceTree() + "/tests/failures/cues.yaml", "--assets",
            preparedAssets()};
  }
};
struct ShowCompile {
  static Words words() {
    return {"show",          "compile",          sourceTree() + "/tests/failures/cues.yaml",
            "--out",         "%/compiled.jsonl", "--assets",
            preparedAssets()};
  }
};
struct MapImport {
  static Words words() {
    return {"map", "import", sourceTree() + "/tests/failures/tickets.csv", "--out", "%/map.json"};
  }
};

constexpr FailureCase kCases[] = {
    {"halvora-packet-decode", {.files = true}, make<PacketDecode>},
    {"halvora-packet-encode", {.files = true}, make<PacketEncode>},
    {"halvora-map-dump", {.files = true}, make<MapDump>},
    {"halvora-map-check", {.files = true}, make<MapCheck>},
    {"halvora-map-draw", {.files = true}, make<MapDraw>},
    {"halvora-lut-build", {.threads = true, .files = true}, make<LutBuild>},
    {"halvora-lut-raw", {.threads = true, .files = true}, make<LutRaw>},
    {"halvora-lut-in-file", {.threads = true, .files = true}, make<LutInFile>},
    {"halvora-lut-show", {.files = true}, make<LutShow>},
    {"halvora-trace", {.files = true}, make<Trace>},
    {"halvora-trace-shown", {.files = true}, make<TraceShown>},
    {"halvora-safety", {.files = true}, make<Safety>},
    {"halvora-show-check", {.files = true}, make<ShowCheck>},
    {"halvora-show-compile", {.files = true}, make<ShowCompile>},
    {"halvora-map-import", {.files = true}, make<MapImport>},
    {"halvora-crowd", {.threads = true, .files = true}, make<CrowdRun>},
    {"halvora-crowd-map", {.threads = true, .files = true}, make<CrowdMap>},
    {"halvora-listen", {.files = true}, make<Listen>},
    {"halvora-transmit", {.files = true}, make<TransmitRun>},
};

}  // namespace

std::span<const FailureCase> commandCases() { return kCases; }

}  // namespace halvora
