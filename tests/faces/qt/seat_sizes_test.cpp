// SPDX-License-Identifier: Apache-2.0
// Panel and wizard on every size of screen, at every size of text, in every language and both
// directions, each judged by figures. Two sheets of the same screens are made to be looked at: with
// HALVORA_SHEET_FOLDER in the environment, `ScreenSheet.IsWritten` writes every screen into that
// folder, and with HALVORA_SHEET, a picture of them all, each once, in turn in another language.
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QQuickItem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "halvora/panel.h"
#include "tests/faces/qt/contrast.h"
#include "tests/faces/qt/screen_judge.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

// The first is what a page of 1280 has at four times its size.
constexpr QSize kSizes[] = {{320, 568}, {360, 640},  {390, 844},
                            {640, 360}, {1280, 800}, {1920, 1080}};
constexpr double kScales[] = {1, 1.5, 2, 3};
constexpr const char* kLanguages[] = {"en", "de", "fr", "es", "ja", "ar"};

struct Look {
  QSize size;
  double scale;
  std::string language;
  bool isSpaced = false;
};

std::string nameOf(const Look& look) {
  return "W" + std::to_string(look.size.width()) + "H" + std::to_string(look.size.height()) +
         "Text" + std::to_string(static_cast<int>(look.scale * 10)) + look.language;
}

std::vector<Look> allLooks() {
  std::vector<Look> looks;
  for (const QSize& size : kSizes) {
    for (const double scale : kScales) {
      for (const char* language : kLanguages) looks.push_back({size, scale, language});
    }
  }
  return looks;
}

StatusBenchSetup setupOf(const Look& look) {
  StatusBenchSetup setup;
  setup.window = look.size;
  setup.textScale = look.scale;
  setup.language = look.language;
  setup.isSpaced = look.isSpaced;
  setup.properties = "defaultVenueId: 7";
  return setup;
}

/// Is handed each screen, by its name.
using Visit = std::function<void(StatusBench& bench, const char* screen)>;

void visitPanel(const Look& look, const Visit& visit) {
  StatusBenchSetup asking = setupOf(look);
  asking.authorization = BluetoothAuthorization::notDetermined;
  StatusBench first(asking);
  visit(first, "asking");

  StatusBenchSetup refused = setupOf(look);
  refused.properties += "; explainsStates: true";
  refused.prepare = [](VirtualPhone& phone) {
    phone.defaults.setFromOutside("bluetoothStatus",
                                  phone.bundles.kit.localizedString("bluetooth_notAuthorised"));
  };
  StatusBench second(refused);
  second.store({"Section 209", "Row 8", "Seat 10"}, {362, 404});
  second.tick();
  visit(second, "panel");

  StatusBenchSetup later = setupOf(look);
  later.properties += "; explainsStates: true; asksOnAnotherDay: true";
  StatusBench third(later);
  third.store({"Section 209", "Row 8", "Seat 10"}, {362, 404});
  third.tick();
  visit(third, "question");

  later.map = "{}";
  StatusBench fourth(later);
  fourth.turn([&] { fourth.face().openSeatSelector(); });
  fourth.tick();
  visit(fourth, "lost");
}

void visitWizard(const Look& look, const Visit& visit) {
  StatusBench bench(setupOf(look));
  bench.turn([&] { bench.face().openSeatSelector(); });
  bench.waitUntil([&] { return bench.isShown("seatSheetContent"); });
  visit(bench, "section");
  bench.turn([&] { bench.wizard().next(); });
  visit(bench, "message");
  bench.turn([&] { bench.wizard().pick(1); });
  bench.turn([&] { bench.wizard().next(); });
  visit(bench, "plan");
  bench.turn([&] { bench.wizard().back(); });
  bench.item("seatFilter")->setProperty("text", QStringLiteral("209"));
  bench.settle();
  visit(bench, "filter");
  bench.turn([&] { bench.wizard().enterFilter(); });
  bench.turn([&] {
    bench.wizard().pick(1);
    bench.wizard().next();
    bench.wizard().pick(1);
  });
  visit(bench, "seat");
}

void visitAlert(const Look& look, const Visit& visit) {
  StatusBenchSetup away = setupOf(look);
  away.isHeard = false;
  StatusBench bench(away);
  bench.turn([&] { bench.face().openSeatSelector(); });
  bench.waitUntil([&] { return bench.isShown("seatSheetContent"); });
  bench.turn([&] {
    bench.wizard().pick(1);
    bench.wizard().next();
  });
  ASSERT_TRUE(bench.wizard().alert().shown());
  visit(bench, "alert");
}

