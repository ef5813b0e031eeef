// SPDX-License-Identifier: Apache-2.0
// A show file on the console: its cues, the player that plays them to the console's phones, which
// is that of `halvora live`, and the edits that are made meanwhile. What is wrong with a file is
// said and changes nothing. Owned by the console; main thread.
#pragma once

#include <QAbstractListModel>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include <qqmlregistration.h>

#include "engine/broadcast.h"
#include "halvora/platform/run_loop.h"
#include "venue/live/live_session.h"
#include "venue/show/cue_file.h"

namespace halvora {

/// What the cues of a show are shown as.
class CueRows : public QAbstractListModel {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  enum Role { kName = Qt::UserRole, kTime, kLook, kColour };

  void show(const CueList* list, const std::vector<NamedPalette>& palettes);

  int rowCount(const QModelIndex& parent) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  const CueList* list_ = nullptr;
  const std::vector<NamedPalette>* palettes_ = nullptr;
};

/// What a desk of cues has of its console; all of it outlives the desk.
struct CueDeskEnds {
  RunLoop& loop;
  /// What names and maps are looked up in.
  ShowNames names;
  int venueId = 0;
  /// A packet of the show; a new look takes the air, a repeat is sent while the console is on it.
  std::function<void(std::span<const std::uint8_t> packet, bool isRepeat)> send;
  /// Whoever numbers the show's looks goes on above this one.
  std::function<std::uint16_t()> lastSequence;
  /// What the controls are set to, and another look on them.
  std::function<Broadcast()> controls;
  std::function<void(const Broadcast& look)> setControls;
};

class CueDesk : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The console makes it")
  /// A path; what begins with no folder lies in the current one.
  Q_PROPERTY(QString file READ file WRITE setFile NOTIFY fileChanged)
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  /// Edits that are not in the file yet.
  Q_PROPERTY(bool isEdited READ isEdited NOTIFY changed)
  Q_PROPERTY(halvora::CueRows* rows READ rows CONSTANT)
  Q_PROPERTY(int count READ count NOTIFY changed)

  /// Between the first GO and the end of the show: what is on the air is the show's.
  Q_PROPERTY(bool hasAir READ hasAir NOTIFY changed)
  /// ready, playing, held, blackout or panic.
  Q_PROPERTY(QString state READ state NOTIFY changed)
  /// The cue that was played last, and the one that GO plays; -1 for none.
  Q_PROPERTY(int current READ current NOTIFY changed)
  Q_PROPERTY(int next READ next NOTIFY changed)
  /// One line: where the show is, what comes, and when.
  Q_PROPERTY(QString position READ position NOTIFY positionChanged)

  /// The cue that is looked at and edited; -1 for none.
  Q_PROPERTY(int chosen READ chosen WRITE choose NOTIFY changed)
  /// Of that one `name`, `at`, `fade` and `hold` as people write them, and its `look`.
  Q_PROPERTY(QVariantMap chosenCue READ chosenCue NOTIFY changed)

  /// What is wrong with the file or the last edit: file, line, cue, and what would be right.
  Q_PROPERTY(QStringList faults READ faults NOTIFY messageChanged)
  /// What came of the last command, opening or saving; empty where there is nothing to say.
  Q_PROPERTY(QString message READ message NOTIFY messageChanged)

 public:
  explicit CueDesk(CueDeskEnds ends);
  ~CueDesk() override;

  /// Reads the file, and takes it over where it is on the air. Edits that are not saved are given
  /// up only when this is asked for twice.
  Q_INVOKABLE void open();
  /// Whether the window may close: not before it was asked twice where edits would be lost.
  Q_INVOKABLE bool mayClose();
  /// Replaces the file whole. What would be lost by that is said first, and done when asked again.
  Q_INVOKABLE void save();
  /// A command of the player: go, back, goto NAME, hold, resume, blackout, release, panic.
  Q_INVOKABLE void obey(const QString& command);
  Q_INVOKABLE void goToChosen();
  Q_INVOKABLE void holdOrResume();
  Q_INVOKABLE void blackOrRelease();
  /// The show leaves the air to the console's controls, and begins anew with the next GO.
  Q_INVOKABLE void endShow();

  /// The chosen cue's name, at, fade or hold; empty takes it away.
  Q_INVOKABLE void edit(const QString& key, const QString& value);
  /// What the controls are set to becomes the chosen cue's look, or that of a new cue below it.
  Q_INVOKABLE void storeLook();
  Q_INVOKABLE void addCue();
  Q_INVOKABLE void removeCue();
  /// The chosen cue's look on the controls.
  Q_INVOKABLE void showLook();

  const QString& file() const { return file_; }
  void setFile(const QString& file);
  bool isOpen() const { return cues_ != nullptr; }
  bool isEdited() const { return cues_ && cues_->text() != saved_; }
  CueRows* rows() { return &rows_; }
  int count() const { return cues_ ? static_cast<int>(cues_->show().cues.size()) : 0; }
  bool hasAir() const;
  bool isBlack() const;
  QString state() const;
  int current() const;
  int next() const;
  QString position() const;
  int chosen() const { return chosen_; }
  void choose(int cue);
  QVariantMap chosenCue() const;
  const QStringList& faults() const { return faults_; }
  const QString& message() const { return message_; }

  /// Time has passed.
  void tick();

 signals:
  void fileChanged();
  void changed();
  void positionChanged();
  void messageChanged();

 private:
  class Air;
  class Numbers;

  LiveStatus status() const;
  const Cue* chosenOne() const;
  void begin();
  void take(std::unique_ptr<CueFile> cues, std::optional<std::size_t> current);
  void takeEdit(CueFile::Result result, std::optional<std::size_t> current, int chosen);
  void refuse(const std::vector<CueListFlaw>& flaws);
  void say(const QString& message);
  /// Whether this was asked for before, with nothing else in between.
  bool isAskedAgain(const QString& question);
  std::string path() const { return file_.toStdString(); }

  CueDeskEnds ends_;
  QString file_ = QStringLiteral("show.yaml");
  /// The file that is open, whatever is in the field by then.
  QString opened_;
  /// What lies on disk as far as is known here.
  std::string saved_;
  std::unique_ptr<CueFile> cues_;
  std::unique_ptr<Numbers> numbers_;
  std::unique_ptr<Air> air_;
  std::unique_ptr<LiveSession> session_;
  CueRows rows_;
  int chosen_ = -1;
  QString shownPosition_;
  QString asked_;
  QStringList faults_;
  QString message_;
};

}  // namespace halvora
