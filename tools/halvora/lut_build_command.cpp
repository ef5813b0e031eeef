// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "platform/standard/thread_workers.h"
#include "tools/halvora/lut_build.h"
#include "tools/halvora/lut_commands.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

bool isReadableFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && std::ifstream(path, std::ios::binary).is_open();
}

class BuildCommand final : public ToolCommand {
 public:
  void describe(CLI::App& app) override {
    app.add_option("VIDEO", video_, "the video of the pixel map")->required();
    app.add_option("--seat", seats_, "a seat, as X,Y: its pixel in the video; may be repeated")
        ->required()
        ->allow_extra_args(false);
    documents_.option = app.add_option("--documents", documents_.text,
                                       "the private documents folder that the tables go to");
    raw_.option = app.add_option("--raw", raw_.text,
                                 "write only the table's bytes, to this file instead (one seat)");
    center_.option = app.add_option("--center", center_.text,
                                    "only the frames around this one (with --radius and --raw)");
    radius_.option = app.add_option("--radius", radius_.text,
                                    "how many frames before and after the one in the centre");
    threads_.option = app.add_option("--threads", threads_.text,
                                     "decode on so many threads (default: one a processor)");
    app.add_flag("--no-progress", isQuiet_, "show no progress on a terminal");
    app.footer(
        "Prints an object for each seat: frameCount, and the paths of the files data and meta.\n"
        "With --raw nothing is printed.");
  }

  CommandResult run(const Call& call) override {
    LutBuildRequest request;
    for (const auto step :
         {&BuildCommand::checkOptions, &BuildCommand::readNumbers, &BuildCommand::readPaths}) {
      if (const auto refusal = (this->*step)(request)) return *refusal;
    }
    Outside outside = call.outside;
    if (isQuiet_) outside.terminal.write = {};
    return buildLuts(request, outside, call.output);
  }

 private:
  using Refusal = std::optional<CommandResult>;
  struct TextOption {
    const CLI::Option* option = nullptr;
    std::string text;

    bool isGiven() const { return option->count() > 0; }
  };

  Refusal checkOptions(LutBuildRequest& /*request*/) const {
    if (!raw_.isGiven() && !documents_.isGiven()) {
      return unusable("--documents or --raw must say where the tables go");
    }
    if (raw_.isGiven() && seats_.size() > 1) return unusable("--raw takes one --seat");
    if (center_.isGiven() != radius_.isGiven())
      return unusable("--center and --radius go together");
    if (center_.isGiven() && !raw_.isGiven()) {
      return unusable("--center needs --raw: a table of some of the frames is not kept");
    }
    return std::nullopt;
  }

  Refusal readNumbers(LutBuildRequest& request) const {
    for (const std::string& text : seats_) {
      const auto seat = seatOf(text);
      if (!seat) return notASeat(text);
      request.seats.push_back(*seat);
    }
    if (center_.isGiven()) {
      const auto center = wholeNumber(center_.text);
      const auto radius = wholeNumber(radius_.text);
      if (!center) return unusable("--center must be a whole number, not \"" + center_.text + "\"");
      if (!radius) return unusable("--radius must be a whole number, not \"" + radius_.text + "\"");
      request.seed = LutSeed{*center, *radius};
    }
    if (threads_.isGiven()) {
      const auto threads = decimal(threads_.text, ThreadWorkers::kMost);
      if (!threads || *threads == 0) {
        return unusable("--threads must be 1 to " + std::to_string(ThreadWorkers::kMost) +
                        ", not \"" + threads_.text + "\"");
      }
      request.threads = static_cast<int>(*threads);
    }
    return std::nullopt;
  }

  Refusal readPaths(LutBuildRequest& request) const {
    std::error_code error;
    if (documents_.isGiven() && !mayBeFolder(documents_.text)) return notAFolder(documents_.text);
    if (raw_.isGiven() && (raw_.text.empty() || fs::is_directory(raw_.text, error))) {
      return unusable(raw_.text + ": not a file (--raw)");
    }
    if (!isReadableFile(video_)) return unusable(video_ + ": cannot be read");
    if (raw_.isGiven() && fs::equivalent(raw_.text, video_, error)) {
      return unusable(raw_.text + ": is the video itself (--raw)");
    }
    request.video = absolutePath(video_);
    if (raw_.isGiven()) {
      request.raw = absolutePath(raw_.text);
    } else {
      request.documents = absolutePath(documents_.text);
    }
    return std::nullopt;
  }

  std::string video_;
  std::vector<std::string> seats_;
  TextOption documents_;
  TextOption raw_;
  TextOption center_;
  TextOption radius_;
  TextOption threads_;
  bool isQuiet_ = false;
};

}  // namespace

std::unique_ptr<ToolCommand> makeLutBuildCommand() { return std::make_unique<BuildCommand>(); }

std::optional<SeatPosition> seatOf(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto x = decimal(text.substr(0, comma), INT64_MAX);
  const auto y = decimal(text.substr(comma + 1), INT64_MAX);
  if (!x || !y) return std::nullopt;
  return SeatPosition{static_cast<std::int64_t>(*x), static_cast<std::int64_t>(*y)};
}

CommandResult notASeat(const std::string& text) {
  return unusable("--seat must be X,Y, two whole numbers, 0 or more, not \"" + text + "\"");
}

CommandResult notAFolder(const std::string& text) {
  return unusable(text + ": not a folder (--documents)");
}

}  // namespace halvora
