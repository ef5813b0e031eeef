// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/settings_portal.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "adapters/linux/bus/bus_dictionary.h"

namespace halvora {

namespace {

constexpr BusObject kPortal{"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                            "org.freedesktop.portal.Settings"};
constexpr BusDictionary kNamespaces{"{sa{sv}}", "sa{sv}"};
constexpr Duration kLongestAnswer = milliseconds(5000);

/// What is read, and of which type it is. The desktop's own settings are there on systems whose
/// portal does not know the common ones yet.
struct Setting {
  std::string_view space;
  std::string_view key;
  char type;
};
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kDesktop = "org.gnome.desktop.interface";
constexpr const char* kAccess = "org.gnome.desktop.a11y.interface";
constexpr std::array<Setting, kPortalSettings> kSettings{{
    {kAppearance, "contrast", 'u'},
    {kAppearance, "color-scheme", 'u'},
    {kAppearance, "reduced-motion", 'u'},
    {kDesktop, "enable-animations", 'b'},
    {kAccess, "high-contrast", 'b'},
}};
enum Row : std::uint8_t { contrast, scheme, reducedMotion, animations, highContrast };

constexpr std::uint32_t kPrefersDark = 1;
constexpr std::uint32_t kPrefersLight = 2;

ColourScheme schemeOf(std::uint32_t preference) {
  if (preference == kPrefersDark) return ColourScheme::dark;
  return preference == kPrefersLight ? ColourScheme::light : ColourScheme::any;
}

}  // namespace

SettingsPortal::SettingsPortal(Bus& session, std::function<void(const UserWishes&)> changed)
    : bus_(session),
      changed_(std::move(changed)),
      observer_(session, {[this] { watch(); },
                          [this] {
                            name_.reset();
                            holder_.reset();
                            signal_.reset();
                            owner_.clear();
                          }}) {
  ask();
}

void SettingsPortal::watch() {
  name_ = bus_.watchName(kPortal.service, [this](std::string_view, std::string_view now) {
    owner_ = now;
    if (!now.empty()) ask();
  });
  signal_ = bus_.match(
      "type='signal',sender='org.freedesktop.portal.Desktop',"
      "interface='org.freedesktop.portal.Settings',member='SettingChanged'",
      [this](sd_bus_message* message) { settingChanged(message); });
  // On a bus that was lost and is there again it may have been all the time.
  holder_ = bus_.askForOwner(kPortal.service, [this](std::string_view owner) {
    owner_ = owner;
    if (!owner.empty() && !call_.isPending()) ask();
  });
}

// Who asks starts the portal, where the system has one.
void SettingsPortal::ask() {
  call_.send(
      bus_,
      bus_.newCall(kPortal, "ReadAll", "as", static_cast<int>(3), kAppearance, kDesktop, kAccess),
      kLongestAnswer, [this](sd_bus_message* reply) { answered(reply); });
}

void SettingsPortal::answered(sd_bus_message* reply) {
  if (isError(reply)) return;
  const char* sender = sd_bus_message_get_sender(reply);
  owner_ = sender != nullptr ? sender : "";
  forEachEntry(reply, kNamespaces, [this, reply](const char* space) {
    return forEachEntry(reply, kProperties, [this, reply, space](const char* key) {
      take(space, key, reply);
      return true;
    });
  });
  tell();
}

void SettingsPortal::settingChanged(sd_bus_message* message) {
  const char* space = nullptr;
  const char* key = nullptr;
  if (owner_.empty() || !isFrom(message, owner_)) return;
  if (sd_bus_message_read(message, "ss", &space, &key) <= 0) return;
  take(space, key, message);
  tell();
}

// A value of another type says nothing, and the walk goes on behind it.
void SettingsPortal::take(std::string_view space, std::string_view key, sd_bus_message* message) {
  const auto* const row = std::ranges::find_if(kSettings, [space, key](const Setting& setting) {
    return setting.space == space && setting.key == key;
  });
  const char type[] = {row != kSettings.end() ? row->type : '\0', '\0'};
  if (type[0] == '\0' || sd_bus_message_enter_container(message, 'v', type) <= 0) {
    sd_bus_message_skip(message, "v");
    return;
  }
  // Both types are read as a word of 32 bits.
  std::uint32_t value = 0;
  if (sd_bus_message_read_basic(message, type[0], &value) > 0) {
    values_[static_cast<std::size_t>(row - kSettings.begin())] = value;
  }
  sd_bus_message_exit_container(message);
}

void SettingsPortal::tell() {
  const UserWishes wished{
      .highContrast = values_[contrast] == 1 || values_[highContrast].value_or(0) != 0,
      .reducedMotion = values_[reducedMotion] == 1 || values_[animations] == 0,
      .scheme = schemeOf(values_[scheme].value_or(0))};
  if (std::exchange(wishes_, wished) != wished) changed_(wishes_);
}

}  // namespace halvora
