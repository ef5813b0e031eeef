// SPDX-License-Identifier: Apache-2.0
// A small venue on disk, and the console that shows it. Owned by a test.
#pragma once

#include <QAccessible>
#include <QWheelEvent>
#include <cmath>
#include <string>
#include <vector>

#include "apps/console/venue_surface.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/apps/console/console_bench.h"

namespace halvora {

/// Rows of seats, one seat every four pixels of a picture of 64 by 48, from (2, 2) on.
constexpr int kVenueRows = 12;
constexpr int kVenueColumns = 16;

inline std::string venueMap() {
  std::string rows;
  for (int row = 0; row < kVenueRows; ++row) {
    std::string seats;
    for (int at = 0; at < kVenueColumns; ++at) {
      seats += std::string(at > 0 ? "," : "") + "{\"name\": \"Seat " + std::to_string(at + 1) +
               "\", \"x\": " + std::to_string(at * 4 + 2) +
               ", \"y\": " + std::to_string(row * 4 + 2) + "}";
    }
    rows += std::string(row > 0 ? "," : "") + "{\"name\": \"Row " + std::to_string(row + 1) +
            "\", \"seats\": [" + seats + "]}";
  }
  return "{\"sections\": [{\"name\": \"Hall\", \"rows\": [" + rows + "]}]}";
}

struct VenueFolder {
  VenueFolder() { folder.write("HVAssets/Maps/Venue-7/map.json", venueMap()); }

  /// Four quarters, red, green, blue and white, for a second.
  void makeVideo() const {
    constexpr QRgb kQuarters[2][2] = {{qRgb(255, 0, 0), qRgb(0, 255, 0)},
                                      {qRgb(0, 0, 255), qRgb(255, 255, 255)}};
    RawVideo video;
    video.width = 64;
    video.height = 48;
    video.frames = 30;
    video.format = "rgb24";
    for (int frame = 0; frame < video.frames; ++frame) {
      for (int y = 0; y < video.height; ++y) {
        for (int x = 0; x < video.width; ++x) {
          const QRgb colour = kQuarters[y / 24][x / 32];
          for (const int level : {qRed(colour), qGreen(colour), qBlue(colour)}) {
            video.bytes += static_cast<char>(level);
          }
        }
      }
    }
    const ClipMaker clips;
    const std::string clip = clips.encode(
        "clip.mp4", video, "-c:v libx264 -crf 4 -pix_fmt yuv420p -colorspace smpte170m");
    std::filesystem::create_directories(folder.path() + "/HVAssets/Maps/Venue-7/1");
    std::filesystem::copy_file(clip, folder.path() + "/HVAssets/Maps/Venue-7/1/video.mp4");
  }

  TemporaryFolder folder;
};

struct VenueTest : VenueFolder, ConsoleTest {
  VenueTest() : ConsoleTest(folder.path()) { desk.venue()->setPhones(0); }

  VenueShow& venue() { return *desk.venue(); }
  LiveCrowd& crowd() { return *venue().crowd(); }
  VenueSurface& surface() { return dynamic_cast<VenueSurface&>(item("venueSurface")); }

  /// Opens the venue, and lets its phones begin to listen.
  void open() {
    click("view1");
    pass(milliseconds(200));
    ASSERT_TRUE(venue().isReady()) << venue().failure().toStdString();
    pass(milliseconds(2500));
  }
  /// A steady colour, when all fades are over.
  void show(const char* swatch) {
    showSwatch(swatch);
    pass(milliseconds(1500));
  }
  static int seat(int row, int column) { return row * kVenueColumns + column; }
  QPointF middleOfSeat(int seat) { return surface().mapToScene(surface().placeOf(seat).center()); }
  QImage picture() { return window().grabWindow().convertToFormat(QImage::Format_RGB32); }
  QColor seatColour(int seat) { return picture().pixelColor(middleOfSeat(seat).toPoint()); }
  /// Lets the way from one sight to the other end.
  void arrive() {
    pass(milliseconds(400));
    static_cast<void>(picture());
    settle();
  }
  void wheel(const QPointF& place, int notches) {
    QWheelEvent event(place, window().mapToGlobal(place), QPoint(), QPoint(0, notches * 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window(), &event);
    settle();
  }
  void drag(const QPointF& from, const QPointF& to) {
    const auto send = [this](QEvent::Type type, const QPointF& place, Qt::MouseButtons buttons) {
      QMouseEvent event(type, place, window().mapToGlobal(place),
                        type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                        Qt::NoModifier);
      QCoreApplication::sendEvent(&window(), &event);
      settle();
    };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton);
    send(QEvent::MouseMove, (from + to) / 2, Qt::LeftButton);
    send(QEvent::MouseMove, to, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, to, Qt::NoButton);
  }
};

/// What a seat in that light looks like from above.
inline QColor onSeat(const QColor& light) {
  const auto level = [](int value) { return 26 + value * 229 / 255; };
  return QColor(level(light.red()), level(light.green()), level(light.blue()));
}

inline QString spokenNameOf(QQuickItem& item) {
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&item);
  return spoken != nullptr ? spoken->text(QAccessible::Name) : QString();
}

}  // namespace halvora
