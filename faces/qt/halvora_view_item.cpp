// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/halvora_view_item.h"

#include <QQmlEngine>
#include <QQmlInfo>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "faces/qt/qt_clip_picture.h"
#include "faces/qt/show_key_file.h"
#include "halvora/air.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/video_player.h"

namespace halvora {

namespace {

std::vector<std::string> textsOf(const QStringList& list) {
  std::vector<std::string> texts;
  for (const QString& text : list) texts.push_back(text.toStdString());
  return texts;
}

// The engine's words under their numbers.
template <class Engine, class Own>
constexpr bool areAlike(Engine its, Own own) {
  return static_cast<int>(its) == static_cast<int>(own);
}
using Item = HalvoraViewItem;
static_assert(areAlike(AirPolicy::guarded, Item::AirPolicy::Guarded));
static_assert(areAlike(Authentication::require, Item::Authentication::Require));
static_assert(areAlike(AirTrust::contested, Item::AirTrust::Contested));

QtClipPicture* pictureOf(VideoPlayer& player) { return dynamic_cast<QtClipPicture*>(&player); }

}  // namespace

HalvoraViewItem::~HalvoraViewItem() {
  // Nobody is to hear of what is half gone.
  blockSignals(true);
  if (host_) host_->leave(*this);
}

// Items of one document begin in its order and are complete in no order that a host could know.
void HalvoraViewItem::classBegin() {
  LightSurface::classBegin();
  QQmlEngine* engine = qmlEngine(this);
  if (engine == nullptr || host_) return;
  host_ = &HalvoraHost::of(*engine);
  if (HalvoraViewController* const its = controller()) {
    wasPermissionGranted_ = its->isPermissionGranted();
    wasInsideVenue_ = its->isInsideVenue();
    presenceWatch_ = its->watchPresence([this] { lookAtPresence(); });
  }
  host_->enter(*this);
}

HalvoraViewController* HalvoraViewItem::controller() const {
  return host_ && host_->hasController() ? &host_->controller() : nullptr;
}

// A show that starts or stops is told in a later turn; the item may be gone by then.
HalvoraView HalvoraViewItem::view() {
  const QPointer<HalvoraViewItem> self(this);
  HalvoraView view(
      EmbeddedEngine(host_->platform(), host_->controller()),
      [self] {
        if (self) self->tellShow(&HalvoraViewItem::lightShowStarted);
      },
      [self] {
        if (self) self->tellShow(&HalvoraViewItem::lightShowStopped);
      },
      textsOf(allowedTransmitterIds_));
  view.usageReports = usageReports_;
  view.onAirTrustChanged = [self](halvora::AirTrust) {
    if (self) self->lookAtTrust();
  };
  return view;
}

// The bar first: whoever hears of the show may have destroyed the item, and the other way round.
void HalvoraViewItem::tellShow(void (HalvoraViewItem::*signal)()) {
  const QPointer<HalvoraViewItem> self(this);
  const bool hadShow = isStatusBarHidden_;
  lookAtStatusBar();
  // The signals come with every look of another mode or speed.
  if (self && host_ && isStatusBarHidden_ != hadShow) emit host_->showTold(isStatusBarHidden_);
  if (self) emit(this->*signal)();
}

// The engine changes it where it tells of a show's start or stop, and nowhere else.
void HalvoraViewItem::lookAtStatusBar() {
  const HalvoraViewController* engine = coordinator_ ? controller() : nullptr;
  const bool isHidden = engine != nullptr && engine->prefersStatusBarHidden();
  if (std::exchange(isStatusBarHidden_, isHidden) != isHidden) emit statusBarHiddenChanged();
}

void HalvoraViewItem::setShown(bool shown) {
  if (shown) {
    if (controller() == nullptr) return;
    coordinator_ = view().makeCoordinator();
    HalvoraViewController& engine = view().makeController(*coordinator_);
    engine.halvoraView = this;
    setLight(engine.light(), Pictures(host_->platform()));
    const VideoPlayers& players = host_->platform().videoPlayers;
    setClips(pictureOf(players.a), pictureOf(players.b));
    layOut();
    lookAtEngine();
    return;
  }
  setLight(std::nullopt);
  setClips(nullptr, nullptr);
  const bool wasShown = std::exchange(coordinator_, nullptr) != nullptr;
  HalvoraViewController* engine = controller();
  if (wasShown && engine != nullptr) {
    engine->setLightShowStartedCallback(nullptr);
    engine->setLightShowStoppedCallback(nullptr);
    engine->setAirTrustCallback(nullptr);
    engine->halvoraView = nullptr;
    engine->viewWillLayoutSubviews(std::nullopt);
  }
  lookAtEngine();
}

// Whoever hears of the bar may have destroyed the item.
void HalvoraViewItem::lookAtEngine() {
  const QPointer<HalvoraViewItem> self(this);
  lookAtStatusBar();
  if (self) lookAtTrust();
}

void HalvoraViewItem::forgetHost() {
  presenceWatch_.reset();
  setShown(false);
}

// In a later turn: the engine is half gone.
void HalvoraViewItem::lightEnds() {
  LightSurface::lightEnds();
  QMetaObject::invokeMethod(
      this,
      [self = QPointer(this)] {
        self->lookAtStatusBar();
        if (self) self->lookAtPresence();
      },
      Qt::QueuedConnection);
}

void HalvoraViewItem::start() {
  if (controller() != nullptr) view().start();
}

void HalvoraViewItem::initBluetoothPermission() {
  if (controller() != nullptr) view().initBluetoothPermission();
}

void HalvoraViewItem::setAllowedTransmitterIds(const QStringList& ids) {
  if (ids == allowedTransmitterIds_) return;
  allowedTransmitterIds_ = ids;
  if (coordinator_ && controller() != nullptr) view().makeController(*coordinator_);
  emit allowedTransmitterIdsChanged();
}

bool HalvoraViewItem::usageReports() const {
  if (usageReports_) return *usageReports_;
  const HalvoraViewController* engine = controller();
  return engine == nullptr || engine->usageReports();
}

void HalvoraViewItem::setUsageReports(bool isOn) {
  if (usageReports_ == isOn) return;
  const bool wasOn = usageReports();
  usageReports_ = isOn;
  if (coordinator_ && controller() != nullptr) view().makeController(*coordinator_);
  if (isOn != wasOn) emit usageReportsChanged();
}

void HalvoraViewItem::componentComplete() {
  LightSurface::componentComplete();
  if (hasAir_) applyAir();
}

HalvoraViewItem::Authentication HalvoraViewItem::authentication() const {
  return authentication_.value_or(showKeyFile_.isEmpty() ? Authentication::Off
                                                         : Authentication::Prefer);
}

// The key is read anew each time, so that nobody has to keep it.
void HalvoraViewItem::applyAir() {
  AirOptions air;
  air.policy = static_cast<halvora::AirPolicy>(airPolicy_);
  air.authentication = static_cast<halvora::Authentication>(authentication());
  QString error;
  if (!showKeyFile_.isEmpty()) {
    auto key = showKeyIn(showKeyFile_);
    if (const auto* const refusal = std::get_if<QString>(&key)) {
      error = *refusal;
    } else {
      air.showKey = std::get<ShowKey>(key);
      const bool hasCipher = host_ && host_->platform().codes->withKey(*air.showKey) != nullptr;
      if (!hasCipher) error = QStringLiteral("no cipher for show keys on this phone");
    }
  }
  const QPointer<HalvoraViewItem> self(this);
  if (HalvoraViewController* const engine = controller()) engine->setAir(air);
  if (self) lookAtTrust();
  if (!self) return;
  if (!error.isEmpty()) qmlWarning(this) << error;
  if (std::exchange(showKeyError_, error) != error) emit showKeyErrorChanged();
}

void HalvoraViewItem::lookAtTrust() {
  const HalvoraViewController* engine = coordinator_ ? controller() : nullptr;
  const auto trust =
      engine != nullptr ? static_cast<AirTrust>(engine->airTrust()) : AirTrust::Unproven;
  if (std::exchange(airTrust_, trust) != trust) emit airTrustChanged();
}

bool HalvoraViewItem::isPermissionGranted() const {
  const HalvoraViewController* engine = controller();
  return engine != nullptr && engine->isPermissionGranted();
}

bool HalvoraViewItem::isInsideVenue() const {
  const HalvoraViewController* engine = controller();
  return engine != nullptr && engine->isInsideVenue();
}

void HalvoraViewItem::lookAtPresence() {
  const bool isGranted = isPermissionGranted();
  const bool isInside = isInsideVenue();
  const bool grantedChanged = std::exchange(wasPermissionGranted_, isGranted) != isGranted;
  const bool insideChanged = std::exchange(wasInsideVenue_, isInside) != isInside;
  const QPointer<HalvoraViewItem> self(this);
  if (grantedChanged) emit isPermissionGrantedChanged();
  // Whoever heard of the one may have destroyed the item.
  if (self && insideChanged) emit isInsideVenueChanged();
}

void HalvoraViewItem::itemChange(ItemChange change, const ItemChangeData& data) {
  LightSurface::itemChange(change, data);
  if (change == ItemSceneChange) layOut();
}

void HalvoraViewItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  LightSurface::geometryChange(newGeometry, oldGeometry);
  layOut();
}

void HalvoraViewItem::layOut() {
  if (!coordinator_ || controller() == nullptr) return;
  std::optional<Rect> bounds;
  if (window() != nullptr) bounds = Rect{0, 0, width(), height()};
  coordinator_->mainViewController.viewWillLayoutSubviews(bounds);
}

}  // namespace halvora
