// SPDX-License-Identifier: Apache-2.0
// A show that is played with a journal: whatever fails, the command ends with a reason or plays on,
// and the next one goes on above every number that was on the air.
#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "apps/halvora/commands.h"
#include "engine/broadcast.h"
#include "tests/apps/halvora/virtual_crew.h"
#include "tests/failures/trial.h"
#include "tests/support/source_tree.h"

namespace halvora {

namespace {

/// The sequence numbers of the packets in lines of JSON.
struct Numbers {
  int first = 0;
  int last = 0;
};

Numbers numbersOf(std::string_view lines) {
  constexpr std::string_view kKey = "\"packet\":\"";
  constexpr std::size_t kSequenceDigit = 2 * kSequenceOffset;
  Numbers numbers;
  for (std::size_t at = lines.find(kKey); at != lines.npos; at = lines.find(kKey, at + 1)) {
    const std::string_view digits = lines.substr(at + kKey.size() + kSequenceDigit, 4);
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    if (numbers.first == 0) numbers.first = number;
    numbers.last = std::max(numbers.last, number);
  }
  return numbers;
}

class LiveTrial final : public Trial {
 public:
  explicit LiveTrial(const std::string& folder)
      : show_(sourceTree() + "/tests/failures/cues.yaml"),
        assets_(preparedAssets()),
        journal_(folder + "/numbers.journal") {
    printed_.reserve(1 << 20);
    crew_.lines = {{100, "go"}, {900, "blackout"}, {1000, "release"}, {1500, "quit"}};
    outside_.openLive = [this] { return std::make_unique<VirtualGround>(crew_); };
    outside_.messages = [](std::string_view /*line*/) { return true; };
    run();
    before_ = numbersOf(printed_);
  }

  void act() override { run(); }

  Verdict judge() override {
    const CommandResult result = result_;
    const Numbers during = numbersOf(printed_);
    if (before_.last == 0) return wrong("nothing was on the air before");
    if (result.status != 0 && result.error.empty()) return wrong("ended without a reason");
    if (during.first != 0 && during.first <= before_.last) return wrong(toldOf(during, before_));
    run();
    if (result_.status != 0) return wrong("cannot be played afterwards: " + result_.error);
    const Numbers after = numbersOf(printed_);
    const int onAir = std::max(before_.last, during.last);
    if (after.first <= onAir) return wrong(toldOf(after, {.last = onAir}));
    return result.status == 0 && during.first != 0 ? whole() : refused();
  }

 private:
  static std::string toldOf(const Numbers& now, const Numbers& then) {
    return "begins with number " + std::to_string(now.first) + ", though " +
           std::to_string(then.last) + " was on the air";
  }

  void run() {
    const char* const words[] = {
        "halvora", "live",      show_.c_str(), "--assets",  assets_.c_str(), "--air",
        "stdout",  "--control", "-",           "--journal", journal_.c_str()};
    printed_.clear();
    result_ = runCommand(static_cast<int>(std::size(words)), words, outside_, output_);
  }

  static inline const std::atomic<bool> kIsNotInterrupted{false};
  static inline const FfmpegVideoAssets kVideos;
  static inline const PictureDecoder kPictures;

  const std::string show_;
  const std::string assets_;
  const std::string journal_;
  Crew crew_;
  Outside outside_{kPictures, kVideos, kIsNotInterrupted};
  std::string printed_;
  const Output output_ = [this](std::string_view text) {
    if (printed_.size() + text.size() > printed_.capacity()) return false;
    printed_ += text;
    return true;
  };
  CommandResult result_;
  Numbers before_;
};

std::unique_ptr<Trial> makeLive(const std::string& folder) {
  return std::make_unique<LiveTrial>(folder);
}

constexpr FailureCase kCases[] = {{"halvora-live", {.files = true}, makeLive}};

}  // namespace

std::span<const FailureCase> liveCases() { return kCases; }

}  // namespace halvora
