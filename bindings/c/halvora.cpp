// SPDX-License-Identifier: Apache-2.0
#include "bindings/c/halvora.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bindings/c/host_media.h"
#include "bindings/c/phone.h"
#include "halvora/version.h"

using halvora::Button;
using halvora::Duration;
using halvora::HostPhone;
using halvora::Label;

/// What a C host holds: nothing but its address means anything there.
struct halvora_phone {
  halvora_phone(const halvora_callbacks& callbacks, const halvora_options& options)
      : phone(callbacks, options) {}
  HostPhone phone;
};

namespace {

/// The first version of each struct ends here: what is smaller is none.
constexpr std::size_t kSmallestOptions = offsetof(halvora_options, media);
constexpr double kLargestSide = 1e6;
constexpr std::size_t kLongestAdvertisement = 1024;

/// Nothing but a status goes out, whatever is thrown within.
template <class Act>
int guarded(const Act& act) noexcept {
  try {
    return act();
  } catch (const std::bad_alloc&) {
    return HALVORA_NO_MEMORY;
  } catch (...) {
    return HALVORA_FAILED;
  }
}

/// One call of the host. What was due before it comes first, and the turn that it was ends with it;
/// within a callback both have been seen to.
template <class Act>
int called(halvora_phone* handle, const Act& act) noexcept {
  if (handle == nullptr) return HALVORA_MISSING;
  return guarded([&]() -> int {
    HostPhone& phone = handle->phone;
    struct Depth {
      explicit Depth(int& its) : calls(its) { ++calls; }
      ~Depth() { --calls; }
      Depth(const Depth&) = delete;
      Depth& operator=(const Depth&) = delete;
      int& calls;
    };
    const Depth depth(phone.calls);
    const bool isOutermost = phone.calls == 1;
    if (isOutermost) phone.runToNow();
    const int status = act(phone);
    if (isOutermost) phone.endCall();
    return status;
  });
}

bool isSide(double points) { return points >= 0 && points <= kLargestSide; }

/// Copies what both sides know of a struct.
template <class Struct>
int handOut(Struct* out, Struct value) {
  value.size = out->size;
  std::memcpy(out, &value, std::min(out->size, sizeof(Struct)));
  return HALVORA_OK;
}

template <class Struct>
bool isWhole(const Struct* given) {
  return given != nullptr && given->size >= sizeof(Struct);
}

/// A part of the panel or of the wizard: one of the two is there, or neither.
struct Part {
  const Label* label = nullptr;
  const Button* button = nullptr;
};

template <class Optional>
auto pointerTo(const Optional& value) -> decltype(&*value) {
  return value ? &*value : nullptr;
}

Part partOfPanel(const HostPhone& phone, int part) {
  if (phone.panel() == nullptr) return {};
  const halvora::StatusPanelViews& views = phone.panel()->views();
  switch (part) {
    case HALVORA_PANEL_ONBOARDING:
      return {.label = pointerTo(views.onboardingLabel)};
    case HALVORA_PANEL_STATUS:
      return {.label = &views.statusTextLabel};
    case HALVORA_PANEL_SEAT:
      return {.label = views.seatSelectionSummaryRow.hidden
                           ? nullptr
                           : &views.seatSelectionSummaryRow.seatSelectionSummaryLabel};
    case HALVORA_PANEL_JOIN_BUTTON:
      return {.button = pointerTo(views.joinButton)};
    case HALVORA_PANEL_SETTINGS_BUTTON:
      return {.button = &views.settingsButton};
    case HALVORA_PANEL_SEAT_BUTTON:
      return {.button = &views.seatSelectionButton};
    default:
      return {};
  }
}

Part partOfWizard(const halvora::SeatSelectorViews& views, int part) {
  switch (part) {
    case HALVORA_WIZARD_TITLE:
      return {.label = &views.titleLabel};
    case HALVORA_WIZARD_STEP:
      return {.label = &views.stepLabel};
    case HALVORA_WIZARD_SUMMARY:
      return {.label = &views.selectionSummaryLabel};
    case HALVORA_WIZARD_CLOSE_BUTTON:
      return {.button = &views.closeButton};
    case HALVORA_WIZARD_BACK_BUTTON:
      return {.button = &views.backButton};
    case HALVORA_WIZARD_NEXT_BUTTON:
      return {.button = &views.nextButton};
    default:
      return {};
  }
}

Part partOf(const HostPhone& phone, int part) {
  if (part < HALVORA_WIZARD_TITLE) return partOfPanel(phone, part);
  const auto wizard = phone.wizard();
  return wizard != nullptr ? partOfWizard(wizard->views(), part) : Part{};
}

int press(HostPhone& phone, int part) {
  const Button* button = partOf(phone, part).button;
  if (button == nullptr || button->hidden || !button->enabled) return HALVORA_NONE;
  const auto wizard = phone.wizard();
  switch (part) {
    case HALVORA_PANEL_JOIN_BUTTON:
      phone.panel()->initBluetoothPermission();
      return HALVORA_OK;
    case HALVORA_PANEL_SETTINGS_BUTTON:
      phone.panel()->openAppSettings();
      return HALVORA_OK;
    case HALVORA_PANEL_SEAT_BUTTON:
      phone.panel()->openSeatSelector();
      return HALVORA_OK;
    case HALVORA_WIZARD_CLOSE_BUTTON:
      wizard->cancelTapped();
      return HALVORA_OK;
    case HALVORA_WIZARD_BACK_BUTTON:
      wizard->backTapped();
      return HALVORA_OK;
    case HALVORA_WIZARD_NEXT_BUTTON:
      wizard->nextTapped();
      return HALVORA_OK;
    default:
      return HALVORA_NONE;
  }
}

const std::optional<halvora::Alert>& alertOf(const HostPhone& phone) {
  static const std::optional<halvora::Alert> kNone;
  if (const auto wizard = phone.wizard(); wizard != nullptr && wizard->presentedAlert()) {
    return wizard->presentedAlert();
  }
  return phone.panel() != nullptr ? phone.panel()->presentedAlert() : kNone;
}

template <class Act>
int withWizard(halvora_phone* handle, const Act& act) {
  return called(handle, [&](HostPhone& phone) -> int {
    const auto wizard = phone.wizard();
    return wizard != nullptr ? act(phone, *wizard) : HALVORA_NONE;
  });
}

int runTo(halvora_phone* phone, std::int64_t time, void (halvora::HostLoop::*run)(Duration)) {
  // Beyond these some 146,000 years the sum of two times would be none.
  constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max() / 2;
  if (time < 0 || time > kLatest) return phone == nullptr ? HALVORA_MISSING : HALVORA_RANGE;
  return called(phone, [time, run](HostPhone& its) -> int {
    if (its.calls > 1) return HALVORA_BUSY;
    (its.loop.*run)(Duration(time));
    return HALVORA_OK;
  });
}

std::vector<std::string> keysOf(std::string_view text) {
  std::vector<std::string> keys;
  while (!text.empty()) {
    const std::string_view key = text.substr(0, text.find(','));
    text.remove_prefix(std::min(key.size() + 1, text.size()));
    if (!key.empty()) keys.emplace_back(key);
  }
  return keys;
}

/// As much of the host's callbacks as both sides know.
halvora_callbacks copyOf(const halvora_callbacks* given) {
  halvora_callbacks callbacks{};
  if (given != nullptr) {
    std::memcpy(&callbacks, given, std::min(given->size, sizeof(callbacks)));
  }
  return callbacks;
}

/// The drag area that a host's places are parts of; its true size is the host's own business.
constexpr halvora::Size kPlan{1000, 1000};

}  // namespace

