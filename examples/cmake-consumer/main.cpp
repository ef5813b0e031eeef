// SPDX-License-Identifier: Apache-2.0
// One phone in memory hears one packet; the program prints the colour that its screen then shows.
#include <array>
#include <cstdint>
#include <cstdio>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "halvora/host.h"

namespace {

// Of application 258 and transmitter 7, its first: mode 1, a plain colour, at full brightness.
// `halvora packet encode` makes such bytes.
constexpr std::array<std::uint8_t, 26> kOrange{0x09, 0xC9, 0x01, 0x02, 0x00, 0x00, 0x00, 0xFF, 0xFF,
                                               0x80, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                               0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x07};

}  // namespace

int main() {
  using namespace halvora;
  const ExactJsonReader json;
  VirtualPhone phone(json);
  HalvoraViewController engine(phone.platform());
  engine.viewDidLoad();

  const HalvoraView view({phone.platform(), engine}, [] { std::puts("the show begins"); });
  const auto coordinator = view.makeCoordinator();
  view.makeController(*coordinator);
  view.start();
  phone.loop.runFor(milliseconds(1500));

  phone.bluetooth.advertise(kOrange);
  phone.loop.runFor(milliseconds(1000));

  const DisplayList list = engine.light().displayList(phone.screen.size);
  const Colour light = list.empty() ? kBlack : list.front().colour;
  std::printf("light %.2f %.2f %.2f\n", static_cast<double>(light.red),
              static_cast<double>(light.green), static_cast<double>(light.blue));
  return engine.isInsideVenue() ? 0 : 1;
}
