// SPDX-License-Identifier: Apache-2.0
#include "venue/show/cue_list.h"

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <utility>

#include "pixelmap/frame_time.h"
#include "venue/base/input_text.h"
#include "venue/show/cue_values.h"
#include "venue/show/show_words.h"
#include "venue/show/yaml_document.h"

namespace halvora {

namespace {

/// A file with more faults than these is another kind of file.
constexpr std::size_t kMostFlaws = 100;
constexpr std::size_t kLongestName = 100;
constexpr std::size_t kShownNames = 12;
// Bluetooth's own limits of an advertisement's interval.
constexpr Duration kShortestRepeat = milliseconds(20);
constexpr Duration kLongestRepeat = milliseconds(10240);
constexpr double kLeastRate = 0.1;
constexpr double kGreatestRate = 100;
/// Above these a palette's number means the packet's own colour.
constexpr std::uint64_t kLastPalette = 50;

template <class Names>
std::string listed(const Names& names) {
  std::string text;
  std::size_t count = 0;
  for (const std::string_view name : names) {
    if (count++ == kShownNames + kShownNames) return text + ", …";
    text += (text.empty() ? "" : ", ") + std::string(name);
  }
  return text;
}

class CueListReading {
 public:
  explicit CueListReading(const std::vector<NamedPalette>& palettes) : palettes_(palettes) {}

  void read(const YamlNode& root);
  std::variant<CueList, std::vector<CueListFlaw>> result() && {
    if (flaws_.empty()) return std::move(show_);
    std::ranges::stable_sort(flaws_, {}, &CueListFlaw::line);
    return std::move(flaws_);
  }

 private:
  template <class Target>
  struct Field {
    const char* key;
    void (CueListReading::*read)(const YamlMember& member, Target& target);
  };
  struct Torch {
    std::uint8_t mode = 0;
    std::uint8_t speed = 0;
    int still = 0;
  };

  static const std::array<Field<CueList>, 6> kShowFields;
  static const std::array<Field<Cue>, 6> kCueFields;
  static const std::array<Field<CueLook>, 9> kLookFields;
  static const std::array<Field<Torch>, 3> kTorchFields;
  static const std::array<Field<CueMap>, 3> kMapFields;

  void flaw(std::size_t line, std::string what) {
    if (flaws_.size() < kMostFlaws) flaws_.push_back({line, where_, std::move(what)});
  }
  /// What that key must be; none, so that a reader can return it.
  std::nullopt_t mustBe(const YamlMember& member, const std::string& what) {
    const YamlNode& node = *member.value;
    const bool isScalar = node.kind == YamlNode::Kind::scalar;
    flaw(member.line, "\"" + member.key + "\" must be " + what +
                          (!isScalar           ? ", not more keys or a list"
                           : node.text.empty() ? "; it is empty"
                                               : ", not " + inQuotes(node.text)));
    return std::nullopt;
  }
  /// What the parse makes of the one value; without one, what it must be is said.
  template <class Parse>
  auto value(const YamlMember& member, const std::string& what, Parse parse)
      -> decltype(parse(std::string_view())) {
    if (member.value->kind == YamlNode::Kind::scalar) {
      if (auto parsed = parse(member.value->text)) return parsed;
    }
    return mustBe(member, what);
  }
  std::optional<int> number(const YamlMember& member, std::uint64_t least, std::uint64_t most);
  std::optional<Duration> time(const YamlMember& member, Duration least, Duration most);
  std::optional<std::uint8_t> level(const YamlMember& member) {
    return value(member, "0 to 255 or \"0 %\" to \"100 %\"", levelByteOf);
  }
  std::optional<std::uint8_t> choice(const YamlMember& member, std::span<const char* const> names) {
    return value(member, "0 to " + std::to_string(names.size() - 1) + " or one of " + listed(names),
                 [names](std::string_view text) { return choiceOf(text, names); });
  }

  template <class Target, std::size_t kCount>
  void readFields(const YamlNode& node, const char* what,
                  const std::array<Field<Target>, kCount>& fields, Target& target);
  template <class Target, std::size_t kCount>
  void readInner(const YamlMember& member, const std::array<Field<Target>, kCount>& fields,
                 Target& target);