const char* halvora_status_text(int status) {
  switch (status) {
    case HALVORA_OK:
      return "done";
    case HALVORA_MISSING:
      return "a pointer is null, or the size of a struct was not set with sizeof";
    case HALVORA_RANGE:
      return "a number is out of its range";
    case HALVORA_BUSY:
      return "this may not be called from within a callback";
    case HALVORA_NONE:
      return "there is no such thing at present";
    case HALVORA_NO_MEMORY:
      return "out of memory";
    case HALVORA_FAILED:
      return "something went wrong within the kit";
    default:
      return "no status of this version of the interface";
  }
}

const char* halvora_version(void) { return halvora::versionOfLibrary(); }

int halvora_options_init(halvora_options* options, size_t size) {
  if (options == nullptr || size < kSmallestOptions) return HALVORA_MISSING;
  halvora_options plain{};
  plain.width = 390;
  plain.height = 844;
  plain.seed = 1;
  plain.has_torch = 1;
  std::memset(options, 0, size);
  options->size = size;
  return handOut(options, plain);
}

int halvora_phone_make(const halvora_callbacks* callbacks, const halvora_options* options,
                       halvora_phone** phone) {
  if (phone == nullptr || (options != nullptr && options->size < kSmallestOptions) ||
      (callbacks != nullptr && callbacks->size < offsetof(halvora_callbacks, now))) {
    return HALVORA_MISSING;
  }
  return guarded([&]() -> int {
    halvora_options chosen{};
    halvora_options_init(&chosen, sizeof(chosen));
    if (options != nullptr) {
      std::memcpy(&chosen, options, std::min(options->size, sizeof(chosen)));
    }
    if (!(chosen.width > 0) || !(chosen.height > 0) || !isSide(chosen.width) ||
        !isSide(chosen.height) || chosen.authentication < 0 || chosen.authentication > 2) {
      return HALVORA_RANGE;
    }
    if (chosen.media != nullptr && !halvora::isComplete(*chosen.media)) return HALVORA_MISSING;
    auto made = std::make_unique<halvora_phone>(copyOf(callbacks), chosen);
    made->phone.endCall();
    *phone = made.release();
    return HALVORA_OK;
  });
}

