// SPDX-License-Identifier: Apache-2.0
// The surface in a real window, off screen, over a stack in virtual time: what it shows is compared
// with the painter's picture of the same moment.
#include "faces/qt/light_surface.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "adapters/image/picture_decoder.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"
#include "faces/qt/display_painter.h"
#include "halvora/pictures.h"
#include "halvora/platform/absent.h"
#include "light/display_list.h"
#include "light/light_look.h"
#include "light/timer_set.h"
#include "tests/faces/qt/event_wait.h"

namespace halvora {
namespace {

constexpr QSize kSize(390, 200);
constexpr QColor kBehind(10, 60, 20);

struct LightSurfaceTest : testing::Test {
  LightSurfaceTest() {
    window.setColor(kBehind);
    window.resize(kSize);
    surface.setParentItem(window.contentItem());
    surface.setSize(kSize);
    surface.setLight(Light(views), pictures);
    window.show();
  }
  ~LightSurfaceTest() override { surface.setLight(std::nullopt); }

  QImage seen() { return window.grabWindow().convertToFormat(QImage::Format_RGB32); }
  QColor seenInTheMiddle() { return seen().pixelColor(kSize.width() / 2, kSize.height() / 2); }

  QImage painted() const {
    QImage picture(kSize, QImage::Format_RGB32);
    picture.fill(kBehind);
    QPainter painter(&picture);
    const Size size{static_cast<double>(kSize.width()), static_cast<double>(kSize.height())};
    paintDisplayList(painter, displayListOf(views, size), pictures);
    return picture;
  }

  void waitForFrames(int count) {
    int frames = 0;
    const auto connection =
        QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&frames] { ++frames; });
    letQtWorkUntil([&] { return frames >= count; });
    QObject::disconnect(connection);
  }

  StandardFiles files;
  VirtualBundle host{"com.example.host"};
  PictureDecoder decoder;
  const Pictures pictures{files, host, decoder};
  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
  QQuickWindow window;
  LightSurface surface;
};

// The largest difference of any channel of any pixel.
int difference(const QImage& a, const QImage& b) {
  if (a.size() != b.size()) return 256;
  int largest = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      const QRgb left = a.pixel(x, y);
      const QRgb right = b.pixel(x, y);
      largest =
          std::max({largest, std::abs(qRed(left) - qRed(right)),
                    std::abs(qGreen(left) - qGreen(right)), std::abs(qBlue(left) - qBlue(right))});
    }
  }
  return largest;
}

TEST_F(LightSurfaceTest, ShowsWhatLiesBehindWhileTheShowIsInvisible) {
  views.setLightColour(kWhite);
  EXPECT_EQ(seenInTheMiddle(), kBehind);
}

TEST_F(LightSurfaceTest, ShowsAPlainColour) {
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(colourOfBytes(200, 100, 50));
  EXPECT_EQ(seenInTheMiddle(), QColor(200, 100, 50));
  views.setLightColour(colourOfBytes(1, 2, 3));
  EXPECT_EQ(seenInTheMiddle(), QColor(1, 2, 3));
}

TEST_F(LightSurfaceTest, FollowsAnAnimationAndEndsWhereItEnds) {
  views.setLightColour(colourOfBytes(250, 0, 0));
  views.animateAlpha({{ViewId::container, 1}}, {.duration = milliseconds(1000)});
  EXPECT_EQ(seenInTheMiddle(), kBehind);
  loop.runFor(milliseconds(500));
  // Half of red over half of what is behind.
  const QColor half = seenInTheMiddle();
  EXPECT_NEAR(half.red(), 130, 2);
  EXPECT_NEAR(half.green(), 30, 2);
  EXPECT_NEAR(half.blue(), 10, 2);
  loop.runFor(milliseconds(500));
  EXPECT_EQ(seenInTheMiddle(), QColor(250, 0, 0));
}

// Half of its width and height are yellow, in the middle.
QImage starOf(int size) {
  QImage star(size, size, QImage::Format_ARGB32_Premultiplied);
  star.fill(Qt::transparent);
  QPainter(&star).fillRect(size / 4, size / 4, size / 2, size / 2, Qt::yellow);
  return star;
}

std::string pngOf(const QImage& picture) {
  QBuffer png;
  EXPECT_TRUE(png.open(QIODevice::WriteOnly) && picture.save(&png, "PNG"));
  return png.data().toStdString();
}

