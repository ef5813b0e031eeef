// SPDX-License-Identifier: Apache-2.0
#include "apps/console/show_desk.h"

#include <algorithm>
#include <utility>

#include "pixelmap/frame_time.h"

namespace halvora {

namespace {

constexpr int kLargestFrame = 0xFFFF;
constexpr std::uint8_t kSteadyMode = 1;

bool isNumberedHere(const BroadcastField& field) {
  return field.value == &Broadcast::sequence || field.value == &Broadcast::transmitter;
}

bool isCue(const BroadcastField& field) {
  return field.value == &Broadcast::minutes || field.value == &Broadcast::seconds;
}

// The same look, whoever sends it and when.
bool isSameLook(Broadcast a, const Broadcast& b) {
  a.sequence = b.sequence;
  a.transmitter = b.transmitter;
  return a == b;
}

}  // namespace

ShowDesk::ShowDesk(Random& chance, int venueId) : chance_(chance) {
  look_.applicationId = 4242;
  look_.venueId = static_cast<std::uint8_t>(std::clamp(venueId, 0, 0xFF));
  look_.master = 255;
  look_.red = 255;
  look_.green = 180;
  look_.blue = 107;
  look_.mode = 17;
  look_.speed = 160;
  look_.paletteId = 12;
  look_.transmitter = 1;
}

bool ShowDesk::set(std::string_view field, int value) {
  const auto* found = std::ranges::find_if(
      kBroadcastFields, [field](const BroadcastField& known) { return known.name == field; });
  if (found == kBroadcastFields.end() || isNumberedHere(*found)) return false;
  if (isCue(*found)) holdFrame();
  found->value.set(look_, std::clamp(value, 0, int{found->value.largest()}));
  return true;
}

void ShowDesk::restore(const Broadcast& look) {
  const Broadcast before = std::exchange(look_, look);
  look_.sequence = before.sequence;
  look_.transmitter = before.transmitter;
}

// Nothing plays on behind it.
void ShowDesk::setBlackout(bool isBlack) {
  isBlackout_ = isBlack;
  if (isBlack) holdFrame();
}

// A steady light of no colour: the show is still on, so no phone goes back to its host's page.
std::optional<Broadcast> ShowDesk::lookOnAir() const {
  if (!isBlackout_ && !isHeld_) return look_;
  if (!isBlackout_ && (calm_ || !sent_)) return calm_;
  Broadcast black;
  black.applicationId = look_.applicationId;
  black.syncFlag = look_.syncFlag;
  black.venueId = look_.venueId;
  black.master = look_.master;
  black.mode = kSteadyMode;
  black.sequence = look_.sequence;
  return black;
}

void ShowDesk::setTransmitters(int count) {
  transmitters_ = std::clamp(count, 1, kMostTransmitters);
  setSender(sender_);
}

void ShowDesk::setSender(int transmitter) { sender_ = std::clamp(transmitter, 0, transmitters_); }

void ShowDesk::setLoss(int percent) { loss_ = std::clamp(percent, 0, 100); }

void ShowDesk::setFrame(int frame) {
  look_.minutes = static_cast<std::uint8_t>(frame & 0xFF);
  look_.seconds = static_cast<std::uint8_t>(frame >> 8);
}

void ShowDesk::showFrame(int frame) {
  holdFrame();
  setFrame(std::clamp(frame, 1, kLargestFrame));
}

void ShowDesk::playFrames(int count, Duration now) {
  if (count >= 1) playing_ = Playing{std::min(count, kLargestFrame), frame(), now};
}

std::vector<BroadcastBytes> ShowDesk::send(Duration now) {
  if (playing_) {
    const double passed = toSeconds(now - playing_->begin) * kPixelMapFramesPerSecond;
    // Frame 0 cannot be told from frame 1 in a packet, so the rounds go from 1 to the last.
    const auto frames = playing_->first - 1 + static_cast<std::int64_t>(passed);
    setFrame(static_cast<int>(frames % playing_->count) + 1);
  }
  const std::optional<Broadcast> next = lookOnAir();
  if (!next) return {};
  Broadcast told = *next;
  const bool isSame = sent_ && isSameLook(*sent_, told);
  told.sequence = isSame ? sent_->sequence : ++look_.sequence;

  std::vector<BroadcastBytes> packets;
  const int first = sender_ == 0 ? 1 : sender_;
  const int last = sender_ == 0 ? transmitters_ : sender_;
  for (int transmitter = first; transmitter <= last; ++transmitter) {
    told.transmitter = look_.transmitter = static_cast<std::uint8_t>(transmitter);
    packets.push_back(encodeBroadcast(told));
  }
  sent_ = told;
  if (!isBlackout_ && isCalm_) calm_ = told;
  return packets;
}

void ShowDesk::goOnAfter(std::uint16_t sequence) {
  look_.sequence = sequence;
  sent_.reset();
}

}  // namespace halvora
