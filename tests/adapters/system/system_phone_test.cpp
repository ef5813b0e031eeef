// SPDX-License-Identifier: Apache-2.0
#include "adapters/system/system_phone.h"

#include <QQmlEngine>
#include <QTemporaryDir>
#include <string>

#include <gtest/gtest.h>

#include "engine/inside.h"
#include "faces/qt/halvora_host.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/json.h"

namespace halvora {
namespace {

TEST(SystemPhoneTest, HasTheLibrariesThatQtHasNot) {
  const QTemporaryDir documents;
  const SystemPhone phone({.documents = documents.path().toStdString()},
                          {"unix:path=/nowhere", "unix:path=/nowhere"});
  const Platform& platform = phone.platform();
  EXPECT_NE(platform.json->parse("{}"), std::nullopt);
  EXPECT_TRUE(platform.files->attributes(documents.path().toStdString()));
  std::string reason;
  EXPECT_EQ(platform.videoAssets->open("/nowhere", &reason), nullptr);
  EXPECT_NE(reason, "");
  EXPECT_FALSE(phone.bluetoothDiagnostics().isScanning);
}

TEST(SystemPhoneTest, WhereNothingIsInstalledTheSystemsEngineIsUsed) {
  static const QTemporaryDir lasting;
  const std::string documents = lasting.path().toStdString();
  SystemPhone& system = SystemPhone::sharedInstance({.documents = documents},
                                                    {"unix:path=/nowhere", "unix:path=/nowhere"});
  EXPECT_EQ(&SystemPhone::sharedInstance(), &system);
  EXPECT_EQ(system.platform().bundles->documents, documents);
  QQmlEngine first;
  QQmlEngine second;
  HalvoraHost& host = HalvoraHost::of(first);
  EXPECT_EQ(&HalvoraHost::of(first), &host);
  EXPECT_EQ(&host.controller(), &HalvoraViewController::sharedInstance(system.platform()));
  EXPECT_EQ(&HalvoraHost::of(second).controller(), &host.controller());
  EXPECT_EQ(&*host.platform().runLoop, &system.runLoop());
  // Its view is loaded: the code's label has its text.
  EXPECT_EQ(insideOf(host.controller()).views().text(ViewId::pairingCodeLabel), "0000");
}

}  // namespace
}  // namespace halvora