struct SeatSizes : testing::TestWithParam<Look> {
  static void judge(StatusBench& bench, const char* screen) {
    ScreenJudge(bench, std::string(screen) + " " + nameOf(GetParam())).judge();
  }
};

TEST_P(SeatSizes, ThePanelIsReadAndReached) { visitPanel(GetParam(), judge); }
TEST_P(SeatSizes, TheWizardIsReadAndReached) { visitWizard(GetParam(), judge); }
TEST_P(SeatSizes, TheAlertIsReadAndReached) { visitAlert(GetParam(), judge); }

INSTANTIATE_TEST_SUITE_P(, SeatSizes, testing::ValuesIn(allLooks()),
                         [](const auto& test) { return nameOf(test.param); });

// Letters 0.12 of their size further apart, words 0.16, lines one and a half times as high.
struct SeatSpacing : testing::TestWithParam<const char*> {
  static void spread(QQuickItem& item) {
    if (item.inherits("QQuickText")) {
      item.setProperty("lineHeightMode", 0);
      item.setProperty("lineHeight", 1.5);
    }
    for (QQuickItem* child : item.childItems()) spread(*child);
  }
  static void judge(StatusBench& bench, const char* screen) {
    spread(*bench.window().contentItem());
    ScreenJudge(bench, std::string(screen) + " spaced in " + GetParam()).judge();
  }
  static Look look() { return {{360, 640}, 1, GetParam(), true}; }
};

TEST_P(SeatSpacing, ThePanelTakesIt) { visitPanel(look(), judge); }
TEST_P(SeatSpacing, TheWizardTakesIt) { visitWizard(look(), judge); }
TEST_P(SeatSpacing, TheAlertTakesIt) { visitAlert(look(), judge); }

INSTANTIATE_TEST_SUITE_P(, SeatSpacing, testing::ValuesIn(kLanguages),
                         [](const auto& test) { return test.param; });

// To be looked at

constexpr QSize kCell(84, 128);
constexpr int kGap = 6;

class ScreenSheet : public testing::Test {
 protected:
  static QImage blank() {
    const auto columns = static_cast<int>(std::size(kSizes) * std::size(kScales));
    QImage sheet(columns * (kCell.width() + kGap) + kGap, 10 * (kCell.height() + kGap) + kGap,
                 QImage::Format_RGB32);
    sheet.fill(QColor(96, 96, 104));
    return sheet;
  }
  void put(const QImage& screen, int column, int row) {
    const QImage small = screen.scaled(kCell, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter(&sheet).drawImage(kGap + column * (kCell.width() + kGap),
                               kGap + row * (kCell.height() + kGap), small);
  }
  void keep(const QImage& screen, const Look& look, const char* name) const {
    if (folder.isEmpty()) return;
    const QString own =
        QStringLiteral("%1/%2-%3.png")
            .arg(folder, QString::fromLatin1(name), QString::fromStdString(nameOf(look)));
    ASSERT_TRUE(screen.save(own));
  }
  void draw(const Look& look, int column, int language) {
    int row = 0;
    const Visit visit = [&](StatusBench& bench, const char* name) {
      const QImage screen = bench.picture();
      keep(screen, look, name);
      if ((column + row) % static_cast<int>(std::size(kLanguages)) == language) {
        put(screen, column, row);
      }
      ++row;
    };
    visitPanel(look, visit);
    visitWizard(look, visit);
    visitAlert(look, visit);
  }

  const QString folder = qEnvironmentVariable("HALVORA_SHEET_FOLDER");
  const QString file = qEnvironmentVariable("HALVORA_SHEET");
  QImage sheet = blank();
};

TEST_F(ScreenSheet, IsWritten) {
  if (folder.isEmpty() && file.isEmpty()) GTEST_SKIP() << "nobody has asked for one";
  ASSERT_TRUE(folder.isEmpty() || QDir().mkpath(folder));
  const std::vector<Look> looks = allLooks();
  constexpr std::size_t kTongues = std::size(kLanguages);
  for (std::size_t at = 0; at < looks.size(); ++at) {
    draw(looks[at], static_cast<int>(at / kTongues), static_cast<int>(at % kTongues));
  }
  ASSERT_TRUE(file.isEmpty() || sheet.save(file));
}

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
  // The line around the filter.
  const QColor field = SeatColours().field();
  EXPECT_GE(contrast(over(field, field.alphaF(), ground), ground), kControlContrast);
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
