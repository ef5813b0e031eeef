// SPDX-License-Identifier: Apache-2.0
// The seat selector of a venue of 100,000 seats, all in one row: no picker can be longer.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <functional>
#include <string>

#include "bench/require.h"
#include "bench/window/bench_window.h"
#include "bench/window/measurement.h"
#include "faces/qt/impl/status_panel.h"

namespace halvora {

namespace {

constexpr int kSeats = 100'000;
constexpr double kFlick = -6000;
constexpr int kFlicks = 2;

void writeVenue(const QTemporaryDir& assets) {
  std::string text = R"({"sections": [{"name": "A", "rows": [{"name": "1", "seats": [)";
  for (int seat = 1; seat <= kSeats; ++seat) {
    text += R"({"name": ")" + std::to_string(seat) + R"(", "x": )" + std::to_string(seat % 1920) +
            R"(, "y": )" + std::to_string(seat / 1920) + (seat < kSeats ? "}," : "}");
  }
  text += "]}]}]}";
  const QString folder = assets.filePath(QStringLiteral("HVAssets/Maps/Venue-7"));
  QDir().mkpath(folder);
  QFile file(folder + QStringLiteral("/map.json"));
  require(file.open(QIODevice::WriteOnly) &&
              file.write(text.data(), static_cast<qint64>(text.size())) ==
                  static_cast<qint64>(text.size()),
          "the map cannot be written");
}

QString wizardWindow(bool reducedMotion) {
  return QStringLiteral(R"(
    import QtQuick
    import Halvora
    Window {
        width: 390; height: 844; color: "#101014"
        HalvoraStatusView {
            x: 20; y: 28; width: parent.width - 40; height: implicitHeight
            defaultVenueId: 7
            reducedMotion: %1
        }
    })")
      .arg(reducedMotion ? QStringLiteral("true") : QStringLiteral("false"));
}

class WizardBench {
 public:
  WizardBench(const QTemporaryDir& assets, bool reducedMotion)
      : bench_(assets.path().toStdString(), wizardWindow(reducedMotion)),
        panel_(bench_.find<StatusPanel>("statusPanel")) {
    bench_.waitUntil([this] { return panel_.seatSelectionButton().enabled(); });
    bench_.run(std::chrono::milliseconds(700));
    // Whatever the benchmark runs moves.
    bench_.frames().watchMotion([] { return true; });
  }

  SeatWizard& wizard() { return *panel_.wizard(); }
  QQuickItem& list() { return *bench_.item("pickerList"); }

  /// Milliseconds from the act to the first frame after it in which that is so.
  double untilShown(const std::function<void()>& act, const std::function<bool()>& isSo) {
    bench_.frames().clear();
    const Moment begin = std::chrono::steady_clock::now();
    act();
    do {
      bench_.window().update();
      bench_.frames().waitForNext();
    } while (!isSo());
    return millisecondsOf(bench_.frames().frames().back().swapped - begin);
  }
  double open() {
    return untilShown([this] { panel_.openSeatSelector(); },
                      [this] { return sheetAway() == 0 && list().isVisible(); });
  }
  void close() {
    wizard().close();
    bench_.waitUntil([this] { return !wizard().isLoaded(); });
  }
  /// To the row of all seats.
  double goToSeats() {
    wizard().pick(1);
    wizard().next();
    wizard().pick(1);
    const double time = untilShown([this] { wizard().next(); }, [] { return true; });
    require(wizard().rows()->rowCount() == kSeats + 1, "the picker lacks seats");
    return time;
  }
  /// The pauses between the frames of what that begins, until that is so.
  Pauses pauses(const std::function<void()>& act, const std::function<bool()>& isOver) {
    bench_.frames().clear();
    act();
    bench_.waitUntil(isOver);
    return pausesOf(bench_.frames().frames());
  }
  Pauses slide() {
    return pauses([this] { panel_.openSeatSelector(); },
                  [this] { return wizard().isPresented() && isAtRest(); });
  }
  Pauses scroll() {
    return pauses(
        [this] {
          QMetaObject::invokeMethod(&list(), "flick", Q_ARG(qreal, 0), Q_ARG(qreal, kFlick));
        },
        [this] { return !list().property("moving").toBool(); });
  }
  double type(const QString& text) {
    return untilShown([&] { wizard().filter(text); }, [] { return true; });
  }

 private:
  QObject& sheet() { return bench_.find<QObject>("seatSheet"); }
  double sheetAway() { return sheet().property("away").toDouble(); }
  bool isAtRest() { return sheet().property("opened").toBool(); }

  BenchWindow bench_;
  StatusPanel& panel_;
};

}  // namespace

QJsonObject measureWizard(const BenchOptions&) {
  const QTemporaryDir assets;
  writeVenue(assets);
  QJsonObject figures;
  {
    WizardBench bench(assets, true);
    figures.insert(QStringLiteral("open"), bench.open());
    bench.close();
    figures.insert(QStringLiteral("openAgain"), bench.open());
    figures.insert(QStringLiteral("toSeats"), bench.goToSeats());
    Pauses pauses;
    for (int round = 0; round < kFlicks; ++round) pauses.add(bench.scroll());
    figures.insert(QStringLiteral("scroll"), pauses.figures());
    figures.insert(QStringLiteral("firstLetter"), bench.type(QStringLiteral("5")));
    figures.insert(QStringLiteral("secondLetter"), bench.type(QStringLiteral("54")));
  }
  WizardBench bench(assets, false);
  figures.insert(QStringLiteral("slide"), bench.slide().figures());
  return figures;
}

}  // namespace halvora
