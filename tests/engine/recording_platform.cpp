// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/recording_platform.h"

#include <cmath>
#include <sstream>

#include "adapters/virtual/virtual_phone.h"

namespace halvora {

namespace {

class RecordingManager final : public CentralManager {
 public:
  RecordingManager(std::unique_ptr<CentralManager> manager, ActLog& log)
      : manager_(std::move(manager)), log_(log) {}
  CentralState state() const override { return manager_->state(); }
  void scanForPeripherals(const ScanOptions& options) override {
    log_.add("scan" + optionsText(options));
    manager_->scanForPeripherals(options);
  }
  void stopScan() override {
    log_.add("stopScan");
    manager_->stopScan();
  }
  void restartScan(const ScanOptions& options) override {
    log_.add("restartScan" + optionsText(options));
    manager_->restartScan(options);
  }

 private:
  static std::string optionsText(const ScanOptions& options) {
    return options.allowDuplicates ? " with duplicates" : " without duplicates";
  }

  std::unique_ptr<CentralManager> manager_;
  ActLog& log_;
};

std::string actText(bool flag) { return flag ? "true" : "false"; }

}  // namespace

std::string actText(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string actText(Duration duration) { return actText(toSeconds(duration) * 1000) + " ms"; }

std::string actText(const MaybeColour& colour) {
  if (!colour) return "none";
  const auto byte = [](float level) { return std::to_string(std::lround(level * 255)); };
  return byte(colour->red) + " " + byte(colour->green) + " " + byte(colour->blue);
}

std::string actText(const DefaultsValue& value) {
  if (const auto* text = std::get_if<std::string>(&value.storage)) return *text;
  if (const auto* number = std::get_if<std::int64_t>(&value.storage)) {
    return std::to_string(*number);
  }
  if (const auto* date = std::get_if<Date>(&value.storage)) {
    return "date " + actText(date->secondsSince1970);
  }
  return "?";
}

TimerId RecordingRunLoop::after(Duration delay, Task&& task) {
  log_.addDetail("after " + actText(delay));
  return loop_.after(delay, std::move(task));
}

TimerId RecordingRunLoop::every(Duration interval, Task&& task) {
  log_.addDetail("every " + actText(interval));
  return loop_.every(interval, std::move(task));
}

std::unique_ptr<SerialQueue> RecordingQueues::make(std::string_view label) {
  log_.add("queue " + std::string(label));
  return queues_.make(label);
}

std::uint32_t RecordingRandom::below(std::uint32_t bound) {
  log_.add("draw " + std::to_string(bound));
  return random_.below(bound);
}

std::unique_ptr<CentralManager> RecordingBluetooth::makeManager(CentralManagerDelegate& delegate) {
  log_.add("managerMade");
  return std::make_unique<RecordingManager>(central_.makeManager(delegate), log_);
}

double RecordingScreen::brightness() const {
  log_.addDetail("readBrightness");
  return screen_.brightness();
}

void RecordingScreen::setBrightness(double level) {
  log_.add("brightness " + actText(level));
  screen_.setBrightness(level);
}

float RecordingScreen::currentEDRHeadroom() const {
  log_.add("headroom");
  return screen_.currentEDRHeadroom();
}

void RecordingHaptics::impact(ImpactStyle style) {
  log_.add(style == ImpactStyle::heavy ? "impact heavy" : "impact light");
}

void RecordingHaptics::playSystemSound(std::uint32_t sound) {
  log_.add("sound " + std::to_string(sound));
}

void RecordingHaptics::disposeSystemSound(std::uint32_t sound) {
  log_.add("dispose " + std::to_string(sound));
}

void RecordingApplication::addObserver(ApplicationObserver& observer) {
  log_.add("observe");
  application_.addObserver(observer);
}

void RecordingApplication::removeObserver(ApplicationObserver& observer) {
  log_.add("stopObserving");
  application_.removeObserver(observer);
}

void RecordingApplication::setIdleTimerDisabled(bool disabled) {
  log_.add("idleTimerDisabled " + actText(disabled));
  application_.setIdleTimerDisabled(disabled);
}

void RecordingApplication::setStatusBarHidden(bool hidden) {
  log_.add("statusBarHidden " + actText(hidden));
  application_.setStatusBarHidden(hidden);
}

void RecordingApplication::dismissPresentedScreens() {
  log_.add("dismiss");
  application_.dismissPresentedScreens();
}

void RecordingApplication::openSettings() {
  log_.add("openSettings");
  application_.openSettings();
}

void RecordingApplication::useAudioPlaybackCategory() {
  log_.add("audioPlayback");
  application_.useAudioPlaybackCategory();
}

const DefaultsValue* RecordingDefaults::find(std::string_view key) const {
  log_.addDetail("find " + std::string(key));
  return defaults_.find(key);
}

void RecordingDefaults::set(std::string_view key, DefaultsValue value) {
  log_.add("set " + std::string(key) + " " + actText(value));
  defaults_.set(key, std::move(value));
}

void RecordingDefaults::remove(std::string_view key) {
  log_.add("remove " + std::string(key));
  defaults_.remove(key);
}

void RecordingDefaults::synchronize() {
  log_.add("synchronize");
  defaults_.synchronize();
}

std::optional<std::string> RecordingBundle::readResource(std::string_view path,
                                                         std::size_t limit) const {
  log_.addDetail("read " + std::string(path));
  return bundle_.readResource(path, limit);
}

std::string RecordingBundle::localizedString(std::string_view key) const {
  return bundle_.localizedString(key);
}

RecordingPlatform::RecordingPlatform(VirtualPhone& virtualPhone, ActLog& log)
    : phone(virtualPhone),
      runLoop(phone.loop, log),
      queues(phone.queues, log),
      random(*phone.random, log),
      bluetooth(phone.bluetooth, log),
      screen(phone.screen, log),
      haptics(log),
      application(phone.application, log),
      defaults(phone.defaults, log),
      mainBundle(phone.mainBundle, log),
      bundles{mainBundle, phone.kitBundle},
      http(log) {}

Platform RecordingPlatform::platform() {
  Platform platform = phone.platform();
  platform.runLoop = runLoop;
  platform.queues = queues;
  platform.random = random;
  platform.bluetooth = bluetooth;
  platform.screen = screen;
  platform.haptics = haptics;
  platform.application = application;
  platform.defaults = defaults;
  platform.bundles = bundles;
  platform.http = http;
  return platform;
}

}  // namespace halvora
