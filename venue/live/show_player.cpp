// SPDX-License-Identifier: Apache-2.0
#include "venue/live/show_player.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "venue/show/cue_values.h"

namespace halvora {

namespace {

constexpr int kLastFrame = 0xFFFF;

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

}  // namespace

const char* nameOf(LiveState state) {
  constexpr const char* kNames[] = {"ready", "playing", "held", "blackout", "panic"};
  static_assert(std::size(kNames) == static_cast<std::size_t>(LiveState::panic) + 1);
  return kNames[static_cast<std::size_t>(state)];
}

const ShowPlayer::Command ShowPlayer::kCommands[] = {
    {"go", &ShowPlayer::go, false},
    {"back", &ShowPlayer::back, false},
    {"hold", &ShowPlayer::hold, false},
    {"resume", &ShowPlayer::resume, false},
    {"blackout", &ShowPlayer::blackout, false},
    {"release", &ShowPlayer::release, true},
    {"panic", &ShowPlayer::panic, true},
};

ShowPlayer::ShowPlayer(const CueList& show, MapFrames frames, RunLoop& loop,
                       SequenceNumbers& numbers, PlayerEnds ends)
    : list_(&show),
      frames_(std::move(frames)),
      loop_(loop),
      numbers_(numbers),
      ends_(std::move(ends)) {}

std::string ShowPlayer::obey(std::string_view line) {
  line = withoutBlanks(line);
  const std::string_view word = line.substr(0, line.find_first_of(" \t"));
  const std::string_view rest = withoutBlanks(line.substr(word.size()));
  const bool isLatched = isBlack_ || isPanic_;
  const auto* const found = std::ranges::find(kCommands, word, &Command::word);
  const bool isKnown = found != std::end(kCommands);
  if (word == "goto" ? rest.empty() : !isKnown || !rest.empty()) {
    return inQuotes(line) +
           " is no command; there are go, back, goto NAME, hold, resume, "
           "blackout, release, panic and quit";
  }
  // Asked for once more, what is in force already is no fault.
  if (word == "blackout" && isBlack_ && !isPanic_) return {};
  if (isLatched && !(isKnown && found->isAlwaysObeyed)) {
    return inQuotes(line) + " is not obeyed during " + nameOf(status().state) +
           "; release ends that";
  }
  return word == "goto" ? goTo(rest) : (this->*found->act)();
}

// An edit is no GO: nothing may come on the air because a time was moved into the past.
void ShowPlayer::takeOver(const CueList& show, std::optional<std::size_t> cue) {
  list_ = &show;
  cue_ = cue;
  next_.invalidate();
  isNextLate_ = false;
  const auto due = nextDue();
  isNextLate_ = due && *due <= cueTime();
  if (!heldAt_) waitForNext();
}

PlayerPlace ShowPlayer::place() const {
  return {.cue = cue_,
          .cueTime = cue_ ? cueTime() : Duration{},
          .showTime = showTime_,
          .masterBefore = masterBefore_,
          .isHeld = heldAt_.has_value(),
          .isBlack = isBlack_,
          .isPanic = isPanic_,
          .isOnAir = repeat_.isValid()};
}

void ShowPlayer::goOn(const PlayerPlace& place) {
  isBlack_ = place.isBlack;
  isPanic_ = place.isPanic;
  if (place.cue) {
    showTime_ = place.showTime;
    begin(*place.cue, loop_.now() - place.cueTime, place.masterBefore);
    if (place.isHeld) freeze();
    if (!place.isHeld) waitForNext();
  }
  if (isPanic_) endSoon();
  if (isBlack_ || isPanic_ || (place.isOnAir && !place.cue)) show(black());
  tell();
}

LiveStatus ShowPlayer::status() const {
  const LiveState state = isPanic_              ? LiveState::panic
                          : isBlack_            ? LiveState::blackout
                          : !cue_               ? LiveState::ready
                          : heldAt_.has_value() ? LiveState::held
                                                : LiveState::playing;
  return {cue_, state};
}

std::optional<std::size_t> ShowPlayer::nextCue() const {
  const std::size_t next = cue_ ? *cue_ + 1 : 0;
  return next < list_->cues.size() ? std::optional(next) : std::nullopt;
}

std::optional<Duration> ShowPlayer::untilNext() const {
  const auto due = nextDue();
  return due && !heldAt_ ? std::optional(std::max(Duration{}, *due - cueTime())) : std::nullopt;
}

std::string ShowPlayer::go() {
  const auto next = nextCue();
  if (!next) return "there is no cue after the last one";
  play(*next, loop_.now());
  return {};
}

std::string ShowPlayer::back() {
  if (!cue_ || *cue_ == 0) return "there is no cue before this one";
  play(*cue_ - 1, loop_.now());
  return {};
}

std::string ShowPlayer::goTo(std::string_view name) {
  const auto found = cueNamed(*list_, name);
  if (!found) return "no cue is called " + inQuotes(name);
  play(*found, loop_.now());
  return {};
}

std::string ShowPlayer::hold() {
  if (!cue_) return "nothing is played yet";
  if (heldAt_) return {};
  freeze();
  tell();
  return {};
}

void ShowPlayer::freeze() {
  if (!cue_ || heldAt_) return;
  heldAt_ = loop_.now();
  stopWaiting();
}

std::string ShowPlayer::resume() {
  if (!heldAt_) return "nothing is held";
  began_ += loop_.now() - *heldAt_;
  heldAt_.reset();
  waitForStep();
  waitForNext();
  tell();
  return {};
}

std::string ShowPlayer::blackout() {
  isBlack_ = true;
  show(black());
  tell();
  return {};
}

// The show's time stands still: whoever stopped everything decides from where it goes on.
std::string ShowPlayer::panic() {
  if (isPanic_) return {};
  isPanic_ = true;
  freeze();
  endSoon();
  show(black());
  tell();
  return {};
}

// Before the black is shown, so that the end comes before the repeat of that time.
void ShowPlayer::endSoon() {
  end_ = at(loop_.now() + kBlacksBeforeEnd * list_->repeat, &ShowPlayer::endShow);
}

void ShowPlayer::endShow() {
  Broadcast packet = black();
  packet.mode = 0;
  show(packet);
}

// Before the first cue there is nothing to go back to, and black stays on the air.
std::string ShowPlayer::release() {
  if (!isBlack_ && !isPanic_) return "neither blackout nor panic is in force";
  isBlack_ = isPanic_ = false;
  end_.invalidate();
  if (look_) show(*look_);
  tell();
  return {};
}

void ShowPlayer::play(std::size_t cue, Duration began) {
  begin(cue, began, look_ ? look_->master : std::uint8_t{0});
  waitForNext();
  tell();
}

void ShowPlayer::begin(std::size_t cue, Duration began, std::uint8_t masterBefore) {
  stopWaiting();
  steps_.reset();
  cue_ = cue;
  began_ = began;
  heldAt_.reset();
  isNextLate_ = false;
  running_ = list_->cues[cue];
  if (running_.at) showTime_ = *running_.at;
  const auto& map = running_.look.map;
  const int last = map ? frames_(running_.look.packet.venueId, map->id).value_or(kLastFrame) : 0;
  masterBefore_ = masterBefore;
  steps_.emplace(running_, list_->repeat, masterBefore, last > 0 ? last : kLastFrame);
  pending_ = steps_->next();
  takeSteps();
}

// Where the loop was late, the newest step counts, and those before it are left out.
void ShowPlayer::takeSteps() {
  const Duration time = cueTime();
  std::optional<Broadcast> newest;
  while (pending_ && pending_->time <= time) {
    newest = pending_->packet;
    pending_ = steps_->next();
  }
  waitForStep();
  if (!newest) return;
  look_ = newest;
  if (!isBlack_ && !isPanic_) show(*newest);
}

void ShowPlayer::waitForStep() {
  if (pending_) step_ = at(began_ + pending_->time, &ShowPlayer::takeSteps);
}

void ShowPlayer::waitForNext() {
  if (const auto due = nextDue()) next_ = at(began_ + *due, &ShowPlayer::playNext);
}

void ShowPlayer::playNext() {
  const auto due = nextDue();
  if (due && nextCue()) play(*nextCue(), began_ + *due);
}

void ShowPlayer::stopWaiting() {
  step_.invalidate();
  next_.invalidate();
}

Duration ShowPlayer::cueTime() const { return heldAt_.value_or(loop_.now()) - began_; }

// The show's time stands while a cue waits for GO. One that has a time comes when it gets there;
// where it is there already, as in a show whose first song begins at 0 behind a cue by hand, that
// cue waits for GO too.
std::optional<Duration> ShowPlayer::nextDue() const {
  const auto next = nextCue();
  if (!cue_ || !next || !list_->cues[*next].at || isNextLate_) return std::nullopt;
  const Duration due = *list_->cues[*next].at - showTime_;
  const bool isByTime = running_.at.has_value();
  if (isByTime ? due < Duration{} : due <= Duration{}) return std::nullopt;
  return due;
}

void ShowPlayer::show(Broadcast packet) {
  packet.sequence = numbers_.next();
  sent_ = packet;
  repeat_ = {loop_, loop_.every(list_->repeat, [this] { ends_.send(sent_, true); })};
  ends_.send(sent_, false);
}

Broadcast ShowPlayer::black() const {
  Broadcast packet = list_->sender;
  if (look_) packet.transmitter = look_->transmitter;
  packet.mode = 1;
  return packet;
}

Timer ShowPlayer::at(Duration time, void (ShowPlayer::*act)()) {
  const Duration delay = time - loop_.now();
  Task task = [this, act] { (this->*act)(); };
  // A timer without a delay would be late, and with it all that comes after.
  return {loop_, delay > Duration::zero() ? loop_.after(delay, std::move(task))
                                          : loop_.soon(std::move(task))};
}

}  // namespace halvora
