// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/map_flaws.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "seats/seat_texts.h"
#include "venue/plan/flaw_list.h"

namespace halvora {

namespace {

/// A value of a member or an entry: a scalar's text and use, or that it is a list or an object.
struct Written {
  const JsonScalar* scalar = nullptr;
  std::string_view container = {};

  std::string shown() const {
    return scalar != nullptr ? shownText(*scalar) : std::string(container);
  }
  bool isNumber() const { return scalar != nullptr && scalar->isNumber(); }
  bool isText() const { return scalar != nullptr && scalar->isText(); }
  bool isNullOrEmpty() const {
    return scalar != nullptr && !scalar->isNumber() && trimmed(scalar->text).empty();
  }
};

/// Empty where a position that is used is the number that it shows.
std::string changeOf(const JsonScalar& position) {
  if (saysWhatItMeans(position)) return {};
  return " is " + shownText(position) + " and counts as " + std::to_string(countedAs(position));
}

/// The layout that lists everything. Knows the same members as the parse.
class ListedFlaws {
 public:
  void open(std::string_view path) {
    path_ = path;
    depth_ = kSections;
    levels_[0].entries = 0;
  }
  bool isOpen() const { return depth_ > 0; }

  bool begin(std::string_view name, JsonContainer container) {
    const Written value{nullptr, shownText(container)};
    if (!isInList()) return member(name, value, container);
    if (container == JsonContainer::object) {
      beginEntry();
      return true;
    }
    skip(value);
    return false;
  }
  void end() {
    if (!isInList()) endEntry();
    --depth_;
  }
  void scalar(std::string_view name, const JsonScalar& value) {
    const Written written{&value, {}};
    if (!isInList()) {
      member(name, written, std::nullopt);
    } else if (depth_ != kSeats || (!value.isText() && !value.isNumber())) {
      skip(written);
    } else {
      // A seat that is a name and nothing else: where it lies is meant to follow from its number.
      beginEntry();
      level().isShort = true;
      settleName(written);
      end();
    }
  }

  FlawList finish() {
    for (const Level& level : levels_) {
      if (level.named > 0) flaws_.takeFrom(level.unnamed, Flaw::nameMissing);
    }
    for (const Axis& axis : axes_) {
      if (axis.given > 0) flaws_.takeFrom(axis.missing, Flaw::positionMissing);
    }
    return std::move(flaws_);
  }

 private:
  enum Depth : int { kSections = 1, kSection, kRows, kRow, kSeats, kSeat };
  static constexpr std::size_t kKeysAnAxis = 5;

  /// A list of entries, and the one that is being read.
  struct Level {
    std::size_t entries = 0;
    /// How many of the entries within it are kept.
    std::size_t kept = 0;
    std::set<std::string, std::less<>> members;
    bool isNamed = false;
    bool isShort = false;
    /// Of all entries of this kind.
    std::uint64_t named = 0;
    FlawList unnamed = {};
  };
  /// A coordinate of the seat that is being read: what the best key with a usable value says, and
  /// the best one without; how many seats have one, and which do not.
  struct Axis {
    std::size_t usable = kKeysAnAxis;
    std::size_t unusable = kKeysAnAxis;
    std::string change = {};
    std::string unusableText = {};
    std::uint64_t given = 0;
    FlawList missing = {};
  };
  // Best first.
  static constexpr std::string_view kKeys[2][kKeysAnAxis] = {{"xPos", "x", "xpos", "column", "col"},
                                                             {"yPos", "y", "ypos", "row", "line"}};

  bool isInList() const { return depth_ % 2 != 0; }
  Level& level() { return levels_[static_cast<std::size_t>((depth_ - 1) / 2)]; }
  std::string_view listName() const { return depth_ == kSection ? "rows" : "seats"; }

  std::string place() const {
    constexpr std::string_view kLists[] = {"", ".rows", ".seats"};
    std::string text(path_);
    for (std::size_t at = 0; at <= static_cast<std::size_t>((depth_ - 1) / 2); ++at) {
      text.append(kLists[at]).append("[" + std::to_string(levels_[at].entries - 1) + "]");
    }
    return text;
  }

  void skip(const Written& value) {
    constexpr Flaw kSkipped[] = {Flaw::sectionSkipped, Flaw::rowSkipped, Flaw::seatSkipped};
    ++level().entries;
    flaws_.add(kSkipped[(depth_ - 1) / 2], [&] { return place() + " is " + value.shown(); });
  }

  void beginEntry() {
    Level& list = level();
    ++list.entries;
    list.kept = 0;
    list.members.clear();
    list.isNamed = list.isShort = false;
    ++depth_;
    for (Axis& axis : axes_) axis.usable = axis.unusable = kKeysAnAxis;
  }

