// SPDX-License-Identifier: Apache-2.0
// A virtual phone's needs behind recorders that write every call into one log and pass it on. Owned
// by the bench.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/application.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/http.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/random.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

class VirtualPhone;

class ActLog {
 public:
  void add(std::string act) { acts_.push_back(std::move(act)); }
  /// Of interest to few tests: timers, and what is only read.
  void addDetail(std::string act) {
    if (isDetailed) add(std::move(act));
  }
  std::vector<std::string> drain() { return std::exchange(acts_, {}); }

  bool isDetailed = false;

 private:
  std::vector<std::string> acts_;
};

/// At most six digits that count: 0.5, 1, 0.392157.
std::string actText(double number);
/// "1000 ms"
std::string actText(Duration duration);
/// "255 128 0" for red, green, blue; "none" for no colour.
std::string actText(const MaybeColour& colour);
std::string actText(const DefaultsValue& value);

class RecordingRunLoop final : public RunLoop {
 public:
  RecordingRunLoop(RunLoop& loop, ActLog& log) : loop_(loop), log_(log) {}
  Duration now() const override { return loop_.now(); }
  TimerId after(Duration delay, Task&& task) override;
  TimerId every(Duration interval, Task&& task) override;
  TimerId soon(Task&& task) override { return loop_.soon(std::move(task)); }
  void cancel(TimerId timer) override { loop_.cancel(timer); }
  bool isPending(TimerId timer) const override { return loop_.isPending(timer); }
  void post(Task&& task) override { loop_.post(std::move(task)); }

 private:
  RunLoop& loop_;
  ActLog& log_;
};

class RecordingQueues final : public SerialQueues {
 public:
  RecordingQueues(SerialQueues& queues, ActLog& log) : queues_(queues), log_(log) {}
  std::unique_ptr<SerialQueue> make(std::string_view label) override;

 private:
  SerialQueues& queues_;
  ActLog& log_;
};

class RecordingRandom final : public Random {
 public:
  RecordingRandom(Random& random, ActLog& log) : random_(random), log_(log) {}
  std::uint32_t below(std::uint32_t bound) override;

 private:
  Random& random_;
  ActLog& log_;
};

class RecordingBluetooth final : public BluetoothCentral {
 public:
  RecordingBluetooth(BluetoothCentral& central, ActLog& log) : central_(central), log_(log) {}
  BluetoothAuthorization authorization() const override { return central_.authorization(); }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;

 private:
  BluetoothCentral& central_;
  ActLog& log_;
};

class RecordingScreen final : public Screen {
 public:
  RecordingScreen(Screen& screen, ActLog& log) : screen_(screen), log_(log) {}
  Size bounds() const override { return screen_.bounds(); }
  double brightness() const override;
  void setBrightness(double level) override;
  float currentEDRHeadroom() const override;

 private:
  Screen& screen_;
  ActLog& log_;
};

class RecordingHaptics final : public Haptics {
 public:
  explicit RecordingHaptics(ActLog& log) : log_(log) {}
  void impact(ImpactStyle style) override;
  void playSystemSound(std::uint32_t sound) override;
  void disposeSystemSound(std::uint32_t sound) override;

 private:
  ActLog& log_;
};

class RecordingApplication final : public Application {
 public:
  RecordingApplication(Application& application, ActLog& log)
      : application_(application), log_(log) {}
  void addObserver(ApplicationObserver& observer) override;
  void removeObserver(ApplicationObserver& observer) override;
  void setIdleTimerDisabled(bool disabled) override;
  void setStatusBarHidden(bool hidden) override;
  void dismissPresentedScreens() override;
  bool canOpenSettings() const override { return application_.canOpenSettings(); }
  void openSettings() override;
  void useAudioPlaybackCategory() override;

 private:
  Application& application_;
  ActLog& log_;
};

class RecordingDefaults final : public UserDefaults {
 public:
  RecordingDefaults(UserDefaults& defaults, ActLog& log) : defaults_(defaults), log_(log) {}
  const DefaultsValue* find(std::string_view key) const override;
  void set(std::string_view key, DefaultsValue value) override;
  void remove(std::string_view key) override;
  void synchronize() override;

 private:
  UserDefaults& defaults_;
  ActLog& log_;
};

class RecordingBundle final : public Bundle {
 public:
  RecordingBundle(Bundle& bundle, ActLog& log) : bundle_(bundle), log_(log) {}
  const std::string& identifier() const override { return bundle_.identifier(); }
  std::optional<FileAttributes> attributes(std::string_view path) const override {
    return bundle_.attributes(path);
  }
  std::optional<std::vector<std::string>> list(std::string_view folder) const override {
    return bundle_.list(folder);
  }
  std::string location(std::string_view path) const override { return bundle_.location(path); }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string localizedString(std::string_view key) const override;

 private:
  Bundle& bundle_;
  ActLog& log_;
};

class RecordingHttp final : public HttpClient {
 public:
  explicit RecordingHttp(ActLog& log) : log_(log) {}
  void get(const std::string& url) override { log_.add("get " + url); }
  void cancelAll() override { log_.add("cancel requests"); }

 private:
  ActLog& log_;
};

struct RecordingPlatform {
  RecordingPlatform(VirtualPhone& phone, ActLog& log);
  Platform platform();

  VirtualPhone& phone;
  RecordingRunLoop runLoop;
  RecordingQueues queues;
  RecordingRandom random;
  RecordingBluetooth bluetooth;
  RecordingScreen screen;
  RecordingHaptics haptics;
  RecordingApplication application;
  RecordingDefaults defaults;
  RecordingBundle mainBundle;
  Bundles bundles;
  RecordingHttp http;
};

}  // namespace halvora