  void readApplication(const YamlMember& member, CueList& show);
  void readVenue(const YamlMember& member, CueList& show);
  void readTransmitter(const YamlMember& member, CueList& show);
  void readRepeat(const YamlMember& member, CueList& show);
  void readLooks(const YamlMember& member, CueList& show);
  void readCues(const YamlMember& member, CueList& show);
  void keepCues(const YamlMember& member, CueList& /*show*/) { cues_ = &member; }

  void readCue(const YamlNode& node);
  void checkName(const Cue& cue);
  void checkTime(const Cue& cue);
  void readCueName(const YamlMember& /*member*/, Cue& /*cue*/) {}
  void readAt(const YamlMember& member, Cue& cue) { cue.at = time(member, {}, kLongestShow); }
  void readHold(const YamlMember& member, Cue& cue) { cue.hold = time(member, {}, kLongestShow); }
  void readFade(const YamlMember& member, Cue& cue) {
    cue.fade = time(member, {}, kLongestShow).value_or(Duration{});
  }
  void readCueLook(const YamlMember& member, Cue& cue);
  void readCueTransmitter(const YamlMember& member, Cue& cue);

  CueLook readLook(const YamlNode& node);
  void readMode(const YamlMember& member, CueLook& look);
  void readColour(const YamlMember& member, CueLook& look);
  void readPalette(const YamlMember& member, CueLook& look);
  void readSpeed(const YamlMember& member, CueLook& look);
  void readMaster(const YamlMember& member, CueLook& look);
  void readGobo(const YamlMember& member, CueLook& look);
  void readTorch(const YamlMember& member, CueLook& look);
  void readVibrate(const YamlMember& member, CueLook& look);
  void readMap(const YamlMember& member, CueLook& look);
  void readTorchMode(const YamlMember& member, Torch& torch) {
    torch.mode = choice(member, kTorchModeNames).value_or(0);
  }
  void readTorchSpeed(const YamlMember& member, Torch& torch) {
    torch.speed = level(member).value_or(0);
  }
  void readStill(const YamlMember& member, Torch& torch) {
    torch.still = number(member, 1, kMostPixelMapFrames).value_or(0);
  }
  void readMapId(const YamlMember& member, CueMap& map) {
    map.id = static_cast<std::uint8_t>(number(member, 1, 0xFF).value_or(0));
  }
  void readFrom(const YamlMember& member, CueMap& map) {
    map.from = number(member, 1, kMostPixelMapFrames).value_or(1);
  }
  void readRate(const YamlMember& member, CueMap& map);

