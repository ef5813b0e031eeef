// SPDX-License-Identifier: Apache-2.0
#include "apps/console/scenario_loop.h"

#include <algorithm>

#include "apps/console/show_texts.h"

namespace halvora {

namespace {

constexpr Duration kStatusPause = milliseconds(100);

}  // namespace

ScenarioLoop::ScenarioLoop(const ShowFiles& files, RunLoop& loop, SerialQueues& queues,
                           DemoLibraries& libraries)
    : files_(files), loop_(loop), queues_(queues), libraries_(libraries), title_(titleOf(files)) {}

ScenarioLoop::~ScenarioLoop() {
  if (surface_ != nullptr) surface_->setLight(std::nullopt);
}

void ScenarioLoop::play(LightSurface& surface) {
  surface_ = &surface;
  statusTimer_ = Timer(loop_, loop_.every(kStatusPause, [this] { emit statusChanged(); }));
  begin();
}

double ScenarioLoop::screenWidth() const {
  return std::max(files_.scenario.device.bounds.width, 1.0);
}

double ScenarioLoop::screenHeight() const {
  return std::max(files_.scenario.device.bounds.height, 1.0);
}

QString ScenarioLoop::status() const {
  if (!show_) return {};
  return QStringLiteral("mode %1   %2").arg(show_->mode()).arg(textOf(show_->time()));
}

void ScenarioLoop::begin() {
  if (surface_ != nullptr) surface_->setLight(std::nullopt);
  show_ = std::make_unique<LiveShow>(files_, loop_, queues_, libraries_, [this] {
    emit ended();
    begin();
  });
  if (surface_ != nullptr) surface_->setLight(Light(show_->views()), show_->pictures());
}

}  // namespace halvora
