// SPDX-License-Identifier: Apache-2.0
// What an answer of the bus means for whoever asked the daemon.
#include "adapters/linux/bus/bluez_errors.h"

#include <string>

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

namespace halvora {
namespace {

sd_bus_error named(const char* name, const char* message = nullptr) {
  sd_bus_error error{};
  error.name = name;
  error.message = message;
  return error;
}

TEST(BluezErrors, TellWhoIsNotThereFromWhoDoesNotLetIn) {
  for (const char* name :
       {"org.freedesktop.DBus.Error.ServiceUnknown", "org.freedesktop.DBus.Error.NameHasNoOwner",
        "org.freedesktop.DBus.Error.Spawn.ExecFailed"}) {
    EXPECT_TRUE(isAbsence(named(name))) << name;
    EXPECT_FALSE(isRefusal(named(name))) << name;
  }
  for (const char* name :
       {"org.freedesktop.DBus.Error.AccessDenied", "org.freedesktop.DBus.Error.AuthFailed",
        "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired",
        "org.bluez.Error.NotPermitted", "org.bluez.Error.NotAuthorized"}) {
    EXPECT_TRUE(isRefusal(named(name))) << name;
    EXPECT_FALSE(isAbsence(named(name))) << name;
  }
  for (const char* name : {"org.bluez.Error.Failed", "org.bluez.Error.InProgress",
                           "org.freedesktop.DBus.Error.Spawn"}) {
    EXPECT_FALSE(isRefusal(named(name)) || isAbsence(named(name))) << name;
  }
}

TEST(BluezErrors, AreSaidWithTheirWordsAndWithoutEnd) {
  EXPECT_EQ(textOf(named("org.bluez.Error.Failed")), "org.bluez.Error.Failed");
  EXPECT_EQ(textOf(named("org.bluez.Error.Failed", "no")), "org.bluez.Error.Failed: no");
  const std::string endless(100'000, 'x');
  EXPECT_LT(textOf(named(endless.c_str(), endless.c_str())).size(), 10'000U);
}

}  // namespace
}  // namespace halvora
