// SPDX-License-Identifier: Apache-2.0
#include "apps/console/venue_show.h"

#include <QStringList>
#include <array>
#include <new>
#include <utility>

#include "engine/broadcast.h"
#include "seats/seat_map_document.h"
#include "text/asset_paths.h"
#include "venue/show/show_words.h"

namespace halvora {

namespace {

constexpr const char* kNoMemory = "There is too little memory for this venue";

QString text(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace

// What the background has in common with the venue. Only the main thread may follow `venue`, which
// is null once the venue is gone or has given up this reading.
struct VenueShow::Reading {
  explicit Reading(VenueShow& its)
      : loop(its.parts_.loop),
        videos(its.parts_.libraries.videos),
        json(its.parts_.libraries.json),
        workers(its.workers_),
        venue(&its) {}

  VenueOrder order;
  RunLoop& loop;
  const VideoAssets& videos;
  const JsonReader& json;
  Workers& workers;
  VenueShow* venue;
  std::atomic<bool> isCancelled{false};
  std::atomic<int> percent{0};
  /// What came of it, and why nothing did. The queue's until it posts them.
  std::unique_ptr<CrowdVenue> files;
  std::string failure;

  void run(const std::shared_ptr<Reading>& self) {
    try {
      files = readVenueFiles(order, videos, json, workers, failure);
    } catch (const std::bad_alloc&) {
      failure = kNoMemory;
    }
    loop.post([self] {
      if (self->venue != nullptr) self->venue->readEnded(std::move(self->files), self->failure);
    });
  }

  // A post a frame would be too many.
  void show(double share, const std::weak_ptr<Reading>& self) {
    const int now = static_cast<int>(share * 100);
    int before = percent.load();
    if (now <= before || !percent.compare_exchange_strong(before, now)) return;
    loop.post([self, share] {
      const auto reading = self.lock();
      if (reading && reading->venue != nullptr) reading->venue->showProgress(share);
    });
  }
};

VenueShow::VenueShow(const Parts& parts)
    : parts_(parts),
      bundles_{parts.mainBundle, parts.kitBundle},
      stills_(parts.mainBundle, parts.libraries.images),
      queue_(parts.queues.make("venue")) {}

VenueShow::~VenueShow() {
  setOpen(false);
  queue_.reset();
}

void VenueShow::setPhones(std::size_t phones) {
  if (phones == phones_) return;
  phones_ = phones;
  const bool wasOpen = isOpen_;
  setOpen(false);
  files_.reset();
  setOpen(wasOpen);
}

void VenueShow::setOpen(bool open) {
  if (open == isOpen_) return;
  isOpen_ = open;
  failure_.clear();
  if (!open) {
    if (reading_) {
      reading_->isCancelled = true;
      std::exchange(reading_, nullptr)->venue = nullptr;
    }
    dropPhones();
  } else if (files_) {
    seatPhones();
  } else {
    read();
  }
  emit stateChanged();
}

void VenueShow::read() {
  const PixelMapAssets assets(bundles_, parts_.libraries.videos, parts_.libraries.images);
  showProgress(0);
  reading_ = std::make_shared<Reading>(*this);
  reading_->order = {parts_.mainBundle.readResource(seatMapFile(parts_.venueId), kLargestSeatMap),
                     seatMapTexts(parts_.kitBundle),
                     assets.pixelMapVideoEntriesForVenueId(parts_.venueId),
                     phones_,
                     {},
                     {}};
  reading_->order.isCancelled = [reading = reading_.get()] { return reading->isCancelled.load(); };
  reading_->order.progress = [reading = reading_.get(), weak = std::weak_ptr<Reading>(reading_)](
                                 double share) { reading->show(share, weak); };
  if (!queue_->dispatch([reading = reading_] { reading->run(reading); })) {
    readEnded(nullptr, kNoMemory);
  }
}

void VenueShow::readEnded(std::unique_ptr<CrowdVenue> files, const std::string& failure) {
  reading_.reset();
  files_ = std::move(files);
  failure_ = text(failure);
  if (files_) seatPhones();
  emit stateChanged();
}

void VenueShow::showProgress(double share) {
  progress_ = share;
  emit progressChanged();
}

void VenueShow::seatPhones() {
  // Named: gcc takes what is not set of one that is not for something that nobody has set.
  ShowEngineOptions options;
  options.assets = loadShowAssets(bundles_, parts_.libraries.json);
  options.seatLuts = &files_->tables();
  options.stills = &stills_;
  crowdParts_.emplace(bundles_, parts_.libraries.json, parts_.libraries.images,
                      parts_.libraries.files, std::move(options), parts_.device);
  crowd_ = std::make_unique<LiveCrowd>(parts_.loop, *crowdParts_, files_->seats());
  crowd_->mayHaveChanged = [this] { emit lightsMayHaveChanged(); };
}

void VenueShow::dropPhones() {
  choose(-1);
  crowd_.reset();
}

void VenueShow::choose(int phone) {
  std::optional<std::size_t> chosen;
  if (crowd_ && phone >= 0 && static_cast<std::size_t>(phone) < crowd_->size()) {
    chosen = static_cast<std::size_t>(phone);
  }
  if (chosen == chosen_) return;
  chosen_ = chosen;
  showChosen();
  emit chosenChanged();
  emit chosenPacketChanged();
  emit chosenStatusChanged();
}

void VenueShow::showOn(LightSurface* surface) {
  if (surface_) surface_->setLight(std::nullopt);
  surface_ = surface;
  showChosen();
}

void VenueShow::showChosen() {
  if (!surface_) return;
  std::optional<Light> light;
  if (crowd_ && chosen_) light.emplace(crowd_->phone(*chosen_).views());
  surface_->setLight(light,
                     Pictures(parts_.libraries.files, parts_.mainBundle, parts_.libraries.images));
}

bool VenueShow::goBack() {
  if (chosen_) {
    choose(-1);
    return true;
  }
  const bool wasOpen = isOpen_;
  setOpen(false);
  return wasOpen;
}

void VenueShow::hear(std::span<const std::uint8_t> packet, double loss) {
  if (!crowd_) return;
  std::optional<BroadcastBytes> before;
  if (chosen_) before = crowd_->obeyed(*chosen_);
  crowd_->hear(packet, loss);
  if (chosen_ && crowd_->obeyed(*chosen_) != before) emit chosenPacketChanged();
}

void VenueShow::becomeActive() {
  if (crowd_) crowd_->becomeActive();
}

std::span<const CrowdSeat> VenueShow::crowdSeats() const {
  return crowd_ ? std::span<const CrowdSeat>(files_->seats()) : std::span<const CrowdSeat>();
}

QString VenueShow::nameOf(int phone) const {
  const auto seats = crowdSeats();
  if (phone < 0 || static_cast<std::size_t>(phone) >= seats.size()) return {};
  const CrowdSeat& seat = seats[static_cast<std::size_t>(phone)];
  return QStringList{text(seat.section), text(seat.row), text(seat.name)}.join(
      QStringLiteral(", "));
}

QString VenueShow::chosenStatus() const {
  if (!chosen_) return {};
  const EngineState& state = crowd_->phone(*chosen_).state();
  return text(statusOf(state.presence.insideVenue, state.screen.currentMode));
}

QString VenueShow::chosenPacket() const {
  if (!chosen_ || !crowd_->obeyed(*chosen_)) return {};
  QStringList bytes;
  for (const std::uint8_t byte : *crowd_->obeyed(*chosen_)) {
    bytes.append(text(NSDataToHex(std::array{byte})));
  }
  return bytes.join(QLatin1Char(' '));
}

QString VenueShow::chosenSource() const {
  if (!chosen_ || !crowd_->obeyed(*chosen_)) return tr("has obeyed no packet yet");
  const Broadcast packet = decodeBroadcast(*crowd_->obeyed(*chosen_));
  return tr("obeyed number %1 of transmitter %2").arg(packet.sequence).arg(packet.transmitter);
}

}  // namespace halvora
