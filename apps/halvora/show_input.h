// SPDX-License-Identifier: Apache-2.0
// The show file of a command, with the assets that its names and maps are in: read whole, with all
// of its faults or none. Main thread.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/halvora/command_line.h"
#include "venue/show/cue_list.h"
#include "venue/show/cue_schedule.h"
#include "venue/show/palette_names.h"

namespace halvora {

class ShowInput {
 public:
  ShowInput() = default;
  /// For a command that has assets of its own.
  explicit ShowInput(std::string assets) : assets_(std::move(assets)) {}

  /// FILE and --assets.
  void describe(CommandOptions& options);
  /// For a command that reads its FILE itself.
  void describeAssets(CommandOptions& options);

  /// What to end with, where the show cannot be used.
  std::optional<CommandResult> read(const Call& call);
  std::optional<CommandResult> read(const std::string& file, const Call& call);

  const std::string& file() const { return file_; }
  const CueList& show() const { return show_; }
  const MapFrames& mapFrames() const { return frames_; }
  /// What may not be meant as it is, a line each.
  std::vector<std::string> warnings() const;

 private:
  CommandResult refusal(const std::vector<CueListFlaw>& flaws) const;

  std::string file_;
  std::optional<std::string> assets_;
  CueList show_;
  MapFrames frames_;
  /// None where there are no assets.
  std::optional<std::vector<NamedPalette>> palettes_;
};

}  // namespace halvora
