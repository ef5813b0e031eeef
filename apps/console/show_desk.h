// SPDX-License-Identifier: Apache-2.0
// What an operator has set, and the packets that tell it to the phones: a whole look in each, with
// a sequence number that rises whenever the look is another one. Knows of a few transmitters and of
// an air that loses packets. A value but for the chance that it draws; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/random.h"
#include "halvora/platform/time.h"

namespace halvora {

inline constexpr int kMostTransmitters = 8;
inline constexpr int kDemoVenue = 7;
/// How often each transmitter repeats itself.
inline constexpr Duration kPacketPause = milliseconds(100);

class ShowDesk {
 public:
  /// A soft look that every phone of that venue shows at once. `chance` outlives the desk.
  explicit ShowDesk(Random& chance, int venueId = kDemoVenue);

  /// What is set. Its sequence number and transmitter are those of the packet sent last.
  const Broadcast& look() const { return look_; }
  /// By a field's name, as far as the field can hold the value. False for a field that is not the
  /// operator's: there is none of that name, or the desk numbers it itself.
  bool set(std::string_view field, int value);
  /// Everything that an operator may set, as it was in another look.
  void restore(const Broadcast& look);

  /// Black on every phone, with nothing else, for as long as it is set. The look stays as it is.
  void setBlackout(bool isBlack);
  bool isBlackout() const { return isBlackout_; }

  /// The last look that was calm goes on in place of this one, but for a blackout; black, if none
  /// was, and nothing, if nothing was sent at all.
  void setHeld(bool isHeld, bool isCalm) {
    isHeld_ = isHeld;
    isCalm_ = isCalm;
  }

  /// Transmitters 1 to that number.
  void setTransmitters(int count);
  int transmitters() const { return transmitters_; }
  /// The only one that sends; 0 for all.
  void setSender(int transmitter);
  int sender() const { return sender_; }
  /// How many of a hundred packets no phone hears.
  void setLoss(int percent);
  int loss() const { return loss_; }

  /// The frame of a pixel map, 1 to 65535.
  int frame() const { return cueToken(look_); }
  void showFrame(int frame);
  /// Runs a map of so many frames from the present one on, round and round.
  void playFrames(int count, Duration now);
  void holdFrame() { playing_.reset(); }
  bool isPlaying() const { return playing_.has_value(); }

  /// One packet of each transmitter that sends.
  std::vector<BroadcastBytes> send(Duration now);
  /// Draws whether the air loses a packet.
  bool losesPacket() { return chance_.below(100) < static_cast<std::uint32_t>(loss_); }
  /// Lets the next look be newer than that of a packet that somebody else has sent.
  void goOnAfter(std::uint16_t sequence);

 private:
  struct Playing {
    int count;
    int first;
    Duration begin;
  };

  void setFrame(int frame);
  /// What the next packets tell; none for nothing.
  std::optional<Broadcast> lookOnAir() const;

  Random& chance_;
  Broadcast look_;
  /// Null until something was sent.
  std::optional<Broadcast> sent_;
  /// Of the looks that were sent, the last calm one that the operator had set.
  std::optional<Broadcast> calm_;
  std::optional<Playing> playing_;
  int transmitters_ = 1;
  int sender_ = 0;
  int loss_ = 0;
  bool isBlackout_ = false;
  bool isHeld_ = false;
  bool isCalm_ = true;
};

}  // namespace halvora
