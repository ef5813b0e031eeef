// SPDX-License-Identifier: Apache-2.0
// The status panel that a host embeds: tells where the phone is, asks for permission, opens the
// settings, and has the user's seat chosen and its tables built. State, actions and what is to be
// seen; no drawing. Owned by the host view; main thread. What it starts in the background, and the
// wizard, hold it weakly.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "halvora/engine.h"
#include "halvora/platform/application.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/witness.h"
#include "seats/ancestor_scroll_views.h"
#include "seats/halvora_seat_selector_view_controller.h"
#include "seats/map_version_policy.h"
#include "seats/seat_map_availability.h"
#include "seats/seat_storage.h"
#include "seats/standing_overlay.h"
#include "seats/status_panel_views.h"
#include "seats/table_run.h"
#include "seats/view_models.h"

namespace halvora {

/// What the host decides about the panel.
struct StatusPanelFields {
  Colour statusTextColour = kWhite;
  /// Empty, or unknown to the phone, for the system's font.
  std::string statusTextFontName;
  double statusTextFontSize = 17;
  TextAlignment statusTextAlignment = TextAlignment::natural;
  Colour actionButtonColour = kSystemBlue;
  Colour actionButtonTitleColour = kWhite;
  std::string actionButtonTitleFontName;
  double actionButtonTitleFontSize = 17;
  double actionButtonHeight = 44;
  /// The venue as long as no transmitter has been heard; below 1 for none.
  std::int64_t defaultVenueId = 0;
  /// The settings button is there for who has Bluetooth switched off, too, and not only for who is
  /// not allowed to use it: where opening the settings switches it on.
  bool offersSettingsWhenOff = false;
  friend bool operator==(const StatusPanelFields&, const StatusPanelFields&) = default;
};

/// What only a face can tell or do. Any of it may be absent. What is asked must leave the panel
/// alive, but for `fittingHeight`, which lays views out and so may let others act.
struct StatusPanelFace {
  FontLookup hasFont;
  /// The height that the stack of views needs at that width. May destroy the panel or the engine.
  std::function<double(double width)> fittingHeight;
  /// Where the label's text, not the label, lies in the summary row.
  std::function<Rect(const StatusText& label)> summaryTextFrame;
  /// The scroll views that the panel lies in, from the inside out.
  std::function<std::vector<std::shared_ptr<ScrollView>>()> ancestorScrollViews;
  /// Something visible has changed. May destroy the panel or the engine.
  std::function<void()> changed;
};

class HalvoraStatusViewController : private ApplicationObserver {
 public:
  static constexpr Duration kStatusInterval = milliseconds(500);

  /// The platform must outlive the panel. A panel whose engine has gone stands still.
  HalvoraStatusViewController(HalvoraViewController& engine, const Platform& platform,
                              StatusPanelFace face = {});
  ~HalvoraStatusViewController() override;
  HalvoraStatusViewController(const HalvoraStatusViewController&) = delete;
  HalvoraStatusViewController& operator=(const HalvoraStatusViewController&) = delete;

  /// Not to be asked for once it has gone.
  HalvoraViewController& halvoraViewController() { return engine_; }
  /// At any time; they take effect at once.
  void setFields(StatusPanelFields fields);
  const StatusPanelFields& fields() const { return fields_; }

  /// Once, before any of the following.
  void viewDidLoad();
  /// After every layout pass.
  void viewDidLayoutSubviews(double viewWidth);
  /// The periodic refresh. Does nothing while the wizard or an alert is on screen.
  void updateStatus();

  // Actions.
  void initBluetoothPermission();
  void openAppSettings();
  void openSeatSelector();
  void dismissAlert();

  // What is to be seen. `changes` moves only when something visible did.
  const StatusPanelViews& views() const { return views_; }
  Size preferredContentSize() const { return preferredContentSize_; }
  /// Null for none. Whoever is still drawing it may keep it for that long.
  std::shared_ptr<HalvoraSeatSelectorViewController> presentedSeatSelector() const;
  const std::optional<Alert>& presentedAlert() const { return presentedAlert_; }
  std::uint64_t changes() const { return changes_; }

  // The seat map of the venue in force.
  void preloadSeatMapForVenueId(std::int64_t venueId);
  void refreshSeatMapAvailability() { preloadSeatMapForVenueId(resolvedVenueId()); }
  const SeatMapAvailability& seatMap() const { return seatMap_; }

