// SPDX-License-Identifier: Apache-2.0
#include "apps/console/cue_desk.h"

#include <utility>
#include <variant>
#include <vector>

#include "adapters/standard/standard_files.h"
#include "venue/show/cue_values.h"

namespace halvora {

namespace {

constexpr std::size_t kShownFaults = 8;

QString wordsOf(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString timeWords(const std::optional<Duration>& time) {
  return time ? wordsOf(showTimeText(*time)) : QString();
}

}  // namespace

// The console's phones hear the show as they hear its controls.
class CueDesk::Air final : public LiveAir {
 public:
  explicit Air(const CueDeskEnds& ends) : ends_(ends) {}
  void send(std::span<const std::uint8_t> data, bool isRepeat) override {
    ends_.send(data, isRepeat);
  }

 private:
  const CueDeskEnds& ends_;
};

class CueDesk::Numbers final : public SequenceNumbers {
 public:
  explicit Numbers(const CueDeskEnds& ends) : ends_(ends) {}
  std::uint16_t next() override { return nextSequence(ends_.lastSequence()); }

 private:
  const CueDeskEnds& ends_;
};

CueDesk::CueDesk(CueDeskEnds ends)
    : ends_(std::move(ends)),
      numbers_(std::make_unique<Numbers>(ends_)),
      air_(std::make_unique<Air>(ends_)) {}

CueDesk::~CueDesk() = default;

void CueDesk::setFile(const QString& file) {
  if (file == file_) return;
  file_ = file;
  asked_.clear();
  emit fileChanged();
}

void CueDesk::begin() {
  session_ = std::make_unique<LiveSession>(
      cues_->show(), ends_.names.frames, ends_.loop, *numbers_,
      [](const Broadcast& packet) {
        const BroadcastBytes bytes = encodeBroadcast(packet);
        return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
      },
      LiveReport{[this](Duration, const LiveStatus&) {
                   emit changed();
                   tick();
                 },
                 [this](const std::string& line) { say(wordsOf(line)); }});
  session_->add(*air_);
}

// The list before may go once the player has the next one.
void CueDesk::take(std::unique_ptr<CueFile> cues, std::optional<std::size_t> current) {
  const std::unique_ptr<CueFile> before = std::exchange(cues_, std::move(cues));
  rows_.show(&cues_->show(), ends_.names.palettes);
  if (session_ && hasAir()) {
    session_->takeOver(cues_->show(), current);
  } else {
    begin();
  }
  if (chosen_ >= count()) chosen_ = count() - 1;
}

void CueDesk::open() {
  const bool isReopened = isOpen() && file_ == opened_;
  if (hasAir() && !isReopened) {
    return say(tr("%1 is on the air. End that show before you open another.").arg(opened_));
  }
  const QString question = QStringLiteral("open ") + file_;
  if (isEdited() && !isAskedAgain(question)) {
    return say(tr("What was changed in %1 is not saved, and would be lost. Press Open once more "
                  "to open the file as it is on disk.")
                   .arg(opened_));
  }
  const auto bytes = readFile(path(), kLargestCueList);
  if (!bytes) {
    return say(tr("%1 cannot be read: it must be a file of at most 8 MB").arg(file_));
  }
  CueFile::Result result = CueFile::read(*bytes, ends_.names);
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&result)) return refuse(*flaws);
  auto cues = std::make_unique<CueFile>(std::get<CueFile>(std::move(result)));
  std::optional<std::size_t> current;
  if (const LiveStatus now = status(); hasAir() && now.cue) {
    const std::string& name = cues_->show().cues[*now.cue].name;
    current = cueNamed(cues->show(), name);
    if (!current) {
      return say(tr("%1 has no cue \"%2\" any more, which is on the air. Play another cue, or "
                    "give it its name back, and open the file again.")
                     .arg(file_, wordsOf(name)));
    }
  }
  opened_ = file_;
  saved_ = *bytes;
  take(std::move(cues), current);
  const int venue = cues_->show().sender.venueId;
  say(venue == ends_.venueId ? QString()
                             : tr("The show is for venue %1, and this hall is venue %2.")
                                   .arg(venue)
                                   .arg(ends_.venueId));
  emit changed();
  tick();
}

bool CueDesk::mayClose() {
  if (!isEdited() || isAskedAgain(QStringLiteral("close"))) return true;
  say(tr("What was changed in %1 is not saved, and would be lost. Save it, or close once more.")
          .arg(opened_));
  return false;
}

void CueDesk::takeEdit(CueFile::Result result, std::optional<std::size_t> current, int chosen) {
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&result)) return refuse(*flaws);
  take(std::make_unique<CueFile>(std::get<CueFile>(std::move(result))), current);
  chosen_ = chosen;
  say({});
  emit changed();
  tick();
}

const Cue* CueDesk::chosenOne() const {
  return cues_ && chosen_ >= 0 ? &cues_->show().cues[static_cast<std::size_t>(chosen_)] : nullptr;
}

void CueDesk::edit(const QString& key, const QString& value) {
  const Cue* const cue = chosenOne();
  if (cue == nullptr || chosenCue().value(key).toString() == value) return;
  const std::string written = value.isEmpty() ? std::string() : yamlText(value.toStdString());
  takeEdit(cues_->with(static_cast<std::size_t>(chosen_), key.toStdString(), written, ends_.names),
           status().cue, chosen_);
}

namespace {

// Of what the controls have, what a show can say.
CueLook lookOf(Broadcast controls) {
  CueLook look;
  constexpr std::uint8_t kTorchMap = 9;
  if (controls.pixelMapId != 0) look.map = CueMap{static_cast<std::uint8_t>(controls.pixelMapId)};
  if (look.map || controls.ledMode != kTorchMap) controls.minutes = controls.seconds = 0;
  look.packet = controls;
  return look;
}

}  // namespace

