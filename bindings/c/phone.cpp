// SPDX-License-Identifier: Apache-2.0
#include "bindings/c/phone.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "adapters/standard/folder_bundle.h"
#include "halvora/air.h"

namespace halvora {

namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

std::vector<std::string> languagesOf(const char* text) {
  if (text == nullptr) return languagesOfEnvironment();
  std::vector<std::string> languages;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view tag = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(tag.size() + 1, rest.size()));
    if (isLanguageTag(tag)) languages.emplace_back(tag);
  }
  return languages;
}

AirOptions airOf(const halvora_options& options) {
  AirOptions air;
  air.policy = options.guards_air != 0 ? AirPolicy::guarded : AirPolicy::exact;
  air.authentication = static_cast<Authentication>(options.authentication);
  if (options.show_key != nullptr) {
    air.showKey.emplace(
        std::span<const std::uint8_t, ShowKey::kSize>(options.show_key, ShowKey::kSize));
  }
  return air;
}

}  // namespace

HostPhone::HostPhone(const halvora_callbacks& callbacks, const halvora_options& options)
    : host(callbacks),
      screen(host, {options.width, options.height}),
      languages_(languagesOf(options.languages)),
      random_(options.seed),
      torch_(host, options.has_torch != 0),
      media_(options.media != nullptr ? *options.media : halvora_media{}),
      defaultsFile_(host, files_, textOf(options.documents)),
      defaults_(defaultsFile_.path(),
                {.files = defaultsFile_, .json = json_, .runLoop = loop, .queues = queues_}),
      kit_(languages_, json_),
      main_(files_, textOf(options.assets), "host", languages_, json_, kit_.texts()),
      bundles_{.main = main_, .kit = kit_, .documents = textOf(options.documents)},
      platform_{.runLoop = loop,
                .queues = queues_,
                .wallClock = wallClock_,
                .calendar = calendar_,
                .random = random_,
                .bluetooth = radio,
                .screen = screen,
                .haptics = haptics_,
                .application = application,
                .defaults = defaults_,
                .bundles = bundles_,
                .json = json_,
                .torch = torch_,
                .images = pictures_,
                .videoPlayers = players_,
                .files = files_,
                .videoAssets = videos_,
                .codes = codes_},
      defaultVenue_(options.default_venue),
      engine_(std::make_unique<HalvoraViewController>(platform_,
                                                      EngineOptions{.air = airOf(options)})) {
  engine_->setLightShowStartedCallback([this] { host.tell(HALVORA_EVENT_SHOW_STARTED); });
  engine_->setLightShowStoppedCallback([this] { host.tell(HALVORA_EVENT_SHOW_STOPPED); });
  engine_->viewDidLoad();
  engine_->viewWillLayoutSubviews(Rect{0, 0, options.width, options.height});
  engine_->light().setObserver(this);
}

HostPhone::~HostPhone() {
  engine_->light().setObserver(nullptr);
  panel_.reset();
  engine_.reset();
}

void HostPhone::runToNow() {
  const halvora_callbacks& callbacks = host.callbacks();
  if (callbacks.now != nullptr) loop.runUntil(Duration(callbacks.now(callbacks.context)));
}

void HostPhone::endCall() {
  loop.endTurn();
  const halvora_callbacks& callbacks = host.callbacks();
  if (callbacks.wake_at == nullptr) return;
  const std::optional<Duration> due = loop.nextDue();
  const std::int64_t wake = due ? due->count() : std::numeric_limits<std::int64_t>::max();
  if (std::exchange(lastWake_, wake) != wake) callbacks.wake_at(callbacks.context, wake);
}

void HostPhone::openPanel() {
  StatusPanelFace face;
  face.changed = [this] { host.tell(HALVORA_EVENT_PANEL_CHANGED); };
  panel_ = HalvoraStatusViewController::make(*engine_, platform_, std::move(face));
  StatusPanelFields fields;
  fields.defaultVenueId = defaultVenue_;
  panel_->setFields(std::move(fields));
  // Whoever hears of a change may close it.
  if (panel_ != nullptr) panel_->viewDidLoad();
  if (panel_ != nullptr) panel_->viewDidLayoutSubviews(screen.bounds().width);
}

std::shared_ptr<HalvoraSeatSelectorViewController> HostPhone::wizard() const {
  if (panel_ == nullptr) return nullptr;
  auto wizard = panel_->presentedSeatSelector();
  if (wizard != nullptr && wizard->isDismissed()) return nullptr;
  return wizard;
}

}  // namespace halvora
