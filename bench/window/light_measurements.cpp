// SPDX-License-Identifier: Apache-2.0
// The light in a host's window: how soon a look is seen, how evenly it moves, what a strobe and a
// steady colour cost.
#include <QColor>
#include <QQmlComponent>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <chrono>
#include <cstdlib>
#include <vector>

#include "bench/require.h"
#include "bench/window/bench_window.h"
#include "bench/window/measurement.h"

namespace halvora {

namespace {

constexpr int kForeignASecond = 1000;
constexpr std::chrono::milliseconds kMotionTime(1500);
constexpr std::chrono::milliseconds kStrobeStep(10);
constexpr int kMostRoundsOfRest = 5;

bool isNear(const QColor& a, const QColor& b) {
  return std::abs(a.red() - b.red()) <= 1 && std::abs(a.green() - b.green()) <= 1 &&
         std::abs(a.blue() - b.blue()) <= 1;
}

QColor colourOfLook(const Broadcast& look) { return {look.red, look.green, look.blue}; }

struct Latencies {
  std::vector<double> whole;
  std::vector<double> ours;
  int inNextFrame = 0;
  int shown = 0;
};

// One look, from its bytes to the window system.
void showOneLook(BenchWindow& bench, std::uint64_t number, Latencies& latencies) {
  const Broadcast look = steadyLook(number);
  bench.frames().clear();
  bench.frames().setLook(number);
  const Moment begin = std::chrono::steady_clock::now();
  require(bench.advertise(look), "the kit does not listen");
  const Moment heard = std::chrono::steady_clock::now();
  const auto showing = [&] {
    const std::vector<Frame> frames = bench.frames().frames();
    return std::find_if(frames.begin(), frames.end(),
                        [&](const Frame& frame) { return frame.look == number; }) -
           frames.begin();
  };
  bench.waitUntil([&] { return static_cast<std::size_t>(showing()) < bench.frames().count(); });
  const Frame frame = bench.frames().frames()[static_cast<std::size_t>(showing())];
  latencies.whole.push_back(millisecondsOf(frame.swapped - begin));
  latencies.ours.push_back(millisecondsOf(heard - begin) +
                           millisecondsOf(frame.synced - frame.begun));
  ++latencies.shown;
  if (isNear(bench.shown(), colourOfLook(look))) ++latencies.inNextFrame;
}

struct Effort {
  double processorSeconds = 0;
  double seconds = 0;
  std::size_t frames = 0;

