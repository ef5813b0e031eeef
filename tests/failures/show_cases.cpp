// SPDX-License-Identifier: Apache-2.0
// A show on a phone in memory: packets of every kind, with pixel maps whose tables are built from
// a video in memory; gobos and clips from a folder on disk.
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "tests/failures/trial.h"

namespace halvora {

namespace {

const ExactJsonReader kJson;

/// What is to be seen of a phone.
struct Seen {
  std::string text;
  friend bool operator==(const Seen&, const Seen&) = default;
};

class Show;
using ShowAct = void (*)(Show& show);

/// Made before the failures begin, and judged by what is shown when it hears looks again.
class Show : public Trial {
 public:
  explicit Show(const std::string& folder) {
    namespace fs = std::filesystem;
    fs::create_directories(folder + "/HVAssets/Gobos");
    fs::create_directories(folder + "/documents");
    for (const char* name : {"1.png", "2.png", "3_1_2.png", "3_2_2.png"}) {
      std::ofstream(folder + "/HVAssets/Gobos/" + name) << name;
    }
    std::ofstream(folder + "/HVAssets/1.mp4") << "clip";
    const std::string video = folder + "/HVAssets/Maps/Venue-7/5/video.mp4";
    fs::create_directories(fs::path(video).parent_path());
    std::ofstream(video) << "video";
    VirtualPhoneSetup setup;
    setup.documents = folder + "/documents";
    setup.files = &files_;
    phone_ = std::make_unique<VirtualPhone>(kJson, std::move(setup));
    phone_->mainBundle.folder = folder;
    phone_->mainBundle.resources["HVAssets/palettes.json"] =
        R"({"palettes": [{"id": 1, "colours": ["#0000FF", "#00FF00"]}]})";
    phone_->mainBundle.strings = {{"outside_venue", "a text that is in no small string at all"}};
    phone_->virtualVideos.put(video, VirtualVideo::ofWords({0xFFFF0000, 0xFF00FF00, 0xFF0000FF}));
    for (const auto& [key, text] :
         {std::pair{"selectedSection", "A"}, {"xPos", "2"}, {"yPos", "1"}}) {
      phone_->defaults.setFromOutside(key, std::string(text));
    }
    keepNoLogs();
    engine_ = std::make_unique<ShowEngine>(phone_->platform());
    engine_->lightShowStartedCallback() = [this] { ++started_; };
    engine_->viewDidLoad();
    engine_->start();
    runFor(1000);
  }

  void runFor(long long time) { phone_->loop.runFor(milliseconds(time)); }
  template <class Change>
  void hear(const Change& change) {
    Broadcast broadcast{.applicationId = 258, .venueId = 7, .master = 100, .red = 255};
    broadcast.transmitter = 7;
    broadcast.sequence = ++sequence_;
    change(broadcast);
    const BroadcastBytes data = encodeBroadcast(broadcast);
    if (phone_->bluetooth.advertise(data)) ++heard_;
  }
  /// A host's own call may be told of want of memory.
  void playVideo() {
    try {
      engine_->playVideo("1");
    } catch (const std::bad_alloc&) {
      ++refusals_;
    }
  }

  // A look that is heard again after all is well is the one that is shown.
  Verdict judge() override {
    const ScanDiagnostics& diagnostics = engine_->diagnostics();
    std::uint64_t counted = 0;
    for (const std::uint64_t count : diagnostics.counts) counted += count;
    if (counted != heard_) return wrong("not every packet was counted");
    const bool isWhole = phone_->loop.failures() == 0 && failedLooks() == 0 && refusals_ == 0;
    if (isWhole && started_ != rightStarts()) return wrong("what failed was not counted");
    // From the same beginning, whatever was in force.
    hear([](Broadcast& look) { look.mode = 0; });
    runFor(3000);
    for (int again = 0; again < 4; ++again) {
      hear([](Broadcast& look) {
        look.mode = 1;
        look.pixelMapId = 5;
        look.minutes = 2;
        look.gobo = 2;
        look.ledMode = 1;
      });
      runFor(1100);
    }
    const Seen map = look();
    for (int again = 0; again < 4; ++again) {
      hear([](Broadcast& look) {
        look.mode = 1;
        look.gobo = 2;
      });
      runFor(1100);
    }
    const Seen seen{map.text + "; " + look().text};
    if (!(seen == right(seen))) return wrong("shows " + seen.text + " and not " + right(seen).text);
    engine_.reset();
    runFor(5000);
    return isWhole ? whole() : refused();
  }

