// SPDX-License-Identifier: Apache-2.0
// Adapters that are wrong, three a need: the conformance suite says of each which promise it
// breaks. That nothing is said of right ones is for own_adapters_test.cpp.
#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/radio_manager.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"
#include "conformance/device_promises.h"
#include "conformance/run_loop_promises.h"
#include "conformance/storage_promises.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/conformance/planted.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

/// A loop that is right but for its fault.
class FaultyLoop final : public RunLoop {
 public:
  explicit FaultyLoop(Fault fault) : fault_(fault) {}
  Duration now() const override { return loop_.now(); }
  TimerId after(Duration delay, Task&& task) override {
    return loop_.after(delay, std::move(task));
  }
  TimerId every(Duration interval, Task&& task) override {
    // Drifts towards the past.
    if (fault_ == Fault::second) interval -= milliseconds(1);
    return loop_.every(interval, std::move(task));
  }
  TimerId soon(Task&& task) override {
    if (fault_ != Fault::first) return loop_.soon(std::move(task));
    task();
    return 1;
  }
  void cancel(TimerId timer) override {
    if (fault_ != Fault::third) loop_.cancel(timer);
  }
  bool isPending(TimerId timer) const override { return loop_.isPending(timer); }
  void post(Task&& task) override { loop_.post(std::move(task)); }
  void runFor(Duration span) { loop_.runFor(span); }

 private:
  const Fault fault_;
  VirtualRunLoop loop_;
};

std::vector<BrokenPromise> ofLoop(Fault fault) {
  return checkRunLoop([fault] {
    auto loop = std::make_unique<FaultyLoop>(fault);
    auto* its = loop.get();
    return LoopUnderTest{std::move(loop), [its](Duration span) { its->runFor(span); }, false};
  });
}

TEST(PlantedFaults, OfARunLoopAreSaid) {
  expectSaid(ofLoop(Fault::first), "a task has a turn of its own");
  expectSaid(ofLoop(Fault::second), "multiples of its interval and does not drift");
  expectSaid(ofLoop(Fault::third), "a timer that was cancelled does not run");
}

class FaultyFiles final : public StandardFiles {
 public:
  explicit FaultyFiles(Fault fault) : fault_(fault) {}
  bool replace(const std::string& path, std::string_view bytes) override {
    // Writes in place, over what was there.
    if (fault_ != Fault::first) return StandardFiles::replace(path, bytes);
    std::string whole = StandardFiles::read(path, 1U << 20).value_or("");
    whole.replace(0, std::min(whole.size(), bytes.size()), bytes);
    return StandardFiles::replace(path, whole);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    if (fault_ != Fault::second) return StandardFiles::read(path, limit);
    std::optional<std::string> bytes = StandardFiles::read(path, 1U << 30);
    if (bytes) bytes->resize(std::min(bytes->size(), limit));
    return bytes;
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) const override {
    auto names = StandardFiles::list(folder);
    if (fault_ == Fault::third && names) std::ranges::sort(*names);
    return names;
  }

 private:
  const Fault fault_;
};

TEST(PlantedFaults, OfFilesAreSaid) {
  const auto ofFiles = [](Fault fault) {
    const TemporaryFolder folder;
    return checkFiles([fault] { return std::make_unique<FaultyFiles>(fault); }, folder.path());
  };
  expectSaid(ofFiles(Fault::first), "a file is replaced whole");
  expectSaid(ofFiles(Fault::second), "a file larger than the limit is not read");
  expectSaid(ofFiles(Fault::third), "names that are numbers come first, by value");
}

/// Defaults whose values stay in `kept`, but for their fault.
class FaultyDefaults final : public UserDefaults {
 public:
  FaultyDefaults(Fault fault, DefaultsDictionary& kept) : fault_(fault), kept_(kept) {
    if (fault_ == Fault::first) kept_.clear();
  }
  const DefaultsValue* find(std::string_view key) const override {
    const auto found = std::ranges::find(kept_, key, &DefaultsMember::key);
    return found != kept_.end() ? &found->value : nullptr;
  }
  void set(std::string_view key, DefaultsValue value) override {
    // Has one kind of numbers.
    if (const auto* whole = std::get_if<std::int64_t>(&value.storage);
        whole != nullptr && fault_ == Fault::second) {
      value = DefaultsValue(static_cast<double>(*whole));
    }
    erase(key);
    kept_.push_back({std::string(key), std::move(value)});
  }
  void remove(std::string_view key) override {
    if (fault_ != Fault::third) erase(key);
  }
  void synchronize() override {}