int halvora_phone_free(halvora_phone* phone) {
  if (phone == nullptr) return HALVORA_OK;
  if (phone->phone.calls > 0) return HALVORA_BUSY;
  return guarded([phone]() -> int {
    delete phone;
    return HALVORA_OK;
  });
}

int halvora_phone_start(halvora_phone* phone) {
  return called(phone, [](HostPhone& its) -> int {
    its.engine().start();
    return HALVORA_OK;
  });
}

int halvora_phone_run(halvora_phone* phone) {
  // Whoever calls has what is due done before.
  return called(
      phone, [](const HostPhone& its) -> int { return its.calls > 1 ? HALVORA_BUSY : HALVORA_OK; });
}

int halvora_phone_run_until(halvora_phone* phone, int64_t time) {
  return runTo(phone, time, &halvora::HostLoop::runUntil);
}

int halvora_phone_run_before(halvora_phone* phone, int64_t time) {
  return runTo(phone, time, &halvora::HostLoop::runBefore);
}

int halvora_phone_advertisement(halvora_phone* phone, const uint8_t* bytes, size_t count) {
  if (bytes == nullptr) return HALVORA_MISSING;
  if (count > kLongestAdvertisement) return phone == nullptr ? HALVORA_MISSING : HALVORA_RANGE;
  return called(phone, [bytes, count](HostPhone& its) -> int {
    its.radio.hear({bytes, count});
    return HALVORA_OK;
  });
}

int halvora_phone_radio_state(halvora_phone* phone, int state) {
  constexpr int kLast = static_cast<int>(halvora::CentralState::poweredOn);
  if (state < 0 || state > kLast) return phone == nullptr ? HALVORA_MISSING : HALVORA_RANGE;
  return called(phone, [state](HostPhone& its) -> int {
    its.radio.setState(static_cast<halvora::CentralState>(state));
    return HALVORA_OK;
  });
}

int halvora_phone_active(halvora_phone* phone, int is_active) {
  return called(phone, [is_active](HostPhone& its) -> int {
    if (is_active != 0) {
      its.application.becomeActive();
    } else {
      its.application.resignActive();
    }
    return HALVORA_OK;
  });
}

int halvora_phone_resize(halvora_phone* phone, double width, double height) {
  if (!isSide(width) || !isSide(height)) return phone == nullptr ? HALVORA_MISSING : HALVORA_RANGE;
  return called(phone, [width, height](HostPhone& its) -> int {
    its.screen.resize({width, height});
    its.engine().viewWillLayoutSubviews(halvora::Rect{0, 0, width, height});
    if (its.panel() != nullptr) its.panel()->viewDidLayoutSubviews(width);
    return HALVORA_OK;
  });
}

int halvora_phone_allow(halvora_phone* phone, const char* transmitters) {
  return called(phone, [transmitters](HostPhone& its) -> int {
    its.engine().setAllowedTransmitterIds(keysOf(transmitters != nullptr ? transmitters : ""));
    return HALVORA_OK;
  });
}

