// SPDX-License-Identifier: Apache-2.0
#include "seats/panel_states.h"

#include "seats/seat_names.h"

namespace halvora {

namespace {

struct Cause {
  const char* key;
  const char* fallback;
  bool canRetry;
};

constexpr Cause kNone{"", "", false};
constexpr Cause kNoRadio{"hv_state_no_radio",
                         "This device has no Bluetooth that can hear the show.", false};
constexpr Cause kRadioOff{"hv_state_radio_off", "Bluetooth is switched off.", false};
constexpr Cause kNotAllowed{"hv_state_not_allowed", "This app may not use Bluetooth.", false};
constexpr Cause kWaiting{"hv_state_waiting", "Waiting for Bluetooth to answer.", true};
constexpr Cause kSignalLost{
    "hv_state_signal_lost",
    "The show's signal is lost. Keep this app open: it comes back by itself.", false};
constexpr Cause kNotHeard{"hv_state_not_heard", "No light show is heard here yet.", false};
constexpr Cause kMapMissing{"hv_state_map_missing", "The seat map of this venue is missing.", true};

const Cause& causeOf(const PanelSituation& situation) {
  if (situation.authorization == BluetoothAuthorization::notDetermined) return kNone;
  if (situation.authorization != BluetoothAuthorization::allowedAlways) return kNotAllowed;
  switch (situation.radio) {
    case CentralState::unsupported:
      return kNoRadio;
    case CentralState::unauthorised:
      return kNotAllowed;
    case CentralState::poweredOff:
      return kRadioOff;
    case CentralState::unknown:
    case CentralState::resetting:
      return kWaiting;
    case CentralState::poweredOn:
      break;
  }
  if (!situation.isInsideVenue && situation.isShowOn) return kSignalLost;
  if (situation.isMapMissing) return kMapMissing;
  return situation.isInsideVenue ? kNone : kNotHeard;
}

}  // namespace

CentralState RadioWatch::state() {
  if (!manager_) {
    if (bluetooth_.authorization() == BluetoothAuthorization::notDetermined) {
      return CentralState::unknown;
    }
    manager_ = bluetooth_.makeManager(*this);
  }
  return manager_->state();
}

PanelExplanation explanationOf(const PanelSituation& situation, const Bundle& kit) {
  const Cause& cause = causeOf(situation);
  if (*cause.key == '\0') return {};
  return {localizedText(kit, cause.key, cause.fallback), cause.canRetry};
}

}  // namespace halvora
