// SPDX-License-Identifier: Apache-2.0
// The status panel behind its public face, and what its tests look at: the seat map of the venue in
// force, the stored seats, and how far the building of the seat's tables is. What it starts in the
// background, and the wizard, hold it weakly. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/engine.h"
#include "halvora/panel.h"
#include "halvora/platform/application.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/witness.h"
#include "seats/ancestor_scroll_views.h"
#include "seats/map_version_policy.h"
#include "seats/panel_states.h"
#include "seats/seat_finder.h"
#include "seats/seat_map_availability.h"
#include "seats/seat_storage.h"
#include "seats/standing_overlay.h"
#include "seats/table_run.h"
#include "seats/ticket_link.h"
#include "seats/wizard_controller.h"

namespace halvora {

class PanelController final : public HalvoraStatusViewController, private ApplicationObserver {
 public:
  static constexpr Duration kStatusInterval = milliseconds(500);

  PanelController(HalvoraViewController& engine, const Platform& platform,
                  StatusPanelFace face = {});
  ~PanelController() override;

  void setFields(StatusPanelFields fields) override;
  const StatusPanelFields& fields() const override { return fields_; }
  void viewDidLoad() override;
  void viewDidLayoutSubviews(double viewWidth) override;
  /// The periodic refresh. Does nothing while the wizard or an alert is on screen.
  void updateStatus();

  void initBluetoothPermission() override;
  void openAppSettings() override;
  void retry() override;
  void openSeatSelector() override;
  void keepSeat() override;
  void dismissAlert() override;
  void setSeat(std::string_view section, std::string_view row, std::string_view seat) override;
  bool openLink(std::string_view link) override;

  const StatusPanelViews& views() const override { return views_; }
  Size preferredContentSize() const override { return preferredContentSize_; }
  std::shared_ptr<HalvoraSeatSelectorViewController> presentedSeatSelector() const override {
    return presentedWizard();
  }
  std::shared_ptr<WizardController> presentedWizard() const;
  const std::optional<Alert>& presentedAlert() const override { return presentedAlert_; }
  /// Moves only when something visible did.
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
  const TableRun& tables() const { return tables_; }

  std::int64_t resolvedVenueIdFromDefaults(const UserDefaults& defaults) const;
  std::int64_t resolvedVenueId() const;
  std::string hvLocalizedStringForKey(std::string_view key,
                                      std::string_view fallback) const override;

  void updatePreferredContentSizeForCurrentLayout();
  void disableAncestorScrollViewsIfNeeded() override;
  void restoreAncestorScrollViewsIfNeeded() override { ancestorScrollViews_.restore(); }

 private:
  /// Everything that a face shows of the panel.
  struct Seen {
    StatusPanelViews views;
    Size preferredContentSize;
    std::optional<Alert> alert;
    std::shared_ptr<const WizardController> wizard;
    friend bool operator==(const Seen&, const Seen&) = default;
  };
  /// One turn of `act`.
  class Acting {
   public:
    explicit Acting(PanelController& panel);
    ~Acting();
    Acting(const Acting&) = delete;
    Acting& operator=(const Acting&) = delete;

   private:
    PanelController& panel_;
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

  bool isPresenting() const { return presentedAlert_ || presentedWizard(); }
  void refresh();
  void refreshStatusViews();
  void showStatus(const std::string& bluetoothStatus);
  void showExplanation();
  bool hasSeatControls(std::int64_t venueId) const;
  void load();
  void measure();

  void seatMapLoaded();
  void presentSeatMapMissingAlert();
  void presentSeatSelector(std::int64_t venueId);
  void placeTicketSeat(std::int64_t venueId);
  std::int64_t today() const;
  void showSameSeat(std::int64_t venueId);
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
  std::shared_ptr<WizardController> wizard_;
  Seen seen_;
  std::uint64_t changes_ = 0;
  int acting_ = 0;
  /// The venue whose map the user has asked for after it had been found missing; 0 for none.
  std::int64_t missingMapVenueId_ = 0;

  /// A wizard that went with the screens over the panel while a show began, and its map.
  struct Unfinished {
    std::shared_ptr<const SeatMap> map;
    SeatSelectorProgress progress;
  };
  std::optional<Unfinished> unfinished_;
  /// A seat from a ticket that waits for the venue's map.
  std::optional<TicketSeat> ticketSeat_;

  /// What the wizard holds of the panel.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  SeatMapAvailability seatMap_;
  RadioWatch radio_;
  Timer timer_;
  Witnessed life_;
};

}  // namespace halvora
