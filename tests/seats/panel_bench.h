// SPDX-License-Identifier: Apache-2.0
// A status panel and its engine on a virtual phone, with venues that a test lays out, and a face
// that measures what it is told to. A test owns one.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/virtual/virtual_phone.h"
#include "halvora/engine.h"
#include "seats/panel_controller.h"

namespace halvora {

struct PanelBenchSetup {
  BluetoothAuthorization authorization = BluetoothAuthorization::allowedAlways;
  std::int64_t defaultVenueId = 0;
  /// Without: the kit's table has no text at all.
  bool hasTexts = true;
  bool isViewLoaded = true;
  std::function<void(VirtualPhone&)> prepare = {};
};

class PanelBench {
 public:
  explicit PanelBench(PanelBenchSetup setup = {});

  PanelController& panel() { return *panel_; }
  HalvoraViewController& engine() { return *engine_; }
  void destroyPanel() { panel_.reset(); }
  void destroyEngine() { engine_.reset(); }
  bool hasPanel() const { return panel_ != nullptr; }
  const StatusPanelViews& views() const { return panel_->views(); }
  const SeatSelectionSummaryRow& row() const { return views().seatSelectionSummaryRow; }
  const StatusDot& dot() const { return row().seatLUTStatusDot; }
  std::string summary() const { return row().seatSelectionSummaryLabel.text; }
  /// "shown" or "hidden": onboarding label, join button, status, settings, seat button, summary.
  std::string shown() const;
  /// "hidden", "amber" or "green".
  std::string dotText() const { return textOf(dot()); }
  static std::string textOf(const StatusDot& dot);

  /// A venue's document, and how often it has been read so far.
  void putMap(std::int64_t venueId, const std::string& document);
  std::size_t readsOfMap(std::int64_t venueId) const;
  /// A pixel map whose frames have those words everywhere.
  void putPixelMap(std::int64_t venueId, int mapId, const std::vector<std::uint32_t>& words);
  /// The tables on disk.
  std::size_t tables() const;
  void hearVenue(std::int64_t venueId) { phone.defaults.setFromOutside("venueID", venueId); }
  void storeSeat(std::int64_t venueId, const SeatNames& names, SeatPoint seat);
  std::optional<SeatPoint> storedSeat(std::int64_t venueId) const;
  bool isStoredReady(std::int64_t venueId) const;
  /// The text under a flat key; "-" for none.
  std::string flat(std::string_view key) const;

  /// Does something in a turn, and then all that it leads to at this instant.
  void turn(const std::function<void()>& act);
  void settle() {
    turn([] {});
  }
  void tick() { phone.loop.runFor(PanelController::kStatusInterval); }

  /// Goes through the wizard: that section, row and seat, counted from 1.
  void choose(std::int64_t section, std::int64_t row, std::int64_t seat);

  VirtualPhone phone;
  // What the face says, and what it has been asked or told.
  double fittingHeight = 100;
  Rect summaryTextFrame{10, 20, 120, 16};
  std::vector<double> measuredWidths;
  std::function<void()> onMeasure;
  std::function<void()> onChange;
  std::vector<std::shared_ptr<ScrollView>> ancestors;

 private:
  StatusPanelFace face();

  /// Every file is newer than the one before.
  double fileTime_ = 0;
  std::unique_ptr<HalvoraViewController> engine_;
  std::unique_ptr<PanelController> panel_;
};

/// A standing area of two places, and two seated sections, A (rows 1 and 2 of two seats) and B (row
/// 1 of one).
extern const char* const kBenchMap;
/// The same, with those versions.
std::string benchMap(int seatVersion, int mapAssetsVersion);
/// A panel in venue 7, whose map is loaded.
PanelBenchSetup inVenue7(const std::string& map = kBenchMap);

}  // namespace halvora
