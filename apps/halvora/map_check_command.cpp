// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <optional>
#include <string>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/map_commands.h"
#include "apps/halvora/map_input.h"
#include "text/asset_paths.h"
#include "venue/plan/map_report.h"
#include "venue/plan/map_report_text.h"
#include "venue/plan/placed_seats.h"
#include "venue/plan/venue_folder.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

class CheckCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    input_.describe(options);
    options.optional("--assets", assets_,
                     "the folder that holds HVAssets, for a FILE that lies elsewhere than in the "
                     "venue's folder (with --venue)");
    options.optional("--venue", venue_, "the venue's number (with --assets)");
    options.flag("--json", isJson_, "print the report as one JSON object");
    options.footer(
        "Counts what is in the map and in the venue's folder, which is the one that FILE lies in,\n"
        "and lists what is wrong. Exit status 0: nothing; 1: there are findings.");
  }

  CommandResult run(const Call& call) override {
    const ExactJsonReader json;
    std::string folder;
    if (const auto refusal = findFolder(folder)) return *refusal;
    if (const auto refusal = input_.read(json, call.outside.isInterrupted)) return *refusal;
    const SeatMap map = seatMapOf(input_.document(), input_.strings(), json);
    VenueAssets assets = venueAssetsIn(absolutePath(folder), call.outside);
    if (call.outside.isInterrupted) return interrupted();
    const MapReport report =
        reportOn(map, reportOnDocument(input_.document(), json), std::move(assets));
    CommandResult printed =
        writeAll(isJson_ ? jsonOf(report) : pageOf(report, input_.file(), folder), call.output);
    if (printed.status != 0 || report.findings.empty()) return printed;
    return failed(input_.file() + ": " + counted(report.findings.size(), "finding", "findings"));
  }

 private:
  std::optional<CommandResult> findFolder(std::string& folder) const {
    if (assets_.has_value() != venue_.has_value()) {
      return unusable("--assets and --venue go together");
    }
    if (!assets_) {
      folder = fs::path(input_.file()).parent_path().string();
      if (folder.empty()) folder = ".";
      return std::nullopt;
    }
    const auto venue = decimal(*venue_, INT64_MAX);
    if (!venue || *venue == 0) {
      return unusable("--venue must be a whole number from 1 on, not \"" + *venue_ + "\"");
    }
    folder = *assets_ + "/" + venueFolder(static_cast<std::int64_t>(*venue));
    std::error_code error;
    if (fs::is_directory(folder, error)) return std::nullopt;
    return unusable(folder + ": not a folder (--assets, --venue)");
  }

  MapInput input_;
  std::optional<std::string> assets_;
  std::optional<std::string> venue_;
  bool isJson_ = false;
};

}  // namespace

std::unique_ptr<ToolCommand> makeMapCheckCommand() { return std::make_unique<CheckCommand>(); }

}  // namespace halvora
