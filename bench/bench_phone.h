// SPDX-License-Identifier: Apache-2.0
// An engine on a virtual phone that keeps no logs: a benchmark runs millions of rounds, and nobody
// reads them. Time stands still unless the benchmark runs the loop.
#pragma once

#include <string>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"

namespace halvora {

/// A palette file as shows have them: 50 palettes of eight colours.
inline std::string benchPalettes() {
  constexpr const char* kColours =
      R"("#FF2D55","#FF9500","#FFCC00","#34C759","#00C7BE","#007AFF","#5856D6","#AF52DE")";
  std::string text = R"({"palettes":[)";
  for (int id = 1; id <= 50; ++id) {
    text += R"({"id":)" + std::to_string(id) + R"(,"colours":[)" + kColours + "]}";
    text += id < 50 ? "," : "]}";
  }
  return text;
}

inline void keepNoLogs(VirtualPhone& phone) {
  phone.queues.log.isKept = false;
  phone.bluetooth.log.isKept = false;
  phone.screen.log.isKept = false;
  phone.haptics.log.isKept = false;
  phone.defaults.log.isKept = false;
  phone.http.log.isKept = false;
  phone.torch.log.isKept = false;
  phone.videoLog.isKept = false;
}

class BenchPhone {
 public:
  BenchPhone() {
    keepNoLogs(phone_);
    phone_.mainBundle.resources["HVAssets/palettes.json"] = benchPalettes();
    engine.viewDidLoad();
  }

  VirtualBluetooth& radio() { return phone_.bluetooth; }
  VirtualRunLoop& loop() { return phone_.loop; }

 private:
  ExactJsonReader json_;
  VirtualPhone phone_{json_};

 public:
  ShowEngine engine{phone_.platform()};
};

}  // namespace halvora
