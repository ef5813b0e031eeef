// SPDX-License-Identifier: Apache-2.0
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QUrl>

#include "adapters/system/system_phone.h"

int main(int argumentCount, char** arguments) {
  QGuiApplication application(argumentCount, arguments);
  QGuiApplication::setOrganizationDomain(QStringLiteral("example.com"));
  QGuiApplication::setApplicationName(QStringLiteral("qml-host"));
  // Nobody in the audience is flashed at more than three times a second, whatever is sent.
  halvora::SystemPhone::sharedInstance({.assets = argumentCount > 1 ? arguments[1] : "",
                                        .limits = {.flash = halvora::FlashPolicy::limited}});

  QQmlApplicationEngine engine;
  engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
  engine.load(QUrl(QStringLiteral("qrc:/qt/qml/QmlHost/Main.qml")));
  return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
