// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/trace_command.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_devices.h"
#include "apps/halvora/air_options.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/scratch_folder.h"
#include "venue/base/interruptible_videos.h"
#include "venue/base/written_files.h"
#include "venue/show/scenario.h"
#include "venue/show/scenario_file.h"
#include "venue/show/trace.h"

namespace halvora {

namespace {

constexpr double kLatestEnd = 1e9;
constexpr std::size_t kBatch = std::size_t{1} << 16;

class TraceCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("SCENARIO", file_, "JSON Lines file of what happens around the phone");
    options.optional("--assets", assets_, "folder that holds HVAssets (default: none)");
    options.optional("--documents", documents_,
                     "the phone's private documents folder (default: an empty temporary one)");
    options.optional("--random", chance_,
                     "how draws fall: min, max, or the seed of a generator (default: 1)");
    options.optional("--until", until_,
                     "seconds at which the trace ends (default: 10 after the last action)");
    options.optional(
        "--allow", options_.allowedTransmitterIds,
        "a transmitter to obey, as application:number; may be repeated (default: all)");
    options.flag("--shown", options_.isShownWritten,
                 "print what the phone emits too: screen, backlight and torch");
    options.optional("--flash", flash_,
                     "flash policy of the host: limited to three a second, or exact (default)");
    air_.describe(options);
    options.footer(
        "Each line of the scenario is an object with \"at\" (seconds) and one of: device, start, "
        "bluetooth,\npacket (with every and until to repeat it), app, defaults, precompute, "
        "invalidate, playVideo.");
  }

  CommandResult run(const Call& call) override {
    auto random = randomOf(chance_);
    if (const auto refusal = checkOptions(random != nullptr)) return *refusal;
    auto air = air_.read(call.outside);
    if (auto* refusal = std::get_if<CommandResult>(&air)) return std::move(*refusal);
    options_.air = std::get<AirOptions>(std::move(air));
    auto scenario = readScenario(file_, json_, call.outside.isInterrupted);
    if (auto* refusal = std::get_if<CommandResult>(&scenario)) return std::move(*refusal);
    options_.assets = absolutePath(assets_);
    if (documents_) {
      options_.documents = absolutePath(*documents_);
      return trace(std::get<Scenario>(scenario), std::move(random), call);
    }
    const ScratchFolder documents;
    if (documents.path().empty()) return failed("no temporary folder can be made");
    options_.documents = documents.path();
    return trace(std::get<Scenario>(scenario), std::move(random), call);
  }

 private:
  static std::unique_ptr<Random> randomOf(const std::string& chance) {
    using Rule = ScriptedRandom::Rule;
    if (chance == "min" || chance == "max") {
      auto scripted =
          std::make_unique<ScriptedRandom>(chance == "min" ? Rule::least : Rule::greatest);
      scripted->log.isKept = false;
      return scripted;
    }
    const auto seed = decimal(chance, UINT64_MAX);
    return seed ? std::make_unique<SeededRandom>(*seed) : nullptr;
  }

  std::optional<CommandResult> checkOptions(bool isChanceKnown) {
    std::error_code error;
    if (!assets_.empty() && !std::filesystem::is_directory(assets_, error)) {
      return unusable(assets_ + ": no such folder (--assets)");
    }
    if (documents_ && !mayBeFolder(*documents_)) {
      return unusable(*documents_ + ": not a folder (--documents)");
    }
    if (!isChanceKnown) {
      return unusable("--random must be min, max or a whole number, not \"" + chance_ + "\"");
    }
    if (flash_ != "exact" && flash_ != "limited") {
      return unusable("--flash must be limited or exact, not \"" + flash_ + "\"");
    }
    if (flash_ == "limited") options_.flash = FlashPolicy::limited;
    if (!until_) return std::nullopt;
    const std::optional<double> seconds = plainNumber(*until_);
    if (!seconds || *seconds < 0 || *seconds > kLatestEnd) {
      return unusable("--until must be seconds, 0 or more, not \"" + *until_ + "\"");
    }
    options_.until = fromSeconds(*seconds);
    return std::nullopt;
  }

  CommandResult trace(const Scenario& scenario, std::unique_ptr<Random> random, const Call& call) {
    const std::atomic<bool>& isInterrupted = call.outside.isInterrupted;
    const InterruptibleVideos videos(call.outside.videos, isInterrupted);
    WrittenFiles files(isInterrupted);
    ThreadWorkers workers;
    bool isWritable = true;
    options_.goesOn = [&] { return isWritable && !isInterrupted; };
    // A call of the system's a line would cost more than the line.
    std::string batch;
    batch.reserve(2 * kBatch);
    const auto write = [&] {
      if (!batch.empty()) isWritable = isWritable && call.output(batch);
      batch.clear();
    };
    const TraceEnd end =
        runTrace(scenario, options_, std::move(random),
                 {json_, call.outside.images, &files, &videos, &workers, call.outside.codes},
                 [&](std::string_view lines) {
                   // What a phone shows of a video that ended too soon is not
                   // what it would show.
                   if (!isInterrupted) batch += lines;
                   if (batch.size() >= kBatch) write();
                 });
    write();
    if (isInterrupted) return interrupted();
    if (!isWritable) return failed("standard output cannot be written");
    if (end == TraceEnd::noMemory) return failed("out of memory");
    if (end == TraceEnd::endless) return failed(file_ + ": the phone never comes to rest");
    return done();
  }

  const ExactJsonReader json_{};
  std::string file_;
  std::string assets_;
  std::optional<std::string> documents_;
  std::string chance_ = "1";
  std::optional<std::string> until_;
  std::string flash_ = "exact";
  AirPolicyOptions air_;
  TraceOptions options_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeTraceCommand() { return std::make_unique<TraceCommand>(); }

}  // namespace halvora
