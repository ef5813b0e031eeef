// SPDX-License-Identifier: Apache-2.0
// Panel and wizard on every size of screen, at every size of text, in every language and both
// directions, judged by figures: no word is cut or broken, no control is out of reach, too small or
// on top of another, and letters stand out from their ground. With HALVORA_SHEET_FOLDER in the
// environment every screen is written there, to be looked at.
#include <QDir>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QQuickItem>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "halvora/panel.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

constexpr double kLeastTarget = 44;
constexpr QSize kSizes[] = {{360, 640}, {390, 844}, {640, 360}, {1280, 800}, {1920, 1080}};
constexpr double kScales[] = {1, 1.5, 2, 3};
constexpr const char* kLanguages[] = {"en", "de", "fr", "es", "ja", "ar"};

struct Look {
  QSize size;
  double scale;
  std::string language;
};

std::vector<Look> allLooks() {
  std::vector<Look> looks;
  for (const QSize& size : kSizes) {
    for (const double scale : kScales) {
      for (const char* language : kLanguages) looks.push_back({size, scale, language});
    }
  }
  return looks;
}

double level(double value) {
  return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}
double luminance(const QColor& colour) {
  return 0.2126 * level(colour.redF()) + 0.7152 * level(colour.greenF()) +
         0.0722 * level(colour.blueF());
}
double contrast(const QColor& a, const QColor& b) {
  const double first = luminance(a);
  const double second = luminance(b);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}
QColor over(const QColor& ink, double alpha, const QColor& ground) {
  const auto part = static_cast<float>(alpha);
  const auto mix = [part](float a, float b) { return a * part + b * (1 - part); };
  return QColor::fromRgbF(mix(ink.redF(), ground.redF()), mix(ink.greenF(), ground.greenF()),
                          mix(ink.blueF(), ground.blueF()));
}

bool isSeen(const QQuickItem& item) {
  if (!item.isVisible() || item.width() <= 0 || item.height() <= 0) return false;
  for (const QQuickItem* at = &item; at != nullptr; at = at->parentItem()) {
    if (at->opacity() == 0) return false;
  }
  return true;
}

bool isUnder(const QQuickItem& item, const char* name) {
  for (const QQuickItem* at = &item; at != nullptr; at = at->parentItem()) {
    if (at->objectName() == QLatin1String(name)) return true;
  }
  return false;
}

void collect(QQuickItem& item, std::vector<QQuickItem*>& items) {
  if (!item.isVisible()) return;
  items.push_back(&item);
  for (QQuickItem* child : item.childItems()) collect(*child, items);
}

QRectF frameOf(const QQuickItem& item) {
  return item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
}

// One screen, judged.
class Judge {
 public:
  Judge(StatusBench& bench, const Look& look, const char* screen)
      : bench_(bench),
        what_(std::string(screen) + " " + std::to_string(look.size.width()) + "x" +
              std::to_string(look.size.height()) + " at " + std::to_string(look.scale) + " in " +
              look.language) {
    bench_.settle();
    collect(*bench_.window().contentItem(), items_);
  }

  void judge() {
    for (QQuickItem* item : items_) {
      if (!isSeen(*item)) continue;
      if (item->inherits("QQuickText")) judgeText(*item);
      if (item->inherits("QQuickAbstractButton")) judgeButton(*item);
    }
    judgeOverlaps();
    judgeSight();
  }

 private:
  std::string where(const QQuickItem& item) const {
    return what_ + ": " + item.objectName().toStdString() + " \"" +
           item.property("text").toString().toStdString() + "\"";
  }

