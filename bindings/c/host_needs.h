// SPDX-License-Identifier: Apache-2.0
// The needs of a phone, served by a host's callbacks. An absent callback is a quiet nothing. Owned
// by a phone; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/standard/application_observers.h"
#include "adapters/standard/radio_managers.h"
#include "adapters/standard/standard_files.h"
#include "adapters/standard/string_table.h"
#include "bindings/c/halvora.h"
#include "halvora/platform/application.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/json.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/torch.h"

namespace halvora {

/// Callbacks as the host gave them, each called only where it is there.
class Host {
 public:
  explicit Host(const halvora_callbacks& callbacks) : callbacks_(callbacks) {}

  const halvora_callbacks& callbacks() const { return callbacks_; }
  /// Only if it is another word than the last one for it.
  void set(halvora_switch which, bool isOn);
  void haptic(halvora_haptic haptic) const;
  void tell(halvora_event event) const;

 private:
  halvora_callbacks callbacks_;
  bool isOn_[4] = {false, false, false, false};
};

class HostScreen final : public Screen {
 public:
  HostScreen(const Host& host, Size size) : bounds_(size), host_(host) {}
  Size bounds() const override { return bounds_; }
  void resize(Size size) { bounds_ = size; }
  double brightness() const override;
  void setBrightness(double level) override;
  float currentEDRHeadroom() const override { return 1; }

 private:
  Size bounds_;
  double level_ = 1;
  const Host& host_;
};

class HostTorch final : public Torch {
 public:
  HostTorch(Host& host, bool isThere) : host_(host), isThere_(isThere) {}
  bool hasTorch() const override { return isThere_; }
  bool hasFlash() const override { return isThere_; }
  void setOn(bool on) override { host_.set(HALVORA_SWITCH_TORCH, on); }

 private:
  Host& host_;
  const bool isThere_;
};

class HostHaptics final : public Haptics {
 public:
  explicit HostHaptics(const Host& host) : host_(host) {}
  void impact(ImpactStyle style) override;
  void playSystemSound(std::uint32_t sound) override;
  void disposeSystemSound(std::uint32_t sound) override;

 private:
  const Host& host_;
};

class HostApplication final : public Application {
 public:
  explicit HostApplication(Host& host) : host_(host) {}
  void addObserver(ApplicationObserver& observer) override { observers_.add(observer); }
  void removeObserver(ApplicationObserver& observer) override { observers_.remove(observer); }
  void setIdleTimerDisabled(bool disabled) override;
  void setStatusBarHidden(bool hidden) override;
  void dismissPresentedScreens() override;
  bool canOpenSettings() const override { return host_.callbacks().event != nullptr; }
  void openSettings() override { host_.tell(HALVORA_EVENT_OPEN_SETTINGS); }
  void useAudioPlaybackCategory() override {}
  void becomeActive() { observers_.tell(&ApplicationObserver::appDidBecomeActive); }
  void resignActive() { observers_.tell(&ApplicationObserver::appWillResignActive); }

 private:
  Host& host_;
  ApplicationObservers observers_;
};

/// A radio that hears what the host hands in.
class HostRadio final : public BluetoothCentral {
 public:
  HostRadio(RunLoop& loop, Host& host) : loop_(loop), host_(host) {}
  BluetoothAuthorization authorization() const override;
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;
  void setState(CentralState state);
  void hear(std::span<const std::uint8_t> manufacturerData);

 private:
  class Manager;
  /// Tells the host whether anybody scans.
  void scanChanged();

  RunLoop& loop_;
  Host& host_;
  CentralState state_ = CentralState::poweredOn;
  RadioManagers<Manager> managers_;
};

/// The host's files, or the machine's, each act by itself.
class HostFiles final : public StandardFiles {
 public:
  explicit HostFiles(const Host& host) : host_(host) {}
  std::optional<FileAttributes> attributes(const std::string& path) const override;
  std::optional<std::vector<std::string>> list(const std::string& folder) const override;
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override;
  bool replace(const std::string& path, std::string_view bytes) override;
  bool makeFolder(const std::string& path) override;
  bool move(const std::string& from, const std::string& to) override;
  void removeFolder(const std::string& path) override;

 private:
  const Host& host_;
};

/// The one file that the defaults are kept in: by the host's callbacks, else in `beneath` where
/// there is a folder for it, else nowhere.
class DefaultsFile final : public StandardFiles {
 public:
  DefaultsFile(const Host& host, Files& beneath, const std::string& folder)
      : path_(folder + "/defaults.json"),
        host_(host),
        beneath_(beneath),
        hasFolder_(!folder.empty()) {}
  const std::string& path() const { return path_; }
  std::optional<FileAttributes> attributes(const std::string& path) const override;
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override;
  bool replace(const std::string& path, std::string_view bytes) override;
  bool replaceLastingly(const std::string& path, std::string_view bytes) override;
  bool makeFolder(const std::string& path) override;
  bool move(const std::string& from, const std::string& to) override;

 private:
  bool isHosts() const { return host_.callbacks().write_defaults != nullptr; }

  const std::string path_;
  const Host& host_;
  Files& beneath_;
  const bool hasFolder_;
};

}  // namespace halvora
