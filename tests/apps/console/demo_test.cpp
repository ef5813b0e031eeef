// SPDX-License-Identifier: Apache-2.0
// The demo as its users start it. What it draws is compared with an engine that plays the same
// scenario here, in virtual time.
#ifdef HALVORA_DEMO

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
#include "faces/qt/display_painter.h"
#include "tests/apps/console/demo_bench.h"

namespace halvora {
namespace {

const std::string kAssets = demoAssets();
// A picture that is scaled differs at its edges.
constexpr int kNearlyAlike = 12;

bool isNear(const QColor& a, const QColor& b) {
  return std::abs(a.red() - b.red()) <= 1 && std::abs(a.green() - b.green()) <= 1 &&
         std::abs(a.blue() - b.blue()) <= 1;
}

TEST(Demo, ContactSheet) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("sheet.png"));
  const DemoRun run = runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
                               QStringLiteral("--contact-sheet"), path});
  ASSERT_EQ(run.status, 0) << run.error.toStdString();
  EXPECT_TRUE(run.output.contains(path)) << run.output.toStdString();
  EXPECT_EQ(run.output.count(QLatin1Char('\n')), 1);

  // 24 columns of 72 × 128, below a heading of 40; the screen's middle is that of the upper 112.
  const QImage sheet(path);
  const auto text = readFile(kAssets + "/example-show.jsonl", 1 << 24);
  ASSERT_TRUE(text.has_value());
  Reference reference(*text);
  const int tiles = static_cast<int>(reference.end() / milliseconds(500)) + 1;
  ASSERT_EQ(sheet.size(), QSize(24 * 72, 40 + (tiles + 23) / 24 * 128));
  std::set<QRgb> colours;
  int compared = 0;
  for (int tile = 0; tile < tiles; ++tile) {
    const DisplayList list = reference.at(tile * milliseconds(500));
    const QColor seen = sheet.pixelColor(tile % 24 * 72 + 36, 40 + tile / 24 * 128 + 56);
    colours.insert(seen.rgb());
    if (list.size() != 1 || list[0].opacity < 1) continue;
    ++compared;
    EXPECT_TRUE(isNear(seen, colourOf(list[0].colour)))
        << "tile " << tile << " shows " << seen.name().toStdString();
  }
  EXPECT_GT(compared, tiles / 2);
  EXPECT_GT(colours.size(), 50U);
}

// The show ends in a steady colour, so it does not matter when within that the picture is taken.
TEST(Demo, Window) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("window.png"));
  const std::string text =
      "{\"at\": 0, \"start\": true}\n" + packetLine(1.5, 200, 40, 40) + packetLine(2, 30, 160, 90);
  const QString scenario = writeScenario(folder.path(), text);

  const DemoRun run =
      runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
               QStringLiteral("--scenario"), scenario, QStringLiteral("--screenshot"), path});
  ASSERT_EQ(run.status, 0) << run.error.toStdString();

  Reference reference(text);
  const DisplayList list = reference.at(reference.end());
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].colour, colourOfBytes(30, 160, 90));
  const QImage window(path);
  ASSERT_FALSE(window.isNull());
  const QColor seen = window.pixelColor(window.width() / 2, window.height() / 2);
  EXPECT_TRUE(isNear(seen, colourOf(list[0].colour))) << seen.name().toStdString();
  // The table that the phone lies on is not lit.
  EXPECT_FALSE(isNear(window.pixelColor(2, window.height() / 2), seen));
}

