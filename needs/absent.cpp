// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/absent.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/application.h"
#include "halvora/platform/battery.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/http.h"
#include "halvora/platform/image.h"
#include "halvora/platform/json.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/random.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/user_defaults.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/video_player.h"
#include "halvora/platform/wall_clock.h"
#include "halvora/platform/workers.h"

namespace halvora {

namespace {

void giveReason(std::string* reason, const char* text) {
  if (reason != nullptr) *reason = text;
}

class AbsentApplication final : public Application {
 public:
  void addObserver(ApplicationObserver& /*observer*/) override {}
  void removeObserver(ApplicationObserver& /*observer*/) override {}
  void setIdleTimerDisabled(bool /*disabled*/) override {}
  void setStatusBarHidden(bool /*hidden*/) override {}
  void dismissPresentedScreens() override {}
  bool canOpenSettings() const override { return false; }
  void openSettings() override {}
  void useAudioPlaybackCategory() override {}
};

class AbsentBattery final : public Battery {
 public:
  std::optional<BatteryState> state() const override { return std::nullopt; }
};

class AbsentManager final : public CentralManager {
 public:
  CentralState state() const override { return CentralState::unsupported; }
  void scanForPeripherals(const ScanOptions& /*options*/) override {}
  void stopScan() override {}
};

class AbsentBluetooth final : public BluetoothCentral {
 public:
  BluetoothAuthorization authorization() const override {
    return BluetoothAuthorization::allowedAlways;
  }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& /*delegate*/) override {
    return std::make_unique<AbsentManager>();
  }
};

class AbsentBundle final : public Bundle {
 public:
  const std::string& identifier() const override { return nothing_; }
  std::optional<FileAttributes> attributes(std::string_view /*path*/) const override {
    return std::nullopt;
  }
  std::optional<std::vector<std::string>> list(std::string_view /*folder*/) const override {
    return std::nullopt;
  }
  std::string location(std::string_view /*path*/) const override { return {}; }
  std::optional<std::string> readResource(std::string_view /*path*/,
                                          std::size_t /*limit*/) const override {
    return std::nullopt;
  }
  std::string localizedString(std::string_view key) const override { return std::string(key); }

 private:
  const std::string nothing_;
};

class AbsentCalendar final : public Calendar {
 public:
  DayComponents componentsOf(Date /*date*/) const override { return {}; }
};

class AbsentDefaults final : public UserDefaults {
 public:
  const DefaultsValue* find(std::string_view /*key*/) const override { return nullptr; }
  void set(std::string_view /*key*/, DefaultsValue /*value*/) override {}
  void remove(std::string_view /*key*/) override {}
  void synchronize() override {}
};

class AbsentFiles final : public Files {
 public:
  std::optional<FileAttributes> attributes(const std::string& /*path*/) const override {
    return std::nullopt;
  }
  std::optional<std::vector<std::string>> list(const std::string& /*folder*/) const override {
    return std::nullopt;
  }
  std::optional<std::string> read(const std::string& /*path*/,
                                  std::size_t /*limit*/) const override {
    return std::nullopt;
  }
  bool replace(const std::string& /*path*/, std::string_view /*bytes*/) override { return false; }
  bool makeFolder(const std::string& /*path*/) override { return false; }
  bool move(const std::string& /*from*/, const std::string& /*to*/) override { return false; }
  void removeFolder(const std::string& /*path*/) override {}
};

class AbsentHaptics final : public Haptics {
 public:
  void impact(ImpactStyle /*style*/) override {}
  void playSystemSound(std::uint32_t /*sound*/) override {}
  void disposeSystemSound(std::uint32_t /*sound*/) override {}
};

class AbsentHttp final : public HttpClient {
 public:
  void get(const std::string& /*url*/) override {}
};

class AbsentImages final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view /*bytes*/) const override { return std::nullopt; }
};

class AbsentCodes final : public MessageCodes {
 public:
  std::unique_ptr<MessageCode> withKey(const ShowKey& /*key*/) const override { return nullptr; }
};

class AbsentJson final : public JsonReader {
 public:
  std::optional<JsonValue> parse(std::string_view /*document*/,
                                 std::string* reason) const override {
    giveReason(reason, kReason);
    return std::nullopt;
  }
  bool read(std::string_view /*document*/, JsonEvents& /*events*/,
            std::string* reason) const override {
    giveReason(reason, kReason);
    return false;
  }

