// SPDX-License-Identifier: Apache-2.0
// Why nothing is to be seen of a show, in words that tell one cause from another, and whether
// trying again may help. A panel shows them where its host wants that. Main thread.
#pragma once

#include <memory>
#include <string>

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/need.h"

namespace halvora {

/// What the radio says of itself. It listens to nothing, so it costs no scan; it asks for no
/// permission, because it begins only once that is settled.
class RadioWatch : private CentralManagerDelegate {
 public:
  explicit RadioWatch(BluetoothCentral& bluetooth) : bluetooth_(bluetooth) {}

  /// Unknown until the radio has answered.
  CentralState state();
  /// Asks anew.
  void retry() { manager_.reset(); }

 private:
  void centralManagerDidUpdateState(CentralState /*state*/) override {}
  void didDiscoverPeripheral(const Advertisement& /*advertisement*/) override {}

  BluetoothCentral& bluetooth_;
  std::unique_ptr<CentralManager> manager_;
};

struct PanelSituation {
  BluetoothAuthorization authorization = BluetoothAuthorization::notDetermined;
  CentralState radio = CentralState::unknown;
  bool isInsideVenue = false;
  /// A show had begun, and nobody has ended it.
  bool isShowOn = false;
  bool isMapMissing = false;
};

struct PanelExplanation {
  std::string text;
  bool canRetry = false;
};

/// Without a text where there is nothing to explain.
PanelExplanation explanationOf(const PanelSituation& situation, const Bundle& kit);

}  // namespace halvora