  const std::vector<NamedPalette>& palettes_;
  CueList show_;
  std::vector<CueListFlaw> flaws_;
  /// What is read now.
  std::string where_;
  std::map<std::string, CueLook, std::less<>> looks_;
  const YamlMember* cues_ = nullptr;
  std::map<std::string, std::size_t, std::less<>> cueLines_;
  std::optional<std::size_t> lastTimed_;
  /// Said by the cue that is read.
  std::optional<std::uint8_t> cueTransmitter_;
  bool hasLook_ = false;
};

const std::array<CueListReading::Field<CueList>, 6> CueListReading::kShowFields = {{
    {"application", &CueListReading::readApplication},
    {"venue", &CueListReading::readVenue},
    {"transmitter", &CueListReading::readTransmitter},
    {"repeat", &CueListReading::readRepeat},
    {"looks", &CueListReading::readLooks},
    {"cues", &CueListReading::keepCues},
}};
const std::array<CueListReading::Field<Cue>, 6> CueListReading::kCueFields = {{
    {"name", &CueListReading::readCueName},
    {"at", &CueListReading::readAt},
    {"look", &CueListReading::readCueLook},
    {"hold", &CueListReading::readHold},
    {"fade", &CueListReading::readFade},
    {"transmitter", &CueListReading::readCueTransmitter},
}};
const std::array<CueListReading::Field<CueLook>, 9> CueListReading::kLookFields = {{
    {"mode", &CueListReading::readMode},
    {"colour", &CueListReading::readColour},
    {"palette", &CueListReading::readPalette},
    {"speed", &CueListReading::readSpeed},
    {"master", &CueListReading::readMaster},
    {"gobo", &CueListReading::readGobo},
    {"torch", &CueListReading::readTorch},
    {"vibrate", &CueListReading::readVibrate},
    {"map", &CueListReading::readMap},
}};
const std::array<CueListReading::Field<CueListReading::Torch>, 3> CueListReading::kTorchFields = {{
    {"mode", &CueListReading::readTorchMode},
    {"speed", &CueListReading::readTorchSpeed},
    {"still", &CueListReading::readStill},
}};
const std::array<CueListReading::Field<CueMap>, 3> CueListReading::kMapFields = {{
    {"id", &CueListReading::readMapId},
    {"from", &CueListReading::readFrom},
    {"rate", &CueListReading::readRate},
}};

std::optional<int> CueListReading::number(const YamlMember& member, std::uint64_t least,
                                          std::uint64_t most) {
  return value(member,
               "a whole number from " + std::to_string(least) + " to " + std::to_string(most),
               [least, most](std::string_view text) -> std::optional<int> {
                 const auto number = decimal(text, most);
                 if (!number || *number < least) return std::nullopt;
                 return static_cast<int>(*number);
               });
}

std::optional<Duration> CueListReading::time(const YamlMember& member, Duration least,
                                             Duration most) {
  const std::string range =
      showTimeText(least) + " to " +
      (most == kLongestShow ? "four days, as 2.5, \"1:02\" or \"1:02.500\"" : showTimeText(most));
  return value(member, "seconds from " + range,
               [least, most](std::string_view text) -> std::optional<Duration> {
                 const auto time = showTimeOf(text);
                 return time && *time >= least && *time <= most ? time : std::nullopt;
               });
}

template <class Target, std::size_t kCount>
void CueListReading::readFields(const YamlNode& node, const char* what,
                                const std::array<Field<Target>, kCount>& fields, Target& target) {
  std::array<std::string_view, kCount> keys;
  std::ranges::transform(fields, keys.begin(), &Field<Target>::key);
  if (node.kind != YamlNode::Kind::map) {
    return flaw(node.line,
                "must be keys with values; those of " + std::string(what) + " are " + listed(keys));
  }
  for (const YamlMember& member : node.members) {
    const auto field = std::ranges::find(keys, std::string_view(member.key));
    if (field == keys.end()) {
      flaw(member.line,
           "unknown key " + inQuotes(member.key) + "; those of " + what + " are " + listed(keys));
    } else {
      const auto at = static_cast<std::size_t>(field - keys.begin());
      (this->*fields[at].read)(member, target);
    }
  }
}

template <class Target, std::size_t kCount>
void CueListReading::readInner(const YamlMember& member,
                               const std::array<Field<Target>, kCount>& fields, Target& target) {
  const std::string what = "\"" + member.key + "\"";
  readFields(*member.value, what.c_str(), fields, target);
}

void CueListReading::read(const YamlNode& root) {
  readFields(root, "a show", kShowFields, show_);
  where_.clear();
  if (root.kind != YamlNode::Kind::map) return;
  if (cues_ == nullptr) return flaw(root.line, "has no \"cues\"; a show is a list of them");
  readCues(*cues_, show_);
}

void CueListReading::readApplication(const YamlMember& member, CueList& show) {
  show.sender.applicationId = static_cast<std::uint16_t>(number(member, 0, 0xFFFF).value_or(0));
}

void CueListReading::readVenue(const YamlMember& member, CueList& show) {
  show.sender.venueId = static_cast<std::uint8_t>(number(member, 0, 0xFF).value_or(0));
}

void CueListReading::readTransmitter(const YamlMember& member, CueList& show) {
  show.sender.transmitter = static_cast<std::uint8_t>(number(member, 0, 0xFF).value_or(0));
}

void CueListReading::readRepeat(const YamlMember& member, CueList& show) {
  show.repeat = time(member, kShortestRepeat, kLongestRepeat).value_or(show.repeat);
}

void CueListReading::readLooks(const YamlMember& member, CueList& /*show*/) {
  if (member.value->kind == YamlNode::Kind::scalar && member.value->text.empty()) return;
  if (member.value->kind != YamlNode::Kind::map) {
    return flaw(member.line, "\"looks\" must be names, each with a look");
  }
  for (const YamlMember& entry : member.value->members) {
    where_ = "look " + inQuotes(entry.key);
    looks_.emplace(entry.key, readLook(*entry.value));
  }
  where_.clear();
}

void CueListReading::readCues(const YamlMember& member, CueList& /*show*/) {
  const YamlNode& list = *member.value;
  if (list.kind != YamlNode::Kind::list || list.items.empty() || list.items.size() > kMostCues) {
    return flaw(member.line, "\"cues\" must be a list of 1 to " + std::to_string(kMostCues) +
                                 " cues, each with \"- name:\" and \"look:\"");
  }
  for (const YamlValue& item : list.items) readCue(*item);
  for (Cue& cue : show_.cues) {
    cue.look.packet.applicationId = show_.sender.applicationId;
    cue.look.packet.venueId = show_.sender.venueId;
  }
}

void CueListReading::readCue(const YamlNode& node) {
  Cue cue;
  cue.line = node.line;
  where_ = "cue " + std::to_string(show_.cues.size() + 1);
  const auto name = std::ranges::find(node.members, "name", &YamlMember::key);
  if (name != node.members.end() && name->value->kind == YamlNode::Kind::scalar) {
    cue.name = name->value->text;
    if (!cue.name.empty()) where_ = "cue " + inQuotes(cue.name);
  }
  cueTransmitter_.reset();
  hasLook_ = false;
  readFields(node, "a cue", kCueFields, cue);
  if (node.kind == YamlNode::Kind::map) {
    checkName(cue);
    checkTime(cue);
    if (!hasLook_)
      flaw(cue.line, "has no \"look\"; it is a look's name, or keys as mode and colour");
  }
  cue.look.packet.transmitter = cueTransmitter_.value_or(show_.sender.transmitter);
  show_.cues.push_back(std::move(cue));
  if (show_.cues.back().at) lastTimed_ = show_.cues.size() - 1;
}

void CueListReading::checkName(const Cue& cue) {
  const bool isPlain = std::ranges::none_of(
      cue.name, [](char letter) { return static_cast<unsigned char>(letter) < ' '; });
  if (cue.name.empty() || cue.name.size() > kLongestName || !isPlain) {
    return flaw(cue.line, "must have a \"name\" of 1 to 100 letters, on one line");
  }
  const auto [known, isNew] = cueLines_.emplace(cue.name, cue.line);
  if (!isNew) {
    flaw(cue.line, "line " + std::to_string(known->second) +
                       " has a cue of this name already; every cue needs one of its own");
  }
}

void CueListReading::checkTime(const Cue& cue) {
  if (!cue.at || !lastTimed_) return;
  const Cue& last = show_.cues[*lastTimed_];
  if (*cue.at >= *last.at) return;
  flaw(cue.line, "at " + showTimeText(*cue.at) + " comes before cue " + inQuotes(last.name) +
                     " at " + showTimeText(*last.at) + "; times must not go back");
}

void CueListReading::readCueLook(const YamlMember& member, Cue& cue) {
  hasLook_ = true;
  if (member.value->kind == YamlNode::Kind::map) {
    cue.look = readLook(*member.value);
    return;
  }
  const auto found = looks_.find(member.value->text);
  if (member.value->kind == YamlNode::Kind::scalar && found != looks_.end()) {
    cue.look = found->second;
    return;
  }
  std::vector<std::string_view> names;
  for (const auto& [name, look] : looks_) {
    if (names.size() <= kShownNames + kShownNames) names.push_back(name);
  }
  mustBe(member, names.empty()
                     ? "keys as mode and colour, as the show names no looks"
                     : "a look's name (" + listed(names) + ") or keys as mode and colour");
}

void CueListReading::readCueTransmitter(const YamlMember& member, Cue& /*cue*/) {
  if (const auto found = number(member, 0, 0xFF)) {
    cueTransmitter_ = static_cast<std::uint8_t>(*found);
  }
}

CueLook CueListReading::readLook(const YamlNode& node) {
  CueLook look;
  look.packet.master = 0xFF;
  readFields(node, "a look", kLookFields, look);
  const bool hasStill = look.packet.minutes != 0 || look.packet.seconds != 0;
  if (look.map && hasStill) {
    flaw(node.line, "\"still\" and \"map\" say one and the same frame; keep one of them");
  }
  return look;
}

void CueListReading::readMode(const YamlMember& member, CueLook& look) {
  look.packet.mode = choice(member, kModeNames).value_or(0);
}

void CueListReading::readColour(const YamlMember& member, CueLook& look) {
  const auto colour =
      value(member, "\"#rrggbb\", in quotes because # alone begins a comment", colourBytesOf);
  if (!colour) return;
  look.packet.red = colour->red;
  look.packet.green = colour->green;
  look.packet.blue = colour->blue;
}

void CueListReading::readPalette(const YamlMember& member, CueLook& look) {
  const auto find = [this](std::string_view text) -> std::optional<std::uint8_t> {
    if (const auto number = decimal(text, kLastPalette)) return static_cast<std::uint8_t>(*number);
    for (const NamedPalette& palette : palettes_) {
      if (palette.id < 1 || palette.id > static_cast<std::int64_t>(kLastPalette)) continue;
      if (isSameName(palette.name, text)) return static_cast<std::uint8_t>(palette.id);
    }
    return std::nullopt;
  };
  std::vector<std::string_view> names;
  for (const NamedPalette& palette : palettes_) names.push_back(palette.name);
  const std::string right = names.empty() ? " (names need the assets' palettes.json: --assets)"
                                          : " or one of " + listed(names);
  look.packet.paletteId = value(member, "0 to 50" + right, find).value_or(0);
}

void CueListReading::readSpeed(const YamlMember& member, CueLook& look) {
  look.packet.speed = level(member).value_or(0);
}

void CueListReading::readMaster(const YamlMember& member, CueLook& look) {
  look.packet.master = level(member).value_or(0xFF);
}

void CueListReading::readGobo(const YamlMember& member, CueLook& look) {
  const auto find = [](std::string_view text) -> std::optional<std::uint8_t> {
    if (isSameName(text, kNoGoboName)) return std::uint8_t{0};
    const auto gobo = decimal(text, 0xFF);
    return gobo ? std::optional(static_cast<std::uint8_t>(*gobo)) : std::nullopt;
  };
  look.packet.gobo = value(member, "0 to 255 or " + std::string(kNoGoboName), find).value_or(0);
}

void CueListReading::readTorch(const YamlMember& member, CueLook& look) {
  Torch torch;
  readInner(member, kTorchFields, torch);
  look.packet.ledMode = torch.mode;
  look.packet.ledSpeed = torch.speed;
  look.packet.minutes = static_cast<std::uint8_t>(torch.still & 0xFF);
  look.packet.seconds = static_cast<std::uint8_t>(torch.still >> 8);
}

void CueListReading::readVibrate(const YamlMember& member, CueLook& look) {
  look.packet.vibrate = choice(member, kVibrationNames).value_or(0);
}

void CueListReading::readMap(const YamlMember& member, CueLook& look) {
  look.map.emplace();
  readInner(member, kMapFields, *look.map);
  const auto& keys = member.value->members;
  if (member.value->kind == YamlNode::Kind::map &&
      std::ranges::find(keys, "id", &YamlMember::key) == keys.end()) {
    flaw(member.line, "\"map\" must have an \"id\", the number of the map's folder");
  }
  look.packet.pixelMapId = look.map->id;
}

void CueListReading::readRate(const YamlMember& member, CueMap& map) {
  map.rate = value(member, "packets a second, 0.1 to 100",
                   [](std::string_view text) -> std::optional<double> {
                     const auto rate = plainNumber(std::string(text));
                     if (!rate || !(*rate >= kLeastRate && *rate <= kGreatestRate)) {
                       return std::nullopt;
                     }
                     return rate;
                   })
                 .value_or(map.rate);
}

}  // namespace

std::string textOf(const CueListFlaw& flaw, std::string_view file) {
  return std::string(file) + ":" + std::to_string(flaw.line) + ": " +
         (flaw.where.empty() ? "" : flaw.where + ": ") + flaw.what;
}

std::variant<CueList, std::vector<CueListFlaw>> parseCueList(
    std::string_view text, const std::vector<NamedPalette>& palettes) {
  const auto document = parseYaml(text);
  if (const auto* fault = std::get_if<YamlFault>(&document)) {
    return std::vector<CueListFlaw>{{fault->line, {}, fault->what}};
  }
  CueListReading reading(palettes);
  reading.read(*std::get<YamlValue>(document));
  return std::move(reading).result();
}

std::optional<std::size_t> cueNamed(const CueList& show, std::string_view name) {
  const auto found = std::ranges::find(show.cues, name, &Cue::name);
  if (found == show.cues.end()) return std::nullopt;
  return static_cast<std::size_t>(found - show.cues.begin());
}

}  // namespace halvora
