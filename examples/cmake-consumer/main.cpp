// SPDX-License-Identifier: Apache-2.0
// One phone in memory hears one packet; the program prints the colour that its screen then shows.
#include <cstdio>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/broadcast.h"
#include "halvora/host.h"

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

  Broadcast look;
  look.applicationId = 258;
  look.transmitter = 7;
  look.sequence = 1;
  look.master = 255;
  look.mode = 1;
  look.red = 255;
  look.green = 128;
  phone.bluetooth.advertise(encodeBroadcast(look));
  phone.loop.runFor(milliseconds(1000));

  const DisplayList list = engine.light().displayList(phone.screen.size);
  const Colour light = list.empty() ? kBlack : list.front().colour;
  std::printf("light %.2f %.2f %.2f\n", static_cast<double>(light.red),
              static_cast<double>(light.green), static_cast<double>(light.blue));
  return engine.isInsideVenue() ? 0 : 1;
}
