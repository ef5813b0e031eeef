// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/show_input.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "venue/base/input_file.h"
#include "venue/show/show_folder.h"

namespace halvora {

void ShowInput::describe(CommandOptions& options) {
  options.required("FILE", file_, "the show, as YAML");
  describeAssets(options);
}

void ShowInput::describeAssets(CommandOptions& options) {
  options.optional("--assets", assets_,
                   "folder that holds HVAssets, for the names of palettes and the length of maps",
                   "the nearest above the show's file");
}

std::optional<CommandResult> ShowInput::read(const std::string& file, const Call& call) {
  file_ = file;
  return read(call);
}

std::optional<CommandResult> ShowInput::read(const Call& call) {
  std::error_code error;
  if (assets_ && !std::filesystem::is_directory(*assets_, error)) {
    return unusable(*assets_ + ": no such folder (--assets)");
  }
  auto text = readInput(file_, kLargestCueList, call.outside.isInterrupted);
  if (auto* refused = std::get_if<CommandResult>(&text)) return std::move(*refused);
  const std::string assets = assets_ ? absolutePath(*assets_) : assetsBeside(file_);
  const auto palettes = readPaletteNames(assets, ExactJsonReader());
  if (!assets.empty()) palettes_ = palettes;
  auto parsed = parseCueList(std::get<std::string>(text), palettes);
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&parsed)) return refusal(*flaws);
  show_ = std::get<CueList>(std::move(parsed));
  frames_ = mapFramesIn(assets, call.outside.videos);
  const auto flaws = flawsOfMaps(show_, frames_);
  if (!flaws.empty()) return refusal(flaws);
  return std::nullopt;
}

std::vector<std::string> ShowInput::warnings() const {
  return warningsOf(show_, frames_, palettes_ ? &*palettes_ : nullptr);
}

CommandResult ShowInput::refusal(const std::vector<CueListFlaw>& flaws) const {
  CommandResult result = unusable(textOf(flaws.front(), file_));
  for (std::size_t at = 1; at < flaws.size(); ++at) {
    result.more.push_back(textOf(flaws[at], file_));
  }
  return result;
}

}  // namespace halvora
