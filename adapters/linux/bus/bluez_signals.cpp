// SPDX-License-Identifier: Apache-2.0
// What the daemon tells by itself.
#include <algorithm>
#include <string_view>

#include "adapters/linux/bus/bluez_daemon.h"
#include "adapters/linux/bus/bus_dictionary.h"
#include "adapters/linux/bus/bus_name.h"

namespace halvora {

namespace {

/// No machine has so many; a daemon that says otherwise is not believed.
constexpr std::size_t kMostAdapters = 16;
/// What a path may have that is kept; the daemon's have some forty letters.
constexpr std::size_t kLongestPath = 255;

// At a list of texts: whether one of them is `text`.
bool contains(sd_bus_message* message, std::string_view text) {
  bool isIn = false;
  const char* name = nullptr;
  while (sd_bus_message_read_basic(message, 's', &name) > 0) isIn = isIn || name == text;
  return isIn;
}

}  // namespace

bool BluezDaemon::isFromDaemon(sd_bus_message* message) const {
  return !owner_.empty() && isFrom(message, owner_);
}

bool BluezDaemon::isScanned(std::string_view device) const {
  return !scanned_.empty() && device.size() > scanned_.size() && device.size() <= kLongestPath &&
         device.starts_with(scanned_) && device[scanned_.size()] == '/';
}

void BluezDaemon::ownerChanged(std::string_view now) {
  if (owner_ == now) return;
  if (!owner_.empty() || now.empty()) {
    daemonLost(BluezReach::noDaemon);
    listener_->systemChanged();
  }
  // A question that made the bus start the daemon is still to be answered.
  if (!now.empty()) look();
}

void BluezDaemon::interfacesAdded(sd_bus_message* message) {
  const char* path = nullptr;
  if (!isFromDaemon(message)) return;
  if (sd_bus_message_read_basic(message, 'o', &path) <= 0) {
    ++counts_.malformed;
  } else if (isScanned(path)) {
    CompanyData data;
    take(readDeviceObject(message, data), path, data);
  } else {
    AdapterNews news;
    if (!readAdapterObject(message, news)) {
      ++counts_.malformed;
    } else if (news.isAdapter || adapterAt(path) != nullptr) {
      takeAdapter(path, news);
      listener_->systemChanged();
    }
  }
}

void BluezDaemon::interfacesRemoved(sd_bus_message* message) {
  const char* path = nullptr;
  if (!isFromDaemon(message) || sd_bus_message_read_basic(message, 'o', &path) <= 0) return;
  if (adapterAt(path) == nullptr) return;
  if (!entered(sd_bus_message_enter_container(message, 'a', "s"))) return;
  if (!contains(message, kAdapterInterface)) return;
  std::erase_if(adapters_, [&](const BluezAdapter& adapter) { return adapter.path == path; });
  listener_->systemChanged();
}

void BluezDaemon::adapterChanged(sd_bus_message* message) {
  if (!isFromDaemon(message)) return;
  const char* path = sd_bus_message_get_path(message);
  BluezAdapter* adapter = path != nullptr ? adapterAt(path) : nullptr;
  AdapterNews news;
  if (!sd_bus_message_has_signature(message, "sa{sv}as") || sd_bus_message_skip(message, "s") < 0 ||
      !readAdapter(message, news)) {
    ++counts_.malformed;
  } else if (adapter != nullptr && news.isPowered && adapter->isPowered != *news.isPowered) {
    adapter->isPowered = *news.isPowered;
    listener_->systemChanged();
  }
}

void BluezDaemon::deviceChanged(sd_bus_message* message) {
  const char* path = sd_bus_message_get_path(message);
  if (!isFromDaemon(message) || path == nullptr || !isScanned(path)) return;
  CompanyData data;
  const bool isReadable = sd_bus_message_skip(message, "s") >= 0;
  take(isReadable ? readDevice(message, data) : DeviceNews::malformed, path, data);
}

void BluezDaemon::sleepChanged(sd_bus_message* message) {
  int isGoingToSleep = 0;
  if (login_.empty() || !isFrom(message, login_)) return;
  if (sd_bus_message_read_basic(message, 'b', &isGoingToSleep) > 0 && isGoingToSleep == 0) {
    listener_->wokeUp();
  }
}

void BluezDaemon::monitorActivated() { listener_->monitorActivated(); }

void BluezDaemon::monitorReleased() { listener_->monitorReleased(); }

void BluezDaemon::deviceFound(std::string_view path) {
  if (!isScanned(path) || method_ != BluezMethod::monitor) return;
  const auto repeated = devices_.repeat(path);
  if (!repeated) return askForData(path);
  ++counts_.ours;
  if (repeated->empty()) return;
  // A copy: whoever hears it may end the scan.
  CompanyData data;
  data.assign(repeated->subspan(kShowPrefix.size()));
  listener_->heard(data.bytes());
}

void BluezDaemon::take(DeviceNews news, const char* device, const CompanyData& data, bool isTold) {
  if (news == DeviceNews::foreign) {
    ++counts_.foreign;
  } else if (news == DeviceNews::malformed) {
    ++counts_.malformed;
  } else {
    ++counts_.ours;
    if (method_ == BluezMethod::monitor) devices_.keep(device, data.bytes(), isTold);
    listener_->heard(data.bytes());
  }
}

BluezAdapter* BluezDaemon::adapterAt(std::string_view path) {
  const auto found = std::ranges::find(adapters_, path, &BluezAdapter::path);
  return found == adapters_.end() ? nullptr : &*found;
}

void BluezDaemon::takeAdapter(const char* path, const AdapterNews& news) {
  BluezAdapter* adapter = adapterAt(path);
  if (adapter == nullptr) {
    if (!news.isAdapter || adapters_.size() >= kMostAdapters) return;
    if (std::string_view(path).size() > kLongestPath) return;
    adapter = &adapters_.emplace_back();
    adapter->path = path;
    adapter->isPowered = news.isPowered.value_or(false);
  } else if (news.isPowered) {
    adapter->isPowered = *news.isPowered;
  }
  adapter->hasMonitors = adapter->hasMonitors || news.hasMonitors;
  std::ranges::sort(adapters_, {}, &BluezAdapter::path);
}

}  // namespace halvora
