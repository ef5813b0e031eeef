// SPDX-License-Identifier: Apache-2.0
#include "venue/air/bluez_advertiser.h"

#include <algorithm>
#include <utility>

#include "adapters/linux/bus/bluez_errors.h"
#include "adapters/linux/bus/bluez_messages.h"
#include "adapters/linux/bus/bus_dictionary.h"
#include "adapters/linux/bus/bus_name.h"

namespace halvora {

namespace {

constexpr const char* kManagerInterface = "org.bluez.LEAdvertisingManager1";
constexpr const char* kObject = "/org/halvora/advertisement";
constexpr const char* kInterface = "org.bluez.LEAdvertisement1";
constexpr const char* kNoService = "no Bluetooth service";
/// No machine has so many; a daemon that says otherwise is not believed.
constexpr std::size_t kMostAdapters = 16;

const BluezAdvertiser& advertiser(void* self) { return *static_cast<BluezAdvertiser*>(self); }

// Not connectable: nobody is to connect, and no bytes go to flags.
int appendType(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
               sd_bus_error*) {
  return sd_bus_message_append(reply, "s", "broadcast");
}

// The daemon counts companies low byte first, as they are on the air.
int appendData(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* self,
               sd_bus_error*) {
  const std::vector<std::uint8_t>& data = advertiser(self).data();
  const int company = data[0] | data[1] << 8;
  sd_bus_message_open_container(reply, 'a', "{qv}");
  sd_bus_message_open_container(reply, 'e', "qv");
  sd_bus_message_append(reply, "q", company);
  sd_bus_message_open_container(reply, 'v', "ay");
  sd_bus_message_append_array(reply, 'y', data.data() + 2, data.size() - 2);
  int result = 0;
  for (int level = 0; level < 3; ++level) result = sd_bus_message_close_container(reply);
  return result;
}

int appendInterval(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                   void* self, sd_bus_error*) {
  const auto interval =
      std::chrono::duration_cast<std::chrono::milliseconds>(advertiser(self).settings().interval);
  return sd_bus_message_append(reply, "u", static_cast<std::uint32_t>(interval.count()));
}

}  // namespace

const sd_bus_vtable BluezAdvertiser::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Release", "", "", handleRelease, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Type", "s", appendType, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ManufacturerData", "a{qv}", appendData, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("MinInterval", "u", appendInterval, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("MaxInterval", "u", appendInterval, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END,
};

// Anybody may call it, and only the daemon has anything to release. Nothing may be thrown through
// the bus library, which is C.
int BluezAdvertiser::handleRelease(sd_bus_message* message, void* self,
                                   sd_bus_error* error) noexcept {
  auto& own = *static_cast<BluezAdvertiser*>(self);
  if (own.owner_.empty() || !isFrom(message, own.owner_)) {
    return sd_bus_error_set(error, SD_BUS_ERROR_ACCESS_DENIED, "not the Bluetooth daemon");
  }
  try {
    own.fail("the Bluetooth service has taken the advertisement off the air");
  } catch (...) {
    own.connection_.failed();
  }
  return sd_bus_reply_method_return(message, nullptr);
}

void BluezAdvertiser::fail(std::string why) {
  isBusy_ = false;
  if (failure_.empty()) failure_ = std::move(why);
}

void BluezAdvertiser::open(const TransmitterSettings& settings) {
  settings_ = settings;
  isBusy_ = true;
  connection_.open(busAddress_, [this] { busLost(); });
  if (connection_.bus() == nullptr) return;
  ownerMatch_ = watchName(connection_, kBluez,
                          [this](std::string_view, std::string_view now) { ownerChanged(now); });
  call(connection_.newCall({kBluez, "/", kObjectManagerInterface}, "GetManagedObjects"),
       &BluezAdvertiser::takeObjects);
}

void BluezAdvertiser::busLost() {
  fail(connection_.failures() > 0 ? "out of memory"
                                  : "no system bus to reach the Bluetooth service on");
}

void BluezAdvertiser::call(const BusMessage& message, Handler answered) {
  isBusy_ = true;
  answer_ = connection_.call(message, BusConnection::kUsualTime,
                             [this, answered](sd_bus_message* answer) {
                               answer_.reset();
                               (this->*answered)(answer);
                             });
}

void BluezAdvertiser::ownerChanged(std::string_view now) {
  if (owner_.empty() ? !now.empty() : owner_ == now) return;
  fail("the Bluetooth service has gone");
}

