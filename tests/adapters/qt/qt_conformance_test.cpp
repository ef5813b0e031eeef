// SPDX-License-Identifier: Apache-2.0
// The needs that Qt serves keep what the conformance suite asks of anybody's.
#include <QGuiApplication>
#include <QHostAddress>
#include <QResource>
#include <QTcpServer>
#include <QTcpSocket>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/qt/qt_application.h"
#include "adapters/qt/qt_http.h"
#include "adapters/qt/qt_resource_bundle.h"
#include "adapters/qt/qt_run_loop.h"
#include "adapters/qt/qt_screen.h"
#include "conformance/device_promises.h"
#include "conformance/phone_promises.h"
#include "conformance/run_loop_promises.h"
#include "conformance/service_promises.h"
#include "conformance/storage_promises.h"
#include "tests/faces/qt/event_wait.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

void expectKept(const std::vector<BrokenPromise>& broken) {
  EXPECT_TRUE(broken.empty()) << textOf(broken);
}

TEST(QtConformance, OfTheRunLoopHolds) {
  expectKept(checkRunLoop([] {
    auto loop = std::make_unique<QtRunLoop>();
    QtRunLoop& its = *loop;
    return LoopUnderTest{std::move(loop), [&its](Duration span) {
                           const Duration end = its.now() + span;
                           const TimerId last = its.after(span, [] {});
                           letQtWorkUntil([&] { return !its.isPending(last) && its.now() >= end; });
                         }};
  }));
}

/// Its services are there for as long as it.
struct OwnScreen final : Screen {
  explicit OwnScreen(const QtPlatformServices& its) : services(its), screen(services) {}
  Size bounds() const override { return screen.bounds(); }
  double brightness() const override { return screen.brightness(); }
  void setBrightness(double level) override { screen.setBrightness(level); }
  float currentEDRHeadroom() const override { return screen.currentEDRHeadroom(); }
  const QtPlatformServices services;
  QtScreen screen;
};

TEST(QtConformance, OfTheScreenHoldsWithABacklightAndWithout) {
  auto level = std::make_shared<double>(0.5);
  QtPlatformServices services;
  services.brightness = [level] { return *level; };
  services.setBrightness = [level](double wanted) { *level = wanted; };
  expectKept(checkScreen([&] { return std::make_unique<OwnScreen>(services); }));
  expectKept(checkFixedScreen([] { return std::make_unique<OwnScreen>(QtPlatformServices{}); }));
}

TEST(QtConformance, OfTheApplicationHolds) {
  const auto become = [](Qt::ApplicationState state) {
    return [state] { emit qGuiApp->applicationStateChanged(state); };
  };
  expectKept(checkApplication([&] {
    auto services = std::make_shared<QtPlatformServices>();
    auto application = std::make_unique<QtApplication>(*services);
    // Whatever windows of other tests have left behind.
    become(Qt::ApplicationInactive)();
    return ApplicationUnderTest{std::move(services), std::move(application),
                                become(Qt::ApplicationActive), become(Qt::ApplicationInactive)};
  }));
  become(Qt::ApplicationInactive)();
}

TEST(QtConformance, OfTheBundleInTheProgramHolds) {
  const ExactJsonReader json;
  // A file that the module has for itself.
  const QResource file(QStringLiteral(":/qt/qml/Halvora/qmldir"));
  ASSERT_TRUE(file.isValid());
  const std::string bytes = file.uncompressedData().toStdString();
  expectKept(checkBundle([&] {
    return BundleUnderTest{
        std::make_unique<QtResourceBundle>(QStringLiteral(":/qt/qml"), "com.example.host",
                                           std::vector<std::string>{"en"}, json),
        "Halvora/qmldir", bytes};
  }));
}

/// Answers as the suite wants it, in the same process.
class AskedServer {
 public:
  AskedServer() {
    EXPECT_TRUE(server_.listen(QHostAddress::LocalHost));
    QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
      QTcpSocket* socket = server_.nextPendingConnection();
      ++open;
      QObject::connect(socket, &QTcpSocket::disconnected, socket, [this] { --open; });
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(*socket); });
    });
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(server_.serverPort()); }

  std::vector<std::string> asked;
  int open = 0;

 private:
  void answer(QTcpSocket& socket) {
    const QByteArray path = socket.readAll().split(' ').value(1);
    asked.push_back(path.toStdString());
    if (path == "/silent") return;
    const QByteArray status = path == "/moved"     ? "302 Found\r\nLocation: /elsewhere"
                              : path == "/failing" ? "503 Service Unavailable\r\nRetry-After: 0"
                                                   : "200 OK";
    socket.write("HTTP/1.1 " + status + "\r\nContent-Length: 0\r\n\r\n");
  }

  QTcpServer server_;
};

TEST(QtConformance, OfTheClientForHttpHolds) {
  expectKept(checkHttp([] {
    auto server = std::make_shared<AskedServer>();
    AskedServer& its = *server;
    return HttpUnderTest{std::move(server),
                         std::make_unique<QtHttp>(true),
                         its.url(),
                         [&its] { return its.asked; },
                         [&its] { return its.open; },
                         letQtWorkUntil};
  }));
}

}  // namespace
}  // namespace halvora
