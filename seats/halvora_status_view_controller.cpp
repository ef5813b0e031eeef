// SPDX-License-Identifier: Apache-2.0
#include "seats/halvora_status_view_controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/user_defaults.h"
#include "seats/seat_names.h"
#include "seats/status_panel_update.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

constexpr double kStatusLineHeight = 22;
constexpr double kSummaryFontSize = 12;
constexpr float kSummaryAlpha = 0.75F;
constexpr double kButtonCornerRadius = 8;
/// A smaller change of the content's height is none.
constexpr double kLeastHeightChange = 0.5;

}  // namespace

HalvoraStatusViewController::HalvoraStatusViewController(HalvoraViewController& engine,
                                                         const Platform& platform,
                                                         StatusPanelFace face)
    : engine_(engine),
      engineLife_(engine.life()),
      platform_(platform),
      face_(std::move(face)),
      storage_(platform.defaults),
      standingOverlay_(std::make_shared<StandingOverlay>(platform.bundles.main, platform.images)),
      seatMap_(platform, [this] { seatMapLoaded(); }) {}

HalvoraStatusViewController::~HalvoraStatusViewController() {
  platform_.application.removeObserver(*this);
}

void HalvoraStatusViewController::setFields(StatusPanelFields fields) {
  const Update update(*this);
  fields_ = std::move(fields);
  if (isViewLoaded_) applyStyle();
}

void HalvoraStatusViewController::viewDidLoad() {
  const Update update(*this);
  // A text that the kit's table lacks comes out empty.
  const auto text = [this](std::string_view key) {
    return localizedText(platform_.bundles.kit, key, "");
  };
  views_.onboardingLabel.emplace().text = text("onboarding_label");
  views_.joinButton.emplace().title = text("allow_lightshow");
  views_.statusTextLabel.text = text("loading");
  views_.statusTextLabel.userInteractionEnabled = true;
  views_.settingsButton.title = text("open_settings");
  views_.seatSelectionButton.title =
      hvLocalizedStringForKey("hv_seat_button_select", "Select Seat");
  views_.seatSelectionSummaryRow.seatSelectionSummaryLabel.lines = 1;
  isViewLoaded_ = true;
  applyStyle();

  platform_.application.addObserver(*this);
  seatMap_.viewDidLoad();
  updateStatus();
  if (update.isPanelGone()) return;
  RunLoop& loop = platform_.runLoop;
  timer_ = Timer(loop, loop.every(kStatusInterval, [this] { updateStatus(); }));
}

void HalvoraStatusViewController::applyStyle() {
  const auto styleStatusText = [this](StatusText& label) {
    label.colour = fields_.statusTextColour;
    label.font = fontNamed(fields_.statusTextFontName, fields_.statusTextFontSize,
                           FontWeight::regular, face_.hasFont);
    label.alignment = fields_.statusTextAlignment;
  };
  const auto styleButton = [this](Button& button) {
    button.background = fields_.actionButtonColour;
    button.titleColour = fields_.actionButtonTitleColour;
    button.font = fontNamed(fields_.actionButtonTitleFontName, fields_.actionButtonTitleFontSize,
                            FontWeight::regular, face_.hasFont);
    button.cornerRadius = kButtonCornerRadius;
    button.height = fields_.actionButtonHeight;
  };
  if (views_.onboardingLabel) styleStatusText(*views_.onboardingLabel);
  if (views_.joinButton) styleButton(*views_.joinButton);
  styleStatusText(views_.statusTextLabel);
  styleButton(views_.settingsButton);
  styleButton(views_.seatSelectionButton);

  StatusText& summary = views_.seatSelectionSummaryRow.seatSelectionSummaryLabel;
  summary.colour = withAlpha(fields_.statusTextColour, kSummaryAlpha);
  summary.font =
      fontNamed(fields_.statusTextFontName, kSummaryFontSize, FontWeight::regular, face_.hasFont);
}

void HalvoraStatusViewController::publish() {
  Seen now{asSeen(views_), preferredContentSize_, presentedAlert_, presentedSeatSelector()};
  if (now == seen_) return;
  seen_ = std::move(now);
  ++changes_;
  // By a copy, which the panel does not take with it.
  if (const auto changed = face_.changed) changed();
}

std::int64_t HalvoraStatusViewController::resolvedVenueIdFromDefaults(
    const UserDefaults& defaults) const {
  const std::int64_t heard = integerForKey(defaults, "venueID");
  return heard > 0 ? heard : std::max<std::int64_t>(fields_.defaultVenueId, 0);
}

std::int64_t HalvoraStatusViewController::resolvedVenueId() const {
  return resolvedVenueIdFromDefaults(platform_.defaults);
}

std::string HalvoraStatusViewController::hvLocalizedStringForKey(std::string_view key,
                                                                 std::string_view fallback) const {
  return localizedText(platform_.bundles.kit, key, fallback);
}