  QJsonObject figures() const {
    return {{QStringLiteral("processorShare"), processorSeconds / seconds},
            {QStringLiteral("framesASecond"), static_cast<double>(frames) / seconds}};
  }
};

Effort effortOf(FrameLog& frames, const std::function<void()>& run) {
  frames.clear();
  const double processorBefore = processorTime();
  const Moment begin = std::chrono::steady_clock::now();
  run();
  return {processorTime() - processorBefore,
          millisecondsOf(std::chrono::steady_clock::now() - begin) / 1000, frames.count()};
}

// Moves by itself: palettes that fade into each other, pictures that pulse and drift.
std::vector<Broadcast> movingLooks() {
  const auto look = [](std::uint8_t mode, std::uint8_t speed, std::uint8_t palette,
                       std::uint8_t gobo) {
    Broadcast made = steadyLook(1);
    made.mode = mode;
    made.speed = speed;
    made.paletteId = palette;
    made.gobo = gobo;
    return made;
  };
  return {look(17, 125, 46, 0), look(18, 200, 21, 0), look(11, 245, 35, 3), look(12, 235, 33, 1)};
}

}  // namespace

QJsonObject measureLatency(const BenchOptions& options) {
  BenchWindow bench(options.assets, lightWindow());
  bench.beginShow();
  bench.advertiseForeign(kForeignASecond);
  const Moment begin = std::chrono::steady_clock::now();
  const std::uint64_t foreignBefore = bench.foreign();
  Latencies latencies;
  std::uint64_t number = 1;
  for (; std::chrono::steady_clock::now() - begin < options.time; ++number) {
    // Not in step with the foreign ones or with frames.
    bench.run(std::chrono::milliseconds(15 + number * 7 % 13));
    showOneLook(bench, number, latencies);
  }
  const double seconds = millisecondsOf(std::chrono::steady_clock::now() - begin) / 1000;
  const auto foreign = static_cast<double>(bench.foreign() - foreignBefore);
  return {{QStringLiteral("looks"), latencies.shown},
          {QStringLiteral("inNextFrame"), latencies.inNextFrame},
          {QStringLiteral("median"), quantile(latencies.whole, 0.5)},
          {QStringLiteral("p99"), quantile(latencies.whole, 0.99)},
          {QStringLiteral("oursMedian"), quantile(latencies.ours, 0.5)},
          {QStringLiteral("oursP99"), quantile(latencies.ours, 0.99)},
          {QStringLiteral("foreignASecond"), foreign / seconds}};
}

QJsonObject measureMotion(const BenchOptions& options) {
  BenchWindow bench(options.assets, lightWindow());
  bench.beginShow();
  const std::vector<Broadcast> looks = movingLooks();
  const Effort effort = effortOf(bench.frames(), [&] {
    for (const Broadcast& look : looks) {
      require(bench.advertise(look), "the kit does not listen");
      bench.run(kMotionTime);
    }
  });
  QJsonObject figures = effort.figures();
  figures.insert(QStringLiteral("pauses"), pausesOf(bench.frames().frames()).figures());
  return figures;
}

QJsonObject measureStrobe(const BenchOptions& options) {
  BenchWindow bench(options.assets, lightWindow());
  bench.beginShow();
  Broadcast strobe = steadyLook(1);
  strobe.mode = 5;
  strobe.speed = 255;
  require(bench.advertise(strobe), "the kit does not listen");
  bench.run(std::chrono::milliseconds(500));
  return effortOf(bench.frames(), [&] { bench.run(options.time); }).figures();
}

QJsonObject measurePlainStrobe(const BenchOptions& options) {
  BenchWindow bench(options.assets, QStringLiteral(R"(
    import QtQuick
    Window {
        width: 390; height: 844; color: "black"
        Rectangle { objectName: "plain"; anchors.fill: parent; color: "black" }
    })"));
  QQuickItem& plain = *bench.item("plain");
  const QColor lit = colourOfLook(steadyLook(1));
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &plain, [&plain, lit] {
    const bool isLit = plain.property("color").value<QColor>() == lit;
    plain.setProperty("color", isLit ? QColor(Qt::black) : lit);
  });
  timer.setTimerType(Qt::PreciseTimer);
  timer.start(kStrobeStep);
  bench.run(std::chrono::milliseconds(500));
  return effortOf(bench.frames(), [&] { bench.run(options.time); }).figures();
}

QJsonObject measureEmpty(const BenchOptions& options) {
  BenchWindow bench(options.assets, QStringLiteral(R"(
    import QtQuick
    Window { width: 390; height: 844; color: "black" }
  )"));
  bench.run(std::chrono::milliseconds(500));
  return effortOf(bench.frames(), [&] { bench.run(options.time); }).figures();
}

// The packets go on, as the venue would be left without them; each wakes the machine once.
QJsonObject measureSteady(const BenchOptions& options) {
  BenchWindow bench(options.assets, lightWindow());
  bench.beginShow();
  // A busy machine shows the last frames of the beginning late.
  for (int round = 0; round < kMostRoundsOfRest; ++round) {
    bench.frames().clear();
    bench.run(std::chrono::milliseconds(1000));
    if (bench.frames().count() == 0) break;
  }
  const std::uint64_t turnsBefore = bench.turns();
  const std::uint64_t repeatsBefore = bench.repeats();
  const long wakeUpsBefore = wakeUps();
  const Effort effort = effortOf(bench.frames(), [&] { bench.run(options.time); });
  QJsonObject figures = effort.figures();
  figures.insert(QStringLiteral("seconds"), effort.seconds);
  figures.insert(QStringLiteral("frames"), static_cast<int>(effort.frames));
  figures.insert(QStringLiteral("turns"), static_cast<int>(bench.turns() - turnsBefore));
  figures.insert(QStringLiteral("packets"), static_cast<int>(bench.repeats() - repeatsBefore));
  figures.insert(QStringLiteral("wakeUps"), static_cast<int>(wakeUps() - wakeUpsBefore));
  return figures;
}

// A host as the example has it, from when its process was asked for.
QJsonObject measureStart(const BenchOptions& options) {
  BenchWindow bench(options.assets, hostWindow());
  const Frame first = bench.frames().frames().front();
  const std::chrono::nanoseconds asked(options.spawned);
  return {{QStringLiteral("firstFrame"), millisecondsOf(first.swapped.time_since_epoch() - asked)},
          {QStringLiteral("processor"), 1000 * processorTime()}};
}

QJsonObject measureMemory(const BenchOptions& options) {
  BenchWindow bench(options.assets, hostWindow());
  QJsonObject figures{{QStringLiteral("firstFrame"), residentMemory()}};
  bench.beginShow();
  for (const Broadcast& look : movingLooks()) {
    require(bench.advertise(look), "the kit does not listen");
    bench.run(std::chrono::milliseconds(250));
  }
  figures.insert(QStringLiteral("largest"), largestResidentMemory());
  return figures;
}

}  // namespace halvora
