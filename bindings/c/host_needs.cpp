// SPDX-License-Identifier: Apache-2.0
#include "bindings/c/host_needs.h"

#include <algorithm>
#include <span>
#include <utility>

#include "adapters/standard/file_names.h"
#include "adapters/standard/radio_manager.h"

namespace halvora {

namespace {

/// The bytes that a reading callback has; it is asked again where they are more than it was given
/// room for, and once more for each time that they have grown meanwhile.
template <class Read>
std::optional<std::string> readAll(const Read& read, std::size_t limit) {
  constexpr std::size_t kFirstRoom = 64U << 10;
  constexpr int kMostAttempts = 8;
  std::string bytes;
  for (std::size_t room = std::min(kFirstRoom, limit), attempt = 0; attempt < kMostAttempts;
       ++attempt) {
    bytes.resize(room);
    const std::int64_t count = read(bytes.data(), room);
    if (count < 0 || static_cast<std::uint64_t>(count) > limit) return std::nullopt;
    if (static_cast<std::size_t>(count) <= room) {
      bytes.resize(static_cast<std::size_t>(count));
      return bytes;
    }
    room = static_cast<std::size_t>(count);
  }
  return std::nullopt;
}

}  // namespace

void Host::set(halvora_switch which, bool isOn) {
  if (std::exchange(isOn_[which], isOn) == isOn) return;
  if (callbacks_.set != nullptr) callbacks_.set(callbacks_.context, which, isOn ? 1 : 0);
}

void Host::haptic(halvora_haptic haptic) const {
  if (callbacks_.haptic != nullptr) callbacks_.haptic(callbacks_.context, haptic);
}

void Host::tell(halvora_event event) const {
  if (callbacks_.event != nullptr) callbacks_.event(callbacks_.context, event);
}

double HostScreen::brightness() const {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.brightness == nullptr) return level_;
  const double level = callbacks.brightness(callbacks.context);
  // Also where it is no number.
  return level >= 0 ? std::min(level, 1.0) : 0;
}

void HostScreen::setBrightness(double level) {
  level_ = std::clamp(level, 0.0, 1.0);
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.set_brightness != nullptr) callbacks.set_brightness(callbacks.context, level_);
}

void HostHaptics::impact(ImpactStyle style) {
  host_.haptic(style == ImpactStyle::light ? HALVORA_HAPTIC_LIGHT : HALVORA_HAPTIC_HEAVY);
}

void HostHaptics::playSystemSound(std::uint32_t sound) {
  if (sound == kVibrationSound) host_.haptic(HALVORA_HAPTIC_SOUND);
}

void HostHaptics::disposeSystemSound(std::uint32_t sound) {
  if (sound == kVibrationSound) host_.haptic(HALVORA_HAPTIC_SOUND_ENDS);
}

void HostApplication::setIdleTimerDisabled(bool disabled) {
  host_.set(HALVORA_SWITCH_IDLE_TIMER_DISABLED, disabled);
}

void HostApplication::setStatusBarHidden(bool hidden) {
  host_.set(HALVORA_SWITCH_STATUS_BAR_HIDDEN, hidden);
}

void HostApplication::dismissPresentedScreens() {
  observers_.tell(&ApplicationObserver::presentedScreensDismissed);
}

class HostRadio::Manager final : public RadioManager {
 public:
  Manager(HostRadio& radio, CentralManagerDelegate& delegate)
      : RadioManager(radio.loop_, delegate), radio_(radio) {
    radio_.managers_.add(*this);
  }
  ~Manager() override {
    radio_.managers_.remove(*this);
    radio_.scanChanged();
  }
  CentralState state() const override { return radio_.state_; }

 protected:
  void setScanning(bool isScanning) override {
    RadioManager::setScanning(isScanning);
    radio_.scanChanged();
  }

 private:
  HostRadio& radio_;
};

BluetoothAuthorization HostRadio::authorization() const {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.radio_permission == nullptr) return BluetoothAuthorization::allowedAlways;
  switch (callbacks.radio_permission(callbacks.context)) {
    case 0:
      return BluetoothAuthorization::notDetermined;
    case 1:
      return BluetoothAuthorization::restricted;
    case 3:
      return BluetoothAuthorization::allowedAlways;
    default:
      return BluetoothAuthorization::denied;
  }
}

std::unique_ptr<CentralManager> HostRadio::makeManager(CentralManagerDelegate& delegate) {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (authorization() == BluetoothAuthorization::notDetermined &&
      callbacks.ask_radio_permission != nullptr) {
    callbacks.ask_radio_permission(callbacks.context);
  }
  return std::make_unique<Manager>(*this, delegate);
}

