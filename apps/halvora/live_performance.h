// SPDX-License-Identifier: Apache-2.0
// One evening of `halvora live`: its numbers, its adapters and whoever gives commands around one
// session; or, for a player that stands by, all of that held ready until the other one is gone.
// Main thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "apps/halvora/live_options.h"
#include "halvora/platform/message_codes.h"
#include "venue/base/json_line.h"
#include "venue/live/live_ground.h"
#include "venue/live/live_session.h"
#include "venue/live/radio_air.h"
#include "venue/live/show_place.h"
#include "venue/live/waiting_journal.h"

namespace halvora {

class LivePerformance {
 public:
  /// All of them outlive it; the code is null for packets without a tag.
  LivePerformance(const LiveOptions& options, LiveGround& ground, MessageCode* code,
                  const Call& call);
  LivePerformance(const LivePerformance&) = delete;
  LivePerformance& operator=(const LivePerformance&) = delete;

  /// Until somebody ends it.
  CommandResult play();

 private:
  using Numbers = std::variant<std::unique_ptr<SequenceNumbers>, CommandResult>;
  using Refusal = std::optional<CommandResult>;

  const CueList& show() const { return options_.input.show(); }
  bool isInterrupted() const { return call_.outside.isInterrupted; }
  bool isBusy() const;

  Refusal openNumbers();
  Refusal takeNumbers(Numbers opened);
  Refusal openRadios();
  Refusal listen();
  std::string openOsc();
  void openOscInTime();
  bool openDesk();
  std::variant<ShowPlace, CommandResult> standBy();
  std::optional<ShowPlace> readPlace();

  void begin();
  CommandResult end();
  PacketEncoder encoder() const;
  LiveReport makeReport();
  void say(std::string_view text) const;
  void showOnTerminal(std::string_view text) const;
  void keepPlace();
  bool hasLostAll();
  void obey(std::string_view line);
  std::string lineOf(Duration time, const LiveStatus& status);
  void showStatus() const;

  const LiveOptions& options_;
  LiveGround& ground_;
  MessageCode* const code_;
  const Call& call_;
  const LiveReport report_;
  JsonLine line_;
  /// Outlives all that sends, and with it the right to the journal.
  std::unique_ptr<SequenceNumbers> numbers_;
  std::unique_ptr<WaitingJournal> waiting_;
  std::optional<PlaceFile> place_;
  std::vector<std::unique_ptr<RadioAir>> radios_;
  /// Whether the crew knows that it is not kept.
  bool isPlaceLost_ = false;
  std::optional<LineAir> lines_;
  /// Whether the crew knows that it goes on without them.
  bool areLinesLost_ = false;
  std::optional<LiveSession> session_;
  std::unique_ptr<OlaInput> desk_;
  Timer oscRetry_;
  /// While it stood by.
  bool hasQuit_ = false;
};

}  // namespace halvora