// A host that is one file has its pictures nowhere but within itself.
TEST_F(LightSurfaceTest, DrawsAPictureOfABundleThatHasNoFolder) {
  host.resources["HVAssets/Gobos/1.png"] = pngOf(starOf(40));
  ASSERT_EQ(host.location("HVAssets/Gobos/1.png"), "");
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(colourOfBytes(0, 0, 200));
  views.setText(ViewId::goboImage, "HVAssets/Gobos/1.png");
  views.setAlpha(ViewId::goboView, 1);
  EXPECT_EQ(seenInTheMiddle(), QColor(Qt::yellow));
  EXPECT_LE(difference(seen(), painted()), 3);
  // The dimmer draws it anew, without reading it.
  host.resources.clear();
  views.setAlpha(ViewId::dimmerView, 0.5);
  EXPECT_NEAR(seenInTheMiddle().red(), 128, 2);
}

// Whoever compared a show's pictures with those of another build would see it at each edge.
TEST_F(LightSurfaceTest, APictureIsWhatQtsOwnReaderMakesOfIt) {
  QImage soft(40, 40, QImage::Format_ARGB32);
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 40; ++x) soft.setPixel(x, y, qRgba(6 * x, 6 * y, 99, (x * y) % 256));
  }
  host.resources["HVAssets/Gobos/1.png"] = pngOf(soft);
  DisplayItem item;
  item.content = ViewContent::image;
  item.text = "HVAssets/Gobos/1.png";
  const QImage ours = pictureOf(item, pictures);
  const QImage qts = pictureOf(item, Pictures(files, host, absent::images()));
  EXPECT_EQ(ours.format(), qts.format());
  EXPECT_EQ(ours, qts);
}

TEST_F(LightSurfaceTest, HasQtDecodeWhatThePhoneHasNoDecoderFor) {
  host.resources["HVAssets/Gobos/1.png"] = pngOf(starOf(40));
  surface.setLight(Light(views), Pictures(files, host, absent::images()));
  views.setAlpha(ViewId::container, 1);
  views.setText(ViewId::goboImage, "HVAssets/Gobos/1.png");
  views.setAlpha(ViewId::goboView, 1);
  EXPECT_EQ(seenInTheMiddle(), QColor(Qt::yellow));
}

/// A host's own, which is not as careful as it ought to be.
struct CarelessDecoder final : ImageDecoder {
  std::optional<Image> decode(std::string_view /*bytes*/) const override {
    throw std::runtime_error("no such picture");
  }
};

TEST_F(LightSurfaceTest, APictureWhoseDecoderThrowsIsLeftOut) {
  const CarelessDecoder careless;
  host.resources["HVAssets/Gobos/1.png"] = pngOf(starOf(40));
  surface.setLight(Light(views), Pictures(files, host, careless));
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(colourOfBytes(0, 0, 200));
  views.setText(ViewId::goboImage, "HVAssets/Gobos/1.png");
  views.setAlpha(ViewId::goboView, 1);
  EXPECT_EQ(seenInTheMiddle(), QColor(0, 0, 200));
}

TEST_F(LightSurfaceTest, LooksAsThePainterPaintsIt) {
  const QImage star = starOf(40);
  const QTemporaryDir folder;
  const QString file = folder.filePath(QStringLiteral("star.png"));
  ASSERT_TRUE(star.save(file));
  const std::string name = file.toStdString();
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(colourOfBytes(0, 0, 200));
  views.setAlpha(ViewId::dimmerView, 0.25);
  views.setText(ViewId::goboImage, name);
  views.setAlpha(ViewId::goboView, 0.5);
  views.setText(ViewId::pairingCodeLabel, "0042");
  views.setAlpha(ViewId::pairingCodeLabel, 1);

  const QImage first = painted();
  EXPECT_LE(difference(seen(), first), 3);
  // Yellow and the light at three quarters each, half of both, in the empty part beside the code.
  EXPECT_NEAR(first.pixelColor(130, 180).red(), 96, 2);
  EXPECT_NEAR(first.pixelColor(130, 180).blue(), 75, 2);

  // Another text, another opacity, a picture that is missing.
  views.setText(ViewId::pairingCodeLabel, "1");
  views.setAlpha(ViewId::pairingCodeLabel, 0.5);
  views.setText(ViewId::goboImage, name + ".missing");
  const QImage second = painted();
  EXPECT_GT(difference(first, second), 30);
  EXPECT_LE(difference(seen(), second), 3);

  // Fewer things than before.
  views.setAlpha(ViewId::pairingCodeLabel, 0);
  views.setText(ViewId::goboImage, name);
  EXPECT_LE(difference(seen(), painted()), 3);
}

