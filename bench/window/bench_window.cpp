// SPDX-License-Identifier: Apache-2.0
#include "bench/window/bench_window.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QQmlComponent>
#include <QScreen>
#include <QUrl>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "bench/require.h"
#include "faces/qt/halvora_host.h"

namespace halvora {

namespace {

constexpr std::uint16_t kApplication = 4242;
constexpr std::uint16_t kVenue = 7;
constexpr std::chrono::milliseconds kRepeatPause(100);
constexpr std::chrono::milliseconds kForeignPause(1);

// As other makers' beacons are: as long as ours, and of another company.
constexpr std::array<std::uint8_t, 26> kForeign = {0x4C, 0x00, 0x02, 0x15, 0xAA, 0xBB, 0xCC};

QQuickItem* findBelow(QQuickItem* item, const QString& name) {
  if (item->objectName() == name) return item;
  for (QQuickItem* child : item->childItems()) {
    if (QQuickItem* found = findBelow(child, name)) return found;
  }
  return nullptr;
}

}  // namespace

BenchWindow::BenchWindow(const std::string& assets, const QString& text)
    : phone_({.assets = assets,
              .documents = documents_.path().toStdString(),
              .identifier = "com.example.host"},
             {.json = json_, .files = files_, .images = images_, .videoAssets = videos_}) {
  Platform platform = phone_.platform();
  platform.runLoop = loop_;
  platform.bluetooth = radio_;
  radio_.log.isKept = false;
  engine_.emplace(platform, phone_.engineOptions());
  engine_->viewDidLoad();
  qml_.addImportPath(QStringLiteral("qrc:/qt/qml"));
  HalvoraHost::install(qml_, platform, *engine_);
  QQmlComponent component(&qml_);
  component.setData(text.toUtf8(), QUrl());
  root_.reset(component.create());
  window_ = qobject_cast<QQuickWindow*>(root_.get());
  if (window_ == nullptr) {
    std::fprintf(stderr, "%s\n", qPrintable(component.errorString()));
    std::exit(1);
  }
  frames_.emplace(*window_);
  frames_->watchMotion([this] { return engine_->light().isAnimating(); });
  window_->show();
  window_->requestActivate();
  frames_->waitForNext();
}

BenchWindow::~BenchWindow() = default;

QQuickItem* BenchWindow::item(const char* name) {
  return findBelow(window_->contentItem(), QString::fromLatin1(name));
}

QColor BenchWindow::shown() {
  const QPixmap pixel = window_->screen()->grabWindow(window_->winId(), window_->width() / 2,
                                                      window_->height() / 2, 1, 1);
  return pixel.toImage().pixelColor(0, 0);
}

bool BenchWindow::advertise(Broadcast look) {
  look.sequence = ++sequence_;
  last_ = encodeBroadcast(look);
  return radio_.advertise(last_);
}

void BenchWindow::repeatLook() {
  QObject::connect(&repeatTimer_, &QTimer::timeout, window_, [this] {
    ++repeats_;
    radio_.advertise(last_);
  });
  repeatTimer_.setTimerType(Qt::PreciseTimer);
  repeatTimer_.start(kRepeatPause);
}

// As many as are due: a timer that comes late must not thin them out.
void BenchWindow::advertiseForeign(int aSecond) {
  foreignBegan_ = std::chrono::steady_clock::now();
  QObject::connect(&foreignTimer_, &QTimer::timeout, window_, [this, aSecond] {
    const double passed = millisecondsOf(std::chrono::steady_clock::now() - foreignBegan_);
    const auto due = static_cast<std::uint64_t>(passed * aSecond / 1000);
    for (; foreign_ < due; ++foreign_) radio_.advertise(kForeign);
  });
  foreignTimer_.setTimerType(Qt::PreciseTimer);
  foreignTimer_.start(kForeignPause);
}

void BenchWindow::waitUntil(const std::function<bool()>& isSo) {
  while (!isSo()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void BenchWindow::run(std::chrono::milliseconds time) {
  QEventLoop loop;
  QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
}

void BenchWindow::beginShow() {
  engine_->start();
  waitUntil([this] { return radio_.isScanning(); });
  require(advertise(steadyLook(0)), "the kit does not listen");
  repeatLook();
  waitUntil([this] { return !engine_->light().isAnimating(); });
  run(std::chrono::milliseconds(100));
}

QString lightWindow() {
  return QStringLiteral(R"(
    import QtQuick
    import Halvora
    Window {
        width: 390; height: 844; color: "black"
        HalvoraView { objectName: "light"; anchors.fill: parent }
    })");
}

QString hostWindow() {
  return QStringLiteral(R"(
    import QtQuick
    import Halvora
    Window {
        width: 390; height: 844; color: "black"
        HalvoraView { objectName: "light"; anchors.fill: parent }
        HalvoraStatusView {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 16 }
            defaultVenueId: 7
        }
    })");
}

Broadcast steadyLook(std::uint64_t number) {
  Broadcast look;
  look.applicationId = kApplication;
  look.venueId = kVenue;
  look.transmitter = 1;
  look.master = 255;
  look.mode = 1;
  look.red = static_cast<std::uint8_t>(number * 89 % 251);
  look.green = static_cast<std::uint8_t>(number * 53 % 241);
  look.blue = static_cast<std::uint8_t>(40 + number * 31 % 211);
  return look;
}

}  // namespace halvora