// The picture of the phone's screen within the demo's window, as large as the phone's screen is.
QImage screenIn(const QImage& window, QSize size) {
  constexpr QRgb kFrame = qRgb(0x3a, 0x3c, 0x45);
  const int middle = window.width() / 2;
  const auto isFrame = [&](int x, int y) { return window.pixel(x, y) == kFrame; };
  // The inner edges of the frame, on the lines through its middle.
  int top = 0;
  while (top < window.height() && !isFrame(middle, top)) ++top;
  while (top < window.height() && isFrame(middle, top)) ++top;
  int bottom = window.height() - 1;
  while (bottom > top && !isFrame(middle, bottom)) --bottom;
  while (bottom > top && isFrame(middle, bottom)) --bottom;
  const double scale = (bottom + 1 - top) / static_cast<double>(size.height());
  const double width = size.width() * scale;
  const QRectF place((window.width() - width) / 2, top, width, bottom + 1 - top);
  return window.copy(place.toAlignedRect())
      .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage painted(const DisplayList& list, QSize size, const Pictures& pictures) {
  QImage picture(size, QImage::Format_RGB32);
  picture.fill(Qt::black);
  QPainter painter(&picture);
  paintDisplayList(painter, list, pictures);
  return picture;
}

// The largest difference of any channel of the mean colours of two pictures' parts, a part being a
// thirteenth as wide and a twenty-eighth as high, in so many rows of parts from the top. The
// corners lie under the phone's frame.
constexpr QSize kParts(13, 28);
int differenceOfParts(const QImage& a, const QImage& b, int rows) {
  const QImage left = a.scaled(kParts, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  const QImage right = b.scaled(kParts, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  int largest = 0;
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < kParts.width(); ++x) {
      const bool isAtSide = x == 0 || x == kParts.width() - 1;
      if (isAtSide && (y == 0 || y == kParts.height() - 1)) continue;
      const QColor one = left.pixelColor(x, y);
      const QColor other = right.pixelColor(x, y);
      largest =
          std::max({largest, std::abs(one.red() - other.red()),
                    std::abs(one.green() - other.green()), std::abs(one.blue() - other.blue())});
    }
  }
  return largest;
}

void compareFrames(const QTemporaryDir& folder, Duration step, Reference& reference) {
  const auto steps = static_cast<int>((reference.end() - Duration{1}) / step) + 1;
  const QSize size(static_cast<int>(reference.screen().width),
                   static_cast<int>(reference.screen().height));
  int plain = 0;
  int pictures = 0;
  int texts = 0;
  std::set<QRgb> colours;
  for (int at = 0; at < steps; ++at) {
    const QString name = QStringLiteral("frame-%1.png").arg(at, 5, 10, QLatin1Char('0'));
    const QImage window(folder.filePath(name));
    ASSERT_FALSE(window.isNull()) << name.toStdString();
    const DisplayList list = reference.at(at * step);
    const QImage screen = screenIn(window, size);
    const bool isPlain = list.size() == 1 && list[0].opacity == 1;
    if (isPlain) {
      const QColor seen = window.pixelColor(window.width() / 2, window.height() / 2);
      colours.insert(seen.rgb());
      EXPECT_TRUE(isNear(seen, colourOf(list[0].colour)))
          << name.toStdString() << " shows " << seen.name().toStdString();
    }
    plain += isPlain ? 1 : 0;
    pictures += list.size() > 1 ? 1 : 0;
    // The packets of a second may be one more or less where one comes as the second ends.
    const bool hasText = std::any_of(list.begin(), list.end(), [](const DisplayItem& item) {
      return item.content == ViewContent::text;
    });
    texts += hasText ? 1 : 0;
    const int rows = hasText ? kParts.height() / 4 : kParts.height();
    EXPECT_LE(differenceOfParts(screen, painted(list, size, reference.pictures()), rows),
              kNearlyAlike)
        << name.toStdString();
  }
  EXPECT_FALSE(QFile::exists(
      folder.filePath(QStringLiteral("frame-%1.png").arg(steps, 5, 10, QLatin1Char('0')))));
  EXPECT_GT(plain, steps / 2);
  EXPECT_GT(pictures, steps / 20);
  EXPECT_LT(texts, steps / 20);
  EXPECT_GT(colours.size(), static_cast<std::size_t>(steps / 10));
}

// The example show in a window of a real window system, which is asked what it shows.
void playInRealWindow(bool hasOpenGl, Duration step) {
  const XServer server;
  if (!server.isInstalled()) GTEST_SKIP() << "no Xvfb";
  QProcessEnvironment environment = server.environment();
  if (hasOpenGl) environment.remove(QStringLiteral("QT_QUICK_BACKEND"));
  const QTemporaryDir folder;
  const DemoRun run = runDemo(
      {QStringLiteral("--assets"), QString::fromStdString(kAssets), QStringLiteral("--frames"),
       folder.path(), QStringLiteral("--step"), QString::number(toSeconds(step))},
      environment);
  ASSERT_EQ(run.status, 0) << run.error.toStdString();
  // Not on the one that is taken where no window system answers.
  EXPECT_TRUE(run.output.contains(QStringLiteral(" on xcb: "))) << run.output.toStdString();

  const auto text = readFile(kAssets + "/example-show.jsonl", 1 << 24);
  ASSERT_TRUE(text.has_value());
  Reference reference(*text);
  compareFrames(folder, step, reference);
}

TEST(Demo, RealWindow) { playInRealWindow(false, milliseconds(500)); }

TEST(Demo, RealWindowWithOpenGl) { playInRealWindow(true, milliseconds(3900)); }

// Without a scenario; what the console does is tested in virtual time.
TEST(Demo, Console) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("console.png"));
  const DemoRun run = runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
                               QStringLiteral("--screenshot"), path});
  ASSERT_EQ(run.status, 0) << run.error.toStdString();
  const QImage window(path);
  ASSERT_GE(window.width(), 900);
  ASSERT_GE(window.height(), 640);
  std::set<QRgb> colours;
  for (int y = 0; y < window.height(); y += 5) {
    for (int x = 0; x < window.width(); x += 5) colours.insert(window.pixel(x, y));
  }
  // Those of the palettes alone are more.
  EXPECT_GT(colours.size(), 100U);
}