// A filter sets timers and writes to devices, which belong to the main thread. What happens between
// these two signals is done by the render thread where there is one.
TEST_F(LightSurfaceTest, AsksTheLightNothingWhileTheSceneIsSynchronised) {
  class Watching final : public LightFilter {
   public:
    explicit Watching(const ViewStack& watched) : watched_(watched) {}
    LightLook lookInto(Size) override {
      ++(isSynchronising ? late : looks);
      return lookOf(watched_);
    }
    bool isMoving() const override { return false; }
    bool isSynchronising = false;
    int looks = 0;
    int late = 0;

   private:
    const ViewStack& watched_;
  } filter(views);
  int frames = 0;
  QObject::connect(&window, &QQuickWindow::beforeSynchronizing, &window, [&] {
    filter.isSynchronising = true;
    ++frames;
  });
  QObject::connect(&window, &QQuickWindow::afterSynchronizing, &window,
                   [&filter] { filter.isSynchronising = false; });
  views.setFilter(&filter);
  views.setLightColour(kWhite);
  views.animateAlpha({{ViewId::container, 1}}, {.duration = milliseconds(1000)});
  waitForFrames(3);
  loop.runFor(milliseconds(1000));
  waitForFrames(1);
  EXPECT_EQ(seenInTheMiddle(), QColor(Qt::white));
  EXPECT_GE(frames, 4);
  EXPECT_GE(filter.looks, 4);
  EXPECT_EQ(filter.late, 0);
  views.setFilter(nullptr);
}

TEST_F(LightSurfaceTest, FollowsItsOwnSize) {
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(kWhite);
  surface.setSize({100, 100});
  const QImage picture = seen();
  EXPECT_EQ(picture.pixelColor(99, 99), QColor(Qt::white));
  EXPECT_EQ(picture.pixelColor(100, 99), kBehind);
  EXPECT_EQ(picture.pixelColor(99, 100), kBehind);
}

TEST_F(LightSurfaceTest, StaysInItsPlaceWhenItLightsUpLater) {
  surface.setPosition({50, 20});
  surface.setSize({100, 100});
  surface.setScale(0.5);
  EXPECT_EQ(seenInTheMiddle(), kBehind);
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(kWhite);
  // Half as large, about its middle at 100, 70.
  const QImage picture = seen();
  EXPECT_EQ(picture.pixelColor(76, 46), QColor(Qt::white));
  EXPECT_EQ(picture.pixelColor(123, 93), QColor(Qt::white));
  EXPECT_EQ(picture.pixelColor(73, 70), kBehind);
  EXPECT_EQ(picture.pixelColor(126, 70), kBehind);
  EXPECT_EQ(picture.pixelColor(100, 43), kBehind);
  EXPECT_EQ(picture.pixelColor(100, 96), kBehind);
}

TEST_F(LightSurfaceTest, ShowsNothingWithoutAStack) {
  views.setAlpha(ViewId::container, 1);
  views.setLightColour(kWhite);
  EXPECT_EQ(seenInTheMiddle(), QColor(Qt::white));
  surface.setLight(std::nullopt);
  EXPECT_EQ(seenInTheMiddle(), kBehind);
}

TEST_F(LightSurfaceTest, AsksForFramesForAsLongAsAnAnimationRuns) {
  views.animateAlpha({{ViewId::container, 1}}, {.duration = milliseconds(1000)});
  waitForFrames(5);
  loop.runFor(milliseconds(1000));
  EXPECT_FALSE(views.isAnimating());
}

// At rest the change that begins an animation has asked for the first frame already.
TEST_F(LightSurfaceTest, AnAnimationThatBeginsAtRestIsDrawnToItsEnd) {
  views.setLightColour(kWhite);
  waitForFrames(1);
  EXPECT_FALSE(surface.isMoving());
  views.animateAlpha({{ViewId::container, 1}}, {.duration = milliseconds(1000)});
  waitForFrames(5);
  EXPECT_TRUE(surface.isMoving());
  loop.runFor(milliseconds(1000));
  // The last frame shows where it ended.
  waitForFrames(1);
  letQtWorkUntil([this] { return !surface.isMoving(); });
  EXPECT_EQ(seenInTheMiddle(), QColor(Qt::white));
}

TEST_F(LightSurfaceTest, AsksForNothingWhileNobodySeesIt) {
  waitForFrames(1);
  views.animateAlpha({{ViewId::container, 1}}, {.duration = milliseconds(1000)});
  waitForFrames(2);
  window.hide();
  letQtWorkUntil([this] { return !surface.isMoving(); });
  EXPECT_TRUE(views.isAnimating());
  window.show();
  waitForFrames(5);
  EXPECT_TRUE(surface.isMoving());
}

TEST_F(LightSurfaceTest, AsksForAFrameWhenTheStackChanges) {
  waitForFrames(1);
  views.setAlpha(ViewId::container, 1);
  waitForFrames(1);
  views.setLightColour(kWhite);
  waitForFrames(1);
  EXPECT_EQ(seenInTheMiddle(), QColor(Qt::white));
}

}  // namespace
}  // namespace halvora
