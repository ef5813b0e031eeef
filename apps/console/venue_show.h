// SPDX-License-Identifier: Apache-2.0
// The venue on the console: a crowd of phones that hears what the console sends, each through an
// air of its own. Reads the venue in the background when it is opened for the first time; the
// phones are there as long as it is open. Owned by the console; main thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <qqmlregistration.h>

#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_video.h"
#include "apps/console/libraries.h"
#include "apps/console/venue_files.h"
#include "faces/qt/light_surface.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "venue/crowd/live_crowd.h"
#include "venue/crowd/shared_stills.h"

namespace halvora {

class VenueShow : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The console makes the venue")
  Q_PROPERTY(bool isOpen READ isOpen WRITE setOpen NOTIFY stateChanged)
  /// Whether the phones are there.
  Q_PROPERTY(bool isReady READ isReady NOTIFY stateChanged)
  /// Why they are not, where that is for good; empty otherwise.
  Q_PROPERTY(QString failure READ failure NOTIFY stateChanged)
  /// How much of the venue has been read, of 1.
  Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
  Q_PROPERTY(int phones READ phones NOTIFY stateChanged)
  Q_PROPERTY(int seats READ seats NOTIFY stateChanged)

  /// The phone that is looked at closely; -1 for none.
  Q_PROPERTY(int chosen READ chosen WRITE choose NOTIFY chosenChanged)
  Q_PROPERTY(QString chosenSeat READ chosenSeat NOTIFY chosenChanged)
  Q_PROPERTY(QString chosenStatus READ chosenStatus NOTIFY chosenStatusChanged)
  /// The packet that it last obeyed, two digits a byte; empty before the first.
  Q_PROPERTY(QString chosenPacket READ chosenPacket NOTIFY chosenPacketChanged)
  Q_PROPERTY(QString chosenSource READ chosenSource NOTIFY chosenPacketChanged)

 public:
  static constexpr std::size_t kUsualPhones = 3000;

  /// What the console's own phone has of the venue; all of it outlives this.
  struct Parts {
    RunLoop& loop;
    SerialQueues& queues;
    DemoLibraries& libraries;
    Bundle& mainBundle;
    Bundle& kitBundle;
    ScenarioDevice device;
    std::int64_t venueId;
  };

  explicit VenueShow(const Parts& parts);
  ~VenueShow() override;

  /// About so many phones, 0 for one a seat. Counts from the next opening on.
  void setPhones(std::size_t phones);

  bool isOpen() const { return isOpen_; }
  /// Closing ends the reading too, if it is under way.
  void setOpen(bool open);
  bool isReady() const { return crowd_ != nullptr; }
  const QString& failure() const { return failure_; }
  double progress() const { return progress_; }
  int phones() const { return crowd_ ? static_cast<int>(crowd_->size()) : 0; }
  int seats() const { return files_ ? static_cast<int>(files_->seatCount()) : 0; }

  int chosen() const { return chosen_ ? static_cast<int>(*chosen_) : -1; }
  void choose(int phone);
  QString chosenSeat() const { return nameOf(chosen()); }
  QString chosenStatus() const;
  QString chosenPacket() const;
  QString chosenSource() const;
  /// Section, row and seat.
  Q_INVOKABLE QString nameOf(int phone) const;
  /// Shows the chosen phone's light there; null for nowhere.
  Q_INVOKABLE void showOn(halvora::LightSurface* surface);
  /// One step back: from a phone to the venue, from the venue to what was before. False where there
  /// is no step.
  Q_INVOKABLE bool goBack();

  /// The console has sent a packet, and of the crowd that share misses it.
  void hear(std::span<const std::uint8_t> packet, double loss);
  /// All applications are opened again.
  void becomeActive();

  Duration now() const { return parts_.loop.now(); }
  /// Null while the phones are not there; changes with the state.
  LiveCrowd* crowd() { return crowd_.get(); }
  const LiveCrowd* crowd() const { return crowd_.get(); }
  std::span<const CrowdSeat> crowdSeats() const;

 signals:
  void stateChanged();
  void progressChanged();
  void chosenChanged();
  void chosenPacketChanged();
  void chosenStatusChanged();
  /// The crowd wants to be looked at.
  void lightsMayHaveChanged();

 private:
  struct Reading;

  void read();
  void readEnded(std::unique_ptr<CrowdVenue> files, const std::string& failure);
  void showProgress(double share);
  void seatPhones();
  void dropPhones();
  void showChosen();

  const Parts parts_;
  const Bundles bundles_;
  const SharedStills stills_;
  /// One, because the show goes on meanwhile.
  ThreadWorkers workers_{1};
  std::size_t phones_ = kUsualPhones;
  bool isOpen_ = false;
  QString failure_;
  double progress_ = 0;
  std::unique_ptr<CrowdVenue> files_;
  std::optional<CrowdParts> crowdParts_;
  std::unique_ptr<LiveCrowd> crowd_;
  std::optional<std::size_t> chosen_;
  QPointer<LightSurface> surface_;
  /// Null while nothing is being read.
  std::shared_ptr<Reading> reading_;
  /// Last: it waits for the reading.
  std::unique_ptr<SerialQueue> queue_;
};

}  // namespace halvora
