// SPDX-License-Identifier: Apache-2.0
// Seat maps out of their documents.
#include <memory>
#include <new>
#include <string>

#include "platform/json/rapid_json_reader.h"
#include "seats/seat_map_document.h"
#include "tests/failures/trial.h"
#include "tools/halvora/map_dump.h"

namespace halvora {

namespace {

const RapidJsonReader kJson;

const std::string& mapDocument() {
  static const std::string kDocument =
      R"({"version": 3, "sections": [
        {"name": "Standing Floor", "rows": [
          {"name": "R", "seats": [{"name": "P1", "x": 2, "y": 7}, {"name": "P2", "x": 12, "y": 8}]}
        ]},
        {"name": "A very long name of a section that is in no small string", "rows": [
          {"name": "1", "seats": [{"name": "10", "x": 3, "y": 4}, {"name": "11", "x": 5, "y": 4}]},
          {"name": "2", "seats": [{"name": "20", "x": 3, "y": 6},
                                  {"name": "21", "x": 5.0e0, "y": "6"}]}]},
        {"name": "B", "rows": [{"name": "1", "seats": [{"name": "\u00e4", "x": 9, "y": 1}]}]}]})";
  return kDocument;
}

class MapParse final : public Trial {
 public:
  void act() override {
    try {
      dump_ = dumpSeatMap(mapDocument(), {}, kJson);
    } catch (const std::bad_alloc&) {
      dump_.clear();
    }
  }
  Verdict judge() override {
    const std::string right = dumpSeatMap(mapDocument(), {}, kJson);
    if (dump_ == right) return whole();
    return dump_.empty() ? refused() : wrong("another map: " + dump_);
  }

 private:
  std::string dump_;
};

template <class Made>
std::unique_ptr<Trial> make(const std::string& /*folder*/) {
  return std::make_unique<Made>();
}

constexpr FailureCase kCases[] = {
    {"map-parse", {}, make<MapParse>, true},
};

}  // namespace

std::span<const FailureCase> seatCases() { return kCases; }

}  // namespace halvora
