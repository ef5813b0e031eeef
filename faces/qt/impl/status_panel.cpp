// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/status_panel.h"

#include <QFontMetricsF>
#include <QPointer>
#include <QQmlEngine>
#include <algorithm>
#include <cmath>
#include <utility>

#include "faces/qt/halvora_host.h"
#include "faces/qt/impl/status_fonts.h"

namespace halvora {

namespace {

TextAlignment alignmentFrom(Qt::Alignment alignment) {
  switch (static_cast<int>(alignment & Qt::AlignHorizontal_Mask)) {
    case Qt::AlignLeft:
      return TextAlignment::left;
    case Qt::AlignRight:
      return TextAlignment::right;
    case Qt::AlignHCenter:
      return TextAlignment::center;
    case Qt::AlignJustify:
      return TextAlignment::justified;
    default:
      return TextAlignment::natural;
  }
}

}  // namespace

StatusPanel::StatusPanel(QObject* parent) : QObject(parent), textScale_(systemTextScale()) {
  const StatusPanelFields usual;
  statusTextColour_ = colourWithAlpha(usual.statusTextColour);
  statusTextFontSize_ = usual.statusTextFontSize;
  actionButtonColour_ = colourWithAlpha(usual.actionButtonColour);
  actionButtonTitleColour_ = colourWithAlpha(usual.actionButtonTitleColour);
  actionButtonTitleFontSize_ = usual.actionButtonTitleFontSize;
  actionButtonHeight_ = usual.actionButtonHeight;
  connect(this, &StatusPanel::fieldsChanged, this, &StatusPanel::applyFields);
  connect(this, &StatusPanel::textScaleChanged, this, &StatusPanel::applyTextScale);
  connect(this, &StatusPanel::highContrastChanged, this, &StatusPanel::applyContrast);
  connect(this, &StatusPanel::wishesChanged, this, &StatusPanel::applyContrast);
  connect(this, &StatusPanel::viewWidthChanged, this, &StatusPanel::layoutWidthChanged);
  connect(this, &StatusPanel::viewWidthChanged, this, &StatusPanel::layOutSoon);
  connect(this, &StatusPanel::contentHeightChanged, this, &StatusPanel::layOutSoon);
}

StatusPanel::~StatusPanel() = default;

StatusPanelFields StatusPanel::fields() const {
  StatusPanelFields fields;
  fields.statusTextColour = colourFrom(statusTextColour_);
  fields.statusTextFontName = statusTextFontName_.toStdString();
  fields.statusTextFontSize = statusTextFontSize_;
  fields.statusTextAlignment = alignmentFrom(statusTextAlignment_);
  fields.actionButtonColour = colourFrom(actionButtonColour_);
  fields.actionButtonTitleColour = colourFrom(actionButtonTitleColour_);
  fields.actionButtonTitleFontName = actionButtonTitleFontName_.toStdString();
  fields.actionButtonTitleFontSize = actionButtonTitleFontSize_;
  fields.actionButtonHeight = actionButtonHeight_;
  fields.defaultVenueId = defaultVenueId_;
  fields.offersSettingsWhenOff = offersSettingsWhenOff_;
  fields.explainsStates = explainsStates_;
  fields.asksOnAnotherDay = asksOnAnotherDay_;
  return fields;
}

StatusPanelFace StatusPanel::face() {
  StatusPanelFace face;
  face.hasFont = [](std::string_view name) { return installedFont(name).has_value(); };
  face.fittingHeight = [this](double width) { return measure(width); };
  face.summaryTextFrame = [this](const StatusText& label) { return frameOfSummaryText(label); };
  face.changed = [this] { refresh(); };
  return face;
}

void StatusPanel::componentComplete() {
  QQmlEngine* engine = qmlEngine(this);
  if (engine == nullptr || controller_ != nullptr) return;
  const HalvoraHost& host = HalvoraHost::of(*engine);
  if (!host.hasController()) return;
  // The needs that the panel uses are still there when a host goes, and may not be afterwards.
  connect(&host, &QObject::destroyed, this, &StatusPanel::unload);
  connect(&host, &HalvoraHost::showTold, this, &StatusPanel::tellShow);
  engine_.emplace(host.platform(), host.controller());
  coordinator_ = view().makeCoordinator(face());
  controller_ = &view().makeController(*coordinator_);
  reading_.isRightToLeft =
      controller_->hvLocalizedStringForKey("hv_layout_direction", "ltr") == "rtl";
  const QPointer<StatusPanel> self(this);
  followWishes(host.wishes());
  if (self) applyTextScale();
  if (self && controller_ != nullptr) controller_->viewDidLoad();
  if (self) layOut();
}

void StatusPanel::unload() {
  controller_ = nullptr;
  coordinator_.reset();
  engine_.reset();
  pulse_.reset();
  if (wishes_) wishes_->disconnect(this);
  const QPointer<StatusPanel> self(this);
  wizard_.forget();
  if (self) emit changed();
}

void StatusPanel::applyFields() {
  if (controller_ != nullptr) view().updateController(controller_);
}

void StatusPanel::applyTextScale() {
  reading_.textScale = boundedTextScale(textScale_);
  const QPointer<StatusPanel> self(this);
  wizard_.setReading(reading_);
  if (self) refresh();
  if (self) layOutSoon();
}

void StatusPanel::applyContrast() {
  const SeatPalette palette = paletteFor(highContrast_, wishes().scheme);
  if (std::exchange(reading_.palette, palette) == palette) return;
  const QPointer<StatusPanel> self(this);
  wizard_.setReading(reading_);
  if (self) refresh();
}

void StatusPanel::followWishes(const SystemWishes* wishes) {
  if (wishes == nullptr) return;
  wishes_ = wishes;
  connect(wishes, &SystemWishes::changed, this, &StatusPanel::wishesChanged);
  emit wishesChanged();
}

// The panel has shown what it is asked to measure: QML has its values, and heights follow from
// them at once.
double StatusPanel::measure(double width) {
  isMeasuring_ = true;
  const bool isOther = measuredWidth_ != width && viewWidth_ <= 0;
  measuredWidth_ = width;
  const QPointer<StatusPanel> self(this);
  if (isOther) emit layoutWidthChanged();
  if (!self) return 0;
  isMeasuring_ = false;
  return contentHeight_;
}

// A pass of its own: heights change in the middle of what the panel does, and one change of a text
// moves several of them.
void StatusPanel::layOutSoon() {
  if (controller_ == nullptr || isMeasuring_ || isLayoutDue_) return;
  isLayoutDue_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        isLayoutDue_ = false;
        layOut();
      },
      Qt::QueuedConnection);
}

