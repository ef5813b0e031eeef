// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bluez_errors.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace halvora {

namespace {

/// Of each of an error's two texts.
constexpr std::size_t kLongestText = 300;

bool isOneOf(const sd_bus_error& error, std::initializer_list<const char*> names) {
  return std::ranges::any_of(
      names, [&](const char* name) { return sd_bus_error_has_name(&error, name) != 0; });
}

}  // namespace

bool isRefusal(const sd_bus_error& error) {
  return isOneOf(error, {SD_BUS_ERROR_ACCESS_DENIED, SD_BUS_ERROR_AUTH_FAILED,
                         SD_BUS_ERROR_INTERACTIVE_AUTHORIZATION_REQUIRED,
                         "org.bluez.Error.NotPermitted", "org.bluez.Error.NotAuthorized"});
}

bool isAbsence(const sd_bus_error& error) {
  return isOneOf(error, {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER}) ||
         std::string_view(error.name).starts_with("org.freedesktop.DBus.Error.Spawn.");
}

std::string textOf(const sd_bus_error& error) {
  std::string text(std::string_view(error.name).substr(0, kLongestText));
  if (error.message == nullptr) return text;
  return text.append(": ").append(std::string_view(error.message).substr(0, kLongestText));
}

}  // namespace halvora