 protected:
  void keepNoLogs() {
    phone_->screen.log.isKept = false;
    phone_->haptics.log.isKept = false;
    phone_->defaults.log.isKept = false;
    phone_->bluetooth.log.isKept = false;
    phone_->torch.log.isKept = false;
    phone_->videoLog.isKept = false;
    phone_->queues.log.isKept = false;
    phone_->http.log.isKept = false;
  }
  std::uint64_t failedLooks() const {
    const ScanDiagnostics& diagnostics = engine_->diagnostics();
    return diagnostics[PacketFate::failed] + diagnostics.failedCalls;
  }

  Seen look() const {
    const ViewStack& views = engine_->views();
    const auto colour = views.shownLight().value_or(Colour{});
    std::string text = "mode " + std::to_string(engine_->state().screen.currentMode) + " light " +
                       std::to_string(colour.red) + " " + std::to_string(colour.green) + " " +
                       std::to_string(colour.blue) + " container " +
                       std::to_string(views.shownAlpha(ViewId::container)) + " gobo " +
                       std::to_string(views.shownAlpha(ViewId::goboView)) + " torch " +
                       std::to_string(static_cast<int>(phone_->torch.isOn)) + " brightness " +
                       std::to_string(phone_->screen.brightness()) + " idle timer " +
                       std::to_string(static_cast<int>(phone_->application.isIdleTimerDisabled));
    if (views.shownAlpha(ViewId::goboView) <= 0) return {text};
    const std::string& gobo = views.text(ViewId::goboImage);
    return {text + " picture " + gobo.substr(gobo.rfind('/') + 1)};
  }

  /// What it showed, and how often it told the host, when nothing failed.
  virtual const Seen& right(const Seen& seen) const = 0;
  virtual int rightStarts() const = 0;

  LinuxFiles files_;
  std::unique_ptr<VirtualPhone> phone_;
  std::unique_ptr<ShowEngine> engine_;
  int started_ = 0;
  int refusals_ = 0;
  std::uint16_t sequence_ = 0;
  std::uint64_t heard_ = 0;
};

/// What each part leaves behind is its own: compared with what it leaves without a failure.
template <ShowAct kAct>
class Part final : public Show {
 public:
  using Show::Show;
  void act() override { kAct(*this); }

 private:
  const Seen& right(const Seen& seen) const override {
    static const Seen kRight = seen;
    return kRight;
  }
  int rightStarts() const override {
    static const int kRight = started_;
    return kRight;
  }
};

void packets(Show& show) {
  show.hear([](Broadcast& look) {
    look.mode = 1;
    look.ledMode = 1;
  });
  for (int mode = 3; mode <= 20; ++mode) {
    show.hear([mode](Broadcast& look) {
      look.mode = static_cast<std::uint8_t>(mode);
      look.speed = 250;
      look.paletteId = static_cast<std::uint8_t>(mode % 2);
    });
    show.runFor(300);
  }
  show.hear([](Broadcast& look) {
    look.mode = 50;
    look.ledMode = 5;
    look.ledSpeed = 200;
    look.vibrate = 2;
  });
  show.runFor(700);
  show.hear([](Broadcast& look) { look.mode = 0; });
  show.runFor(1500);
}

void pixelMap(Show& show) {
  for (int minute = 0; minute < 3; ++minute) {
    show.hear([minute](Broadcast& look) {
      look.mode = 1;
      look.pixelMapId = 5;
      look.minutes = static_cast<std::uint8_t>(minute);
    });
    show.runFor(500);
  }
}

void gobos(Show& show) {
  for (int mode = 9; mode <= 13; ++mode) {
    for (int gobo = 0; gobo < 4; ++gobo) {
      show.hear([mode, gobo](Broadcast& look) {
        look.mode = static_cast<std::uint8_t>(mode);
        look.speed = 250;
        look.gobo = static_cast<std::uint8_t>(gobo);
      });
      show.runFor(400);
    }
  }
}

void clips(Show& show) {
  for (int clip = 0; clip < 2; ++clip) {
    show.playVideo();
    show.runFor(2000);
  }
  show.hear([](Broadcast& look) { look.mode = 0; });
  show.runFor(1500);
}

template <class Made>
std::unique_ptr<Trial> make(const std::string& folder) {
  return std::make_unique<Made>(folder);
}

constexpr FailureCase kCases[] = {
    {"show-packets", {.files = true}, make<Part<packets>>},
    {"show-pixel-map", {.files = true}, make<Part<pixelMap>>},
    {"show-gobos", {.files = true}, make<Part<gobos>>},
    {"show-clips", {.files = true}, make<Part<clips>>},
};

}  // namespace

std::span<const FailureCase> showCases() { return kCases; }

}  // namespace halvora