 private:
  void erase(std::string_view key) {
    std::erase_if(kept_, [key](const DefaultsMember& one) { return one.key == key; });
  }

  const Fault fault_;
  DefaultsDictionary& kept_;
};

TEST(PlantedFaults, OfDefaultsAreSaid) {
  const auto ofDefaults = [](Fault fault) {
    DefaultsDictionary kept;
    return checkUserDefaults([&] { return std::make_unique<FaultyDefaults>(fault, kept); });
  };
  expectSaid(ofDefaults(Fault::first), "values last beyond the end of the application");
  expectSaid(ofDefaults(Fault::second), "a read sees the last write at once");
  expectSaid(ofDefaults(Fault::third), "a removed key has no value");
}

class FaultyBundle final : public Bundle {
 public:
  explicit FaultyBundle(Fault fault) : fault_(fault) {}
  const std::string& identifier() const override { return identifier_; }
  std::optional<FileAttributes> attributes(std::string_view path) const override {
    if (path == "a/b") return FileAttributes{.size = fault_ == Fault::fourth ? 6U : 5U};
    if (path == "a") return FileAttributes{.isFolder = true};
    return std::nullopt;
  }
  std::optional<std::vector<std::string>> list(std::string_view folder) const override {
    if (folder != "a") return std::nullopt;
    return fault_ == Fault::fifth ? std::vector<std::string>() : std::vector<std::string>{"b"};
  }
  std::string location(std::string_view /*path*/) const override { return {}; }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override {
    if (path != "a/b" && fault_ == Fault::first) return "";
    if (path != "a/b") return std::nullopt;
    if (limit < 5 && fault_ != Fault::second) return std::nullopt;
    return "bytes";
  }
  std::string localizedString(std::string_view key) const override {
    return fault_ == Fault::third ? "" : std::string(key);
  }

 private:
  const Fault fault_;
  const std::string identifier_ = "faulty";
};

TEST(PlantedFaults, OfABundleAreSaid) {
  const auto ofBundle = [](Fault fault) {
    return checkBundle([fault] {
      return BundleUnderTest{std::make_unique<FaultyBundle>(fault), "a/b", "bytes"};
    });
  };
  expectSaid(ofBundle(Fault::first), "a missing resource is none");
  expectSaid(ofBundle(Fault::second), "a resource larger than the limit is not read");
  expectSaid(ofBundle(Fault::third), "a key without a text is its own text");
  expectSaid(ofBundle(Fault::fourth), "a resource's attributes say how large it is");
  expectSaid(ofBundle(Fault::fifth), "a folder's list has what lies in it");
}

/// One manager at a time is enough for a fault to show.
class FaultyRadio final : public BluetoothCentral {
 public:
  explicit FaultyRadio(Fault fault) : fault_(fault) {}
  BluetoothAuthorization authorization() const override {
    return BluetoothAuthorization::allowedAlways;
  }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override {
    if (fault_ == Fault::first) delegate.centralManagerDidUpdateState(state);
    return std::make_unique<Manager>(*this, delegate);
  }
  void advertise(std::span<const std::uint8_t> packet) {
    if (fault_ == Fault::third) packet = packet.subspan(2);
    if (manager != nullptr && manager->hears()) {
      manager->delegate().didDiscoverPeripheral({packet});
    }
  }
  void setPower(bool hasPower) {
    state = hasPower ? CentralState::poweredOn : CentralState::poweredOff;
    if (manager != nullptr) manager->stateChanged(state);
  }

  VirtualRunLoop loop;