  // True if what follows is to be told.
  bool member(std::string_view name, const Written& value, std::optional<JsonContainer> container) {
    const bool isList = depth_ != kSeat && name == listName();
    const auto key = depth_ == kSeat ? positionKey(name) : std::nullopt;
    if (!isList && !key && name != "name") return false;
    if (!level().members.insert(std::string(name)).second) {
      flaws_.add(Flaw::repeatedMember, [&] { return place() + "." + std::string(name); });
      return false;
    }
    if (key) settlePosition(name, *key, value);
    if (!isList) {
      if (!key) settleName(value);
      return false;
    }
    if (container == JsonContainer::array) {
      ++depth_;
      level().entries = 0;
      return true;
    }
    flaws_.add(Flaw::listMissing,
               [&] { return place() + "." + std::string(name) + " is " + value.shown(); });
    return false;
  }

  void settleName(const Written& value) {
    Level& entry = level();
    entry.isNamed = true;
    const bool isFlag = value.isNumber() && value.scalar->kind == JsonScalar::Kind::boolean;
    if (!isFlag && (value.isNumber() || (value.isText() && !value.isNullOrEmpty()))) {
      ++entry.named;
      return;
    }
    flaws_.add(Flaw::nameUnusable,
               [&] { return place() + (entry.isShort ? "" : ".name") + " is " + value.shown(); });
  }

  static std::optional<std::pair<std::size_t, std::size_t>> positionKey(std::string_view name) {
    for (std::size_t axis = 0; axis < 2; ++axis) {
      const auto* found = std::find(std::begin(kKeys[axis]), std::end(kKeys[axis]), name);
      const auto rank = static_cast<std::size_t>(found - std::begin(kKeys[axis]));
      if (rank < kKeysAnAxis) return std::pair(axis, rank);
    }
    return std::nullopt;
  }

  void settlePosition(std::string_view name, std::pair<std::size_t, std::size_t> key,
                      const Written& value) {
    Axis& axis = axes_[key.first];
    const std::size_t rank = key.second;
    if (value.isNumber() || (value.isText() && !value.scalar->text.empty())) {
      if (rank > axis.usable) return;
      axis.usable = rank;
      axis.change = changeOf(*value.scalar);
      if (!axis.change.empty()) axis.change.insert(0, "." + std::string(name));
    } else if (rank < axis.unusable) {
      axis.unusable = rank;
      axis.unusableText = "." + std::string(name) + " is " + value.shown();
    }
  }

  void endEntry() {
    Level& ended = level();
    if (!ended.isNamed) ended.unnamed.add(Flaw::nameMissing, [this] { return place(); });
    if (depth_ == kSeat) {
      for (Axis& axis : axes_) endAxis(axis);
    } else if (ended.kept == 0) {
      flaws_.add(depth_ == kRow ? Flaw::rowWithoutSeats : Flaw::sectionWithoutRows,
                 [this] { return place(); });
      return;
    }
    if (depth_ > kSection) ++levels_[static_cast<std::size_t>(depth_ / 2 - 2)].kept;
  }

  void endAxis(Axis& axis) {
    const bool isGiven = axis.usable < kKeysAnAxis;
    if (axis.unusable < axis.usable) {
      flaws_.add(Flaw::positionUnusable, [&] { return place() + axis.unusableText; });
    } else if (!isGiven) {
      const char* const name = &axis == axes_.data() ? "x" : "y";
      axis.missing.add(Flaw::positionMissing, [&] { return place() + " has no " + name; });
    }
    if (!isGiven) return;
    ++axis.given;
    if (!axis.change.empty()) {
      flaws_.add(Flaw::positionChanged, [&] { return place() + axis.change; });
    }
  }

  int depth_ = 0;
  std::string path_;
  std::array<Level, 3> levels_;
  std::array<Axis, 2> axes_;
  FlawList flaws_;
};

/// The compact layout: objects in objects, and a list of two coordinates for each seat.
class KeyedFlaws {
 public:
  void open(std::string_view path) {
    path_ = path;
    depth_ = kSections;
    objects_[0] = {};
  }
  bool isOpen() const { return depth_ > 0; }

  bool begin(std::string_view name, JsonContainer container) {
    const Written value{nullptr, shownText(container)};
    if (depth_ == kPosition) {
      element(value);
      return false;
    }
    const bool isWanted =
        container == (depth_ == kSeats ? JsonContainer::array : JsonContainer::object);
    if (!member(name, isWanted ? nullptr : &value)) return false;
    ++depth_;
    elements_ = 0;
    if (depth_ < kPosition) object() = {};
    return true;
  }
  void scalar(std::string_view name, const JsonScalar& value) {
    const Written written{&value, {}};
    if (depth_ == kPosition) {
      element(written);
    } else {
      member(name, &written);
    }
  }
  void end() {
    bool isKept = true;
    if (depth_ == kPosition) {
      isKept = elements_ >= 2;
      if (!isKept) note(Flaw::cutShort);
    } else if (object().kept == 0 && depth_ > kSections) {
      isKept = false;
      note(depth_ == kSeats ? Flaw::rowWithoutSeats : Flaw::sectionWithoutRows);
    }
    --depth_;
    if (isKept && depth_ > 0) ++object().kept;
  }

