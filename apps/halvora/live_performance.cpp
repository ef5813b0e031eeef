// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/live_performance.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "engine/signed_broadcast.h"
#include "venue/base/input_file.h"
#include "venue/live/desk_fixture.h"
#include "venue/show/cue_values.h"

namespace halvora {

namespace {

/// How often a player that stands by looks whether the other one is gone.
constexpr Duration kStandbyLook = milliseconds(20);
constexpr Duration kOscRetry = milliseconds(1000);
constexpr std::size_t kLargestPlace = std::size_t{64} * 1024;

}  // namespace

LivePerformance::LivePerformance(const LiveOptions& options, LiveGround& ground, MessageCode* code,
                                 const Call& call)
    : options_(options), ground_(ground), code_(code), call_(call), report_(makeReport()) {}

CommandResult LivePerformance::play() {
  if (auto refusal = openNumbers()) return std::move(*refusal);
  if (auto refusal = openRadios()) return std::move(*refusal);
  std::optional<ShowPlace> place;
  if (options_.isStandby) {
    if (auto refusal = listen()) return std::move(*refusal);
    auto found = standBy();
    if (auto* result = std::get_if<CommandResult>(&found)) return std::move(*result);
    place = std::get<ShowPlace>(std::move(found));
  }
  begin();
  if (place) {
    session_->goOn(*place);
    openOscInTime();
  } else if (auto refusal = listen()) {
    return std::move(*refusal);
  }
  keepPlace();
  if (!options_.control) showStatus();
  // The place too, so that a clock which is set makes no more of a show's time than that.
  const Timer clock(ground_.loop(), ground_.loop().every(milliseconds(1000), [this] {
    keepPlace();
    if (!options_.control) showStatus();
  }));
  ground_.runUntil([this] { return isInterrupted() || session_->hasQuit() || hasLostAll(); });
  if (!options_.control) showOnTerminal("\n");
  return end();
}

LivePerformance::Refusal LivePerformance::openNumbers() {
  if (options_.isStandby) {
    auto opened = WaitingJournal::open(*options_.journal);
    if (auto* refusal = std::get_if<CommandResult>(&opened)) return std::move(*refusal);
    waiting_ = std::get<std::unique_ptr<WaitingJournal>>(std::move(opened));
    return std::nullopt;
  }
  if (!options_.journal) {
    numbers_ = std::make_unique<PlainNumbers>(options_.first);
    return std::nullopt;
  }
  auto refusal =
      takeNumbers(openSequenceJournal(*options_.journal, options_.first, ground_.makeQueue()));
  if (refusal) return refusal;
  place_.emplace(placeFileOf(*options_.journal), ground_.makeQueue());
  // Of an earlier evening.
  place_->forget();
  return std::nullopt;
}

LivePerformance::Refusal LivePerformance::takeNumbers(Numbers opened) {
  if (auto* refusal = std::get_if<CommandResult>(&opened)) return std::move(*refusal);
  numbers_ = std::get<std::unique_ptr<SequenceNumbers>>(std::move(opened));
  return std::nullopt;
}

bool LivePerformance::isBusy() const {
  return std::ranges::any_of(radios_, [](const auto& radio) { return radio->isBusy(); });
}

// Whoever begins a show knows what it has; what is lost later is waited for.
LivePerformance::Refusal LivePerformance::openRadios() {
  const Duration interval = std::clamp(show().repeat, milliseconds(20), milliseconds(10240));
  for (const std::string& air : options_.airs) {
    if (air == LiveOptions::kLines) continue;
    if (!ground_.makeAdvertiser()) return failed("this halvora was built without Bluetooth");
    radios_.push_back(std::make_unique<RadioAir>([this] { return ground_.makeAdvertiser(); },
                                                 TransmitterSettings{air, interval}, ground_.loop(),
                                                 report_.say));
  }
  ground_.runUntil([this] { return isInterrupted() || !isBusy(); });
  for (const auto& radio : radios_) {
    if (!radio->failure().empty()) return failed(radio->adapter() + ": " + radio->failure());
  }
  return std::nullopt;
}

// Whoever gives commands; what to end with where nobody could ever say go. The port for OSC is the
// other player's for as long as this one stands by.
LivePerformance::Refusal LivePerformance::listen() {
  const auto obeyLine = [this](std::string_view line) { obey(line); };
  bool hasSource = options_.osc.has_value() || options_.ola.has_value();
  if (options_.ola && !openDesk()) {
    return failed("--ola: this halvora was built without the input of lighting desks (OLA)");
  }
  if (options_.osc && !options_.isStandby) {
    if (auto why = openOsc(); !why.empty()) return failed("--osc: " + why);
  }
  const auto loss = [this](const char* what) {
    return [this, what] { report_.say(std::string(what) + "; the show goes on as it is"); };
  };
  if (options_.control) {
    hasSource = true;
    ground_.readLines({obeyLine, loss("standard input has ended")});
  } else if (ground_.readKeys({obeyLine, loss("the terminal is gone")})) {
    hasSource = true;
  }
  if (hasSource) return std::nullopt;
  return unusable("nobody can give commands: there is no terminal; see --control and --osc");
}

std::string LivePerformance::openOsc() {
  return ground_.readOsc(options_.oscBind, options_.oscPort,
                         {[this](std::string_view line) { obey(line); }, [] {}});
}

// What has just died may have the port for a moment longer, and the show goes on without it.
void LivePerformance::openOscInTime() {
  if (!options_.osc) return;
  const std::string why = openOsc();
  if (why.empty()) return;
  report_.say("--osc: " + why + "; the show goes on, and it is tried again every second");
  oscRetry_ = {ground_.loop(), ground_.loop().every(kOscRetry, [this] {
                 if (openOsc().empty()) oscRetry_.invalidate();
               })};
}

// Where the desk or its daemon goes, nothing changes on the air.
bool LivePerformance::openDesk() {
  std::vector<std::string> names;
  for (const Cue& cue : show().cues) names.push_back(cue.name);
  const auto fixture = std::make_shared<DeskFixture>(std::move(names));
  desk_ = ground_.openOla(
      options_.universe, {[this, fixture](std::span<const std::uint8_t> levels) {
                            for (const std::string& command : fixture->take(levels)) {
                              obey(command);
                            }
                          },
                          [this, fixture](bool isThere) {
                            fixture->forget();
                            report_.say(isThere ? "the desk's daemon (olad) is there"
                                                : "the desk's daemon (olad) is not there; the show "
                                                  "goes on as it is, and it is tried again every "
                                                  "second");
                          }});
  return desk_ != nullptr;
}

// A player that stands by obeys nothing yet.
void LivePerformance::obey(std::string_view line) {
  if (session_) return session_->obey(line);
  if (LiveSession::isQuit(line)) {
    hasQuit_ = true;
  } else {
    report_.say(inQuotes(line) + " is not obeyed while another player has the show");
  }
}

// Until the other player is gone; then that is where it was. Or what to end with.
std::variant<ShowPlace, CommandResult> LivePerformance::standBy() {
  const std::string& journal = *options_.journal;
  report_.say("stands by for the player that has " + journal);
  const auto isKept = [place = placeFileOf(journal)] {
    std::error_code error;
    return std::filesystem::exists(place, error);
  };
  bool isFree = false;
  bool wasKept = isKept();
  const Timer look(ground_.loop(), ground_.loop().every(kStandbyLook, [&] {
    wasKept = wasKept || isKept();
    isFree = isFree || waiting_->isFree();
  }));
  ground_.runUntil([&] { return isInterrupted() || hasQuit_ || isFree; });
  if (!isFree) return done();
  // What was never there was not taken away by a player that ended as it should.
  if (wasKept && !isKept()) {
    report_.say("the player has ended as it should; there is nothing to take over");
    return done();
  }
  if (auto refusal = takeNumbers(waiting_->take(ground_.makeQueue()))) return std::move(*refusal);
  auto place = readPlace();
  place_.emplace(placeFileOf(journal), ground_.makeQueue());
  return place.value_or(ShowPlace{});
}

std::optional<ShowPlace> LivePerformance::readPlace() {
  const auto bytes =
      readInput(placeFileOf(*options_.journal), kLargestPlace, call_.outside.isInterrupted);
  const auto* const text = std::get_if<std::string>(&bytes);
  auto place = text != nullptr ? unpackPlace(*text) : std::nullopt;
  if (!place) {
    report_.say("the player is gone, and where it was cannot be read; give goto NAME");
    return std::nullopt;
  }
  const bool hadCue = place->player.cue.has_value();
  if (hadCue) {
    place->player.cue = cueNamed(show(), place->cueName);
    // Phones keep what they show until somebody says what comes.
    place->player.isOnAir = place->player.cue.has_value();
  }
  report_.say(hadCue && !place->player.cue
                  ? "the player is gone, and its cue " + inQuotes(place->cueName) +
                        " is none of this show; give goto NAME"
                  : "the player is gone; this one goes on");
  place->player.cueTime = cueTimeAt(*place, ground_.date());
  return place;
}

void LivePerformance::begin() {
  LiveReport report = report_;
  report.changed = [this](Duration time, const LiveStatus& status) {
    report_.changed(time, status);
    keepPlace();
  };
  session_.emplace(show(), options_.input.mapFrames(), ground_.loop(), *numbers_, encoder(),
                   std::move(report));
  lines_.emplace(ground_.loop(), call_.output);
  auto radio = radios_.begin();
  for (std::size_t at = 0; at < options_.airs.size(); ++at) {
    const bool isLines = options_.airs[at] == LiveOptions::kLines;
    LiveAir& air = isLines ? static_cast<LiveAir&>(*lines_) : **radio++;
    session_->add(air, options_.zoneOf(at));
  }
}

// A show that is still on the air elsewhere goes on without standard output.
bool LivePerformance::hasLostAll() {
  if (lines_->isWritable()) return false;
  if (radios_.empty()) return true;
  if (!std::exchange(areLinesLost_, true)) {
    report_.say("standard output cannot be written; the show goes on without it");
  }
  return false;
}

// Only when nothing is on the air any more may a player that stands by learn that this one is gone.
CommandResult LivePerformance::end() {
  for (const auto& radio : radios_) {
    radio->end();
    if (radio->leftOut() > 0) {
      report_.say(radio->adapter() + " left out " + std::to_string(radio->leftOut()) +
                  " packets for newer ones");
    }
  }
  ground_.runUntil([this] { return !isBusy(); });
  const bool isMeant = isInterrupted() || session_->hasQuit();
  if (place_) isMeant ? place_->end() : place_->leave();
  return lines_->isWritable() ? done() : failed("standard output cannot be written");
}

void LivePerformance::keepPlace() {
  if (!place_) return;
  ShowPlace place = session_->place();
  place.date = ground_.date();
  place_->keep(packPlace(place));
  if (place_->hasFailed() == isPlaceLost_) return;
  isPlaceLost_ = !isPlaceLost_;
  const std::string file = placeFileOf(*options_.journal);
  report_.say(isPlaceLost_ ? file + ": cannot be written; who stands by would need a goto"
                           : file + ": is written again");
}

PacketEncoder LivePerformance::encoder() const {
  return [this](const Broadcast& packet) -> std::vector<std::uint8_t> {
    if (code_ != nullptr) {
      const auto bytes = signBroadcast(packet, epochOf(ground_.date()), *code_);
      return {bytes.begin(), bytes.end()};
    }
    const BroadcastBytes bytes = encodeBroadcast(packet);
    return {bytes.begin(), bytes.end()};
  };
}

LiveReport LivePerformance::makeReport() {
  if (options_.control) {
    return {[this](Duration time, const LiveStatus& status) { say(lineOf(time, status)); },
            [this](const std::string& line) { say("halvora: " + line + "\n"); }};
  }
  return {[this](Duration, const LiveStatus&) { showStatus(); },
          [this](const std::string& line) {
            showOnTerminal("\r\033[K");
            say("halvora: " + line + "\n");
          }};
}

void LivePerformance::say(std::string_view text) const {
  if (call_.outside.messages) call_.outside.messages(text);
}

void LivePerformance::showOnTerminal(std::string_view text) const {
  if (call_.outside.terminal.write) call_.outside.terminal.write(text);
}

std::string LivePerformance::lineOf(Duration time, const LiveStatus& status) {
  line_.begin().add("t", static_cast<std::int64_t>(time / milliseconds(1)));
  if (status.cue) {
    line_.add("cue", show().cues[*status.cue].name);
  } else {
    line_.addNull("cue");
  }
  line_.add("state", nameOf(status.state));
  return std::string(line_.end());
}

void LivePerformance::showStatus() const {
  if (!session_ || !call_.outside.terminal.write) return;
  const ShowPlayer& player = session_->player();
  const LiveStatus status = player.status();
  const auto& cues = show().cues;
  std::string text = "\r\033[K" + std::string(nameOf(status.state));
  if (status.cue) {
    text += "  " + std::to_string(*status.cue + 1) + "/" + std::to_string(cues.size()) + " " +
            cues[*status.cue].name;
  }
  if (const auto next = player.nextCue()) {
    text += "  next: " + cues[*next].name;
    if (const auto rest = player.untilNext()) {
      text += " in " + showTimeText(*rest / milliseconds(1000) * milliseconds(1000)) + " s";
    }
  }
  showOnTerminal(text);
}

}  // namespace halvora
