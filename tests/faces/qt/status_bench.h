// SPDX-License-Identifier: Apache-2.0
// The QML status panel in a window of a phone in virtual time, with the kit's own texts and either
// the demo's venue or one that a test lays out, and a user with a mouse and a keyboard. A test owns
// one.
#pragma once

#include <QImage>
#include <QPointF>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSize>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adapters/image/picture_decoder.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_phone.h"
#include "faces/qt/impl/status_panel.h"
#include "faces/qt/system_wishes.h"
#include "halvora/engine.h"
#include "seats/panel_controller.h"
#include "seats/seat_storage.h"

namespace halvora {

struct StatusBenchSetup {
  std::string language = "en";
  QSize window{390, 844};
  double textScale = 1;
  BluetoothAuthorization authorization = BluetoothAuthorization::allowedAlways;
  /// The map of venue 7; none: the demo's own, with its plan of the standing area.
  std::optional<std::string> map = {};
  /// Whether the phone has heard venue 7.
  bool isHeard = true;
  /// Of the panel, as a QML expression.
  std::string width = "parent.width - 40";
  /// More properties of the QML item.
  std::string properties = {};
  bool isLoaded = true;
  /// Nothing slides; else that is as the system has it.
  bool isStill = true;
  /// Letters, words and lines are as far apart as a user who needs it may set them.
  bool isSpaced = false;
  /// What the user has asked the system for; outlives the bench. Null for nothing.
  SystemWishes* wishes = nullptr;
  std::function<void(VirtualPhone&)> prepare = {};
};

class StatusBench {
 public:
  explicit StatusBench(const StatusBenchSetup& setup = {});
  ~StatusBench();

  QQuickWindow& window() { return *window_; }
  QQuickItem& view() { return *item("halvoraStatusView"); }
  StatusPanel& face() { return *root_->findChild<StatusPanel*>(QStringLiteral("statusPanel")); }
  PanelController& panel() { return static_cast<PanelController&>(*face().controller()); }
  SeatWizard& wizard() { return *face().wizard(); }
  WizardController& selector() { return static_cast<WizardController&>(*wizard().selector()); }
  void destroyWindow();

  /// In the panel, the wizard or an alert; null for none.
  QQuickItem* item(const char* name);
  /// Seen by the user: it and all that it lies in.
  bool isShown(const char* name);
  QString text(const char* name);
  /// Where an item lies in the window.
  QRectF frame(const char* name);
  QString focused();
  /// What a screen reader says of an item.
  QString spokenName(const char* name);

  /// Lets Qt do all that is due at this moment.
  void settle();
  /// Lets Qt do things until that is so.
  void waitUntil(const std::function<bool()>& isSo);
  void tick();
  void turn(const std::function<void()>& act);

  void click(const char* name);
  void clickAt(QPointF place);
  void press(QPointF place);
  void moveTo(QPointF place);
  void release(QPointF place);
  /// So slowly that nothing goes on turning.
  void drag(QPointF from, QPointF to);
  void wheel(QPointF place, int degrees);
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  /// Presses a key and keeps it down until it has repeated itself some times.
  void hold(Qt::Key key);
  void type(const QString& text);

  /// Opens the wizard from the panel's button.
  void open();
  /// The picker's middle row.
  QString pickedTitle();
  void store(const SeatNames& names, SeatPoint seat);
  std::optional<SeatPoint> stored();
  /// Of the second frame: the first brings some of the layout about.
  QImage picture();

  const ExactJsonReader json;
  const PictureDecoder decoder;
  const StandardFiles disk;
  FolderBundle kit;
  FolderBundle demo;
  std::unique_ptr<VirtualBundle> host;
  VirtualPhone phone;
  HalvoraViewController controller;
  QQmlEngine qml;

 private:
  VirtualPhoneSetup phoneSetup(const StatusBenchSetup& setup);
  void send(QEvent::Type type, QPointF place, Qt::MouseButtons buttons);

  std::unique_ptr<QObject> root_;
  QQuickWindow* window_ = nullptr;
  std::uint64_t time_ = 1000;
};

/// A map of so many seats in each of so many rows of a section A, and a section B of one seat.
std::string mapOfSeats(int rows, int seats);
/// A standing area of 5 by 5 places, and a section A of one seat.
std::string mapWithStanding();

}  // namespace halvora
