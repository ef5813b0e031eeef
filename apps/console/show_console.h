// SPDX-License-Identifier: Apache-2.0
// The operator's console, and the phone that hears it: sends the desk's packets through a radio in
// the process, records and replays them, and says for QML what is on the air and what the phone
// does. Made by the program, in the time of any run loop. Main thread.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <qqmlregistration.h>

#include "apps/console/cue_desk.h"
#include "apps/console/cue_gate.h"
#include "apps/console/demo_phone.h"
#include "apps/console/desk_flashes.h"
#include "apps/console/libraries.h"
#include "apps/console/look_history.h"
#include "apps/console/show_desk.h"
#include "apps/console/show_recording.h"
#include "apps/console/venue_show.h"
#include "halvora/engine.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "venue/show/scenario.h"
#include "venue/show/scenario_run.h"

namespace halvora {

/// The fields of the look that the console has controls for.
struct ConsoleLook {
  Q_GADGET
  QML_VALUE_TYPE(consoleLook)
  Q_PROPERTY(int master MEMBER master)
  Q_PROPERTY(int red MEMBER red)
  Q_PROPERTY(int green MEMBER green)
  Q_PROPERTY(int blue MEMBER blue)
  Q_PROPERTY(int mode MEMBER mode)
  Q_PROPERTY(int speed MEMBER speed)
  Q_PROPERTY(int ledMode MEMBER ledMode)
  Q_PROPERTY(int ledSpeed MEMBER ledSpeed)
  Q_PROPERTY(int gobo MEMBER gobo)
  Q_PROPERTY(int vibrate MEMBER vibrate)
  Q_PROPERTY(int paletteId MEMBER paletteId)
  Q_PROPERTY(int pixelMapId MEMBER pixelMapId)

 public:
  int master = 0;
  int red = 0;
  int green = 0;
  int blue = 0;
  int mode = 0;
  int speed = 0;
  int ledMode = 0;
  int ledSpeed = 0;
  int gobo = 0;
  int vibrate = 0;
  int paletteId = 0;
  int pixelMapId = 0;
};

class ShowConsole : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program makes the console")
  /// What there is to choose from: entries with `number` and `name`, palettes with `colours`.
  Q_PROPERTY(QVariantList modes MEMBER modes_ CONSTANT)
  Q_PROPERTY(QVariantList torchModes MEMBER torchModes_ CONSTANT)
  Q_PROPERTY(QVariantList vibrations MEMBER vibrations_ CONSTANT)
  Q_PROPERTY(QVariantList swatches MEMBER swatches_ CONSTANT)
  Q_PROPERTY(QVariantList palettes MEMBER palettes_ CONSTANT)
  Q_PROPERTY(QVariantList gobos MEMBER gobos_ CONSTANT)
  Q_PROPERTY(QVariantList maps MEMBER maps_ CONSTANT)
  /// The packet's parts in their order: `name`, `offset` and `bytes`.
  Q_PROPERTY(QVariantList fields MEMBER fields_ CONSTANT)
  /// The other phones that hear the console.
  Q_PROPERTY(halvora::VenueShow* venue READ venue CONSTANT)
  /// A show that is played in the place of what the controls say.
  Q_PROPERTY(halvora::CueDesk* cues READ cues CONSTANT)
  /// How often the look flashes that is set, or that a show or a recording has on the air, and
  /// whether it may.
  Q_PROPERTY(halvora::DeskFlashes* flashes READ flashes CONSTANT)

  Q_PROPERTY(halvora::ConsoleLook look READ look NOTIFY lookChanged)
  /// Off at first. Leaving ends a replay, and a map that plays stands still.
  Q_PROPERTY(bool isOnAir READ isOnAir WRITE setOnAir NOTIFY stateChanged)
  /// Black on every phone until it is taken back, whatever else is set or was played; it goes on
  /// the air.
  Q_PROPERTY(bool isBlackout READ isBlackout WRITE setBlackout NOTIFY stateChanged)
  /// A press that leaves the air if it goes on being held.
  Q_PROPERTY(bool isLeaving READ isLeaving NOTIFY stateChanged)
  Q_PROPERTY(bool canUndo READ canUndo NOTIFY lookChanged)
  Q_PROPERTY(bool canRedo READ canRedo NOTIFY lookChanged)
  Q_PROPERTY(int transmitters READ transmitters WRITE setTransmitters NOTIFY stateChanged)
  Q_PROPERTY(int mostTransmitters READ mostTransmitters CONSTANT)
  /// 0 for all.
  Q_PROPERTY(int sender READ sender WRITE setSender NOTIFY stateChanged)
  Q_PROPERTY(int loss READ loss WRITE setLoss NOTIFY stateChanged)
  Q_PROPERTY(bool isMapPlaying READ isMapPlaying NOTIFY frameChanged)
  Q_PROPERTY(int frame READ frame NOTIFY frameChanged)
  /// Of the map in the look; 0 for none.
  Q_PROPERTY(int frames READ frames NOTIFY stateChanged)

  /// The packet that was sent last, two digits a byte; and of each of its parts, the value as text
  /// and what it means.
  Q_PROPERTY(QStringList packetBytes READ packetBytes NOTIFY packetChanged)
  Q_PROPERTY(QStringList packetValues READ packetValues NOTIFY packetChanged)
  Q_PROPERTY(QStringList packetMeanings READ packetMeanings NOTIFY packetChanged)
  Q_PROPERTY(int packetsSent READ packetsSent NOTIFY packetsSentChanged)
  Q_PROPERTY(int packetsHeard READ packetsHeard NOTIFY packetsSentChanged)