  void judgeText(const QQuickItem& text) {
    const QString words = text.property("text").toString();
    if (words.isEmpty()) return;
    EXPECT_FALSE(text.property("truncated").toBool()) << where(text);
    EXPECT_LE(text.property("contentWidth").toReal(), text.width() + 1) << where(text);
    // The picker's rows beyond its edge are cut off by it.
    if (isUnder(text, "pickerRow")) return;
    EXPECT_LE(text.property("contentHeight").toReal(), text.height() + 1) << where(text);
    const QRectF frame = frameOf(text);
    EXPECT_GE(frame.left(), -0.5) << where(text);
    EXPECT_LE(frame.right(), bench_.window().width() + 0.5) << where(text);
    const QFontMetricsF metrics(text.property("font").value<QFont>());
    const bool isFitted = text.property("fontSizeMode").toInt() != 0;
    for (const QString& word : words.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
      if (isFitted || word.at(0).unicode() >= 0x3000) continue;
      EXPECT_LE(metrics.horizontalAdvance(word), text.width() + 1) << where(text);
    }
  }

  // Within the window, or within what can be scrolled to.
  void judgeButton(const QQuickItem& button) {
    const QRectF frame = frameOf(button);
    EXPECT_GE(frame.width(), kLeastTarget) << where(button);
    EXPECT_GE(frame.height(), kLeastTarget) << where(button);
    EXPECT_GE(frame.left(), -0.5) << where(button);
    EXPECT_LE(frame.right(), bench_.window().width() + 0.5) << where(button);
    if (isUnder(button, "seatSheetScroller") || isUnder(button, "halvoraStatusView")) return;
    EXPECT_GE(frame.top(), -0.5) << where(button);
    EXPECT_LE(frame.bottom(), bench_.window().height() + 0.5) << where(button);
  }

  // Where the user answers is in sight as a whole, or can be scrolled there.
  void judgeSight() {
    const QQuickItem* scroller = bench_.item("seatSheetScroller");
    if (scroller == nullptr || !isSeen(*scroller)) return;
    for (const char* name : {"pickerBand", "standingDragArea", "seatFilter"}) {
      const QQuickItem* item = bench_.item(name);
      if (item == nullptr || !isSeen(*item)) continue;
      EXPECT_LE(item->height(), scroller->height() + 0.5) << where(*item);
    }
  }

  // What is read or pressed lies beside one another within one surface.
  void judgeOverlaps() {
    for (const char* surface :
         {"contentStackView", "seatHeading", "seatSheetTop", "seatButtons", "alertWords"}) {
      std::vector<const QQuickItem*> apart;
      for (const QQuickItem* item : items_) {
        const bool isButton = item->inherits("QQuickAbstractButton");
        const bool isText =
            item->inherits("QQuickText") && item->objectName() != QLatin1String("buttonTitle");
        if (!isSeen(*item) || !isUnder(*item, surface) || !(isButton || isText)) continue;
        if (isText && item->property("text").toString().isEmpty()) continue;
        for (const QQuickItem* other : apart) {
          const QRectF shared = frameOf(*item).intersected(frameOf(*other));
          EXPECT_FALSE(shared.width() > 1 && shared.height() > 1)
              << where(*item) << " lies on " << where(*other);
        }
        apart.push_back(item);
      }
    }
  }

  StatusBench& bench_;
  const std::string what_;
  std::vector<QQuickItem*> items_;
};

class Sheet {
 public:
  void add(StatusBench& bench, const Look& look, const char* screen) {
    Judge(bench, look, screen).judge();
    const QString folder = qEnvironmentVariable("HALVORA_SHEET_FOLDER");
    if (folder.isEmpty()) return;
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString name = QStringLiteral("%1/%2-%3x%4-%5-%6.png")
                             .arg(folder, QString::fromLatin1(screen))
                             .arg(look.size.width())
                             .arg(look.size.height())
                             .arg(look.scale)
                             .arg(QString::fromStdString(look.language));
    ASSERT_TRUE(bench.picture().save(name));
  }
};

struct SeatSizes : testing::TestWithParam<Look> {
  StatusBenchSetup setup() const {
    StatusBenchSetup setup;
    setup.window = GetParam().size;
    setup.textScale = GetParam().scale;
    setup.language = GetParam().language;
    setup.properties = "defaultVenueId: 7";
    return setup;
  }
  void add(StatusBench& bench, const char* screen) { Sheet().add(bench, GetParam(), screen); }
};

