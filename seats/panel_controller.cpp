// SPDX-License-Identifier: Apache-2.0
#include "seats/panel_controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/user_defaults.h"
#include "seats/panel_looks.h"
#include "seats/seat_names.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

constexpr double kStatusLineHeight = 22;
/// A smaller change of the content's height is none.
constexpr double kLeastHeightChange = 0.5;

}  // namespace

std::unique_ptr<HalvoraStatusViewController> HalvoraStatusViewController::make(
    HalvoraViewController& engine, const Platform& platform, StatusPanelFace face) {
  return std::make_unique<PanelController>(engine, platform, std::move(face));
}

PanelController::PanelController(HalvoraViewController& engine, const Platform& platform,
                                 StatusPanelFace face)
    : engine_(engine),
      engineLife_(engine.life()),
      platform_(platform),
      face_(std::move(face)),
      storage_(platform.defaults),
      tables_(engine, storage_, [this](const TableRunNews& news) { tablesTold(news); }),
      versionPolicy_(engine, storage_, tables_),
      standingOverlay_(std::make_shared<StandingOverlay>(platform.bundles->main, platform.images)),
      seatMap_(platform, [this] { seatMapLoaded(); }),
      radio_(platform.bluetooth) {}

PanelController::~PanelController() { platform_.application->removeObserver(*this); }

// Changes

PanelController::Acting::Acting(PanelController& panel) : panel_(panel), life_(panel.life_) {
  ++panel_.acting_;
}

PanelController::Acting::~Acting() {
  if (life_.isGone()) return;
  try {
    if (panel_.acting_ == 1) panel_.publish();
  } catch (...) {
    // Memory is short, or the face fails: it hears with the next change.
  }
  if (!life_.isGone()) --panel_.acting_;
}

void PanelController::publish() {
  Seen now{asSeen(views_), preferredContentSize_, presentedAlert_, presentedWizard()};
  if (now == seen_) return;
  seen_ = std::move(now);
  ++changes_;
  // By a copy, which the panel does not take with it.
  if (const auto changed = face_.changed) changed();
}

// Actions

void PanelController::setFields(StatusPanelFields fields) {
  act([&] {
    fields_ = std::move(fields);
    if (isViewLoaded_) applyStyle(fields_, face_.hasFont, views_);
  });
}

void PanelController::viewDidLoad() {
  act([this] { load(); });
}

void PanelController::viewDidLayoutSubviews(double viewWidth) {
  act([&] {
    viewWidth_ = viewWidth;
    layOutSummary();
    measure();
  });
}

void PanelController::updateStatus() {
  act([this] { refresh(); });
}

void PanelController::initBluetoothPermission() {
  act([this] {
    if (engineLife_.isGone()) return;
    engine_.initBluetoothPermission();
    views_.joinButton.reset();
    views_.onboardingLabel.reset();
  });
}

void PanelController::openAppSettings() {
  Application& application = platform_.application;
  if (application.canOpenSettings()) application.openSettings();
}

void PanelController::dismissAlert() {
  act([this] { presentedAlert_.reset(); });
}

void PanelController::presentedScreensDismissed() {
  act([this] {
    presentedAlert_.reset();
    const auto wizard = presentedWizard();
    if (!wizard) return;
    if (wizard->hasUnconfirmedChoice()) {
      unfinished_ = Unfinished{wizard->inputs().map, wizard->progress()};
    }
    wizard->cancelTapped();
  });
}

void PanelController::updatePreferredContentSizeForCurrentLayout() {
  act([this] { measure(); });
}

void PanelController::disableAncestorScrollViewsIfNeeded() {
  if (face_.ancestorScrollViews) ancestorScrollViews_.disable(face_.ancestorScrollViews());
}

// What they do

void PanelController::load() {
  views_ = loadedViews(platform_.bundles->kit);
  isViewLoaded_ = true;
  applyStyle(fields_, face_.hasFont, views_);

  platform_.application->addObserver(*this);
  seatMap_.viewDidLoad();
  const Witness self(life_);
  updateStatus();
  if (self.isGone()) return;
  RunLoop& loop = platform_.runLoop;
  timer_ = Timer(loop, loop.every(kStatusInterval, [this] { updateStatus(); }));
}

void PanelController::refresh() {
  if (!isViewLoaded_ || isPresenting() || engineLife_.isGone()) return;
  wizard_.reset();
  const std::int64_t venueId = resolvedVenueId();
  seatMap_.preloadSeatMapForVenueId(venueId);
  const Witness self(life_);
  applyMapVersionPolicyForVenueId(venueId);
  if (self.isGone() || engineLife_.isGone()) return;
  tables_.lookAfter(venueId, seatMap_.isLoaded(venueId));
  if (self.isGone() || engineLife_.isGone()) return;
  storage_.syncSeatDefaultsForVenueId(venueId);
  placeTicketSeat(venueId);
  if (self.isGone() || engineLife_.isGone()) return;
  showSeat(venueId);
  refreshStatusViews();
  measure();
}

