// SPDX-License-Identifier: Apache-2.0
#include "venue/live/desk_fixture.h"

namespace halvora {

namespace {

struct ChannelRow {
  DeskChannel channel;
  /// Empty for nothing.
  const char* whenUp;
  const char* whenDown;
};
constexpr ChannelRow kChannels[] = {
    {DeskChannel::go, "go", ""},
    {DeskChannel::back, "back", ""},
    {DeskChannel::hold, "hold", "resume"},
    {DeskChannel::blackout, "blackout", "release"},
    {DeskChannel::panic, "panic", ""},
    {DeskChannel::release, "release", ""},
    // Only a number, for the next.
    {DeskChannel::cue, "", ""},
    {DeskChannel::take, "goto", ""},
};
static_assert(std::size(kChannels) == kDeskChannels);

}  // namespace

std::vector<std::string> DeskFixture::take(std::span<const std::uint8_t> levels) {
  std::vector<std::string> commands;
  const auto levelOf = [levels](DeskChannel channel) -> std::uint8_t {
    const auto at = static_cast<std::size_t>(channel);
    return at < levels.size() ? levels[at] : std::uint8_t{0};
  };
  for (const ChannelRow& row : kChannels) {
    bool& isUp = isUp_[static_cast<std::size_t>(row.channel)];
    const bool wasUp = isUp;
    isUp = levelOf(row.channel) >= (wasUp && hasLevels_ ? kDown : kUp);
    if (!hasLevels_ || isUp == wasUp) continue;
    std::string command = isUp ? row.whenUp : row.whenDown;
    if (row.channel == DeskChannel::take && isUp) {
      const std::size_t number = levelOf(DeskChannel::cue);
      const bool isThere = number >= 1 && number <= cueNames_.size();
      command += " " + (isThere ? cueNames_[number - 1] : "number " + std::to_string(number));
    }
    if (!command.empty()) commands.push_back(std::move(command));
  }
  hasLevels_ = true;
  return commands;
}

}  // namespace halvora