TEST(Demo, BadInput) {
  const QTemporaryDir folder;
  const QString scenario =
      writeScenario(folder.path(), "{\"at\": 0, \"start\": true}\n{\"at\": 1, \"dance\": true}\n");
  const QString assets = QString::fromStdString(kAssets);
  const QString sheet = folder.filePath(QStringLiteral("sheet.png"));

  const std::pair<QStringList, QString> kCases[] = {
      {{QStringLiteral("--dance")}, QStringLiteral("--dance")},
      {{QStringLiteral("--quit-after"), QStringLiteral("-1")}, QStringLiteral("--quit-after")},
      {{QStringLiteral("--step"), QStringLiteral("1")}, QStringLiteral("--step")},
      {{QStringLiteral("--radio"), QStringLiteral("system")}, QStringLiteral("--radio system")},
      {{QStringLiteral("--radio"), QStringLiteral("tube")}, QStringLiteral("--radio")},
      {{QStringLiteral("--adapter"), QStringLiteral("hci1")}, QStringLiteral("--adapter")},
      {{QStringLiteral("--assets"), folder.filePath(QStringLiteral("none"))},
       QStringLiteral("none")},
      {{QStringLiteral("--assets"), assets, QStringLiteral("--scenario"),
        folder.filePath(QStringLiteral("none.jsonl"))},
       QStringLiteral("none.jsonl")},
      {{QStringLiteral("--assets"), assets, QStringLiteral("--scenario"), scenario},
       QStringLiteral("scenario.jsonl:2: ")},
  };
  for (const auto& [arguments, expected] : kCases) {
    const DemoRun run = runDemo(arguments + QStringList{QStringLiteral("--contact-sheet"), sheet});
    EXPECT_EQ(run.status, 2) << run.error.toStdString();
    EXPECT_EQ(run.output, QString());
    EXPECT_EQ(run.error.count(QLatin1Char('\n')), 1) << run.error.toStdString();
    EXPECT_TRUE(run.error.contains(expected)) << run.error.toStdString();
  }
  EXPECT_FALSE(QFile::exists(sheet));
}

}  // namespace
}  // namespace halvora

#endif
