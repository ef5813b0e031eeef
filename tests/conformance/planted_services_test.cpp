// SPDX-License-Identifier: Apache-2.0
// Clocks, batteries and clients for HTTP that are wrong, three a need: the conformance suite says
// of each which promise it breaks.
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/service_promises.h"
#include "tests/conformance/planted.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

/// Counts milliseconds; stands still; says the user's time instead of everybody's.
class FaultyClock final : public WallClock {
 public:
  FaultyClock(Fault fault, const double& seconds) : fault_(fault), seconds_(seconds) {}
  Date now() const override {
    if (fault_ == Fault::first) return {seconds_ * 1e3};
    return {fault_ == Fault::second ? atFirst_ : seconds_ + 7200};
  }

 private:
  const Fault fault_;
  const double& seconds_;
  const double atFirst_ = seconds_;
};

TEST(PlantedFaults, OfAWallClockAreSaid) {
  const auto ofClock = [](Fault fault) {
    return checkWallClock([fault] {
      auto seconds = std::make_shared<double>(1'767'268'800.25);
      double& its = *seconds;
      return WallClockUnderTest{std::move(seconds), std::make_unique<FaultyClock>(fault, its),
                                [&its] { return its; },
                                [&its](Duration span) { its += toSeconds(span); }};
    });
  };
  expectSaid(ofClock(Fault::first), "dates are seconds since 1970 in universal time");
  expectSaid(ofClock(Fault::second), "the date goes on while time passes");
  expectSaid(ofClock(Fault::third), "7200.000000 s beside the other clock");
}

/// Says percent; is fed only while it is filled; is full where there is none.
class FaultyBattery final : public Battery {
 public:
  FaultyBattery(Fault fault, const std::optional<BatteryState>& its) : fault_(fault), its_(its) {}
  std::optional<BatteryState> state() const override {
    if (!its_) return fault_ == Fault::third ? std::optional(BatteryState{1, true}) : std::nullopt;
    BatteryState said = *its_;
    if (fault_ == Fault::first) said.level *= 100;
    if (fault_ == Fault::second) said.isFed = said.isFed && said.level < 1;
    return said;
  }

 private:
  const Fault fault_;
  const std::optional<BatteryState>& its_;
};

TEST(PlantedFaults, OfABatteryAreSaid) {
  const auto ofBattery = [](Fault fault) {
    return checkBattery([fault] {
      auto state = std::make_shared<std::optional<BatteryState>>();
      std::optional<BatteryState>& its = *state;
      return BatteryUnderTest{std::move(state), std::make_unique<FaultyBattery>(fault, its),
                              [&its](const std::optional<BatteryState>& wanted) { its = wanted; }};
    });
  };
  expectSaid(ofBattery(Fault::first), "the level is the share of a full battery");
  expectSaid(ofBattery(Fault::second), "holds it full");
  expectSaid(ofBattery(Fault::third), "where there is no battery there is no state");
}

constexpr const char* kServer = "http://server.example";

struct Server {
  std::vector<std::string> asked;
  int open = 0;
};

/// Goes where it is sent; keeps on what is given up; asks for nothing twice.
class FaultyHttp final : public HttpClient {
 public:
  FaultyHttp(Fault fault, Server& server) : fault_(fault), server_(server) {}
  ~FaultyHttp() override { giveUp(); }
  FaultyHttp(const FaultyHttp&) = delete;
  FaultyHttp& operator=(const FaultyHttp&) = delete;
  void get(const std::string& url) override {
    if (!url.starts_with(kServer)) return;
    const std::string path = url.substr(std::string(kServer).size());
    if (fault_ == Fault::third && std::ranges::count(server_.asked, path) != 0) return;
    server_.asked.push_back(path);
    if (path == "/silent") ++server_.open;
    if (path == "/moved" && fault_ == Fault::first) get(kServer + std::string("/elsewhere"));
  }
  void cancelAll() override { giveUp(); }

 private:
  void giveUp() {
    if (fault_ != Fault::second) server_.open = 0;
  }

  const Fault fault_;
  Server& server_;
};

TEST(PlantedFaults, OfAClientForHttpAreSaid) {
  const auto ofHttp = [](Fault fault) {
    return checkHttp([fault] {
      auto server = std::make_shared<Server>();
      Server& its = *server;
      return HttpUnderTest{std::move(server),
                           std::make_unique<FaultyHttp>(fault, its),
                           kServer,
                           [&its] { return its.asked; },
                           [&its] { return its.open; },
                           [](const auto& /*isSo*/) {}};
    });
  };
  expectSaid(ofHttp(Fault::first), "nothing else is asked for and nothing is tried again");
  const std::vector<BrokenPromise> kept = ofHttp(Fault::second);
  expectSaid(kept, "giving up ends what is under way");
  expectSaid(kept, "a client that goes ends what is under way");
  expectSaid(ofHttp(Fault::third), "an address that was asked for before is asked for again");
}

}  // namespace
}  // namespace halvora