int halvora_phone_inside_venue(halvora_phone* phone, int* is_inside) {
  if (is_inside == nullptr) return HALVORA_MISSING;
  return called(phone, [is_inside](HostPhone& its) -> int {
    *is_inside = its.engine().isInsideVenue() ? 1 : 0;
    return HALVORA_OK;
  });
}

int halvora_phone_trust(halvora_phone* phone, int* trust) {
  if (trust == nullptr) return HALVORA_MISSING;
  return called(phone, [trust](HostPhone& its) -> int {
    *trust = static_cast<int>(its.engine().airTrust());
    return HALVORA_OK;
  });
}

int halvora_phone_set_default(halvora_phone* phone, const char* key, const char* text) {
  if (key == nullptr) return HALVORA_MISSING;
  return called(phone, [key, text](HostPhone& its) -> int {
    if (text != nullptr) {
      its.defaults().set(key, std::string(text));
    } else {
      its.defaults().remove(key);
    }
    return HALVORA_OK;
  });
}

int halvora_phone_look(halvora_phone* phone, double width, double height, size_t* count) {
  if (count == nullptr) return HALVORA_MISSING;
  if (!isSide(width) || !isSide(height)) return phone == nullptr ? HALVORA_MISSING : HALVORA_RANGE;
  return called(phone, [width, height, count](HostPhone& its) -> int {
    its.look = its.engine().light().displayList({width, height});
    *count = its.look.size();
    return HALVORA_OK;
  });
}

int halvora_phone_item(halvora_phone* phone, size_t index, halvora_item* item) {
  if (phone == nullptr || !isWhole(item)) return HALVORA_MISSING;
  // No call of its own: the list, and the texts that were handed out of it, stay as they are.
  const halvora::DisplayList& look = phone->phone.look;
  if (index >= look.size()) return HALVORA_NONE;
  const halvora::DisplayItem& shown = look[index];
  return handOut(item, {.size = 0,
                        .content = static_cast<int>(shown.content),
                        .x = shown.frame.x,
                        .y = shown.frame.y,
                        .width = shown.frame.width,
                        .height = shown.frame.height,
                        .red = shown.colour.red,
                        .green = shown.colour.green,
                        .blue = shown.colour.blue,
                        .opacity = shown.opacity,
                        .text = shown.text.c_str(),
                        .font_size = shown.fontSize});
}

int halvora_phone_is_animating(halvora_phone* phone, int* is_animating) {
  if (is_animating == nullptr) return HALVORA_MISSING;
  return called(phone, [is_animating](HostPhone& its) -> int {
    *is_animating = its.engine().light().isAnimating() ? 1 : 0;
    return HALVORA_OK;
  });
}

int halvora_panel_open(halvora_phone* phone) {
  return called(phone, [](HostPhone& its) -> int {
    if (its.panel() == nullptr) its.openPanel();
    return HALVORA_OK;
  });
}

int halvora_panel_close(halvora_phone* phone) {
  return called(phone, [](HostPhone& its) -> int {
    its.closePanel();
    return HALVORA_OK;
  });
}

int halvora_part_text(halvora_phone* phone, int part, halvora_text* text) {
  if (!isWhole(text)) return HALVORA_MISSING;
  return called(phone, [part, text](HostPhone& its) -> int {
    const Part found = partOf(its, part);
    if (found.label == nullptr && found.button == nullptr) return HALVORA_NONE;
    const bool isButton = found.button != nullptr;
    its.text = isButton ? found.button->title : found.label->text;
    const halvora::Colour& colour = isButton ? found.button->titleColour : found.label->colour;
    const bool isHidden = isButton ? found.button->hidden : found.label->hidden;
    return handOut(text, {.size = 0,
                          .text = its.text.c_str(),
                          .is_hidden = isHidden ? 1 : 0,
                          .is_enabled = isButton && found.button->enabled ? 1 : 0,
                          .alpha = isButton ? found.button->alpha : found.label->alpha,
                          .red = colour.red,
                          .green = colour.green,
                          .blue = colour.blue});
  });
}

int halvora_part_press(halvora_phone* phone, int part) {
  return called(phone, [part](HostPhone& its) -> int { return press(its, part); });
}

