// SPDX-License-Identifier: Apache-2.0
#include "seats/map_versions.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "seats/seat_texts.h"

namespace halvora {

namespace {

/// Looks at the outermost members alone.
class MapVersionEvents final : public JsonEvents {
 public:
  bool begin(std::string_view name, JsonContainer container) override {
    if (isWithin_) {
      settle(name, std::nullopt);
      return false;
    }
    isWithin_ = isObject_ = container == JsonContainer::object;
    return isObject_;
  }
  void end() override {}
  void scalar(std::string_view name, const JsonScalar& value) override {
    settle(name, value.isText()     ? std::optional(leadingInteger(value.text))
                 : value.isNumber() ? std::optional(value.wholeNumber())
                                    : std::nullopt);
  }

  std::optional<MapVersionInfo> versions() const {
    if (!isObject_) return std::nullopt;
    return MapVersionInfo{seatVersion_.value, mapAssetsVersion_.value};
  }

 private:
  struct Version {
    std::int64_t value = 1;
    bool isSettled = false;
  };

  // Of equal members the first one counts, whatever it holds.
  void settle(std::string_view name, std::optional<std::int64_t> value) {
    Version* version = name == "seatVersion"        ? &seatVersion_
                       : name == "mapAssetsVersion" ? &mapAssetsVersion_
                                                    : nullptr;
    if (version == nullptr || std::exchange(version->isSettled, true)) return;
    version->value = std::max<std::int64_t>(value.value_or(1), 1);
  }

  bool isWithin_ = false;
  bool isObject_ = false;
  Version seatVersion_;
  Version mapAssetsVersion_;
};

}  // namespace

std::optional<MapVersionInfo> mapVersionInfoFromJSON(std::string_view document,
                                                     const JsonReader& json) {
  MapVersionEvents events;
  return json.read(document, events) ? events.versions() : std::nullopt;
}

}  // namespace halvora