bool HalvoraStatusViewController::isStandingName(std::string_view name) {
  return halvora::isStandingName(name);
}

bool HalvoraStatusViewController::isPresenting() const {
  return presentedAlert_ || presentedSeatSelector();
}

std::shared_ptr<HalvoraSeatSelectorViewController>
HalvoraStatusViewController::presentedSeatSelector() const {
  return seatSelector_ && !seatSelector_->isDismissed() ? seatSelector_ : nullptr;
}

void HalvoraStatusViewController::updateStatus() {
  const Update update(*this);
  if (!isViewLoaded_ || isPresenting() || engineLife_.isGone()) return;
  seatSelector_.reset();
  const std::int64_t venueId = resolvedVenueId();
  seatMap_.preloadSeatMapForVenueId(venueId);
  applyMapVersionPolicyForVenueId(venueId);
  if (update.isPanelGone() || engineLife_.isGone()) return;
  forgetAbandonedPrecompute();
  finishSeatLUTs(venueId);
  if (update.isPanelGone() || engineLife_.isGone()) return;
  storage_.syncSeatDefaultsForVenueId(venueId);
  updateSeatSelectionUIForVenueId(venueId);
  refreshStatusViews();
  layoutSeatLUTStatusDotRelativeToSummaryLabel();
  updatePreferredContentSizeForCurrentLayout();
}

void HalvoraStatusViewController::refreshStatusViews() {
  const bool isUndetermined =
      platform_.bluetooth.authorization() == BluetoothAuthorization::notDetermined;
  if (views_.onboardingLabel) views_.onboardingLabel->hidden = !isUndetermined;
  if (views_.joinButton) views_.joinButton->hidden = !isUndetermined;
  views_.statusTextLabel.alpha = isUndetermined ? 0 : 1;

  const bool hidesSeat = isUndetermined || !hasSeatControls(resolvedVenueId());
  views_.seatSelectionButton.hidden = hidesSeat;
  views_.seatSelectionSummaryRow.hidden = hidesSeat;

  views_.settingsButton.hidden = true;
  if (!isUndetermined) {
    showStatus(textForKey(platform_.defaults, "bluetoothStatus").value_or(""));
  }
}

void HalvoraStatusViewController::showStatus(const std::string& bluetoothStatus) {
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

bool HalvoraStatusViewController::hasSeatControls(std::int64_t venueId) const {
  return seatMap_.isLoaded(venueId) && !seatMap_.isLoading(venueId) &&
         !seatMap_.seatMapSections()->isEmpty();
}

void HalvoraStatusViewController::initBluetoothPermission() {
  const Update update(*this);
  if (engineLife_.isGone()) return;
  engine_.initBluetoothPermission();
  views_.joinButton.reset();
  views_.onboardingLabel.reset();
}

void HalvoraStatusViewController::openAppSettings() {
  Application& application = platform_.application;
  if (application.canOpenSettings()) application.openSettings();
}

void HalvoraStatusViewController::dismissAlert() {
  const Update update(*this);
  presentedAlert_.reset();
}

void HalvoraStatusViewController::presentedScreensDismissed() {
  const Update update(*this);
  presentedAlert_.reset();
  if (const auto selector = presentedSeatSelector()) selector->cancelTapped();
}

void HalvoraStatusViewController::viewDidLayoutSubviews(double viewWidth) {
  const Update update(*this);
  viewWidth_ = viewWidth;
  layoutSeatLUTStatusDotRelativeToSummaryLabel();
  layoutSeatSelectionLoadingIndicator();
  updatePreferredContentSizeForCurrentLayout();
}

void HalvoraStatusViewController::updatePreferredContentSizeForCurrentLayout() {
  const Update update(*this);
  if (!isViewLoaded_ || isUpdatingPreferredContentSize_ || !face_.fittingHeight) return;
  struct Measuring {
    ~Measuring() {
      if (!update.isPanelGone()) flag = false;
    }
    const Update& update;
    bool& flag;
  };
  const Measuring measuring{update, isUpdatingPreferredContentSize_ = true};
  // The face is to measure what is to be seen now.
  publish();
  if (update.isPanelGone()) return;
  const double width = viewWidth_ > 0 ? viewWidth_ : platform_.screen.bounds().width;
  const auto fittingHeight = face_.fittingHeight;
  const double height = fittingHeight(width);
  if (update.isPanelGone()) return;
  if (height > 0 && std::abs(height - preferredContentSize_.height) > kLeastHeightChange) {
    preferredContentSize_ = {width, height};
  }
}

void HalvoraStatusViewController::disableAncestorScrollViewsIfNeeded() {
  if (face_.ancestorScrollViews) ancestorScrollViews_.disable(face_.ancestorScrollViews());
}

}  // namespace halvora
