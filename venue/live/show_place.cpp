// SPDX-License-Identifier: Apache-2.0
#include "venue/live/show_place.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "venue/base/packed_bytes.h"

namespace halvora {

namespace {

// The last character counts the forms that places had.
constexpr std::string_view kMagic = "HVPLACE1";
// A cue may stand for as long as an exhibition does.
constexpr std::int64_t kLongestShow = std::int64_t{10} * 366 * 24 * 3600 * 1'000'000;
constexpr double kLongestAway = 24.0 * 3600;
constexpr std::int64_t kLatestDate = std::int64_t{1} << 53;
constexpr std::uint8_t kPlaysCue = 1;
constexpr std::uint8_t kIsHeld = 2;
constexpr std::uint8_t kIsBlack = 4;
constexpr std::uint8_t kIsPanic = 8;
constexpr std::uint8_t kIsOnAir = 16;

void writeMicroseconds(PackedWriter& to, Duration time) { to.signedNumber(time.count()); }
Duration readMicroseconds(PackedReader& from) { return Duration(from.signedNumber(kLongestShow)); }

std::uint8_t flagsOf(const PlayerPlace& player) {
  return static_cast<std::uint8_t>((player.cue ? kPlaysCue : 0) | (player.isHeld ? kIsHeld : 0) |
                                   (player.isBlack ? kIsBlack : 0) |
                                   (player.isPanic ? kIsPanic : 0) |
                                   (player.isOnAir ? kIsOnAir : 0));
}

bool writeWhole(const std::string& path, std::string_view bytes) {
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode);
  if (descriptor < 0) return false;
  const auto count = ::write(descriptor, bytes.data(), bytes.size());
  return ::close(descriptor) == 0 && count == static_cast<ssize_t>(bytes.size());
}

}  // namespace

std::string packPlace(const ShowPlace& place) {
  PackedWriter to;
  to.signedNumber(std::llround(place.date.secondsSince1970 * 1e6));
  to.byte(flagsOf(place.player));
  to.text(place.cueName);
  writeMicroseconds(to, place.player.cueTime);
  writeMicroseconds(to, place.player.showTime);
  to.byte(place.player.masterBefore);
  to.number(place.zones.size());
  for (const ZoneLook& zone : place.zones) {
    to.byte(zone.zone);
    for (const std::uint8_t byte : encodeBroadcast(zone.look)) to.byte(byte);
  }
  std::string bytes = std::string(kMagic) + to.bytes();
  PackedWriter print;
  print.number(fingerprintOf(bytes));
  return bytes + print.bytes();
}

std::optional<ShowPlace> unpackPlace(std::string_view bytes) {
  if (!bytes.starts_with(kMagic)) return std::nullopt;
  PackedReader from(bytes.substr(kMagic.size()));
  ShowPlace place;
  place.date.secondsSince1970 = static_cast<double>(from.signedNumber(kLatestDate)) / 1e6;
  const std::uint8_t flags = from.byte();
  place.cueName = from.text();
  // Which number it has is for whoever knows the list.
  if ((flags & kPlaysCue) != 0) place.player.cue = 0;
  place.player.isHeld = (flags & kIsHeld) != 0;
  place.player.isBlack = (flags & kIsBlack) != 0;
  place.player.isPanic = (flags & kIsPanic) != 0;
  place.player.isOnAir = (flags & kIsOnAir) != 0;
  place.player.cueTime = readMicroseconds(from);
  place.player.showTime = readMicroseconds(from);
  place.player.masterBefore = from.byte();
  for (std::size_t left = from.count(1 + BroadcastBytes().size()); left > 0; --left) {
    ZoneLook& zone = place.zones.emplace_back();
    zone.zone = from.byte();
    BroadcastBytes look{};
    for (std::uint8_t& byte : look) byte = from.byte();
    zone.look = decodeBroadcast(look);
  }
  const std::size_t printed = bytes.size() - from.left();
  const bool isSame = from.number() == fingerprintOf(bytes.substr(0, printed));
  if (!from.isDone() || !isSame) return std::nullopt;
  return place;
}

Duration cueTimeAt(const ShowPlace& place, Date now) {
  const double away = now.secondsSince1970 - place.date.secondsSince1970;
  if (place.player.isHeld || !(away > 0 && away < kLongestAway)) return place.player.cueTime;
  return place.player.cueTime + fromSeconds(away);
}

std::string placeFileOf(const std::string& journal) { return journal + ".place"; }

PlaceFile::PlaceFile(std::string path, std::unique_ptr<SerialQueue> queue)
    : path_(std::move(path)), queue_(std::move(queue)) {}

void PlaceFile::keep(std::string bytes) {
  bool isUnderWay = false;
  {
    const std::lock_guard lock(mutex_);
    isUnderWay = !std::exchange(newest_, std::move(bytes)).empty();
  }
  if (isUnderWay) return;
  // Where there is no thread for it the place stays what it was, until the next change.
  if (queue_ == nullptr) {
    write();
  } else if (!queue_->dispatch([this] { write(); })) {
    // Nobody else looks at it: the one before has been taken, and this one never will be.
    newest_.clear();
    hasFailed_ = true;
  }
}

// The file is replaced in one step, so that a death in the midst of it leaves the one before.
void PlaceFile::write() {
  std::string bytes;
  {
    const std::lock_guard lock(mutex_);
    bytes.swap(newest_);
  }
  const std::string fresh = path_ + ".new";
  hasFailed_ = !writeWhole(fresh, bytes) || std::rename(fresh.c_str(), path_.c_str()) != 0;
  if (hasFailed_) ::unlink(fresh.c_str());
}

void PlaceFile::forget() { ::unlink(path_.c_str()); }

// What the queue still holds would come back otherwise.
void PlaceFile::end() {
  queue_.reset();
  forget();
}

void PlaceFile::leave() {
  queue_.reset();
  if (!newest_.empty()) write();
}

}  // namespace halvora
