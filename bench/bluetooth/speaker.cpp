// SPDX-License-Identifier: Apache-2.0
#include "bench/bluetooth/speaker.h"

#include <array>
#include <cstdio>
#include <utility>

namespace halvora {

namespace {

constexpr const char* kAdapter = "/org/bluez/hci0";
constexpr std::uint16_t kShow = 0xC909;
constexpr std::uint16_t kOther = 0x004C;
constexpr Duration kTick = milliseconds(10);
constexpr std::int64_t kTicksASecond = 100;
/// Of a packet without the company's id.
constexpr std::size_t kRestSize = 24;
constexpr std::size_t kSequenceOffset = 21;

std::string pathOf(int device, bool isShow) {
  std::array<char, 64> path{};
  std::snprintf(path.data(), path.size(), "%s/dev_%s_00_00_%02X_%02X_%02X", kAdapter,
                isShow ? "C0" : "F0", (device >> 16) & 0xFF, (device >> 8) & 0xFF, device & 0xFF);
  return path.data();
}

void appendProperties(sd_bus_message* message, std::uint16_t company,
                      const std::array<std::uint8_t, kRestSize>& rest) {
  sd_bus_message_open_container(message, 'a', "{sv}");
  sd_bus_message_append(message, "{sv}", "RSSI", "n", -60);
  sd_bus_message_open_container(message, 'e', "sv");
  sd_bus_message_append(message, "s", "ManufacturerData");
  sd_bus_message_open_container(message, 'v', "a{qv}");
  sd_bus_message_open_container(message, 'a', "{qv}");
  sd_bus_message_open_container(message, 'e', "qv");
  sd_bus_message_append(message, "q", company);
  sd_bus_message_open_container(message, 'v', "ay");
  sd_bus_message_append_array(message, 'y', rest.data(), rest.size());
  for (int level = 0; level < 6; ++level) sd_bus_message_close_container(message);
}

}  // namespace

bool Speaker::run() {
  connection_.open(address_, [this] { isOver_ = true; });
  sd_bus* bus = connection_.bus();
  if (bus == nullptr || sd_bus_add_filter(bus, nullptr, handle, this) < 0 ||
      sd_bus_request_name(bus, "org.bluez", 0) < 0) {
    return false;
  }
  connection_.sent();
  loop_.runUntil([this] { return isOver_ || ticks_.isValid(); }, std::chrono::minutes(1));
  loop_.runUntil([this] { return isOver_; }, std::chrono::seconds(air_.seconds + 60));
  if (connection_.bus() != nullptr) sd_bus_flush(connection_.bus());
  return true;
}

int Speaker::handle(sd_bus_message* message, void* self, sd_bus_error*) {
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
  return static_cast<Speaker*>(self)->answer(message, sd_bus_message_get_member(message));
}

int Speaker::answer(sd_bus_message* call, const std::string& member) {
  if (member == "GetManagedObjects") return answerObjects(call);
  sd_bus_reply_method_return(call, nullptr);
  if (member == "RegisterMonitor") startMonitor(call);
  if (member == "StartDiscovery") speak();
  return 1;
}

int Speaker::answerObjects(sd_bus_message* call) {
  sd_bus_message* reply = nullptr;
  if (sd_bus_message_new_method_return(call, &reply) < 0) return 1;
  const BusMessage owned(reply);
  sd_bus_message_open_container(reply, 'a', "{oa{sa{sv}}}");
  sd_bus_message_open_container(reply, 'e', "oa{sa{sv}}");
  sd_bus_message_append(reply, "o", kAdapter);
  sd_bus_message_open_container(reply, 'a', "{sa{sv}}");
  sd_bus_message_append(reply, "{sa{sv}}", "org.bluez.Adapter1", 1, "Powered", "b", 1);
  if (air_.hasMonitors) {
    sd_bus_message_append(reply, "{sa{sv}}", "org.bluez.AdvertisementMonitorManager1", 1,
                          "SupportedMonitorTypes", "as", 1, "or_patterns");
  }
  for (int level = 0; level < 3; ++level) sd_bus_message_close_container(reply);
  sd_bus_send(nullptr, reply, nullptr);
  return 1;
}

void Speaker::startMonitor(sd_bus_message* call) {
  client_ = sd_bus_message_get_sender(call);
  hasMonitor_ = true;
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(connection_.bus(), &message, client_.c_str(),
                                     "/org/halvora/monitors/show",
                                     "org.bluez.AdvertisementMonitor1", "Activate") < 0) {
    return;
  }
  send(message);
  speak();
}