 private:
  class Manager final : public RadioManager {
   public:
    Manager(FaultyRadio& radio, CentralManagerDelegate& its)
        : RadioManager(radio.loop, its), radio_(radio) {
      radio_.manager = this;
    }
    ~Manager() override {
      if (radio_.manager == this) radio_.manager = nullptr;
    }
    CentralState state() const override { return radio_.state; }
    void scanForPeripherals(const ScanOptions& options) override {
      wishes_ = true;
      RadioManager::scanForPeripherals(options);
    }
    void stopScan() override {
      wishes_ = false;
      RadioManager::stopScan();
    }
    /// A fault: what was once begun goes on when power is back.
    bool hears() const {
      return radio_.fault_ == Fault::second ? wishes_ && radio_.state == CentralState::poweredOn
                                            : isScanning();
    }

   private:
    FaultyRadio& radio_;
    bool wishes_ = false;
  };

  const Fault fault_;
  CentralState state = CentralState::poweredOn;
  Manager* manager = nullptr;
};

TEST(PlantedFaults, OfARadioAreSaid) {
  const auto ofRadio = [](Fault fault) {
    return checkRadio([fault] {
      auto radio = std::make_shared<FaultyRadio>(fault);
      FaultyRadio& its = *radio;
      return RadioUnderTest{
          std::move(radio), &its, [&its] { its.loop.runFor(milliseconds(10)); },
          [&its](bool hasPower) { its.setPower(hasPower); },
          [&its](std::span<const std::uint8_t> packet) { its.advertise(packet); }};
    });
  };
  expectSaid(ofRadio(Fault::first), "the first report comes in a turn of its own");
  expectSaid(ofRadio(Fault::second), "losing power ends a scan");
  expectSaid(ofRadio(Fault::third), "a packet is handed over whole");
}

/// Ready, and says so to nobody: what an adapter does that is not yet wired.
class SilentRadio final : public BluetoothCentral {
 public:
  BluetoothAuthorization authorization() const override {
    return BluetoothAuthorization::allowedAlways;
  }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& /*delegate*/) override {
    return std::make_unique<Manager>();
  }

 private:
  class Manager final : public CentralManager {
   public:
    CentralState state() const override { return CentralState::poweredOn; }
    void scanForPeripherals(const ScanOptions& /*options*/) override {}
    void stopScan() override {}
  };
};

TEST(PlantedFaults, ARadioThatNeverReportsIsSaid) {
  const auto found = checkRadio([] {
    auto radio = std::make_shared<SilentRadio>();
    SilentRadio& its = *radio;
    return RadioUnderTest{std::move(radio), &its, [] {}, [](bool) {},
                          [](std::span<const std::uint8_t>) {}};
  });
  expectSaid(found, "a manager reports its state after it was made");
  expectSaid(found, "the loss of power is reported");
  expectSaid(found, "a packet on the air is heard while a scan goes on");
}

class FaultyScreen final : public Screen {
 public:
  explicit FaultyScreen(Fault fault) : fault_(fault) {}
  Size bounds() const override { return {390, 844}; }
  double brightness() const override { return fault_ == Fault::first ? level_ * 255 : level_; }
  void setBrightness(double level) override {
    if (fault_ == Fault::second) {
      level_ = level;
    } else {
      level_ = std::clamp(level, 0.0, 1.0);
    }
  }
  float currentEDRHeadroom() const override { return fault_ == Fault::third ? 0.0F : 1.0F; }

 private:
  const Fault fault_;
  double level_ = 0.5;
};

TEST(PlantedFaults, OfAScreenAreSaid) {
  const auto ofScreen = [](Fault fault) {
    return checkScreen([fault] { return std::make_unique<FaultyScreen>(fault); });
  };
  expectSaid(ofScreen(Fault::first), "the level is from 0 to 1");
  expectSaid(ofScreen(Fault::second), "levels outside of 0 to 1 are clamped");
  expectSaid(ofScreen(Fault::third), "the headroom is at least 1");
}