  // The stored seats.
  SeatStorage& storage() { return storage_; }
  void applyMapVersionPolicyForVenueId(std::int64_t venueId);
  void startSeatLUTPrecomputeForVenueId(std::int64_t venueId, SeatPoint seat);
  void updateSeatSelectionUIForVenueId(std::int64_t venueId);

  // The progress of a precompute.
  void showSeatLUTPrecomputeProgressWithDone(int done, int total, std::string_view mapId);
  void completeSeatLUTPrecomputeWithDone(int done, int total);
  void hideSeatLUTPrecomputeProgress();
  bool seatLUTPrecomputeInProgress() const { return tables_.isInProgress(); }
  bool seatLUTReady() const { return tables_.isReady(); }
  /// -1 for none.
  int seatLUTLastDone() const { return tables_.lastDone(); }

  std::int64_t resolvedVenueIdFromDefaults(const UserDefaults& defaults) const;
  std::int64_t resolvedVenueId() const;
  std::string hvLocalizedStringForKey(std::string_view key, std::string_view fallback) const;

  void updatePreferredContentSizeForCurrentLayout();
  void disableAncestorScrollViewsIfNeeded();
  void restoreAncestorScrollViewsIfNeeded() { ancestorScrollViews_.restore(); }

 private:
  /// Everything that a face shows of the panel.
  struct Seen {
    StatusPanelViews views;
    Size preferredContentSize;
    std::optional<Alert> alert;
    std::shared_ptr<const HalvoraSeatSelectorViewController> seatSelector;
    friend bool operator==(const Seen&, const Seen&) = default;
  };
  /// One turn of `act`.
  class Acting {
   public:
    explicit Acting(HalvoraStatusViewController& panel);
    ~Acting();
    Acting(const Acting&) = delete;
    Acting& operator=(const Acting&) = delete;

   private:
    HalvoraStatusViewController& panel_;
    const Witness life_;
  };

  void handleOrientationChange() override {}
  void appDidBecomeActive() override {}
  void appWillResignActive() override {}
  void presentedScreensDismissed() override;

  /// Whatever may change what is seen is done in here, each action and each callback: however they
  /// call each other, the face hears of it once, when the outermost ends. It may destroy the panel.
  template <class Action>
  void act(const Action& action) {
    const Acting acting(*this);
    action();
  }
  void publish();

  bool isPresenting() const;
  void refresh();
  void refreshStatusViews();
  void showStatus(const std::string& bluetoothStatus);
  bool hasSeatControls(std::int64_t venueId) const;
  void load();
  void measure();

  void seatMapLoaded();
  void presentSeatMapMissingAlert();
  void presentSeatSelector(std::int64_t venueId);
  void seatSelected(const SeatNames& names, SeatPoint seat);
  void tablesTold(const TableRunNews& news);
  SeatNames storedSeatNames(std::int64_t venueId) const;
  void showSeat(std::int64_t venueId);
  void showDot(bool hasSelection);
  void refreshDot(bool isPulseDue);
  void layOutSummary();

  HalvoraViewController& engine_;
  const Witness engineLife_;
  Platform platform_;
  StatusPanelFace face_;
  StatusPanelFields fields_;
  SeatStorage storage_;
  TableRun tables_;
  MapVersionPolicy versionPolicy_;
  /// Shared with the wizards, which may be drawn for longer than there is a panel.
  std::shared_ptr<StandingOverlay> standingOverlay_;
  AncestorScrollViews ancestorScrollViews_;

  bool isViewLoaded_ = false;
  double viewWidth_ = 0;
  bool isUpdatingPreferredContentSize_ = false;
  StatusPanelViews views_;
  Size preferredContentSize_;
  std::optional<Alert> presentedAlert_;
  std::shared_ptr<HalvoraSeatSelectorViewController> seatSelector_;
  Seen seen_;
  std::uint64_t changes_ = 0;
  int acting_ = 0;
  /// The venue whose map the user has asked for after it had been found missing; 0 for none.
  std::int64_t missingMapVenueId_ = 0;

  /// What the wizard holds of the panel.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  SeatMapAvailability seatMap_;
  Timer timer_;
  Witnessed life_;
};

}  // namespace halvora
