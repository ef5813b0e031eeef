// SPDX-License-Identifier: Apache-2.0
#include "venue/live/live_session.h"

#include <utility>

namespace halvora {

LiveSession::LiveSession(const CueList& show, MapFrames frames, RunLoop& loop,
                         SequenceNumbers& numbers, PacketEncoder encode, LiveReport report)
    : loop_(loop),
      numbers_(numbers),
      encode_(std::move(encode)),
      report_(std::move(report)),
      begin_(loop.now()),
      player_(
          show, std::move(frames), loop, numbers,
          {[this](const Broadcast& packet, bool isRepeat) { send(packet, isRepeat); },
           [this](const LiveStatus& status) { report_.changed(loop_.now() - begin_, status); }}) {}

void LiveSession::obey(std::string_view line) {
  if (hasQuit_) return;
  const std::size_t end = line.find_last_not_of(" \t\r");
  const std::size_t begin = line.find_first_not_of(" \t");
  if (begin != std::string_view::npos && line.substr(begin, end + 1 - begin) == "quit") {
    hasQuit_ = true;
    return;
  }
  if (const std::string refusal = player_.obey(line); !refusal.empty()) report_.say(refusal);
}

// One air that fails takes nothing from the others.
void LiveSession::send(const Broadcast& packet, bool isRepeat) {
  for (std::size_t at = 0; at < airs_.size(); ++at) {
    Broadcast own = packet;
    own.transmitter = transmitterNumber(packet.transmitter, at);
    airs_[at]->send(encode_(own), isRepeat);
  }
  if (const std::string alarm = numbers_.alarm(); alarm != alarm_) {
    alarm_ = alarm;
    report_.say(alarm.empty() ? "the journal of sequence numbers is written again" : alarm);
  }
}

}  // namespace halvora
