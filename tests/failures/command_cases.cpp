// SPDX-License-Identifier: Apache-2.0
// Every command of `halvora`: it ends with a status, and a reason where that is not 0; what it
// printed or wrote is what it would have without a failure, or nothing.
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/ffmpeg/ffmpeg_movies.h"
#include "platform/ffmpeg/ffmpeg_videos.h"
#include "platform/image/picture_decoder.h"
#include "platform/image/png_writer.h"
#include "tests/failures/trial.h"
#include "tests/support/source_tree.h"
#include "tools/halvora/commands.h"

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

/// `halvora WORDS`, with what the program itself hands over. What a process has before its `main`
/// begins is made beforehand.
class Run {
 public:
  explicit Run(const Words& words) {
    arguments_.push_back("halvora");
    for (const std::string& word : words) arguments_.push_back(word.c_str());
    outside_.encodePicture = pngOf;
    outside_.movies = &kMovies;
    printed_.reserve(1 << 20);
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  void run() {
    printed_.clear();
    result_ = runCommand(static_cast<int>(arguments_.size()), arguments_.data(), outside_, output_);
  }
  int status() const { return result_.status; }
  const std::string& error() const { return result_.error; }
  const std::string& printed() const { return printed_; }

 private:
  static inline const std::atomic<bool> kIsNotInterrupted{false};

  std::vector<const char*> arguments_;
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
  CommandTrial(const std::string& folder, Words words, Right& right)
      : folder_(folder), words_(placed(std::move(words), folder)), right_(right) {}

  void act() override { run_.run(); }

  Verdict judge() override {
    const Tree tree = treeOf(folder_);
    if (right_.printed.empty() && right_.tree.empty()) right_ = {run_.printed(), tree};
    if (run_.status() == 0) {
      if (!run_.error().empty()) return wrong("done, and yet: " + run_.error());
      if (run_.printed() != right_.printed) return wrong("printed something else");
      return tree == right_.tree ? whole() : wrong("wrote something else" + difference(tree));
    }
    if (run_.error().empty()) return wrong("ended without a reason");
    if (!right_.printed.starts_with(run_.printed())) return wrong("printed something else");
    for (const auto& [name, bytes] : tree) {
      const auto known = right_.tree.find(name);
      if (known == right_.tree.end()) return wrong("left " + name + " behind");
      if (known->second != bytes) return wrong("left half of " + name);
    }
    run_.run();
    if (run_.status() != 0) return wrong("cannot be run afterwards: " + run_.error());
    if (treeOf(folder_) != right_.tree) return wrong("wrote something else afterwards");
    return refused();
  }

 private:
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

  /// In a word, % is the trial's folder.
  static Words placed(Words words, const std::string& folder) {
    for (std::string& word : words) {
      const std::size_t at = word.find('%');
      if (at != std::string::npos) word.replace(at, 1, folder);
    }
    return words;
  }

  std::string folder_;
  Words words_;
  Right& right_;
  Run run_{words_};
};

std::string demo(const std::string& name) { return sourceTree() + "/assets/demo/" + name; }

template <class Which>
std::unique_ptr<Trial> make(const std::string& folder) {
  static Right right;
  return std::make_unique<CommandTrial>(folder, Which::words(), right);
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
  static Words words() { return {"map", "check", demo("HVAssets/Maps/Venue-7/map.json")}; }
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
struct Trace {
  static Words words() {
    return {"trace", sourceTree() + "/tests/failures/show.jsonl", "--assets", demo("")};
  }
};

constexpr FailureCase kCases[] = {
    {"halvora-packet-decode", {.files = true}, make<PacketDecode>, true},
    {"halvora-packet-encode", {.files = true}, make<PacketEncode>, true},
    {"halvora-map-dump", {.files = true}, make<MapDump>, true},
    {"halvora-map-check", {.files = true}, make<MapCheck>, true},
    {"halvora-map-draw", {.files = true}, make<MapDraw>, true},
    {"halvora-lut-build", {.threads = true, .files = true}, make<LutBuild>, true},
    {"halvora-lut-raw", {.threads = true, .files = true}, make<LutRaw>, true},
    {"halvora-trace", {.files = true}, make<Trace>, true},
};

}  // namespace

std::span<const FailureCase> commandCases() { return kCases; }

}  // namespace halvora