void CueDesk::storeLook() {
  if (chosenOne() == nullptr) return;
  takeEdit(cues_->with(static_cast<std::size_t>(chosen_), "look",
                       yamlLook(lookOf(ends_.controls()), ends_.names.palettes), ends_.names),
           status().cue, chosen_);
}

void CueDesk::addCue() {
  if (!cues_) return;
  const auto after = static_cast<std::size_t>(chosen_ < 0 ? count() - 1 : chosen_);
  std::string name;
  for (int number = count() + 1; name.empty() || cueNamed(cues_->show(), name); ++number) {
    name = tr("Cue %1").arg(number).toStdString();
  }
  std::optional<std::size_t> current = status().cue;
  if (current && *current > after) ++*current;
  takeEdit(cues_->withCueAfter(after, name, lookOf(ends_.controls()), ends_.names), current,
           static_cast<int>(after) + 1);
}

void CueDesk::removeCue() {
  const Cue* const cue = chosenOne();
  if (cue == nullptr) return;
  const auto at = static_cast<std::size_t>(chosen_);
  std::optional<std::size_t> current = status().cue;
  if (hasAir() && current == at) {
    return say(
        tr("\"%1\" is on the air; play another cue before you remove it.").arg(wordsOf(cue->name)));
  }
  if (current && *current > at) --*current;
  const int last = count() - 2;
  takeEdit(cues_->withoutCue(at, ends_.names), current, std::min(chosen_, last));
}

void CueDesk::showLook() {
  if (const Cue* const cue = chosenOne()) ends_.setControls(cue->look.packet);
}

void CueDesk::refuse(const std::vector<CueListFlaw>& flaws) {
  asked_.clear();
  faults_.clear();
  for (const CueListFlaw& flaw : flaws) {
    if (static_cast<std::size_t>(faults_.size()) == kShownFaults) {
      faults_.append(tr("and %1 more").arg(flaws.size() - kShownFaults));
      break;
    }
    faults_.append(wordsOf(textOf(flaw, path())));
  }
  message_ = hasAir() ? tr("Nothing has changed on the air.") : QString();
  emit messageChanged();
}

void CueDesk::say(const QString& message) {
  faults_.clear();
  message_ = message;
  emit messageChanged();
}

LiveStatus CueDesk::status() const { return session_ ? session_->player().status() : LiveStatus{}; }

bool CueDesk::hasAir() const { return status().state != LiveState::ready; }

bool CueDesk::isBlack() const {
  const LiveState now = status().state;
  return now == LiveState::blackout || now == LiveState::panic;
}

QString CueDesk::state() const { return QString::fromLatin1(nameOf(status().state)); }

int CueDesk::current() const {
  const auto cue = status().cue;
  return cue ? static_cast<int>(*cue) : -1;
}

int CueDesk::next() const {
  const auto cue = session_ ? session_->player().nextCue() : std::nullopt;
  return cue ? static_cast<int>(*cue) : -1;
}

QString CueDesk::position() const {
  if (!session_) return {};
  const auto nameAt = [this](int cue) {
    return wordsOf(cues_->show().cues[static_cast<std::size_t>(cue)].name);
  };
  QString words = state();
  if (current() >= 0) {
    words += tr(" %1 of %2, %3").arg(current() + 1).arg(count()).arg(nameAt(current()));
  }
  if (next() < 0) return words + tr(". Nothing comes after it");
  words += tr(". Next: %1").arg(nameAt(next()));
  const auto rest = session_->player().untilNext();
  if (!rest) return words + tr(", by GO");
  // Rounded up: what is left is never said to be nothing.
  const Duration seconds = (*rest + milliseconds(999)) / milliseconds(1000) * milliseconds(1000);
  return words + tr(", in %1 s").arg(wordsOf(showTimeText(seconds)));
}

void CueDesk::tick() {
  if (const QString now = position(); now != shownPosition_) {
    shownPosition_ = now;
    emit positionChanged();
  }
}

void CueDesk::choose(int cue) {
  const int chosen = cue >= 0 && cue < count() ? cue : -1;
  if (chosen == chosen_) return;
  chosen_ = chosen;
  emit changed();
}

QVariantMap CueDesk::chosenCue() const {
  const Cue* const cue = chosenOne();
  if (cue == nullptr) return {};
  return {{QStringLiteral("name"), wordsOf(cue->name)},
          {QStringLiteral("at"), timeWords(cue->at)},
          {QStringLiteral("fade"), cue->fade > Duration{} ? timeWords(cue->fade) : QString()},
          {QStringLiteral("hold"), timeWords(cue->hold)},
          {QStringLiteral("look"), wordsOf(yamlLook(cue->look, ends_.names.palettes))}};
}

void CueDesk::obey(const QString& command) {
  if (!session_) return say(tr("No show is open."));
  asked_.clear();
  say({});
  session_->obey(command.toStdString());
}

void CueDesk::goToChosen() {
  if (const Cue* const cue = chosenOne()) obey(QStringLiteral("goto ") + wordsOf(cue->name));
}

void CueDesk::holdOrResume() {
  obey(status().state == LiveState::held ? QStringLiteral("resume") : QStringLiteral("hold"));
}

void CueDesk::blackOrRelease() {
  obey(isBlack() ? QStringLiteral("release") : QStringLiteral("blackout"));
}

void CueDesk::endShow() {
  if (!hasAir()) return;
  if (isBlack()) return say(tr("The hall is black; release that before you end the show."));
  begin();
  say({});
  emit changed();
  tick();
}

bool CueDesk::isAskedAgain(const QString& question) {
  const bool isSame = asked_ == question;
  asked_ = isSame ? QString() : question;
  return isSame;
}

}  // namespace halvora
