// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_map_document.h"

#include <utility>

#include "seats/keyed_seat_map.h"
#include "seats/verbose_seat_map.h"

namespace halvora {

namespace {

/// Finds the layout at the document's top and hands on what follows.
class SeatMapDocument final : public JsonEvents {
 public:
  explicit SeatMapDocument(const SeatMapTexts& texts)
      : verbose_(builder_, texts), keyed_(builder_, texts) {}

  bool begin(std::string_view name, JsonContainer container) override {
    if (keyed_.isOpen()) return keyed_.begin(name, container);
    if (verbose_.isOpen()) return verbose_.begin(name, container);
    if (!isInTopLevel_) {
      isInTopLevel_ = true;
      if (container == JsonContainer::array) verbose_.open();
      return true;
    }
    return beginMember(name, container);
  }

  void end() override {
    if (keyed_.isOpen()) return keyed_.end();
    if (verbose_.isOpen()) verbose_.end();
  }

  void scalar(std::string_view name, const JsonScalar& value) override {
    if (keyed_.isOpen()) return keyed_.scalar(name, value);
    if (verbose_.isOpen()) return verbose_.scalar(name, value);
    if (name == kKeyed) keyedIsSettled_ = true;
    if (name == kVerbose) verboseIsSettled_ = true;
  }

  SeatMap finish() { return builder_.finish(); }

 private:
  static constexpr std::string_view kKeyed = "s";
  static constexpr std::string_view kVerbose = "sections";

  bool beginMember(std::string_view name, JsonContainer container) {
    if (name == kKeyed && !std::exchange(keyedIsSettled_, true) &&
        container == JsonContainer::object) {
      // Wherever it stands, it alone counts.
      builder_.clear();
      verboseIsSettled_ = true;
      keyed_.open();
      return true;
    }
    if (name == kVerbose && !std::exchange(verboseIsSettled_, true) &&
        container == JsonContainer::array) {
      verbose_.open();
      return true;
    }
    return false;
  }

  SeatMapBuilder builder_;
  VerboseSeatMap verbose_;
  KeyedSeatMap keyed_;
  bool isInTopLevel_ = false;
  // Of equal members the first one counts.
  bool keyedIsSettled_ = false;
  bool verboseIsSettled_ = false;
};

}  // namespace

SeatMap parseSeatMapSectionsFromJSON(std::string_view document, const SeatMapTexts& texts,
                                     const JsonReader& json) {
  if (document.size() > kLargestSeatMap) return {};
  SeatMapDocument map(texts);
  return json.read(document, map) ? map.finish() : SeatMap();
}

}  // namespace halvora