  FlawList finish() { return std::move(flaws_); }

 private:
  enum Depth : int { kSections = 1, kRows, kSeats, kPosition };

  struct Object {
    std::set<std::string, std::less<>> members;
    std::string member;
    std::size_t kept = 0;
  };

  Object& object() { return objects_[static_cast<std::size_t>(depth_ - kSections)]; }

  /// As far as the member of the object at `depth` that is being read.
  std::string place(int depth) const {
    std::string text = path_;
    for (int at = 0; at < depth; ++at) {
      text += "[\"" + objects_[static_cast<std::size_t>(at)].member + "\"]";
    }
    return text;
  }
  /// Of the object or list that ends.
  void note(Flaw flaw) {
    flaws_.add(flaw, [this] { return place(depth_ - 1); });
  }

  // True if what follows is to be told; `unwanted` is a value of another kind.
  bool member(std::string_view name, const Written* unwanted) {
    constexpr Flaw kSkipped[] = {Flaw::sectionSkipped, Flaw::rowSkipped, Flaw::seatSkipped};
    Object& parent = object();
    parent.member = name;
    const int depth = depth_;
    if (!parent.members.insert(parent.member).second) {
      flaws_.add(Flaw::repeatedMember, [&] { return place(depth); });
      return false;
    }
    if (unwanted == nullptr) return true;
    flaws_.add(kSkipped[depth - kSections],
               [&] { return place(depth) + " is " + unwanted->shown(); });
    return false;
  }

  void element(const Written& value) {
    const std::size_t at = elements_++;
    if (at >= 2) return;
    const auto here = [&] { return place(depth_ - 1) + "[" + std::to_string(at) + "]"; };
    if (!value.isNumber() && (!value.isText() || value.isNullOrEmpty())) {
      flaws_.add(Flaw::positionUnusable, [&] { return here() + " is " + value.shown(); });
      return;
    }
    const std::string change = changeOf(*value.scalar);
    if (!change.empty()) flaws_.add(Flaw::positionChanged, [&] { return here() + change; });
  }

  int depth_ = 0;
  std::string path_;
  std::array<Object, 3> objects_;
  std::size_t elements_ = 0;
  FlawList flaws_;
};

/// Finds the layout at the document's top, as the parse does.
class DocumentFlaws final : public JsonEvents {
 public:
  bool begin(std::string_view name, JsonContainer container) override {
    if (keyed_.isOpen()) return keyed_.begin(name, container);
    if (listed_.isOpen()) return listed_.begin(name, container);
    if (!isWithin_) {
      isWithin_ = true;
      if (container == JsonContainer::array) listed_.open("");
      return true;
    }
    return member(name, {nullptr, shownText(container)}, container);
  }
  void end() override {
    if (keyed_.isOpen()) return keyed_.end();
    if (listed_.isOpen()) listed_.end();
  }
  void scalar(std::string_view name, const JsonScalar& value) override {
    if (keyed_.isOpen()) return keyed_.scalar(name, value);
    if (listed_.isOpen()) return listed_.scalar(name, value);
    member(name, {&value, {}}, std::nullopt);
  }

  std::vector<Finding> finish() {
    FlawList flaws = isKeyed_ ? keyed_.finish() : listed_.finish();
    if (isKeyed_ && hasList_) {
      flaws.add(Flaw::unusedPart, [] { return std::string("sections, because there is an s"); });
    }
    flaws.takeFrom(unused_, Flaw::unusedPart);
    return flaws.finish();
  }

 private:
  bool member(std::string_view name, const Written& value, std::optional<JsonContainer> container) {
    const bool isKeyed = name == "s";
    if (!isKeyed && name != "sections") return false;
    if (std::exchange(isKeyed ? keyedIsSettled_ : listIsSettled_, true)) {
      unused_.add(Flaw::unusedPart, [&] { return std::string(name) + ", which is there already"; });
    } else if (container != (isKeyed ? JsonContainer::object : JsonContainer::array)) {
      unused_.add(Flaw::unusedPart,
                  [&] { return std::string(name) + ", which is " + value.shown(); });
    } else if (isKeyed) {
      isKeyed_ = true;
      keyed_.open("s");
      return true;
    } else {
      hasList_ = true;
      // Beside the other layout nobody reads it.
      if (isKeyed_) return false;
      listed_.open("sections");
      return true;
    }
    return false;
  }

  ListedFlaws listed_;
  KeyedFlaws keyed_;
  bool isWithin_ = false;
  bool isKeyed_ = false;
  bool hasList_ = false;
  // Of equal members the first one counts.
  bool keyedIsSettled_ = false;
  bool listIsSettled_ = false;
  FlawList unused_;
};

}  // namespace

std::vector<Finding> flawsOf(std::string_view document, const JsonReader& json) {
  DocumentFlaws flaws;
  return json.read(document, flaws) ? flaws.finish() : std::vector<Finding>();
}

}  // namespace halvora