int halvora_alert_look(halvora_phone* phone, halvora_alert* alert) {
  if (!isWhole(alert)) return HALVORA_MISSING;
  return called(phone, [alert](HostPhone& its) -> int {
    const std::optional<halvora::Alert>& shown = alertOf(its);
    if (!shown) return HALVORA_NONE;
    its.alert = *shown;
    return handOut(alert, {.size = 0,
                           .title = its.alert.title.c_str(),
                           .message = its.alert.message.c_str(),
                           .button = its.alert.button.c_str()});
  });
}

int halvora_alert_press(halvora_phone* phone) {
  return called(phone, [](HostPhone& its) -> int {
    const auto wizard = its.wizard();
    if (!alertOf(its)) return HALVORA_NONE;
    if (wizard != nullptr && wizard->presentedAlert()) {
      wizard->alertButtonTapped();
    } else {
      its.panel()->dismissAlert();
    }
    return HALVORA_OK;
  });
}

int halvora_panel_tables(halvora_phone* phone, int* state) {
  if (state == nullptr) return HALVORA_MISSING;
  return called(phone, [state](HostPhone& its) -> int {
    if (its.panel() == nullptr) return HALVORA_NONE;
    const halvora::SeatSelectionSummaryRow& row = its.panel()->views().seatSelectionSummaryRow;
    const halvora::StatusDot& dot = row.seatLUTStatusDot;
    const bool isReady = dot.colour == halvora::kDotGreen;
    *state = row.hidden || dot.hidden ? 0 : 1 + static_cast<int>(isReady);
    return HALVORA_OK;
  });
}

int halvora_wizard_is_open(halvora_phone* phone, int* is_open) {
  if (is_open == nullptr) return HALVORA_MISSING;
  return called(phone, [is_open](HostPhone& its) -> int {
    *is_open = its.wizard() != nullptr ? 1 : 0;
    return HALVORA_OK;
  });
}

int halvora_wizard_rows(halvora_phone* phone, size_t* count, size_t* selected) {
  if (count == nullptr || selected == nullptr) return HALVORA_MISSING;
  return withWizard(phone, [count, selected](const HostPhone&, const auto& wizard) -> int {
    *count = wizard.numberOfPickerRows();
    *selected =
        static_cast<size_t>(std::max<std::int64_t>(0, wizard.views().pickerView.selectedRow));
    return HALVORA_OK;
  });
}

int halvora_wizard_row(halvora_phone* phone, size_t row, const char** title) {
  if (title == nullptr) return HALVORA_MISSING;
  return withWizard(phone, [row, title](HostPhone& its, const auto& wizard) -> int {
    if (row >= wizard.numberOfPickerRows()) return HALVORA_NONE;
    its.text = wizard.titleForPickerRow(static_cast<std::int64_t>(row));
    *title = its.text.c_str();
    return HALVORA_OK;
  });
}

int halvora_wizard_select(halvora_phone* phone, size_t row) {
  return withWizard(phone, [row](const HostPhone&, auto& wizard) -> int {
    if (wizard.views().pickerView.hidden || row >= wizard.numberOfPickerRows()) return HALVORA_NONE;
    wizard.pickerDidSelectRow(static_cast<std::int64_t>(row));
    return HALVORA_OK;
  });
}

int halvora_wizard_is_standing(halvora_phone* phone, int* is_standing) {
  if (is_standing == nullptr) return HALVORA_MISSING;
  return withWizard(phone, [is_standing](const HostPhone&, const auto& wizard) -> int {
    *is_standing = wizard.views().standingSelectorContainerHidden ? 0 : 1;
    return HALVORA_OK;
  });
}

int halvora_wizard_stand(halvora_phone* phone, double x, double y) {
  if (!(x >= 0 && x <= 1 && y >= 0 && y <= 1)) {
    return phone == nullptr ? HALVORA_MISSING : HALVORA_RANGE;
  }
  return withWizard(phone, [x, y](const HostPhone&, auto& wizard) -> int {
    if (wizard.views().standingSelectorContainerHidden) return HALVORA_NONE;
    wizard.viewDidLayoutSubviews(kPlan);
    wizard.handleStandingTap({x * kPlan.width, y * kPlan.height});
    return HALVORA_OK;
  });
}