void StatusPanel::layOut() {
  if (controller_ != nullptr) controller_->viewDidLayoutSubviews(viewWidth_);
}

void StatusPanel::refresh() {
  if (controller_ == nullptr) return;
  const QPointer<StatusPanel> self(this);
  emit changed();
  if (self && controller_ != nullptr) wizard_.present(controller_->presentedSeatSelector());
  if (self) tellPulse();
}

const StatusPanelViews& StatusPanel::views() const {
  static const StatusPanelViews kNone = [] {
    StatusPanelViews none;
    none.statusTextLabel.hidden = true;
    none.explanationLabel.hidden = true;
    none.retryButton.hidden = true;
    none.sameSeatLabel.hidden = true;
    none.sameSeatButton.hidden = true;
    none.settingsButton.hidden = true;
    none.seatSelectionButton.hidden = true;
    none.seatSelectionSummaryRow.hidden = true;
    return none;
  }();
  return controller_ != nullptr ? controller_->views() : kNone;
}

LabelLook StatusPanel::onboardingLabel() const {
  const auto& label = views().onboardingLabel;
  return label ? LabelLook(*label, reading_) : LabelLook();
}

ButtonLook StatusPanel::joinButton() const {
  const auto& button = views().joinButton;
  return button ? ButtonLook(*button, reading_) : ButtonLook();
}

QRectF StatusPanel::summaryTextFrame() const {
  return rectFrom(frameOfSummaryText(row().seatSelectionSummaryLabel));
}

AlertLook StatusPanel::alert() const {
  return controller_ != nullptr ? AlertLook(controller_->presentedAlert(), reading_) : AlertLook();
}