void BluezAdvertiser::takeObjects(sd_bus_message* message) {
  if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    if (isRefusal(*error)) return fail("the system does not allow this user to use Bluetooth");
    return fail(isAbsence(*error) ? kNoService : kNoService + (": " + textOf(*error)));
  }
  if (const char* sender = sd_bus_message_get_sender(message)) owner_ = sender;
  std::vector<Adapter> adapters;
  const bool isWhole = forEachEntry(message, kObjects, [&](const std::string& path) {
    Adapter adapter{path.substr(path.rfind('/') + 1), path};
    AdapterNews news;
    const bool isRead = forEachEntry(message, kInterfaces, [&](const std::string& interface) {
      adapter.canAdvertise = adapter.canAdvertise || interface == kManagerInterface;
      if (interface != kAdapterInterface) return sd_bus_message_skip(message, "a{sv}") >= 0;
      news.isAdapter = true;
      return readAdapter(message, news);
    });
    adapter.isPowered = news.isPowered.value_or(false);
    if (news.isAdapter && adapters.size() < kMostAdapters) adapters.push_back(std::move(adapter));
    return isRead;
  });
  if (!isWhole) return fail("the Bluetooth service gives an answer that is none");
  std::ranges::sort(adapters, {}, &Adapter::path);
  choose(adapters);
}

// The adapter that was asked for, else the first that can do it; of the others the one that lacks
// least says what is missing.
void BluezAdvertiser::choose(const std::vector<Adapter>& adapters) {
  const Adapter* best = nullptr;
  const auto merit = [](const Adapter& one) { return one.isPowered + one.canAdvertise; };
  for (const Adapter& adapter : adapters) {
    if (!settings_.adapter.empty() && adapter.name != settings_.adapter) continue;
    if (best == nullptr || merit(adapter) > merit(*best)) best = &adapter;
  }
  if (best == nullptr) {
    return fail("no Bluetooth adapter" +
                (settings_.adapter.empty() ? "" : " called " + settings_.adapter));
  }
  if (!best->isPowered) return fail("the Bluetooth adapter " + best->name + " is switched off");
  if (!best->canAdvertise) return fail("the Bluetooth adapter " + best->name + " cannot advertise");
  adapter_ = best->path;
  isBusy_ = false;
  watchAdapter();
}

// A daemon may drop an advertisement with its adapter and never say so.
void BluezAdvertiser::watchAdapter() {
  const std::string signal = "type='signal',sender='org.bluez',";
  removedMatch_ = connection_.match(signal +
                                        "path='/',interface='org.freedesktop.DBus.ObjectManager',"
                                        "member='InterfacesRemoved',arg0path='" +
                                        adapter_ + "'",
                                    [this](sd_bus_message* message) { takeRemoved(message); });
  changedMatch_ = connection_.match(signal + "path='" + adapter_ +
                                        "',interface='org.freedesktop.DBus.Properties',"
                                        "member='PropertiesChanged',arg0='org.bluez.Adapter1'",
                                    [this](sd_bus_message* message) { takeChanged(message); });
}

void BluezAdvertiser::takeRemoved(sd_bus_message* message) {
  const char* path = nullptr;
  if (!isFrom(message, owner_) || sd_bus_message_read(message, "o", &path) < 0 ||
      adapter_ != path || sd_bus_message_enter_container(message, 'a', "s") < 0) {
    return;
  }
  for (const char* name = nullptr; sd_bus_message_read(message, "s", &name) > 0;) {
    if (std::string_view(name) != kAdapterInterface) continue;
    return fail("the Bluetooth adapter is gone");
  }
}

void BluezAdvertiser::takeChanged(sd_bus_message* message) {
  AdapterNews news;
  if (!isFrom(message, owner_) || sd_bus_message_skip(message, "s") < 0 ||
      !readAdapter(message, news) || news.isPowered.value_or(true)) {
    return;
  }
  fail("the Bluetooth adapter is switched off");
}

void BluezAdvertiser::show(std::span<const std::uint8_t> manufacturerData) {
  if (!failure_.empty()) return;
  data_.assign(manufacturerData.begin(), manufacturerData.end());
  if (isOnAir_) return tellChange();
  isChanged_ = object_ != nullptr;
  if (isChanged_) return;
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object_vtable(connection_.bus(), &slot, kObject, kInterface, kTable, this) < 0) {
    return connection_.giveUp();
  }
  object_.reset(slot);
  call(connection_.newCall({kBluez, adapter_.c_str(), kManagerInterface}, "RegisterAdvertisement",
                           "oa{sv}", kObject, 0),
       &BluezAdvertiser::takeRegistered);
}

void BluezAdvertiser::takeRegistered(sd_bus_message* message) {
  isBusy_ = false;
  if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    return fail("the Bluetooth service does not advertise: " + textOf(*error));
  }
  isOnAir_ = true;
  if (std::exchange(isChanged_, false)) tellChange();
}

void BluezAdvertiser::tellChange() {
  sd_bus_emit_properties_changed(connection_.bus(), kObject, kInterface, "ManufacturerData",
                                 nullptr);
  connection_.sent();
}

void BluezAdvertiser::end() {
  if (!failure_.empty() || object_ == nullptr) return;
  isOnAir_ = false;
  call(connection_.newCall({kBluez, adapter_.c_str(), kManagerInterface}, "UnregisterAdvertisement",
                           "o", kObject),
       &BluezAdvertiser::takeUnregistered);
}

// Whatever the answer is: the daemon has it no longer.
void BluezAdvertiser::takeUnregistered(sd_bus_message*) {
  object_.reset();
  isBusy_ = false;
}

}  // namespace halvora
