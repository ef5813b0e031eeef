// SPDX-License-Identifier: Apache-2.0
// Bus messages of any shape, built from the bytes, before all that reads the Bluetooth daemon's:
// nothing is read beyond what is there, and only bytes of our company's are taken for a packet.
#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "adapters/linux/bus/bluez_messages.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

struct Unref {
  void operator()(sd_bus* bus) const { sd_bus_unref(bus); }
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, Unref>;
using Message = std::unique_ptr<sd_bus_message, Unref>;

// A message needs a bus to belong to; nothing is ever sent on it.
sd_bus* bus() {
  static const Bus kBus = [] {
    std::array<int, 2> ends{};
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0, "a socket");
    sd_bus* made = nullptr;
    require(sd_bus_new(&made) >= 0, "a bus");
    Bus owned(made);
    require(sd_bus_set_fd(made, ends[0], ends[0]) >= 0 && sd_bus_start(made) >= 0, "a bus starts");
    return owned;
  }();
  return kBus.get();
}

constexpr std::array<const char*, 12> kWords = {
    "ManufacturerData",
    "Powered",
    "org.bluez.Adapter1",
    "org.bluez.Device1",
    "or_patterns",
    "SupportedMonitorTypes",
    "org.bluez.AdvertisementMonitorManager1",
    "Address",
    "",
    "/org/bluez/hci0",
    "Alias",
    "no",
};

class Builder {
 public:
  Builder(sd_bus_message* message, FuzzInput& input) : message_(message), input_(input) {}

  // A dictionary of interfaces, of properties, or anything.
  void build() {
    switch (input_.byte() % 4) {
      case 0:
        return interfaces();
      case 1:
        return properties();
      case 2:
        return variant(0);
      default:
        return anything(0);
    }
  }

 private:
  static constexpr int kDeepest = 8;

  const char* word() { return kWords[input_.byte() % kWords.size()]; }
  int count() { return input_.isEmpty() ? 0 : input_.byte() % 5; }

  void interfaces() {
    sd_bus_message_open_container(message_, 'a', "{sa{sv}}");
    for (int left = count(); left > 0; --left) {
      sd_bus_message_open_container(message_, 'e', "sa{sv}");
      sd_bus_message_append_basic(message_, 's', word());
      properties();
      sd_bus_message_close_container(message_);
    }
    sd_bus_message_close_container(message_);
  }

  void properties() {
    sd_bus_message_open_container(message_, 'a', "{sv}");
    for (int left = count(); left > 0; --left) {
      sd_bus_message_open_container(message_, 'e', "sv");
      sd_bus_message_append_basic(message_, 's', word());
      variant(0);
      sd_bus_message_close_container(message_);
    }
    sd_bus_message_close_container(message_);
  }

  void variant(int depth) {
    const int kind = depth < kDeepest ? input_.byte() % 8 : 0;
    switch (kind) {
      case 1:
        return companies(depth);
      case 2:
        return bytes();
      case 3:
        sd_bus_message_append(message_, "v", "b", input_.byte() % 2);
        return;
      case 4:
        sd_bus_message_append(message_, "v", "as", 2, word(), word());
        return;
      case 5:
        sd_bus_message_open_container(message_, 'v', "v");
        variant(depth + 1);
        sd_bus_message_close_container(message_);
        return;
      case 6:
        sd_bus_message_append(message_, "v", "(qay)", unsigned{input_.two()}, 1,
                              unsigned{input_.byte()});
        return;
      case 7:
        sd_bus_message_open_container(message_, 'v', "a{sv}");
        properties();
        sd_bus_message_close_container(message_);
        return;
      default:
        sd_bus_message_append(message_, "v", "s", word());
        return;
    }
  }

  // Data by company, some of it ours.
  void companies(int depth) {
    sd_bus_message_open_container(message_, 'v', "a{qv}");
    sd_bus_message_open_container(message_, 'a', "{qv}");
    for (int left = count(); left > 0; --left) {
      const int which = input_.byte();
      sd_bus_message_open_container(message_, 'e', "qv");
      const auto company = static_cast<std::uint16_t>(which % 2 == 0 ? kShowCompany : which);
      sd_bus_message_append_basic(message_, 'q', &company);
      if (which % 8 < 6) {
        bytes();
      } else {
        variant(depth + 1);
      }
      sd_bus_message_close_container(message_);
    }
    sd_bus_message_close_container(message_);
    sd_bus_message_close_container(message_);
  }

  // More than an advertisement holds, now and then.
  void bytes() {
    const std::size_t size = input_.byte();
    const FuzzBytes given = input_.take(size % 64);
    std::string all(given.begin(), given.end());
    if (size >= 192) all.resize(size + 60, 'x');
    sd_bus_message_open_container(message_, 'v', "ay");
    sd_bus_message_append_array(message_, 'y', all.data(), all.size());
    sd_bus_message_close_container(message_);
  }

  void anything(int depth) {
    static constexpr std::array<const char*, 6> kTypes = {"s", "o", "u", "as", "a{ss}", "a{qv}"};
    const std::size_t type = input_.byte() % kTypes.size();
    switch (type) {
      case 0:
        sd_bus_message_append(message_, "s", word());
        break;
      case 1:
        sd_bus_message_append(message_, "o", "/org/bluez/hci0/dev_1");
        break;
      case 2:
        sd_bus_message_append(message_, "u", unsigned{input_.two()});
        break;
      case 3:
        sd_bus_message_append(message_, "as", 1, word());
        break;
      case 4:
        sd_bus_message_append(message_, "a{ss}", 1, word(), word());
        break;
      default:
        sd_bus_message_append(message_, "a{qv}", 1, unsigned{kShowCompany}, "s", word());
        break;
    }
    if (depth < 3 && !input_.isEmpty()) anything(depth + 1);
  }

  sd_bus_message* message_;
  FuzzInput& input_;
};

void checkData(DeviceNews news, const CompanyData& data) {
  const auto bytes = data.bytes();
  require(bytes.size() <= kLongestCompanyData, "data fits into an advertisement");
  if (news == DeviceNews::ours) {
    require(bytes.size() >= 2 && bytes[0] == 0x09 && bytes[1] == 0xC9, "a packet has our prefix");
  } else {
    require(bytes.empty(), "what is not ours brings no data");
  }
}

// The message from its beginning, for one reader after the other.
template <class Read>
void fromTheBeginning(sd_bus_message* message, const Read& read) {
  require(sd_bus_message_rewind(message, 1) >= 0, "a message can be read again");
  read(message);
}

}  // namespace

int fuzzBus(FuzzBytes bytes) {
  sd_bus_message* made = nullptr;
  require(sd_bus_message_new_signal(bus(), &made, "/org/bluez", "org.bluez.Test", "Test") >= 0,
          "a message");
  const Message message(made);
  FuzzInput input(bytes);
  Builder(made, input).build();
  if (sd_bus_message_seal(made, 1, 0) < 0) return 0;

  using DeviceReader = DeviceNews (*)(sd_bus_message*, CompanyData&);
  for (const DeviceReader read : {readDevice, readManufacturerData, readDeviceObject}) {
    fromTheBeginning(made, [&](sd_bus_message* from) {
      CompanyData data;
      checkData(read(from, data), data);
    });
  }
  using AdapterReader = bool (*)(sd_bus_message*, AdapterNews&);
  for (const AdapterReader read : {readAdapter, readAdapterObject}) {
    fromTheBeginning(made, [&](sd_bus_message* from) {
      AdapterNews news;
      static_cast<void>(read(from, news));
    });
  }
  return 0;
}

}  // namespace halvora