  Q_PROPERTY(double screenWidth READ screenWidth CONSTANT)
  Q_PROPERTY(double screenHeight READ screenHeight CONSTANT)
  Q_PROPERTY(QString phoneStatus READ phoneStatus NOTIFY packetsSentChanged)
  Q_PROPERTY(bool isTorchOn READ isTorchOn NOTIFY torchChanged)

  /// A path; what begins with no folder lies in the current one.
  Q_PROPERTY(QString file MEMBER file_ NOTIFY fileChanged)
  Q_PROPERTY(bool isRecording READ isRecording NOTIFY stateChanged)
  Q_PROPERTY(bool isReplaying READ isReplaying NOTIFY stateChanged)
  /// How the last recording or replay went.
  Q_PROPERTY(QString message READ message NOTIFY messageChanged)

 public:
  static constexpr Duration kHoldToLeave = milliseconds(700);

  ShowConsole(const std::string& assets, RunLoop& loop, SerialQueues& queues,
              DemoLibraries& libraries);
  ~ShowConsole() override;

  /// Wires the host views of that QML engine to the console's phone.
  void install(QQmlEngine& qml);

  /// Sets a field of the look by its name in the packet.
  Q_INVOKABLE void set(const QString& field, int value);
  /// Red, green and blue, and no palette.
  Q_INVOKABLE void setColour(const QColor& colour);
  Q_INVOKABLE void showFrame(int frame);
  Q_INVOKABLE void playMap(bool play);
  /// A press on the air's own button: goes on the air at once, and leaves it once it was held for
  /// `kHoldToLeave`.
  Q_INVOKABLE void pressAir();
  Q_INVOKABLE void releaseAir();
  /// What was set before, and again; knob by knob.
  Q_INVOKABLE void undo();
  Q_INVOKABLE void redo();
  /// A file that is there is written over only when this is asked for twice.
  Q_INVOKABLE void record();
  Q_INVOKABLE void replay();
  /// Ends a recording and writes its file, or ends a replay.
  Q_INVOKABLE void stop();

  ConsoleLook look() const;
  bool isOnAir() const { return isOnAir_; }
  void setOnAir(bool on);
  bool isLeaving() const { return leaving_.isValid(); }
  bool isBlackout() const { return cues_.hasAir() ? cues_.isBlack() : desk_.isBlackout(); }
  void setBlackout(bool isBlack);
  bool canUndo() const { return history_.canUndo(); }
  bool canRedo() const { return history_.canRedo(); }
  int transmitters() const { return desk_.transmitters(); }
  void setTransmitters(int count);
  int mostTransmitters() const { return kMostTransmitters; }
  int sender() const { return desk_.sender(); }
  void setSender(int transmitter);
  int loss() const { return desk_.loss(); }
  void setLoss(int percent);
  bool isMapPlaying() const { return desk_.isPlaying(); }
  int frame() const { return desk_.frame(); }
  int frames() const { return frames_; }
  QStringList packetBytes() const;
  QStringList packetValues() const;
  QStringList packetMeanings() const;
  int packetsSent() const { return packetsSent_; }
  int packetsHeard() const { return packetsHeard_; }
  double screenWidth() const { return phone_.screen.size.width; }
  double screenHeight() const { return phone_.screen.size.height; }
  QString phoneStatus() const;
  bool isTorchOn() const { return phone_.torch.isOn; }
  bool isRecording() const { return recording_.has_value(); }
  bool isReplaying() const { return run_.has_value(); }
  const QString& message() const { return message_; }
  VenueShow* venue() { return &venue_; }
  CueDesk* cues() { return &cues_; }
  DeskFlashes* flashes() { return &flashes_; }

  const Broadcast& packet() const { return packet_; }
  HalvoraViewController& engine() { return engine_; }

 signals:
  void lookChanged();
  void stateChanged();
  void frameChanged();
  void packetChanged();
  void packetsSentChanged();
  void torchChanged();
  void fileChanged();
  void messageChanged();
  /// The phone shakes so hard: 1 a light tap, 2 a heavy one, 3 the motor.
  void shaken(int strength);

 private:
  void takeSeat();
  void findMaps();
  void countFrames();
  void tick();
  void sendControls();
  CueDeskEnds cueEnds();
  void sendCue(std::span<const std::uint8_t> packet, bool isRepeat);
  void sendRecorded(std::span<const std::uint8_t> packet);
  void setControls(const Broadcast& look);
  void transmit(std::span<const std::uint8_t> packet);
  void say(const QString& message);
  void endReplay();
  void showLook(const std::optional<Broadcast>& look);
  void lookAtMap(std::uint16_t mapBefore);

  const std::string assets_;
  RunLoop& loop_;
  DemoLibraries& libraries_;
  DemoPhone phone_;
  HalvoraViewController engine_;
  SeededRandom airChance_{kShowSeed};
  ShowDesk desk_;
  DeskFlashes flashes_;
  CueGate gate_;
  const QVariantList modes_;
  const QVariantList torchModes_;
  const QVariantList vibrations_;
  const QVariantList swatches_;
  const QVariantList palettes_;
  const QVariantList gobos_;
  QVariantList maps_;
  QVariantList fields_;
  VenueShow venue_;
  CueDesk cues_;
  LookHistory history_;
  bool isOnAir_ = false;
  /// The file that is written over if recording is asked for once more.
  QString overwriting_;
  int frames_ = 0;
  Broadcast packet_;
  int packetsSent_ = 0;
  int packetsHeard_ = 0;
  QString file_ = QStringLiteral("halvora-show.jsonl");
  QString message_;
  std::optional<ShowRecording> recording_;
  /// What is replayed.
  Scenario scenario_;
  std::optional<ScenarioRun> run_;
  Timer leaving_;
  Timer ticks_;
};

}  // namespace halvora
