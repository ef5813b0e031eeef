// SPDX-License-Identifier: Apache-2.0
// What the fake advertises for its clients.
#include <algorithm>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/linux/bus/bus_dictionary.h"
#include "tests/adapters/linux/bus/fake_bluez.h"

namespace halvora {

namespace {

constexpr const char* kInterface = "org.bluez.LEAdvertisement1";
/// What an advertisement without a name, flags or anything else has room for.
constexpr std::size_t kMostData = 29;

int refuse(sd_bus_message* call, const char* name, const char* text) {
  return sd_bus_reply_method_errorf(call, name, "%s", text);
}

// At a variant that is ManufacturerData; the company's id goes first, as on the air.
bool readData(sd_bus_message* message, FakeBluez::Bytes& data) {
  std::uint16_t company = 0;
  const void* bytes = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_enter_container(message, 'v', "a{qv}") <= 0 ||
      sd_bus_message_enter_container(message, 'a', "{qv}") <= 0 ||
      sd_bus_message_enter_container(message, 'e', "qv") <= 0 ||
      sd_bus_message_read_basic(message, 'q', &company) <= 0 ||
      sd_bus_message_enter_container(message, 'v', "ay") <= 0 ||
      sd_bus_message_read_array(message, 'y', &bytes, &size) < 0) {
    return false;
  }
  const auto* begin = static_cast<const std::uint8_t*>(bytes);
  data = {static_cast<std::uint8_t>(company & 0xFF), static_cast<std::uint8_t>(company >> 8)};
  data.insert(data.end(), begin, begin + size);
  for (int level = 0; level < 4; ++level) sd_bus_message_exit_container(message);
  return true;
}

}  // namespace

FakeBluez::Advertised* FakeBluez::advertisedBy(sd_bus_message* message, const std::string& path) {
  const std::string client = sd_bus_message_get_sender(message);
  const auto found = std::ranges::find_if(advertisements_, [&](const Advertised& one) {
    return one.client == client && one.path == path;
  });
  return found == advertisements_.end() ? nullptr : &*found;
}

// The object is read before the answer is given, and again whenever it says that it has changed.
int FakeBluez::registerAdvertisement(sd_bus_message* call) {
  const Adapter* adapter = adapterOf(call);
  const char* path = nullptr;
  if (adapter == nullptr || !adapter->canAdvertise) {
    return refuse(call, SD_BUS_ERROR_UNKNOWN_METHOD, "no advertising here");
  }
  if (sd_bus_message_read_basic(call, 'o', &path) <= 0 || sd_bus_message_skip(call, "a{sv}") < 0) {
    return refuse(call, "org.bluez.Error.InvalidArguments", "Invalid arguments in method call");
  }
  if (advertisedBy(call, path) != nullptr) {
    return refuse(call, "org.bluez.Error.AlreadyExists", "Already Exists");
  }
  const std::string client = sd_bus_message_get_sender(call);
  const std::string rule = "type='signal',sender='" + client + "',path='" + path +
                           "',interface='org.freedesktop.DBus.Properties'";
  sd_bus_slot* match = nullptr;
  EXPECT_GE(sd_bus_add_match_async(connection_.bus(), &match, rule.c_str(), changeAdvertisement,
                                   nullptr, this),
            0);
  advertisements_.push_back(
      {client, path, BusSlot(match), {}, BusMessage(sd_bus_message_ref(call))});
  return sd_bus_call_method_async(connection_.bus(), nullptr, client.c_str(), path,
                                  "org.freedesktop.DBus.Properties", "GetAll", takeAdvertisement,
                                  this, "s", kInterface);
}

bool FakeBluez::readAdvertisement(sd_bus_message* message, Advertised& advertised) {
  const bool isRead = forEachEntry(message, kProperties, [&](const std::string& name) {
    const char* text = nullptr;
    if (name == "ManufacturerData") return readData(message, advertised.data);
    if (name == "MinInterval") return sd_bus_message_read(message, "v", "u", &airedInterval) > 0;
    if (name != "Type") return sd_bus_message_skip(message, "v") >= 0;
    if (sd_bus_message_read(message, "v", "s", &text) <= 0) return false;
    airedType = text;
    return true;
  });
  if (!isRead || advertised.data.size() > kMostData) return false;
  aired.push_back(advertised.data);
  return true;
}

int FakeBluez::takeAdvertisement(sd_bus_message* reply, void* self, sd_bus_error*) {
  auto& fake = *static_cast<FakeBluez*>(self);
  const char* client = sd_bus_message_get_sender(reply);
  const auto advertised = std::ranges::find_if(fake.advertisements_, [&](const Advertised& one) {
    return client != nullptr && one.client == client && one.call != nullptr;
  });
  if (advertised == fake.advertisements_.end()) return 0;
  const BusMessage call = std::move(advertised->call);
  if (fake.readAdvertisement(reply, *advertised)) return sd_bus_reply_method_return(call.get(), "");
  fake.advertisements_.erase(advertised);
  return refuse(call.get(), "org.bluez.Error.Failed", "Failed to parse advertisement.");
}

int FakeBluez::changeAdvertisement(sd_bus_message* signal, void* self, sd_bus_error*) {
  auto& fake = *static_cast<FakeBluez*>(self);
  Advertised* advertised = fake.advertisedBy(signal, sd_bus_message_get_path(signal));
  if (advertised == nullptr || sd_bus_message_skip(signal, "s") < 0) return 0;
  EXPECT_TRUE(fake.readAdvertisement(signal, *advertised));
  return 0;
}

int FakeBluez::unregisterAdvertisement(sd_bus_message* call) {
  const char* path = nullptr;
  if (sd_bus_message_read_basic(call, 'o', &path) <= 0) return -1;
  const Advertised* advertised = advertisedBy(call, path);
  if (advertised == nullptr) {
    return refuse(call, "org.bluez.Error.DoesNotExist", "Does Not Exist");
  }
  advertisements_.erase(advertisements_.begin() + (advertised - advertisements_.data()));
  return sd_bus_reply_method_return(call, "");
}

void FakeBluez::releaseAdvertisements() {
  for (const Advertised& advertised : std::exchange(advertisements_, {})) {
    ASSERT_GE(sd_bus_call_method_async(connection_.bus(), nullptr, advertised.client.c_str(),
                                       advertised.path.c_str(), kInterface, "Release", nullptr,
                                       nullptr, ""),
              0);
  }
  connection_.sent();
}

}  // namespace halvora