/// Keeps its tasks until it is told to run them.
class FaultyQueues final : public SerialQueues {
 public:
  explicit FaultyQueues(Fault fault) : fault_(fault) {}
  std::unique_ptr<SerialQueue> make(std::string_view label) override {
    struct Queue final : SerialQueue {
      Queue(FaultyQueues& its, std::string_view label) : queues(its), name(label) {}
      const std::string& label() const override { return name; }
      bool dispatch(Task task) override {
        queues.tasks_.push_back(std::move(task));
        return true;
      }
      FaultyQueues& queues;
      const std::string name;
    };
    return std::make_unique<Queue>(*this, fault_ == Fault::third ? "queue" : label);
  }
  void finish() {
    std::vector<Task> tasks = std::exchange(tasks_, {});
    // The last one first, but for the word that all have run.
    if (fault_ == Fault::first && tasks.size() > 2) std::swap(tasks[0], tasks[1]);
    for (Task& task : tasks) {
      try {
        task();
      } catch (...) {
        if (fault_ == Fault::second) return;
      }
    }
  }

 private:
  const Fault fault_;
  std::vector<Task> tasks_;
};

TEST(PlantedFaults, OfQueuesAreSaid) {
  const auto ofQueues = [](Fault fault) {
    return checkQueues([fault] {
      auto queues = std::make_unique<FaultyQueues>(fault);
      FaultyQueues& its = *queues;
      return QueuesUnderTest{std::move(queues), [&its] { its.finish(); }};
    });
  };
  expectSaid(ofQueues(Fault::first), "every task runs, in the order in which they came");
  expectSaid(ofQueues(Fault::second), "what a task throws ends that task and no other");
  expectSaid(ofQueues(Fault::third), "a queue has its label");
}

class FaultyWorkers final : public Workers {
 public:
  explicit FaultyWorkers(Fault fault) : fault_(fault) {}
  int count() const override { return fault_ == Fault::first ? 0 : 1; }
  bool areParallel() const override { return false; }
  WorkEnd run(std::span<Task> tasks) override {
    WorkEnd end = WorkEnd::done;
    for (Task& task : tasks) {
      if (ranToItsEnd(task)) continue;
      end = WorkEnd::failed;
      if (fault_ == Fault::second) return end;
    }
    return fault_ == Fault::third ? WorkEnd::done : end;
  }

 private:
  const Fault fault_;
};

TEST(PlantedFaults, OfWorkersAreSaid) {
  const auto ofWorkers = [](Fault fault) {
    return checkWorkers([fault] { return std::make_unique<FaultyWorkers>(fault); });
  };
  expectSaid(ofWorkers(Fault::first), "there is at least one worker");
  expectSaid(ofWorkers(Fault::second), "a task that throws is a failure, and the others go on");
  expectSaid(ofWorkers(Fault::third), "a task that throws is a failure, and the others go on");
}

class FaultyReader final : public JsonReader {
 public:
  explicit FaultyReader(Fault fault) : fault_(fault) {}
  std::optional<JsonValue> parse(std::string_view document, std::string* reason) const override {
    std::string text(document);
    // Takes a comma too many, keeps the last of equal members, gives no reason.
    if (fault_ == Fault::first && text == "[1,]") text = "[1]";
    if (fault_ == Fault::second && text == R"({"a": 1, "a": 2})") text = R"({"a": 2})";
    return reader_.parse(text, fault_ == Fault::third ? nullptr : reason);
  }
  bool read(std::string_view document, JsonEvents& events, std::string* reason) const override {
    return reader_.read(document, events, reason);
  }

 private:
  const Fault fault_;
  const ExactJsonReader reader_;
};

TEST(PlantedFaults, OfAReaderAreSaid) {
  const auto ofReader = [](Fault fault) {
    return checkJson([fault] { return std::make_unique<FaultyReader>(fault); });
  };
  expectSaid(ofReader(Fault::first), "what is malformed is no document");
  expectSaid(ofReader(Fault::second), "of equal members the first one counts");
  expectSaid(ofReader(Fault::third), "a document that is not taken has a reason");
}

TEST(PlantedFaults, AreSaidInWords) {
  EXPECT_EQ(textOf({{"Screen", "the level is from 0 to 1", "127"}, {"Files", "kept", ""}}),
            "Screen: the level is from 0 to 1 (found: 127)\nFiles: kept\n");
}

}  // namespace
}  // namespace halvora