double StatusPanel::widthOfSummary(const LabelLook& look) const {
  return std::ceil(QFontMetricsF(look.font()).horizontalAdvance(look.text()));
}

// What stands beside it has its own.
double StatusPanel::roomForSummary() const {
  return std::max(layoutWidth() - kSummaryGap - kLoadingIndicatorSize, 0.0);
}

bool StatusPanel::summaryWraps() const {
  return reading_.textScale > 1 && widthOfSummary(summaryLabel()) > roomForSummary();
}

// On one line, or on several.
Rect StatusPanel::frameOfSummaryText(const StatusText& label) const {
  const LabelLook look(label, reading_);
  const QFontMetricsF metrics(look.font());
  const double width = layoutWidth();
  const double room = roomForSummary();
  const double whole = widthOfSummary(look);
  const double taken = std::min(whole, room);
  const QRectF wrapped =
      whole <= room || reading_.textScale <= 1
          ? QRectF(0, 0, whole, metrics.height())
          : metrics.boundingRect({0, 0, room, 1e6}, Qt::TextWordWrap, look.text());
  const double height = std::max(std::ceil(wrapped.height()), kLoadingIndicatorSize);
  double x = 0;
  if (look.alignment() == Qt::AlignHCenter) x = std::floor(std::max(width - taken, 0.0) / 2);
  if (look.alignment() == Qt::AlignRight) x = room - taken;
  return {x, 0, taken, height};
}

// Where the panel has measured nothing yet, the host's layout is free.
QSizeF StatusPanel::preferredSize() const {
  if (controller_ == nullptr) return {0, 0};
  ProposedSize proposal;
  if (viewWidth_ > 0) proposal.width = viewWidth_;
  const auto size = view().sizeThatFits(proposal, controller_);
  return size ? QSizeF(size->width, size->height) : QSizeF(0, 0);
}

void StatusPanel::tellPulse() {
  const auto& began = row().seatLUTStatusDot.pulseBegan;
  if (std::exchange(pulse_, began) != began && began) emit pulsed();
}

void StatusPanel::tellShow(bool hasBegun) {
  if (controller_ == nullptr) return;
  emit told(textFrom(hasBegun ? controller_->hvLocalizedStringForKey("hv_spoken_show_began",
                                                                     "The light show has begun.")
                              : controller_->hvLocalizedStringForKey("hv_spoken_show_ended",
                                                                     "The light show has ended.")));
}

QString StatusPanel::dotWord() const {
  if (controller_ == nullptr || !dotShown()) return {};
  return textFrom(
      row().seatLUTStatusDot.colour == kDotGreen
          ? controller_->hvLocalizedStringForKey("hv_seat_dot_word_ready", "Ready")
          : controller_->hvLocalizedStringForKey("hv_seat_dot_word_preparing", "Preparing"));
}

QString StatusPanel::spokenSummary() const {
  return textFrom(row().seatSelectionSummaryLabel.text)
      .replace(QStringLiteral("  |  "), QStringLiteral(", "));
}

void StatusPanel::setSeat(const QString& section, const QString& row, const QString& seat) {
  if (controller_ == nullptr) return;
  controller_->setSeat(section.toStdString(), row.toStdString(), seat.toStdString());
}

bool StatusPanel::openLink(const QString& link) {
  return controller_ != nullptr && controller_->openLink(link.toStdString());
}

void StatusPanel::initBluetoothPermission() {
  if (controller_ != nullptr) controller_->initBluetoothPermission();
}

void StatusPanel::keepSeat() {
  if (controller_ != nullptr) controller_->keepSeat();
}

void StatusPanel::retry() {
  if (controller_ != nullptr) controller_->retry();
}

void StatusPanel::openAppSettings() {
  if (controller_ != nullptr) controller_->openAppSettings();
}

void StatusPanel::openSeatSelector() {
  if (controller_ != nullptr && seatSelectionButton().enabled()) controller_->openSeatSelector();
}

void StatusPanel::dismissAlert() {
  if (controller_ != nullptr) controller_->dismissAlert();
}

}  // namespace halvora