TEST_P(SeatSizes, ThePanelIsReadAndReached) {
  StatusBenchSetup asking = setup();
  asking.authorization = BluetoothAuthorization::notDetermined;
  StatusBench first(asking);
  add(first, "asking");

  StatusBenchSetup refused = setup();
  refused.properties += "; explainsStates: true";
  refused.prepare = [](VirtualPhone& phone) {
    phone.defaults.setFromOutside("bluetoothStatus",
                                  phone.bundles.kit.localizedString("bluetooth_notAuthorised"));
  };
  StatusBench second(refused);
  second.store({"Section 209", "Row 8", "Seat 10"}, {362, 404});
  second.tick();
  add(second, "panel");
}

TEST_P(SeatSizes, TheWizardIsReadAndReached) {
  StatusBench bench(setup());
  bench.turn([&] { bench.face().openSeatSelector(); });
  bench.waitUntil([&] { return bench.isShown("seatSheetContent"); });
  add(bench, "section");
  bench.turn([&] { bench.wizard().next(); });
  add(bench, "message");
  bench.turn([&] { bench.wizard().pick(1); });
  bench.turn([&] { bench.wizard().next(); });
  add(bench, "plan");
  bench.turn([&] {
    bench.wizard().back();
    bench.wizard().filter(QStringLiteral("209"));
    bench.wizard().enterFilter();
  });
  bench.turn([&] {
    bench.wizard().pick(1);
    bench.wizard().next();
    bench.wizard().pick(1);
  });
  add(bench, "seat");
}

TEST_P(SeatSizes, TheAlertIsReadAndReached) {
  StatusBenchSetup away = setup();
  away.isHeard = false;
  StatusBench bench(away);
  bench.turn([&] { bench.face().openSeatSelector(); });
  bench.waitUntil([&] { return bench.isShown("seatSheetContent"); });
  bench.turn([&] {
    bench.wizard().pick(1);
    bench.wizard().next();
  });
  ASSERT_TRUE(bench.wizard().alert().shown());
  add(bench, "alert");
}

INSTANTIATE_TEST_SUITE_P(, SeatSizes, testing::ValuesIn(allLooks()), [](const auto& test) {
  const Look& look = test.param;
  return "W" + std::to_string(look.size.width()) + "H" + std::to_string(look.size.height()) +
         "Text" + std::to_string(static_cast<int>(look.scale * 10)) + look.language;
});

// Colours

TEST(SeatContrast, TheDefaultColoursStandOut) {
  StatusBench bench;
  bench.open();
  const QColor ground = bench.wizard().background();
  const QColor alert(28, 28, 31);
  const auto ink = [](const LabelLook& look) { return look.colour(); };
  const QColor button = bench.wizard().nextButton().background();
  EXPECT_GE(contrast(bench.wizard().nextButton().titleColour(), button), 4.5);
  EXPECT_GE(contrast(button, ground), 3);
  EXPECT_GE(contrast(bench.wizard().closeButton().titleColour(), ground), 4.5);
  for (const LabelLook& look :
       {bench.wizard().titleLabel(), bench.wizard().stepLabel(),
        bench.wizard().selectionSummaryLabel(), bench.wizard().filterLabel()}) {
    EXPECT_GE(contrast(over(ink(look), ink(look).alphaF(), ground), ground), 4.5);
  }
  // A row of the picker, however far off.
  EXPECT_GE(contrast(over(Qt::white, 0.5, ground), ground), 4.5);
  const AlertLook shown(Alert{"a", "b", "c"}, Reading());
  EXPECT_GE(contrast(shown.button().titleColour(), alert), 4.5);
  EXPECT_GE(contrast(over(Qt::white, 0.85, alert), alert), 4.5);
  // The dot on the page of a host that is dark, as the panel's own letters need it.
  const QColor page(16, 16, 20);
  for (const Colour& dot : {kDotAmber, kDotGreen})
    EXPECT_GE(contrast(colourWithAlpha(dot), page), 3);
}

}  // namespace
}  // namespace halvora
