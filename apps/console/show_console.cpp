// SPDX-License-Identifier: Apache-2.0
#include "apps/console/show_console.h"

#include <QColor>
#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <array>
#include <string_view>
#include <variant>

#include "adapters/standard/standard_files.h"
#include "apps/console/desk_choices.h"
#include "faces/qt/halvora_host.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/pixel_map_assets.h"
#include "seats/seat_storage.h"
#include "text/seat_defaults.h"
#include "venue/show/palette_names.h"
#include "venue/show/show_folder.h"
#include "venue/show/show_words.h"

namespace halvora {

namespace {

constexpr Duration kAfterReplay = milliseconds(500);

// The packet's parts: the maker, then the fields.
struct Part {
  const char* name;
  int offset;
  int bytes;
};

template <class Act>
void forEachPart(Act act) {
  act(Part{"company prefix", 0, 2}, nullptr);
  for (const BroadcastField& field : kBroadcastFields) {
    act(Part{field.name, field.offset, field.value.bytes()}, &field);
  }
}

QVariantList packetParts() {
  QVariantList parts;
  forEachPart([&parts](const Part& part, const BroadcastField*) {
    parts.append(QVariantMap{{QStringLiteral("name"), QString::fromLatin1(part.name)},
                             {QStringLiteral("offset"), part.offset},
                             {QStringLiteral("bytes"), part.bytes}});
  });
  return parts;
}

}  // namespace

ShowConsole::ShowConsole(const std::string& assets, RunLoop& loop, SerialQueues& queues,
                         DemoLibraries& libraries)
    : assets_(assets),
      loop_(loop),
      libraries_(libraries),
      phone_({}, assets, loop, queues, libraries),
      engine_(phone_.platform()),
      desk_(airChance_, venueOf(assets)),
      flashes_(assets, libraries),
      modes_(modeChoices()),
      torchModes_(torchModeChoices()),
      vibrations_(vibrationChoices()),
      swatches_(halvora::swatches()),
      palettes_(paletteChoices(assets, libraries.json)),
      gobos_(goboChoices(assets)),
      fields_(packetParts()),
      venue_(
          {loop, queues, libraries, phone_.mainBundle, phone_.kitBundle, {}, desk_.look().venueId}),
      cues_(cueEnds()) {
  connect(this, &ShowConsole::packetsSentChanged, &venue_, &VenueShow::chosenStatusChanged);
  connect(&cues_, &CueDesk::changed, this, &ShowConsole::stateChanged);
  takeSeat();
  findMaps();
  phone_.torch.changed = [this] { emit torchChanged(); };
  phone_.haptics.felt = [this](Shake shake) { emit shaken(static_cast<int>(shake)); };
  engine_.viewDidLoad();
  ticks_ = Timer(loop_, loop_.every(kPacketPause, [this] { tick(); }));
}

void ShowConsole::install(QQmlEngine& qml) {
  HalvoraHost::install(qml, phone_.platform(), engine_);
}

// Somebody who tries a pixel map shall see it before they have found the seat selector.
void ShowConsole::takeSeat() {
  SeatStorage seats(phone_.defaults);
  const int venue = desk_.look().venueId;
  if (venue != kDemoVenue) return;
  seats.persistSeatSelectionForVenueId(venue, {"Section 209", "Row 8", "Seat 10"}, {362, 404});
  seats.setMapVersions({}, venue);
  seats.syncSeatDefaultsForVenueId(venue);
}

void ShowConsole::findMaps() {
  maps_.append(choice(0, QStringLiteral("None")));
  const PixelMapAssets assets(phone_.bundles, libraries_.videos, libraries_.images);
  for (const auto& entry : assets.pixelMapVideoEntriesForVenueId(desk_.look().venueId)) {
    const QString name = QString::fromStdString(entry.mapId);
    maps_.append(choice(name.toInt(), name));
  }
}

void ShowConsole::countFrames() {
  frames_ = 0;
  const PixelMapAssets assets(phone_.bundles, libraries_.videos, libraries_.images);
  const Broadcast& look = desk_.look();
  const std::string path = assets.pixelMapVideoURLForVenueId(look.venueId, look.pixelMapId);
  const auto video = path.empty() ? nullptr : libraries_.videos.open(path);
  if (video) frames_ = pixelMapFrameCount(video->durationSeconds());
}

void ShowConsole::set(const QString& field, int value) {
  const Broadcast before = desk_.look();
  if (!desk_.set(field.toStdString(), value)) return;
  if (desk_.look() != before) history_.changing(before, field.toStdString());
  emit lookChanged();
  lookAtMap(before.pixelMapId);
}

void ShowConsole::lookAtMap(std::uint16_t mapBefore) {
  if (desk_.look().pixelMapId == mapBefore) return;
  desk_.showFrame(1);
  countFrames();
  if (frames_ > 0) desk_.playFrames(frames_, loop_.now());
  emit frameChanged();
  emit stateChanged();
}

void ShowConsole::undo() { showLook(history_.undo(desk_.look())); }

void ShowConsole::redo() { showLook(history_.redo(desk_.look())); }

void ShowConsole::showLook(const std::optional<Broadcast>& look) {
  if (!look) return;
  const std::uint16_t mapBefore = desk_.look().pixelMapId;
  desk_.restore(*look);
  emit lookChanged();
  lookAtMap(mapBefore);
}

void ShowConsole::setColour(const QColor& colour) {
  history_.changing(desk_.look(), "colour");
  desk_.set("red", colour.red());
  desk_.set("green", colour.green());
  desk_.set("blue", colour.blue());
  desk_.set("paletteId", 0);
  emit lookChanged();
}

void ShowConsole::showFrame(int frame) {
  desk_.showFrame(frame);
  emit frameChanged();
}

void ShowConsole::playMap(bool play) {
  if (play) {
    desk_.playFrames(frames_, loop_.now());
  } else {
    desk_.holdFrame();
  }
  emit frameChanged();
}

void ShowConsole::setOnAir(bool on) {
  isOnAir_ = on;
  if (!on) {
    if (cues_.state() == QLatin1String("playing")) cues_.obey(QStringLiteral("hold"));
    endReplay();
    desk_.holdFrame();
    flashes_.setArmed(false);
    gate_.leave();
    emit frameChanged();
  }
  emit stateChanged();
}

void ShowConsole::pressAir() {
  if (!isOnAir_) return setOnAir(true);
  leaving_ = Timer(loop_, loop_.after(kHoldToLeave, [this] {
    leaving_.invalidate();
    setOnAir(false);
  }));
  emit stateChanged();
}

void ShowConsole::releaseAir() {
  if (!leaving_.isValid()) return;
  leaving_.invalidate();
  emit stateChanged();
}

void ShowConsole::setBlackout(bool isBlack) {
  // A show's own black, so that there is one way to it and one out of it.
  if (cues_.hasAir()) {
    cues_.obey(isBlack ? QStringLiteral("blackout") : QStringLiteral("release"));
    return;
  }
  if (isBlack) {
    endReplay();
    isOnAir_ = true;
  }
  desk_.setBlackout(isBlack);
  emit frameChanged();
  emit stateChanged();
}

void ShowConsole::setTransmitters(int count) {
  desk_.setTransmitters(count);
  emit stateChanged();
}

void ShowConsole::setSender(int transmitter) {
  desk_.setSender(transmitter);
  emit stateChanged();
}

void ShowConsole::setLoss(int percent) {
  desk_.setLoss(percent);
  emit stateChanged();
}

void ShowConsole::tick() {
  cues_.tick();
  if (!isReplaying() && !cues_.hasAir()) sendControls();
  emit packetsSentChanged();
}

void ShowConsole::sendControls() {
  flashes_.judge(desk_.look());
  desk_.setHeld(flashes_.isWaiting(), !flashes_.isHigh());
  if (!isOnAir_) return;
  for (const BroadcastBytes& packet : desk_.send(loop_.now())) {
    transmit(packet);
    if (!flashes_.isHigh() && !desk_.isBlackout()) gate_.calm(packet_);
  }
  if (desk_.isPlaying()) emit frameChanged();
}

void ShowConsole::transmit(std::span<const std::uint8_t> packet) {
  ++packetsSent_;
  // A recording is of the show and not of the air's whims.
  if (recording_) recording_->add(loop_.now(), packet);
  if (!desk_.losesPacket() && phone_.bluetooth.advertise(packet)) ++packetsHeard_;
  venue_.hear(packet, desk_.loss() / 100.0);
  if (formatOf(packet) != BroadcastFormat::valid) return;
  const Broadcast sent = decodeBroadcast(packet);
  gate_.sent(sent);
  if (sent == packet_) return;
  packet_ = sent;
  emit packetChanged();
}

CueDeskEnds ShowConsole::cueEnds() {
  ShowNames names{readPaletteNames(assets_, libraries_.json),
                  mapFramesIn(assets_, libraries_.videos)};
  return {
      loop_,
      std::move(names),
      desk_.look().venueId,
      [this](std::span<const std::uint8_t> packet, bool isRepeat) { sendCue(packet, isRepeat); },
      [this] { return desk_.look().sequence; },
      [this] { return desk_.look(); },
      [this](const Broadcast& look) { setControls(look); }};
}

// Whoever gives a command is on the air with what it says; what only goes on is not.
void ShowConsole::sendCue(std::span<const std::uint8_t> packet, bool isRepeat) {
  if (!isRepeat && (!isOnAir_ || isReplaying() || desk_.isBlackout())) {
    endReplay();
    isOnAir_ = true;
    desk_.setBlackout(false);
    desk_.holdFrame();
  }
  if (!isOnAir_ || isReplaying()) return;
  const Broadcast wanted = decodeBroadcast(packet);
  flashes_.judge(wanted);
  // Black never waits.
  auto verdict = cues_.isBlack() ? CueGate::Verdict::sent : CueGate::Verdict::waits;
  if (!flashes_.isWaiting() && !cues_.isBlack()) {
    verdict = flashes_.isHigh() ? CueGate::Verdict::sent : CueGate::Verdict::calm;
  }
  const std::optional<Broadcast> look = gate_.pass(wanted, isRepeat, verdict);
  if (!look) return;
  transmit(encodeBroadcast(*look));
  desk_.goOnAfter(packet_.sequence);
}

// A recording keeps its numbers, so a look that is armed late comes with the next one.
void ShowConsole::sendRecorded(std::span<const std::uint8_t> packet) {
  if (formatOf(packet) != BroadcastFormat::valid) return transmit(packet);
  const Broadcast wanted = decodeBroadcast(packet);
  flashes_.judge(wanted);
  if (!flashes_.isHigh()) gate_.calm(wanted);
  if (flashes_.isWaiting()) {
    transmit(encodeBroadcast(gate_.insteadOf(wanted)));
  } else {
    transmit(packet);
  }
  desk_.goOnAfter(packet_.sequence);
}

void ShowConsole::setControls(const Broadcast& look) {
  const Broadcast before = desk_.look();
  Broadcast mine = look;
  mine.applicationId = before.applicationId;
  mine.venueId = before.venueId;
  history_.changing(before, "cue");
  history_.endStep();
  desk_.restore(mine);
  emit lookChanged();
  lookAtMap(before.pixelMapId);
}

void ShowConsole::record() {
  if (isRecording() || isReplaying()) return;
  if (QFile::exists(file_) && overwriting_ != file_) {
    overwriting_ = file_;
    return say(tr("%1 is there already. Press Record once more to write over it.").arg(file_));
  }
  overwriting_.clear();
  DefaultsDictionary seat;
  for (const std::string_view key : kSeatKeys) {
    const DefaultsValue* value = phone_.defaults.find(key);
    if (value != nullptr) seat.push_back({std::string(key), *value});
  }
  recording_.emplace(loop_.now(), seat);
  say({});
  emit stateChanged();
}

void ShowConsole::replay() {
  if (isRecording() || isReplaying()) return;
  if (cues_.hasAir()) return say(tr("The show has the air; end it before you replay another."));
  const auto text = readFile(file_.toStdString(), kLargestScenario);
  if (!text) return say(tr("%1 cannot be read").arg(file_));
  auto parsed = parseScenario(*text, libraries_.json);
  if (const auto* bad = std::get_if<ScenarioError>(&parsed)) {
    return say(
        tr("%1, line %2: %3").arg(file_).arg(bad->line).arg(QString::fromStdString(bad->what)));
  }
  scenario_ = std::get<Scenario>(std::move(parsed));
  // The phone has heard newer packets than the file's. Opening the application again makes it
  // forget the show within a second, and so before a recording's first packet.
  phone_.application.becomeActive();
  venue_.becomeActive();
  run_.emplace(ScenarioSchedule(scenario_), loop_, [this](const ScenarioAction& action) {
    const auto* packet = std::get_if<PacketAction>(&action);
    if (packet != nullptr) sendRecorded(packet->data);
  });
  run_->endAfter(scenario_.lastAction() + kAfterReplay, [this] { stop(); });
  // What plays is on the air, and nothing else is.
  isOnAir_ = true;
  desk_.setBlackout(false);
  desk_.holdFrame();
  say(tr("Playing %1").arg(file_));
  emit stateChanged();
}

void ShowConsole::endReplay() {
  if (!isReplaying()) return;
  run_.reset();
  say(tr("Played %1").arg(file_));
}

// What was recorded is kept, however the console ends.
ShowConsole::~ShowConsole() {
  if (isRecording()) stop();
}

void ShowConsole::stop() {
  endReplay();
  if (isRecording()) {
    QSaveFile file(file_);
    const std::string& text = recording_->text();
    const bool isSaved = file.open(QIODevice::WriteOnly) &&
                         file.write(text.data(), static_cast<qint64>(text.size())) ==
                             static_cast<qint64>(text.size()) &&
                         file.commit();
    say(isSaved ? tr("%1 packets in %2").arg(recording_->packets()).arg(file_)
                : tr("%1 cannot be written").arg(file_));
    recording_.reset();
  }
  emit stateChanged();
}

void ShowConsole::say(const QString& message) {
  message_ = message;
  emit messageChanged();
}

ConsoleLook ShowConsole::look() const {
  const Broadcast& look = desk_.look();
  return {look.master,  look.red,      look.green, look.blue,    look.mode,      look.speed,
          look.ledMode, look.ledSpeed, look.gobo,  look.vibrate, look.paletteId, look.pixelMapId};
}

QStringList ShowConsole::packetBytes() const {
  QStringList bytes;
  for (const std::uint8_t byte : encodeBroadcast(packet_)) {
    bytes.append(QString::fromStdString(NSDataToHex(std::array{byte})));
  }
  return bytes;
}

QStringList ShowConsole::packetValues() const {
  QStringList values;
  forEachPart([this, &values](const Part&, const BroadcastField* field) {
    values.append(field != nullptr ? QString::number(field->value.of(packet_)) : QString());
  });
  return values;
}

QStringList ShowConsole::packetMeanings() const {
  QStringList meanings;
  forEachPart([this, &meanings](const Part&, const BroadcastField* field) {
    meanings.append(field != nullptr ? QString::fromStdString(meaningOf(*field, packet_))
                                     : tr("marks a show packet"));
  });
  return meanings;
}

QString ShowConsole::phoneStatus() const {
  return QString::fromStdString(statusOf(engine_.isInsideVenue(), engine_.screenMode()));
}

}  // namespace halvora
