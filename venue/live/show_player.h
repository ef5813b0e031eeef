// SPDX-License-Identifier: Apache-2.0
// Plays a show: cues by GO and by time, and what an operator does to them. Times count from when a
// cue was due, so nothing drifts; blackout and panic go on the air in the turn in which they are
// asked for, and stay until they are released. A pure object over a run loop: whoever owns it hands
// on what it sends. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/platform/run_loop.h"
#include "venue/live/sequence_numbers.h"
#include "venue/show/cue_list.h"
#include "venue/show/cue_schedule.h"
#include "venue/show/cue_steps.h"

namespace halvora {

enum class LiveState : std::uint8_t {
  /// Nothing was played yet.
  ready,
  playing,
  /// Its time stands still; what is on the air stays.
  held,
  blackout,
  panic,
};
const char* nameOf(LiveState state);

struct LiveStatus {
  /// The cue that was played last.
  std::optional<std::size_t> cue;
  LiveState state = LiveState::ready;
};

/// From where another player goes on.
struct PlayerPlace {
  std::optional<std::size_t> cue;
  /// Since that cue began, as its time goes.
  Duration cueTime{};
  /// The show's own time when it began.
  Duration showTime{};
  /// What a fade of it began at.
  std::uint8_t masterBefore = 0;
  bool isHeld = false;
  bool isBlack = false;
  bool isPanic = false;
  /// Black stays so, where it was released before the first cue.
  bool isOnAir = false;
};

/// What a player is listened to with; called in its turns.
struct PlayerEnds {
  /// A new look, or one that is on the air already, again.
  std::function<void(const Broadcast& packet, bool isRepeat)> send;
  std::function<void(const LiveStatus& status)> changed;
};

class ShowPlayer {
 public:
  /// Of panic: so often black is sent, before the mode that ends the show on all phones.
  static constexpr int kBlacksBeforeEnd = 3;

  /// All of them outlive it. Nothing is on the air before the first GO.
  ShowPlayer(const CueList& show, MapFrames frames, RunLoop& loop, SequenceNumbers& numbers,
             PlayerEnds ends);
  ShowPlayer(const ShowPlayer&) = delete;
  ShowPlayer& operator=(const ShowPlayer&) = delete;

  /// From now on that is the show, which outlives the player too; the one before may go. What is
  /// on the air stays, and the cue that runs goes on as it was; `cue` is its place in the new list,
  /// none exactly where nothing was played yet. A next cue whose time has gone by waits for GO.
  void takeOver(const CueList& show, std::optional<std::size_t> cue);

  PlayerPlace place() const;
  /// From where another player was, before the first command: its look goes on the air at once, and
  /// cues that were due since then follow it. Panic is said anew from its beginning.
  void goOn(const PlayerPlace& place);

  /// Does what a line says: go, back, "goto NAME", hold, resume, blackout, release, panic. Or why
  /// not, in one line; then nothing has changed.
  std::string obey(std::string_view line);

  const CueList& show() const { return *list_; }
  LiveStatus status() const;
  /// The cue that GO plays; none at the end.
  std::optional<std::size_t> nextCue() const;
  /// How long until the next cue comes by itself; none where it waits for GO, or time stands still.
  std::optional<Duration> untilNext() const;

 private:
  struct Command {
    std::string_view word;
    std::string (ShowPlayer::*act)();
    /// While blackout or panic is in force.
    bool isAlwaysObeyed;
  };
  static const Command kCommands[];

  std::string go();
  std::string back();
  std::string hold();
  std::string resume();
  std::string blackout();
  std::string panic();
  std::string release();
  std::string goTo(std::string_view name);

  void play(std::size_t cue, Duration began);
  void begin(std::size_t cue, Duration began, std::uint8_t masterBefore);
  void playNext();
  void endSoon();
  void endShow();
  void takeSteps();
  void waitForStep();
  void waitForNext();
  void stopWaiting();
  /// Since the cue began, as its time goes.
  Duration cueTime() const;
  /// After the cue began; none where the next cue waits for GO.
  std::optional<Duration> nextDue() const;
  void freeze();
  void show(Broadcast packet);
  Broadcast black() const;
  void tell() { ends_.changed(status()); }
  Timer at(Duration time, void (ShowPlayer::*act)());

  const CueList* list_;
  MapFrames frames_;
  RunLoop& loop_;
  SequenceNumbers& numbers_;
  PlayerEnds ends_;

  std::optional<std::size_t> cue_;
  /// As it was when it began.
  Cue running_;
  /// Another list has put the next cue before the present.
  bool isNextLate_ = false;
  /// When it was due, on the loop's clock.
  Duration began_{};
  /// The show's own time then: the cue's, or that of the last one with a time.
  Duration showTime_{};
  /// What its fade began at.
  std::uint8_t masterBefore_ = 0;
  std::optional<Duration> heldAt_;
  bool isBlack_ = false;
  bool isPanic_ = false;
  std::optional<CueSteps> steps_;
  std::optional<CueStep> pending_;
  /// The look of the show as it is now, on the air or under the black.
  std::optional<Broadcast> look_;
  Broadcast sent_;
  Timer step_;
  Timer next_;
  Timer repeat_;
  Timer end_;
};

}  // namespace halvora