void HostRadio::setState(CentralState state) {
  if (state == state_) return;
  state_ = state;
  managers_.forEach([state](Manager& manager) { manager.stateChanged(state); });
  scanChanged();
}

void HostRadio::hear(std::span<const std::uint8_t> manufacturerData) {
  managers_.forEach([manufacturerData](Manager& manager) {
    if (manager.isScanning()) manager.delegate().didDiscoverPeripheral({manufacturerData});
  });
}

void HostRadio::scanChanged() { host_.set(HALVORA_SWITCH_SCAN, managers_.isAnyScanning()); }

std::optional<FileAttributes> HostFiles::attributes(const std::string& path) const {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.look_at_file == nullptr) return StandardFiles::attributes(path);
  FileAttributes found;
  const int kind =
      callbacks.look_at_file(callbacks.context, path.c_str(), &found.size, &found.modifiedAt);
  if (kind != 1 && kind != 2) return std::nullopt;
  found.isFolder = kind == 2;
  return found;
}

std::optional<std::vector<std::string>> HostFiles::list(const std::string& folder) const {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.list_folder == nullptr) return StandardFiles::list(folder);
  std::vector<std::string> names;
  const auto take = [](void* into, const char* name) {
    auto& taken = *static_cast<std::vector<std::string>*>(into);
    try {
      if (name != nullptr && taken.size() < kMostEntries) taken.emplace_back(name);
    } catch (...) {
      // Without memory the list is what was taken so far.
    }
  };
  if (callbacks.list_folder(callbacks.context, folder.c_str(), take, &names) == 0) {
    return std::nullopt;
  }
  std::ranges::sort(names, isListedBefore);
  return names;
}

std::optional<std::string> HostFiles::read(const std::string& path, std::size_t limit) const {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.read_file == nullptr) return StandardFiles::read(path, limit);
  return readAll(
      [&](char* into, std::size_t room) {
        return callbacks.read_file(callbacks.context, path.c_str(), into, room);
      },
      limit);
}

bool HostFiles::replace(const std::string& path, std::string_view bytes) {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.write_file == nullptr) return StandardFiles::replace(path, bytes);
  return callbacks.write_file(callbacks.context, path.c_str(), bytes.data(), bytes.size()) != 0;
}

bool HostFiles::makeFolder(const std::string& path) {
  // Whoever writes files by their paths has its own way with folders.
  return host_.callbacks().write_file != nullptr || StandardFiles::makeFolder(path);
}

bool HostFiles::move(const std::string& from, const std::string& to) {
  if (host_.callbacks().write_file == nullptr) return StandardFiles::move(from, to);
  constexpr std::size_t kLargest = std::size_t{1} << 30;
  const std::optional<std::string> bytes = read(from, kLargest);
  if (!bytes || !replace(to, *bytes)) return false;
  removeFolder(from);
  return true;
}

void HostFiles::removeFolder(const std::string& path) {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.remove_file != nullptr) {
    callbacks.remove_file(callbacks.context, path.c_str());
  } else if (callbacks.write_file == nullptr) {
    StandardFiles::removeFolder(path);
  }
}

std::optional<FileAttributes> DefaultsFile::attributes(const std::string& path) const {
  if (host_.callbacks().read_defaults != nullptr) return FileAttributes{};
  if (isHosts() || !hasFolder_) return std::nullopt;
  return beneath_.attributes(path);
}

std::optional<std::string> DefaultsFile::read(const std::string& path, std::size_t limit) const {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (callbacks.read_defaults != nullptr) {
    return readAll(
        [&](char* into, std::size_t room) {
          return callbacks.read_defaults(callbacks.context, into, room);
        },
        limit);
  }
  if (isHosts() || !hasFolder_) return std::nullopt;
  return beneath_.read(path, limit);
}

bool DefaultsFile::replace(const std::string& path, std::string_view bytes) {
  const halvora_callbacks& callbacks = host_.callbacks();
  if (isHosts()) {
    // What was damaged is not kept beside it: the host has it, and knows of one document only.
    return path != path_ ||
           callbacks.write_defaults(callbacks.context, bytes.data(), bytes.size()) != 0;
  }
  return !hasFolder_ || beneath_.replace(path, bytes);
}

bool DefaultsFile::replaceLastingly(const std::string& path, std::string_view bytes) {
  return replace(path, bytes);
}

bool DefaultsFile::move(const std::string& from, const std::string& to) {
  return !isHosts() && hasFolder_ && beneath_.move(from, to);
}

bool DefaultsFile::makeFolder(const std::string& path) {
  return isHosts() || !hasFolder_ || beneath_.makeFolder(path);
}

}  // namespace halvora
