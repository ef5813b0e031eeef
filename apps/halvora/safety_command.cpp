// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/safety_command.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "engine/broadcast.h"
#include "venue/crowd/safety_run.h"
#include "venue/show/scenario_file.h"

namespace halvora {

namespace {

constexpr double kLatestSafetyEnd = 24 * 3600;
constexpr Duration kAfterLastAction = milliseconds(10'000);
constexpr std::uint64_t kMostPhones = 10'000'000;
constexpr std::uint64_t kMostThreads = 256;

bool isPacket(const ScenarioLine& line) {
  const auto* packet = std::get_if<PacketAction>(&line.action);
  return packet != nullptr && formatOf(packet->data) == BroadcastFormat::valid;
}

class SafetyCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("SCENARIO", scenario_, "JSON Lines file of the show, as for trace");
    options.required("--assets", assets_, "folder that holds HVAssets");
    options.optional("--venue", venue_,
                     "the venue's number, for a phone on each of its seats (default: one phone)");
    options.optional("--html", page_, "a page to write: verdict, curve and worst moments");
    options.optional(
        "--flash", flash_,
        "flash policy of the phones: limited, or exact (default), as the show is sent");
    options.optional("--phones", phones_, "so many phones, spread over the seats (default: all)");
    options.optional("--seed", seed_, "whole number that all chances follow from (default: 1)");
    options.optional("--threads", threads_, "so many threads (default: one a processor)");
    options.optional("--until", until_,
                     "seconds at which the show ends (default: 10 after the last action)");
    options.flag("--no-progress", isQuiet_, "show no progress on a terminal");
    options.footer(
        "Exit status 0 where no second has more than three flashes, general or red, and 1 where "
        "one has.");
  }

  CommandResult run(const Call& call) override {
    SafetyRequest request;
    if (auto refusal = readOptions(request)) return *refusal;
    if (auto refusal = readShow(request, call.outside.isInterrupted)) return *refusal;
    Outside outside = call.outside;
    if (isQuiet_) outside.terminal.write = {};
    return runSafety(request, {call.arguments, outside, call.output});
  }

 private:
  using Refusal = std::optional<CommandResult>;

  static Refusal refuse(const char* option, const std::string& what, const std::string& text) {
    return unusable(std::string(option) + " must be " + what + ", not \"" + text + "\"");
  }

  // A whole number from `least` to `most`; what is not given stays as it is.
  template <class Number>
  static Refusal read(const char* option, const std::optional<std::string>& text,
                      std::uint64_t least, std::uint64_t most, Number& number) {
    if (!text) return std::nullopt;
    const auto value = decimal(*text, most);
    if (!value || *value < least) {
      return refuse(option,
                    "a whole number from " + std::to_string(least) + " to " + std::to_string(most),
                    *text);
    }
    number = static_cast<Number>(*value);
    return std::nullopt;
  }

  Refusal readOptions(SafetyRequest& request) {
    std::error_code error;
    if (!std::filesystem::is_directory(assets_, error)) {
      return unusable(assets_ + ": no such folder (--assets)");
    }
    request.assets = absolutePath(assets_);
    if (page_) {
      if (page_->empty()) return refuse("--html", "a file's name", *page_);
      request.page = absolutePath(*page_);
    }
    if (flash_ != "exact" && flash_ != "limited") {
      return refuse("--flash", "limited or exact", flash_);
    }
    if (flash_ == "limited") request.policy = FlashPolicy::limited;
    if (venue_) {
      std::int64_t venue = 0;
      if (auto refusal = read("--venue", venue_, 1, 1'000'000'000, venue)) return refusal;
      request.venueId = venue;
    }
    if (phones_ && !venue_) return unusable("--phones needs a --venue whose seats they have");
    if (auto refusal = read("--phones", phones_, 1, kMostPhones, request.phones)) return refusal;
    if (auto refusal = read("--threads", threads_, 1, kMostThreads, request.threads))
      return refusal;
    return read("--seed", seed_, 0, UINT64_MAX, request.seed);
  }

  Refusal readShow(SafetyRequest& request, const std::atomic<bool>& isInterrupted) {
    const ExactJsonReader json;
    auto scenario = readScenario(scenario_, json, isInterrupted);
    if (auto* refusal = std::get_if<CommandResult>(&scenario)) return std::move(*refusal);
    request.name = scenario_;
    request.scenario = std::get<Scenario>(std::move(scenario));
    if (std::ranges::none_of(request.scenario.lines, isPacket)) {
      return unusable(scenario_ + ": no packet of a show in it, so there is nothing to judge");
    }
    request.end = request.scenario.lastAction() + kAfterLastAction;
    if (until_) {
      const auto seconds = plainNumber(*until_);
      if (!seconds || *seconds < 0 || *seconds > kLatestSafetyEnd) {
        return refuse("--until", "seconds from 0 to 86400", *until_);
      }
      request.end = fromSeconds(*seconds);
    } else if (toSeconds(request.end) > kLatestSafetyEnd) {
      return unusable(scenario_ + ": longer than a day; say how long with --until");
    }
    return std::nullopt;
  }

  std::string scenario_;
  std::string assets_;
  std::optional<std::string> venue_;
  std::optional<std::string> page_;
  std::string flash_ = "exact";
  std::optional<std::string> phones_;
  std::optional<std::string> seed_;
  std::optional<std::string> threads_;
  std::optional<std::string> until_;
  bool isQuiet_ = false;
};

}  // namespace

std::unique_ptr<ToolCommand> makeSafetyCommand() { return std::make_unique<SafetyCommand>(); }

}  // namespace halvora
