// SPDX-License-Identifier: Apache-2.0
#include "apps/console/contact_sheet.h"

#include <QFont>
#include <QPainter>
#include <algorithm>
#include <memory>

#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/virtual/virtual_phone.h"
#include "apps/console/show_texts.h"
#include "engine/show_engine.h"
#include "faces/qt/display_painter.h"
#include "light/display_list.h"
#include "venue/show/scenario_player.h"
#include "venue/show/scenario_run.h"

namespace halvora {

namespace {

constexpr int kColumns = 24;
constexpr QSize kTile(72, 128);
constexpr int kTextHeight = 16;
constexpr int kGap = 3;
constexpr int kHeading = 40;
constexpr QColor kPaper(14, 15, 18);
// A phone whose show is invisible is grey, so that it differs from one that shows black.
constexpr QColor kOffScreen(62, 64, 72);
// A rim, or a black screen would be lost on the paper.
constexpr QColor kRim(70, 72, 80);
constexpr QColor kText(200, 202, 210);

Duration pauseFor(Duration end) {
  Duration pause = kTilePause;
  while (end / pause >= kMostTiles) pause *= 2;
  return pause;
}

QFont font(int pixels) {
  QFont font;
  font.setPixelSize(pixels);
  return font;
}

// The largest place of the screen's shape in a tile, above its text.
QRectF placeOf(Size screen, QPoint tile) {
  const QRectF room = QRectF(tile, QSizeF(kTile.width(), kTile.height() - kTextHeight))
                          .adjusted(kGap, kGap, -kGap, -kGap);
  const QSizeF shape(std::max(screen.width, 1.0), std::max(screen.height, 1.0));
  QRectF place({}, shape.scaled(room.size(), Qt::KeepAspectRatio));
  place.moveCenter(room.center());
  return place.toAlignedRect();
}

struct Moment {
  const ShowEngine& engine;
  Pictures pictures;
  Size screen;
  Duration time;
};

void drawTile(QPainter& painter, QPoint tile, const Moment& moment) {
  const QRectF place = placeOf(moment.screen, tile);
  painter.fillRect(place.adjusted(-1, -1, 1, 1), kRim);
  painter.fillRect(place, kOffScreen);
  painter.save();
  painter.setClipRect(place);
  painter.translate(place.topLeft());
  painter.scale(place.width() / std::max(moment.screen.width, 1.0),
                place.height() / std::max(moment.screen.height, 1.0));
  paintDisplayList(painter, displayListOf(moment.engine.views(), moment.screen), moment.pictures);
  painter.restore();

  painter.setPen(kText);
  painter.setFont(font(10));
  const QRect text(tile.x(), tile.y() + kTile.height() - kTextHeight, kTile.width(), kTextHeight);
  painter.drawText(text, Qt::AlignHCenter | Qt::AlignTop,
                   QStringLiteral("%1  m%2")
                       .arg(textOf(moment.time))
                       .arg(moment.engine.state().screen.currentMode));
}

void drawHeading(QPainter& painter, const ShowFiles& files, Duration pause) {
  painter.setPen(kText);
  painter.setFont(font(16));
  painter.drawText(QRect(10, 0, painter.device()->width() - 20, kHeading), Qt::AlignVCenter,
                   QStringLiteral("%1   %2   a tile every %3 s, with its time and mode; "
                                  "grey: the show is not visible")
                       .arg(titleOf(files), textOf(files.end()))
                       .arg(toSeconds(pause)));
}

}  // namespace

ContactSheet drawContactSheet(const ShowFiles& files, DemoLibraries& libraries) {
  FolderBundle mainBundle(libraries.files, files.assets, "com.example.host");
  VirtualPhoneSetup setup =
      setupOf(files.scenario.device, std::make_unique<SeededRandom>(kShowSeed));
  setup.mainBundle = &mainBundle;
  setup.documents = libraries.documents;
  setup.images = &libraries.images;
  setup.files = &libraries.files;
  setup.videoAssets = &libraries.videos;
  setup.workers = &libraries.workers;
  VirtualPhone phone(libraries.json, std::move(setup));
  ShowEngine engine(phone.platform());
  const ScenarioStage stage{{phone.bluetooth, phone.application, engine}, phone.defaults};
  const ScenarioRun run(ScenarioSchedule(files.scenario), phone.loop,
                        [&stage](const ScenarioAction& action) { perform(action, stage); });

  const Duration pause = pauseFor(files.end());
  const int tiles = static_cast<int>(files.end() / pause) + 1;
  const int rows = (tiles + kColumns - 1) / kColumns;
  QImage picture(kColumns * kTile.width(), kHeading + rows * kTile.height(), QImage::Format_RGB32);
  picture.fill(kPaper);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  drawHeading(painter, files, pause);
  for (int tile = 0; tile < tiles; ++tile) {
    if (!phone.loop.runUntil(tile * pause)) return {};
    const QPoint corner(tile % kColumns * kTile.width(),
                        kHeading + tile / kColumns * kTile.height());
    drawTile(painter, corner,
             {engine, Pictures(phone.platform()), phone.screen.size, phone.loop.now()});
  }
  return {picture, tiles};
}

}  // namespace halvora
