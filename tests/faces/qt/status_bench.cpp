// SPDX-License-Identifier: Apache-2.0
#include "tests/faces/qt/status_bench.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QFont>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QQmlComponent>
#include <QUrl>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
#include "faces/qt/halvora_host.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/support/source_tree.h"

namespace halvora {

namespace {

constexpr const char* kVenue = "HVAssets/Maps/Venue-7/";
constexpr std::size_t kLargestMap = std::size_t{64} << 20;
constexpr std::uint64_t kSlowly = 200;
/// Pixels: 0.16 of a usual text's size.
constexpr double kSpacedWords = 3;

std::string assets(const char* folder) { return sourceTree() + "/assets/" + folder; }

// A phone's home screen of a host: dark, with the panel at its top.
QString windowText(const StatusBenchSetup& setup) {
  return QStringLiteral(R"(
    import QtQuick
    import QtQuick.Window
    import Halvora
    Window {
      width: %1; height: %2; visible: true; color: "#101014"
      HalvoraStatusView {
        x: 20; y: 28; width: %5; height: implicitHeight
        textScale: %3
        %6
        %4
      }
    })")
      .arg(setup.window.width())
      .arg(setup.window.height())
      .arg(setup.textScale)
      .arg(QString::fromStdString(setup.properties), QString::fromStdString(setup.width),
           setup.isStill ? QStringLiteral("reducedMotion: true") : QString());
}

QQuickItem* findBelow(QQuickItem* item, const QString& name) {
  if (item->objectName() == name) return item;
  for (QQuickItem* child : item->childItems()) {
    if (QQuickItem* found = findBelow(child, name)) return found;
  }
  return nullptr;
}

// Ends the section before it, and the map.
std::string sectionOfOneSeat(const std::string& name) {
  return R"(]}, {"name": ")" + name +
         R"(", "rows": [{"name": "1", "seats": [{"name": "1", "x": 1, "y": 1}]}]}]})";
}

}  // namespace

VirtualPhoneSetup StatusBench::phoneSetup(const StatusBenchSetup& setup) {
  // One font for all texts and on all machines.
  QFont font(QStringLiteral("DejaVu Sans"));
  if (setup.isSpaced) {
    // Its letters are half as wide as they are high, so that is 0.12 of their size.
    font.setLetterSpacing(QFont::PercentageSpacing, 124);
    font.setWordSpacing(kSpacedWords);
  }
  QGuiApplication::setFont(font);
  VirtualPhoneSetup made;
  made.authorization = setup.authorization;
  made.bounds = {static_cast<double>(setup.window.width()),
                 static_cast<double>(setup.window.height())};
  made.kitBundle = &kit;
  made.mainBundle = &demo;
  made.images = &decoder;
  made.documents = "/documents";
  if (setup.map) {
    host = std::make_unique<VirtualBundle>("com.example.host");
    host->folder = "/host";
    for (const char* key : {"inside_venue", "outside_venue"}) {
      host->strings[key] = demo.localizedString(key);
    }
    made.mainBundle = host.get();
  }
  return made;
}

StatusBench::StatusBench(const StatusBenchSetup& setup)
    : kit(disk, assets("kit"), "com.halvora.sdk", {setup.language}, json),
      demo(disk, assets("demo"), "com.example.host", {setup.language}, json),
      phone(json, phoneSetup(setup)),
      controller(phone.platform()) {
  if (host) host->files = &phone.virtualFiles;
  const std::string folder = phone.bundles.main.location(kVenue);
  phone.virtualFiles.put(
      folder + "map.json",
      setup.map.value_or(readFile(folder + "map.json", kLargestMap).value_or("")));
  if (setup.isHeard) phone.defaults.setFromOutside("venueID", std::int64_t{7});
  if (setup.prepare) setup.prepare(phone);
  controller.viewDidLoad();
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  HalvoraHost::install(qml, phone.platform(), controller, setup.wishes);

  // As with a screen reader, which makes controls say what they are.
  QAccessible::setActive(true);
  QQmlComponent component(&qml);
  component.setData(windowText(setup).toUtf8(), QUrl());
  root_.reset(component.create());
  EXPECT_TRUE(root_) << component.errorString().toStdString();
  window_ = qobject_cast<QQuickWindow*>(root_.get());
  window_->requestActivate();
  waitUntil([this] { return window_->isActive() && window_->isExposed(); });
  if (setup.isLoaded) turn([] {});
  tick();
}

StatusBench::~StatusBench() = default;

void StatusBench::destroyWindow() {
  root_.reset();
  window_ = nullptr;
}

QQuickItem* StatusBench::item(const char* name) {
  return findBelow(window_->contentItem(), QString::fromLatin1(name));
}

bool StatusBench::isShown(const char* name) {
  const QQuickItem* found = item(name);
  return found != nullptr && found->isVisible() && found->opacity() > 0 && found->height() > 0;
}

QString StatusBench::text(const char* name) {
  const QQuickItem* found = item(name);
  return found != nullptr ? found->property("text").toString() : QString();
}

QRectF StatusBench::frame(const char* name) {
  const QQuickItem* found = item(name);
  if (found == nullptr) return {};
  return found->mapRectToScene(QRectF(0, 0, found->width(), found->height()));
}

QString StatusBench::focused() {
  const QQuickItem* focused = window_->activeFocusItem();
  return focused != nullptr ? focused->objectName() : QString();
}

QString StatusBench::spokenName(const char* name) {
  QQuickItem* found = item(name);
  QAccessibleInterface* spoken =
      found != nullptr ? QAccessible::queryAccessibleInterface(found) : nullptr;
  return spoken != nullptr ? spoken->text(QAccessible::Name) : QString();
}

