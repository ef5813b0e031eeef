// SPDX-License-Identifier: Apache-2.0
// What is written into a show file: names and looks.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include "engine/broadcast.h"
#include "venue/base/input_text.h"
#include "venue/show/cue_file.h"
#include "venue/show/cue_values.h"
#include "venue/show/show_words.h"

namespace halvora {

namespace {

template <std::size_t kCount>
std::string wordFor(std::uint8_t number, const std::array<const char*, kCount>& names) {
  return number < names.size() ? names[number] : std::to_string(number);
}

std::string colourText(const Broadcast& packet) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text = "\"#";
  for (const std::uint8_t level : {packet.red, packet.green, packet.blue}) {
    text += kDigits[level >> 4];
    text += kDigits[level & 0xF];
  }
  return text + "\"";
}

std::string paletteText(std::uint8_t id, const std::vector<NamedPalette>& palettes) {
  const auto found = std::ranges::find(palettes, std::int64_t{id}, &NamedPalette::id);
  // A name that would be read as another palette's, or as a number, names nothing.
  const auto hasItsName = [&](const NamedPalette& one) {
    return isSameName(one.name, found->name);
  };
  const bool isNamed = found != palettes.end() && !found->name.empty() &&
                       !decimal(found->name, UINT8_MAX) &&
                       std::ranges::find_if(palettes, hasItsName) == found;
  // A number is what it is, whatever the assets call it by then.
  return isNamed ? yamlText(found->name) : std::to_string(id);
}

std::string rateText(double rate) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), rate).ptr;
  return {digits.data(), end};
}

class Pairs {
 public:
  void add(const char* key, const std::string& value) {
    text_ += (text_.empty() ? "" : ", ") + std::string(key) + ": " + value;
  }
  void addLevel(const char* key, std::uint8_t level) {
    if (level != 0) add(key, std::to_string(level));
  }
  std::string whole() const { return "{" + text_ + "}"; }

 private:
  std::string text_;
};

void addTorch(const Broadcast& packet, int still, Pairs& pairs) {
  if (packet.ledMode == 0 && packet.ledSpeed == 0 && still == 0) return;
  Pairs torch;
  torch.add("mode", wordFor(packet.ledMode, kTorchModeNames));
  torch.addLevel("speed", packet.ledSpeed);
  if (still != 0) torch.add("still", std::to_string(still));
  pairs.add("torch", torch.whole());
}

void addMap(const CueMap& map, Pairs& pairs) {
  Pairs own;
  const CueMap usual;
  own.add("id", std::to_string(map.id));
  if (map.from != usual.from) own.add("from", std::to_string(map.from));
  if (map.rate != usual.rate) own.add("rate", rateText(map.rate));
  pairs.add("map", own.whole());
}

}  // namespace

std::string yamlText(std::string_view text) {
  std::string quoted = "\"";
  for (const char letter : text) {
    if (letter == '"' || letter == '\\') quoted += '\\';
    quoted += letter;
  }
  return quoted + "\"";
}

std::string yamlLook(const CueLook& look, const std::vector<NamedPalette>& palettes) {
  const Broadcast& packet = look.packet;
  Pairs pairs;
  pairs.add("mode", wordFor(packet.mode, kModeNames));
  if (packet.red != 0 || packet.green != 0 || packet.blue != 0) {
    pairs.add("colour", colourText(packet));
  }
  if (packet.paletteId != 0) pairs.add("palette", paletteText(packet.paletteId, palettes));
  pairs.addLevel("speed", packet.speed);
  if (packet.master != 0xFF) pairs.add("master", std::to_string(packet.master));
  pairs.addLevel("gobo", packet.gobo);
  addTorch(packet, look.map ? 0 : packet.minutes | packet.seconds << 8, pairs);
  if (packet.vibrate != 0) pairs.add("vibrate", wordFor(packet.vibrate, kVibrationNames));
  if (look.map) addMap(*look.map, pairs);
  return pairs.whole();
}

}  // namespace halvora