void Speaker::speak() {
  if (ticks_.isValid()) return;
  ticks_ = {loop_, loop_.every(kTick, [this] { speakAt(tick_++); })};
}

// Rates are kept as sums, so that they come out right however late a tick is.
void Speaker::speakAt(std::int64_t tick) {
  if (tick == air_.seconds * kTicksASecond) return sayLast();
  const std::int64_t shows = std::int64_t{air_.showTransmitters} * air_.showPacketsASecond;
  const auto upTo = [&](std::int64_t aSecond) { return (tick + 1) * aSecond / kTicksASecond; };
  while (showPackets_ < upTo(shows)) {
    const auto transmitter = static_cast<int>(showPackets_) % air_.showTransmitters;
    say(transmitter, true, showPackets_, static_cast<int>(showPackets_) < air_.showTransmitters);
    ++showPackets_;
  }
  while (!hasMonitor_ && foreign_ < upTo(air_.foreignASecond)) {
    const auto device = static_cast<int>(foreign_) % air_.foreignDevices;
    say(device, false, foreign_, static_cast<int>(foreign_) < air_.foreignDevices);
    ++foreign_;
  }
}

void Speaker::say(int device, bool isShow, std::uint32_t number, bool isFirst) {
  const std::string path = pathOf(device, isShow);
  std::array<std::uint8_t, kRestSize> rest{};
  rest[kSequenceOffset] = static_cast<std::uint8_t>(number >> 8);
  rest[kSequenceOffset + 1] = static_cast<std::uint8_t>(number);
  rest[kRestSize - 1] = static_cast<std::uint8_t>(device);
  sd_bus_message* message = nullptr;
  if (isFirst) {
    sd_bus_message_new_signal(connection_.bus(), &message, "/",
                              "org.freedesktop.DBus.ObjectManager", "InterfacesAdded");
    sd_bus_message_append(message, "o", path.c_str());
    sd_bus_message_open_container(message, 'a', "{sa{sv}}");
    sd_bus_message_open_container(message, 'e', "sa{sv}");
    sd_bus_message_append(message, "s", "org.bluez.Device1");
    appendProperties(message, isShow ? kShow : kOther, rest);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
  } else {
    sd_bus_message_new_signal(connection_.bus(), &message, path.c_str(),
                              "org.freedesktop.DBus.Properties", "PropertiesChanged");
    sd_bus_message_append(message, "s", "org.bluez.Device1");
    appendProperties(message, isShow ? kShow : kOther, rest);
    sd_bus_message_append(message, "as", 0);
  }
  send(message);
  if (hasMonitor_) tellFound(path);
}

void Speaker::tellFound(const std::string& path) {
  sd_bus_message* message = nullptr;
  sd_bus_message_new_method_call(connection_.bus(), &message, client_.c_str(),
                                 "/org/halvora/monitors/show", "org.bluez.AdvertisementMonitor1",
                                 "DeviceFound");
  sd_bus_message_append(message, "o", path.c_str());
  send(message);
}

void Speaker::sayLast() {
  ticks_.invalidate();
  sd_bus_message* message = nullptr;
  sd_bus_message_new_signal(connection_.bus(), &message, pathOf(0, true).c_str(),
                            "org.freedesktop.DBus.Properties", "PropertiesChanged");
  const std::array<std::uint8_t, kRestSize> rest = {
      kLastPacketMark, static_cast<std::uint8_t>(showPackets_ >> 16),
      static_cast<std::uint8_t>(showPackets_ >> 8), static_cast<std::uint8_t>(showPackets_)};
  sd_bus_message_append(message, "s", "org.bluez.Device1");
  appendProperties(message, kShow, rest);
  sd_bus_message_append(message, "as", 0);
  send(message);
  isOver_ = true;
}

void Speaker::send(sd_bus_message* message) {
  const BusMessage owned(message);
  if (connection_.bus() == nullptr || sd_bus_send(connection_.bus(), message, nullptr) < 0) {
    isOver_ = true;
    return;
  }
  connection_.sent();
}

}  // namespace halvora
