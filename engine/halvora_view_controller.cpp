// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "engine/inside.h"
#include "halvora/engine.h"

namespace halvora {

namespace {

ShowEngineOptions hostsOptions(const EngineOptions& options) {
  ShowEngineOptions own{options};
  own.mayChangeAir = true;
  return own;
}

}  // namespace

HalvoraViewController& HalvoraViewController::sharedInstance(const Platform& platform,
                                                             const EngineOptions& options) {
  // Never destroyed: a host's own statics may still ask for it while the process ends.
  static auto* const kInstance = new HalvoraViewController(platform, options);
  return *kInstance;
}

HalvoraViewController::HalvoraViewController(const Platform& platform, const EngineOptions& options)
    : inside_(std::make_unique<ShowEngine>(platform, hostsOptions(options))) {}

HalvoraViewController::HalvoraViewController(std::unique_ptr<ShowEngine> inside)
    : inside_(std::move(inside)) {}

std::unique_ptr<HalvoraViewController> v0::controllerOf(std::unique_ptr<ShowEngine> inside) {
  return std::unique_ptr<HalvoraViewController>(new HalvoraViewController(std::move(inside)));
}

HalvoraViewController::~HalvoraViewController() = default;

void HalvoraViewController::viewDidLoad() { inside_->viewDidLoad(); }

void HalvoraViewController::viewWillLayoutSubviews(const std::optional<Rect>& superviewBounds) {
  inside_->viewWillLayoutSubviews(superviewBounds);
}

const Rect& HalvoraViewController::frame() const { return inside_->frame(); }

Light HalvoraViewController::light() { return Light(inside_->views()); }

void HalvoraViewController::start() { inside_->start(); }

void HalvoraViewController::initBluetoothPermission() { inside_->initBluetoothPermission(); }

bool HalvoraViewController::isPermissionGranted() const { return inside_->isPermissionGranted(); }

bool HalvoraViewController::isInsideVenue() const { return inside_->isInsideVenue(); }

std::shared_ptr<const void> HalvoraViewController::watchPresence(Callback callback) {
  return inside_->watchPresence(std::move(callback));
}

std::uint32_t HalvoraViewController::screenMode() const {
  return inside_->state().screen.currentMode;
}

bool HalvoraViewController::prefersStatusBarHidden() const {
  return inside_->prefersStatusBarHidden();
}

void HalvoraViewController::setAllowedTransmitterIds(std::vector<std::string> ids) {
  inside_->setAllowedTransmitterIds(std::move(ids));
}

const std::vector<std::string>& HalvoraViewController::allowedTransmitterIds() const {
  return inside_->allowedTransmitterIds();
}

void HalvoraViewController::setLightShowStartedCallback(Callback callback) {
  inside_->lightShowStartedCallback() = std::move(callback);
}

const HalvoraViewController::Callback& HalvoraViewController::lightShowStartedCallback() const {
  return inside_->lightShowStartedCallback();
}

void HalvoraViewController::setLightShowStoppedCallback(Callback callback) {
  inside_->lightShowStoppedCallback() = std::move(callback);
}

const HalvoraViewController::Callback& HalvoraViewController::lightShowStoppedCallback() const {
  return inside_->lightShowStoppedCallback();
}

bool HalvoraViewController::usageReports() const { return inside_->usageReports(); }

void HalvoraViewController::setUsageReports(bool isOn) { inside_->setUsageReports(isOn); }

void HalvoraViewController::setLimits(const LightLimits& limits) { inside_->setLimits(limits); }

const LightLimits& HalvoraViewController::limits() const { return inside_->limits(); }

void HalvoraViewController::setViewerLimits(const LightLimits& limits) {
  inside_->setViewerLimits(limits);
}

const LightLimits& HalvoraViewController::viewerLimits() const { return inside_->viewerLimits(); }

void HalvoraViewController::leave() { inside_->leave(); }

void HalvoraViewController::comeBack() { inside_->guard().comeBack(); }

bool HalvoraViewController::hasLeft() const { return inside_->guard().hasLeft(); }

void HalvoraViewController::playVideo(const std::string& name) { inside_->playVideo(name); }

void HalvoraViewController::precomputePixelMapLUTsForVenueId(std::int64_t venueId,
                                                             std::int64_t seatX, std::int64_t seatY,
                                                             Progress progress,
                                                             Completion completion) {
  inside_->precomputePixelMapLUTsForVenueId(venueId, seatX, seatY, std::move(progress),
                                            std::move(completion));
}

void HalvoraViewController::invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId) {
  inside_->invalidatePixelMapSeatLUTCacheForVenueId(venueId);
}

std::uint64_t HalvoraViewController::pixelMapPrecomputeGeneration() const {
  return inside_->pixelMapPrecomputeGeneration();
}

bool HalvoraViewController::isPrecomputingPixelMapLUTs() const {
  return inside_->isPrecomputingPixelMapLUTs();
}

std::string HalvoraViewController::hvLocalizedStringForKey(std::string_view key,
                                                           std::string_view fallback) const {
  return inside_->hvLocalizedStringForKey(key, fallback);
}

const std::string& HalvoraViewController::getPrivateDocumentsDirectory() const {
  return inside_->getPrivateDocumentsDirectory();
}

const std::string& HalvoraViewController::pairedBucketID() const {
  return inside_->pairedBucketID();
}

const ScanDiagnostics& HalvoraViewController::diagnostics() const { return inside_->diagnostics(); }

void HalvoraViewController::setAir(const AirOptions& air) { inside_->setAir(air); }

void HalvoraViewController::setAirTrustCallback(std::function<void(AirTrust)> callback) {
  inside_->airTrustCallback() = std::move(callback);
}

AirTrust HalvoraViewController::airTrust() const { return inside_->airTrust(); }

AirDiagnostics HalvoraViewController::airDiagnostics() const { return inside_->airDiagnostics(); }

Witnessed& HalvoraViewController::life() { return inside_->life(); }

}  // namespace halvora