 private:
  static constexpr const char* kReason = "there is no reader of JSON";
};

class AbsentRandom final : public Random {
 public:
  std::uint32_t below(std::uint32_t /*bound*/) override { return 0; }
};

class AbsentScreen final : public Screen {
 public:
  Size bounds() const override { return {}; }
  double brightness() const override { return 1; }
  void setBrightness(double /*level*/) override {}
  float currentEDRHeadroom() const override { return 1; }
};

class AbsentQueue final : public SerialQueue {
 public:
  explicit AbsentQueue(std::string_view label) : label_(label) {}
  const std::string& label() const override { return label_; }
  bool dispatch(Task /*task*/) override { return false; }

 private:
  const std::string label_;
};

class AbsentQueues final : public SerialQueues {
 public:
  std::unique_ptr<SerialQueue> make(std::string_view label) override {
    return std::make_unique<AbsentQueue>(label);
  }
};

class AbsentTorch final : public Torch {
 public:
  bool hasTorch() const override { return false; }
  bool hasFlash() const override { return false; }
  void setOn(bool /*on*/) override {}
};

class AbsentVideos final : public VideoAssets {
 public:
  std::unique_ptr<VideoAsset> open(const std::string& /*path*/,
                                   std::string* reason) const override {
    giveReason(reason, "there is no reader of videos");
    return nullptr;
  }
};

/// Never ready, so it does not answer for a seek either.
class AbsentPlayer final : public VideoPlayer {
 public:
  void load(const VideoItem& /*item*/) override {}
  void play() override {}
  void pause() override {}
  bool isReadyToPlay() const override { return false; }
  bool isItemReadyToPlay() const override { return false; }
  void setPreferredForwardBuffer(Duration /*duration*/) override {}
  void seek(Duration /*position*/, Task /*completion*/) override {}
};

class AbsentWallClock final : public WallClock {
 public:
  Date now() const override { return {}; }
};

class AbsentWorkers final : public Workers {
 public:
  int count() const override { return 1; }
  bool areParallel() const override { return false; }
  WorkEnd run(std::span<Task> /*tasks*/) override { return WorkEnd::notBegun; }
};

struct AbsentBundles {
  AbsentBundle bundle;
  Bundles bundles{bundle, bundle};
};

struct AbsentPlayers {
  AbsentPlayer player;
  VideoPlayers players{player, player};
};

/// Never destroyed, as a host's statics may hold an engine while the process ends.
template <class Nothing>
Nothing& onlyOne() {
  static auto* const kNothing = new Nothing;
  return *kNothing;
}

}  // namespace

inline namespace v0 {
namespace absent {

Application& application() { return onlyOne<AbsentApplication>(); }
const Battery& battery() { return onlyOne<AbsentBattery>(); }
BluetoothCentral& bluetooth() { return onlyOne<AbsentBluetooth>(); }
const Bundles& bundles() { return onlyOne<AbsentBundles>().bundles; }
Calendar& calendar() { return onlyOne<AbsentCalendar>(); }
UserDefaults& defaults() { return onlyOne<AbsentDefaults>(); }
Files& files() { return onlyOne<AbsentFiles>(); }
Haptics& haptics() { return onlyOne<AbsentHaptics>(); }
HttpClient& http() { return onlyOne<AbsentHttp>(); }
const ImageDecoder& images() { return onlyOne<AbsentImages>(); }
const JsonReader& json() { return onlyOne<AbsentJson>(); }
const MessageCodes& codes() { return onlyOne<AbsentCodes>(); }
SerialQueues& queues() { return onlyOne<AbsentQueues>(); }
Random& random() { return onlyOne<AbsentRandom>(); }
Screen& screen() { return onlyOne<AbsentScreen>(); }
Torch& torch() { return onlyOne<AbsentTorch>(); }
const VideoAssets& videoAssets() { return onlyOne<AbsentVideos>(); }
const VideoPlayers& videoPlayers() { return onlyOne<AbsentPlayers>().players; }
WallClock& wallClock() { return onlyOne<AbsentWallClock>(); }
Workers& workers() { return onlyOne<AbsentWorkers>(); }

}  // namespace absent
}  // namespace v0

}  // namespace halvora
