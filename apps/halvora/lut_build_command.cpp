// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "adapters/standard/thread_workers.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/lut_commands.h"
#include "venue/plan/lut_build.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

bool isReadableFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && std::ifstream(path, std::ios::binary).is_open();
}

class BuildCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("VIDEO", video_, "the video of the pixel map");
    options.required("--seat", seats_, "a seat, as X,Y: its pixel in the video; may be repeated");
    options.optional("--documents", documents_,
                     "the private documents folder that the tables go to");
    options.optional("--raw", raw_,
                     "write only the table's bytes, to this file instead (one seat)");
    options.optional("--center", center_,
                     "only the frames around this one (with --radius and --raw)");
    options.optional("--radius", radius_, "how many frames before and after the one in the centre");
    options.optional("--threads", threads_, "decode on so many threads (default: one a processor)");
    options.flag("--no-progress", isQuiet_, "show no progress on a terminal");
    options.footer(
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

  Refusal checkOptions(LutBuildRequest& /*request*/) const {
    if (!raw_ && !documents_) {
      return unusable("--documents or --raw must say where the tables go");
    }
    if (raw_ && seats_.size() > 1) return unusable("--raw takes one --seat");
    if (center_.has_value() != radius_.has_value())
      return unusable("--center and --radius go together");
    if (center_ && !raw_) {
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
    if (center_) {
      const auto center = wholeNumber(*center_);
      const auto radius = wholeNumber(*radius_);
      if (!center) return unusable("--center must be a whole number, not \"" + *center_ + "\"");
      if (!radius) return unusable("--radius must be a whole number, not \"" + *radius_ + "\"");
      request.seed = LutSeed{*center, *radius};
    }
    if (threads_) {
      const auto threads = decimal(*threads_, ThreadWorkers::kMost);
      if (!threads || *threads == 0) {
        return unusable("--threads must be 1 to " + std::to_string(ThreadWorkers::kMost) +
                        ", not \"" + *threads_ + "\"");
      }
      request.threads = static_cast<int>(*threads);
    }
    return std::nullopt;
  }

  Refusal readPaths(LutBuildRequest& request) const {
    std::error_code error;
    if (documents_ && !mayBeFolder(*documents_)) return notAFolder(*documents_);
    if (raw_ && (raw_->empty() || fs::is_directory(*raw_, error))) {
      return unusable(*raw_ + ": not a file (--raw)");
    }
    if (!isReadableFile(video_)) return unusable(video_ + ": cannot be read");
    if (raw_ && fs::equivalent(*raw_, video_, error)) {
      return unusable(*raw_ + ": is the video itself (--raw)");
    }
    request.video = absolutePath(video_);
    if (raw_) {
      request.raw = absolutePath(*raw_);
    } else {
      request.documents = absolutePath(*documents_);
    }
    return std::nullopt;
  }

  std::string video_;
  std::vector<std::string> seats_;
  std::optional<std::string> documents_;
  std::optional<std::string> raw_;
  std::optional<std::string> center_;
  std::optional<std::string> radius_;
  std::optional<std::string> threads_;
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
