// SPDX-License-Identifier: Apache-2.0
// How often the look on the desk, or that of a show's cue or a recording, would flash a phone at
// full brightness, as it is sent: a phone in memory is shown the look for some seconds before any
// real one is. What flashes more than three times a second waits until the operator has armed it.
// Made by the console; main thread.
#pragma once

#include <QObject>
#include <optional>
#include <string>

#include <qqmlregistration.h>

#include "apps/console/libraries.h"
#include "engine/broadcast.h"
#include "venue/show/flash_meter.h"

namespace halvora {

class DeskFlashes : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The console makes it")
  /// In the look's worst second.
  Q_PROPERTY(int general READ general NOTIFY changed)
  Q_PROPERTY(int red READ red NOTIFY changed)
  /// More than three of either.
  Q_PROPERTY(bool isHigh READ isHigh NOTIFY changed)
  /// Whether looks that flash more may be sent; until the air is left.
  Q_PROPERTY(bool isArmed READ isArmed WRITE setArmed NOTIFY changed)
  /// That look is not sent, and what was sent before it goes on.
  Q_PROPERTY(bool isWaiting READ isWaiting NOTIFY changed)

 public:
  DeskFlashes(const std::string& assets, DemoLibraries& libraries);

  /// Of a look that was judged last nothing is done. Without the seat's own colours: what a video
  /// does to one seat is for `halvora safety` to say.
  void judge(const Broadcast& look);

  int general() const { return figures_.general.flashes; }
  int red() const { return figures_.red.flashes; }
  bool isHigh() const { return !figures_.areHarmless(); }
  bool isArmed() const { return isArmed_; }
  void setArmed(bool isArmed);
  bool isWaiting() const { return isHigh() && !isArmed_; }

 signals:
  void changed();

 private:
  FlashFigures measured(const Broadcast& look) const;

  const std::string assets_;
  DemoLibraries& libraries_;
  std::optional<Broadcast> judged_;
  FlashFigures figures_;
  bool isArmed_ = false;
};

}  // namespace halvora