void StatusBench::settle() {
  for (int round = 0; round < 10; ++round) {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
  }
}

void StatusBench::waitUntil(const std::function<bool()>& isSo) { letQtWorkUntil(isSo); }

void StatusBench::tick() {
  phone.loop.runFor(PanelController::kStatusInterval);
  settle();
}

void StatusBench::turn(const std::function<void()>& act) {
  phone.loop.soon([&act] { act(); });
  phone.loop.runFor(Duration::zero());
  settle();
}

void StatusBench::send(QEvent::Type type, QPointF place, Qt::MouseButtons buttons) {
  const bool isMove = type == QEvent::MouseMove;
  QMouseEvent event(type, place, window_->mapToGlobal(place),
                    isMove ? Qt::NoButton : Qt::LeftButton, buttons, Qt::NoModifier);
  event.setTimestamp(time_);
  QCoreApplication::sendEvent(window_, &event);
  settle();
}

void StatusBench::press(QPointF place) {
  time_ += kSlowly * 10;
  send(QEvent::MouseButtonPress, place, Qt::LeftButton);
}

void StatusBench::moveTo(QPointF place) {
  time_ += kSlowly;
  send(QEvent::MouseMove, place, Qt::LeftButton);
}

void StatusBench::release(QPointF place) {
  time_ += kSlowly;
  send(QEvent::MouseButtonRelease, place, Qt::NoButton);
}

void StatusBench::clickAt(QPointF place) {
  press(place);
  release(place);
}

void StatusBench::click(const char* name) {
  ASSERT_TRUE(isShown(name)) << name;
  clickAt(frame(name).center());
  phone.loop.runFor(Duration::zero());
  settle();
}

void StatusBench::drag(QPointF from, QPointF to) {
  constexpr int kSteps = 10;
  press(from);
  for (int step = 1; step <= kSteps; ++step) moveTo(from + (to - from) * step / kSteps);
  moveTo(to);
  release(to);
}

void StatusBench::wheel(QPointF place, int degrees) {
  time_ += kSlowly;
  QWheelEvent event(place, window_->mapToGlobal(place), {}, {0, degrees * 8}, Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  event.setTimestamp(time_);
  QCoreApplication::sendEvent(window_, &event);
  settle();
}

void StatusBench::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, modifiers);
    QCoreApplication::sendEvent(window_, &event);
  }
  phone.loop.runFor(Duration::zero());
  settle();
}

// As most systems send it: each repeat is a release and a press that say so.
void StatusBench::hold(Qt::Key key) {
  constexpr int kRepeats = 10;
  const auto send = [&](QEvent::Type type, bool isRepeat) {
    QKeyEvent event(type, key, Qt::NoModifier, {}, isRepeat);
    QCoreApplication::sendEvent(window_, &event);
    phone.loop.runFor(Duration::zero());
    settle();
  };
  send(QEvent::KeyPress, false);
  for (int repeat = 0; repeat < kRepeats; ++repeat) {
    send(QEvent::KeyRelease, true);
    send(QEvent::KeyPress, true);
  }
  send(QEvent::KeyRelease, false);
}

void StatusBench::type(const QString& text) {
  for (const QChar letter : text) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, letter.toUpper().unicode(), Qt::NoModifier, QString(letter));
      QCoreApplication::sendEvent(window_, &event);
    }
    settle();
  }
}

void StatusBench::open() {
  click("seatSelectionButton");
  waitUntil([this] { return isShown("seatSheetContent"); });
  settle();
}

QString StatusBench::pickedTitle() {
  const int index = item("pickerView")->property("currentIndex").toInt();
  return wizard().rows()->titleOf(wizard().rows()->rowAt(index));
}

void StatusBench::store(const SeatNames& names, SeatPoint seat) {
  SeatStorage(phone.defaults).persistSeatSelectionForVenueId(7, names, seat);
}

std::optional<SeatPoint> StatusBench::stored() {
  return SeatStorage(phone.defaults).hasValidSeatSelectionForVenueId(7);
}

QImage StatusBench::picture() {
  window_->grabWindow();
  settle();
  return window_->grabWindow().convertToFormat(QImage::Format_RGB32);
}

std::string mapOfSeats(int rows, int seats) {
  std::string text = R"({"sections": [{"name": "A", "rows": [)";
  for (int row = 1; row <= rows; ++row) {
    text += (row > 1 ? "," : "") + (R"({"name": "Row )" + std::to_string(row) + R"(", "seats": [)");
    for (int seat = 1; seat <= seats; ++seat) {
      text += (seat > 1 ? "," : "") + (R"({"name": ")" + std::to_string(seat) + R"(", "x": )") +
              std::to_string(seat) + R"(, "y": )" + std::to_string(row) + "}";
    }
    text += "]}";
  }
  return text + sectionOfOneSeat("B");
}

std::string mapWithStanding() {
  std::string text = R"({"sections": [{"name": "Standing Floor", "rows": [)";
  for (int row = 0; row < 5; ++row) {
    text += (row > 0 ? "," : "") + (R"({"name": "R)" + std::to_string(row) + R"(", "seats": [)");
    for (int seat = 0; seat < 5; ++seat) {
      text += (seat > 0 ? "," : "") + (R"({"name": "P)" + std::to_string(seat) + R"(", "x": )") +
              std::to_string(10 * seat) + R"(, "y": )" + std::to_string(10 * row) + "}";
    }
    text += "]}";
  }
  return text + sectionOfOneSeat("A");
}

}  // namespace halvora
