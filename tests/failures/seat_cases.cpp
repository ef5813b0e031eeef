// SPDX-License-Identifier: Apache-2.0
// Seat maps out of their documents, the wizard, and the status panel from its opening to the seat
// whose tables are there.
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "halvora/engine.h"
#include "seats/panel_controller.h"
#include "seats/seat_map_document.h"
#include "tests/failures/trial.h"
#include "tests/seats/wizard_room.h"
#include "venue/plan/map_dump.h"
#include "venue/plan/named_map.h"

namespace halvora {

namespace {

const ExactJsonReader kJson;

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

/// The wizard from its first step to the seat; whoever it is tried by tries a step again that had
/// no memory.
class Wizard final : public Trial {
 public:
  Wizard() {
    // What is the test's own is not what may fail.
    room_.chosen.reserve(1);
    room_.inputs.map = std::make_shared<const SeatMap>(seatMapOf(mapDocument(), {}, kJson));
  }

  void act() override { walk(); }

  Verdict judge() override {
    const bool isWhole = refusals_ == 0;
    for (int again = 0; room_.chosen.empty() && again < 8; ++again) walk();
    if (room_.chosen.size() != 1) return wrong("a seat was chosen not once");
    const Chosen right{"B", "1", "\u00e4", 9, 1};
    if (!(room_.chosen.front() == right)) return wrong("another seat was chosen");
    return isWhole ? whole() : refused();
  }

 private:
  template <class Act>
  bool tried(const Act& act) {
    try {
      act();
      return true;
    } catch (const std::bad_alloc&) {
      ++refusals_;
      return false;
    }
  }
  void walk() {
    if (wizard_ == nullptr && !tried([this] { wizard_ = &room_.load(); })) return;
    for (int turns = 0; room_.chosen.empty() && turns < 12; ++turns) {
      const std::int64_t row = wizard_->currentStep() == 0 ? 3 : 1;
      if (!tried([&] { wizard_->pickerDidSelectRow(row); })) return;
      if (!tried([&] { wizard_->nextTapped(); })) return;
    }
  }

  WizardRoom room_{{}};
  WizardController* wizard_ = nullptr;
  int refusals_ = 0;
};

/// A panel in a venue that has a map and a pixel map. Its user taps again where nothing came of it.
class Panel final : public Trial {
 public:
  Panel() {
    const std::string venue = "/host/HVAssets/Maps/Venue-7";
    phone_.mainBundle.folder = "/host";
    phone_.mainBundle.strings = {{"inside_venue", "a text that is in no small string at all"}};
    phone_.virtualFiles.put(venue + "/map.json", mapDocument());
    phone_.virtualFiles.put(venue + "/1/video.mp4", "video");
    phone_.virtualVideos.put(venue + "/1/video.mp4", VirtualVideo::ofWords({0xFFFF0000}));
    phone_.defaults.setFromOutside("venueID", std::int64_t{7});
    engine_ = std::make_unique<HalvoraViewController>(phone_.platform());
    engine_->viewDidLoad();
  }

  void act() override { walk(); }

  Verdict judge() override {
    const bool isWhole = refusals_ == 0 && phone_.loop.failures() == 0;
    for (int again = 0; !isReady() && again < 8; ++again) walk();
    if (!isReady()) return wrong("no seat can be chosen afterwards: " + seen());
    const std::string now = seen();
    static const std::string kRight = now;
    if (now != kRight) return wrong("shows " + now + " and not " + kRight);
    panel_.reset();
    phone_.loop.runFor(milliseconds(2000));
    engine_.reset();
    return isWhole ? whole() : refused();
  }

 private:
  bool isReady() const { return panel_ != nullptr && panel_->tables().isReady(); }

  std::string seen() const {
    if (panel_ == nullptr) return "no panel";
    const SeatSelectionSummaryRow& row = panel_->views().seatSelectionSummaryRow;
    const auto seat = panel_->storage().hasValidSeatSelectionForVenueId(7);
    return panel_->views().statusTextLabel.text + ", " + row.seatSelectionSummaryLabel.text + ", " +
           (row.seatLUTStatusDot.colour == kDotGreen ? "green" : "amber") + " at " +
           (seat ? std::to_string(seat->x) + ":" + std::to_string(seat->y) : "no place") +
           (panel_->presentedAlert() ? ", with an alert" : "");
  }

  // As a tap is: a turn of its own.
  void turn(const std::function<void()>& act) {
    phone_.loop.actAt(phone_.loop.now(), [this, &act] {
      try {
        act();
      } catch (const std::bad_alloc&) {
        ++refusals_;
      }
    });
    phone_.loop.runFor({});
  }
  void open() {
    auto panel = std::make_unique<PanelController>(*engine_, phone_.platform());
    panel->viewDidLoad();
    panel_ = std::move(panel);
  }
  void walk() {
    if (panel_ == nullptr) turn([this] { open(); });
    phone_.loop.runFor(milliseconds(1000));
    if (panel_ == nullptr) return;
    turn([this] { panel_->dismissAlert(); });
    turn([this] { panel_->openSeatSelector(); });
    for (int step = 0; step < 3; ++step) {
      turn([this] {
        const auto selector = panel_->presentedWizard();
        if (!selector) return;
        selector->pickerDidSelectRow(selector->currentStep() == 0 ? 3 : 1);
        selector->nextTapped();
      });
    }
    phone_.loop.runFor(milliseconds(3000));
  }

  static VirtualPhoneSetup setup() {
    VirtualPhoneSetup setup;
    setup.documents = "/documents";
    return setup;
  }

  VirtualPhone phone_{kJson, setup()};
  std::unique_ptr<HalvoraViewController> engine_;
  std::unique_ptr<PanelController> panel_;
  int refusals_ = 0;
};

template <class Made>
std::unique_ptr<Trial> make(const std::string& /*folder*/) {
  return std::make_unique<Made>();
}

constexpr FailureCase kCases[] = {
    {"map-parse", {}, make<MapParse>},
    {"wizard", {}, make<Wizard>},
    {"panel", {}, make<Panel>},
};

}  // namespace

std::span<const FailureCase> seatCases() { return kCases; }

}  // namespace halvora
