// SPDX-License-Identifier: Apache-2.0
// Plays a show over and over in the time of a run loop, each time with a fresh engine, and says for
// the window what is being played. Made by the program, which attaches the surface to play on.
// Main thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <memory>

#include <qqmlregistration.h>

#include "apps/console/libraries.h"
#include "apps/console/live_show.h"
#include "apps/console/show_files.h"
#include "faces/qt/light_surface.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"

namespace halvora {

class ScenarioLoop : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program makes the loop")
  Q_PROPERTY(QString title READ title CONSTANT)
  /// The phone's screen, in points.
  Q_PROPERTY(double screenWidth READ screenWidth CONSTANT)
  Q_PROPERTY(double screenHeight READ screenHeight CONSTANT)
  /// The look's number and the show's time.
  Q_PROPERTY(QString status READ status NOTIFY statusChanged)

 public:
  ScenarioLoop(const ShowFiles& files, RunLoop& loop, SerialQueues& queues,
               DemoLibraries& libraries);
  ~ScenarioLoop() override;

  /// Begins. The surface may go before the player.
  void play(LightSurface& surface);

  QString title() const { return title_; }
  double screenWidth() const;
  double screenHeight() const;
  QString status() const;

 signals:
  void statusChanged();
  /// The scenario came to its end; it begins again when this returns.
  void ended();

 private:
  void begin();

  const ShowFiles& files_;
  RunLoop& loop_;
  SerialQueues& queues_;
  DemoLibraries& libraries_;
  const QString title_;
  QPointer<LightSurface> surface_;
  std::unique_ptr<LiveShow> show_;
  Timer statusTimer_;
};

}  // namespace halvora