void PanelController::refreshStatusViews() {
  const bool isUndetermined =
      platform_.bluetooth->authorization() == BluetoothAuthorization::notDetermined;
  if (views_.onboardingLabel) views_.onboardingLabel->hidden = !isUndetermined;
  if (views_.joinButton) views_.joinButton->hidden = !isUndetermined;
  views_.statusTextLabel.alpha = isUndetermined ? 0 : 1;

  const bool hidesSeat = isUndetermined || !hasSeatControls(resolvedVenueId());
  views_.seatSelectionButton.hidden = hidesSeat;
  views_.seatSelectionSummaryRow.hidden = hidesSeat;

  if (!hidesSeat) showSameSeat(resolvedVenueId());
  views_.sameSeatLabel.hidden = views_.sameSeatLabel.hidden || hidesSeat;
  views_.sameSeatButton.hidden = views_.sameSeatLabel.hidden;

  views_.settingsButton.hidden = true;
  if (!isUndetermined) {
    showStatus(textForKey(platform_.defaults, "bluetoothStatus").value_or(""));
  }
  showExplanation();
}

void PanelController::showExplanation() {
  PanelExplanation explanation;
  if (fields_.explainsStates) {
    const std::int64_t venueId = resolvedVenueId();
    explanation = explanationOf({.authorization = platform_.bluetooth->authorization(),
                                 .radio = radio_.state(),
                                 .isInsideVenue = engine_.isInsideVenue(),
                                 // A show that is dropped leaves the bar as it is.
                                 .isShowOn = engine_.prefersStatusBarHidden(),
                                 .isMapMissing = venueId > 0 && seatMap_.isLoaded(venueId) &&
                                                 seatMap_.seatMapSections()->isEmpty()},
                                platform_.bundles->kit);
  }
  views_.explanationLabel.text = explanation.text;
  views_.explanationLabel.hidden = explanation.text.empty();
  views_.retryButton.hidden = !explanation.canRetry;
}

void PanelController::retry() {
  act([this] {
    radio_.retry();
    seatMap_.preloadSeatMapForVenueId(resolvedVenueId());
    refresh();
  });
}

void PanelController::showStatus(const std::string& bluetoothStatus) {
  const Bundles& bundles = platform_.bundles;
  StatusText& label = views_.statusTextLabel;
  label.text =
      engine_.isInsideVenue() ? localizedText(bundles.main, "inside_venue", "") : bluetoothStatus;
  label.lineHeight = kStatusLineHeight;
  // Looked up just as the status was when it was written, so that they are equal without a table.
  const bool isRefused = bluetoothStatus == bundles.kit.localizedString("bluetooth_notAuthorised");
  const bool isOff = fields_.offersSettingsWhenOff &&
                     bluetoothStatus == bundles.kit.localizedString("bluetooth_off");
  views_.settingsButton.hidden = !isRefused && !isOff;
}

bool PanelController::hasSeatControls(std::int64_t venueId) const {
  return seatMap_.isLoaded(venueId) && !seatMap_.isLoading(venueId) &&
         !seatMap_.seatMapSections()->isEmpty();
}

void PanelController::measure() {
  if (!isViewLoaded_ || isUpdatingPreferredContentSize_ || !face_.fittingHeight) return;
  struct Measuring {
    ~Measuring() {
      if (!self.isGone()) flag = false;
    }
    const Witness& self;
    bool& flag;
  };
  const Witness self(life_);
  const Measuring measuring{self, isUpdatingPreferredContentSize_ = true};
  // The face is to measure what is to be seen now.
  publish();
  if (self.isGone()) return;
  const double width = viewWidth_ > 0 ? viewWidth_ : platform_.screen->bounds().width;
  const auto fittingHeight = face_.fittingHeight;
  const double height = fittingHeight(width);
  if (self.isGone()) return;
  if (height > 0 && std::abs(height - preferredContentSize_.height) > kLeastHeightChange) {
    preferredContentSize_ = {width, height};
  }
}

std::int64_t PanelController::resolvedVenueIdFromDefaults(const UserDefaults& defaults) const {
  const std::int64_t heard = integerForKey(defaults, "venueID");
  return heard > 0 ? heard : std::max<std::int64_t>(fields_.defaultVenueId, 0);
}

std::int64_t PanelController::resolvedVenueId() const {
  return resolvedVenueIdFromDefaults(platform_.defaults);
}

std::string PanelController::hvLocalizedStringForKey(std::string_view key,
                                                     std::string_view fallback) const {
  return localizedText(platform_.bundles->kit, key, fallback);
}

std::shared_ptr<WizardController> PanelController::presentedWizard() const {
  return wizard_ && !wizard_->isDismissed() ? wizard_ : nullptr;
}

}  // namespace halvora
