// SPDX-License-Identifier: Apache-2.0
#include "apps/console/show_player.h"

#include <algorithm>

#include "apps/console/show_texts.h"

namespace halvora {

namespace {

constexpr Duration kStatusPause = milliseconds(100);

}  // namespace

ShowPlayer::ShowPlayer(const ShowFiles& files, RunLoop& loop, SerialQueues& queues,
                       DemoLibraries& libraries)
    : files_(files), loop_(loop), queues_(queues), libraries_(libraries), title_(titleOf(files)) {}

ShowPlayer::~ShowPlayer() {
  if (surface_ != nullptr) surface_->setLight(std::nullopt);
}

void ShowPlayer::play(LightSurface& surface) {
  surface_ = &surface;
  statusTimer_ = Timer(loop_, loop_.every(kStatusPause, [this] { emit statusChanged(); }));
  begin();
}

double ShowPlayer::screenWidth() const {
  return std::max(files_.scenario.device.bounds.width, 1.0);
}

double ShowPlayer::screenHeight() const {
  return std::max(files_.scenario.device.bounds.height, 1.0);
}

QString ShowPlayer::status() const {
  if (!show_) return {};
  return QStringLiteral("mode %1   %2").arg(show_->mode()).arg(textOf(show_->time()));
}

void ShowPlayer::begin() {
  if (surface_ != nullptr) surface_->setLight(std::nullopt);
  show_ = std::make_unique<LiveShow>(files_, loop_, queues_, libraries_, [this] {
    emit ended();
    begin();
  });
  if (surface_ != nullptr) surface_->setLight(Light(show_->views()));
}

}  // namespace halvora
