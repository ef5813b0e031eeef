// SPDX-License-Identifier: Apache-2.0
#include "venue/show/trace_writer.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <utility>

#include "text/asset_paths.h"

namespace halvora {

namespace {

// The views that a trace speaks of; the others follow these or never change.
constexpr std::array kTracedViews = {
    ViewId::container,         ViewId::fpsLabel,
    ViewId::pairingCodeLabel,  ViewId::goboView,
    ViewId::dimmerView,        ViewId::mapNoSeatOverlayView,
    ViewId::lowLightHintLabel, ViewId::videoBackgroundView,
    ViewId::playerViewA,       ViewId::playerViewB,
};

// A path without the folder that it lies in; the innermost where one of the folders lies in
// another.
std::string relativeTo(const TraceFolders& folders, const std::string& path) {
  std::size_t prefix = 0;
  for (const std::string& folder : {folders.assets, folders.documents}) {
    if (!folder.empty() && path.starts_with(folder + "/")) {
      prefix = std::max(prefix, folder.size() + 1);
    }
  }
  return path.substr(prefix);
}

// A finished line as a value within another one.
std::string_view objectOf(JsonLine& line) {
  std::string_view object = line.end();
  object.remove_suffix(1);
  return object;
}

constexpr const char* nameOf(HapticAct act) {
  constexpr const char* kNames[] = {"light", "heavy", "sound", "dispose"};
  static_assert(std::size(kNames) == static_cast<std::size_t>(HapticAct::dispose) + 1);
  return kNames[static_cast<std::size_t>(act)];
}

constexpr const char* nameOf(VideoAct act) {
  constexpr const char* kNames[] = {"load", "play", "pause", "seek"};
  static_assert(std::size(kNames) == static_cast<std::size_t>(VideoAct::seek) + 1);
  return kNames[static_cast<std::size_t>(act)];
}

constexpr std::array<const char*, kAirDoubtCount> kDoubtNames = {
    "other show", "out of step", "contested", "map too soon",
    "untagged",   "bad tag",     "replayed",  "unconfirmed",
};
// One name too few would leave a null.
static_assert(kDoubtNames.back() != nullptr);

}  // namespace

TraceWriter::TraceWriter(VirtualPhone& phone, ShowEngine& engine, TraceFolders folders,
                         std::function<void(std::string_view)> write)
    : phone_(phone), engine_(engine), folders_(std::move(folders)), write_(std::move(write)) {
  // What the gobo view holds from the start, where the asset tree has it.
  std::error_code error;
  if (!folders_.assets.empty() &&
      std::filesystem::is_regular_file(folders_.assets + "/" + kFirstGobo, error)) {
    goboWritten_ = kFirstGobo;
  }
  lightWritten_ = colourText(engine_.views().lightColour());
  for (const ViewId view : kTracedViews) {
    alphas_[indexOf(view)].written = levelText(engine_.views().alpha(view));
  }
  engine_.views().setObserver(this);
  engine_.lightShowStartedCallback() = [this] { callbacks_.push_back("lightShowStarted"); };
  engine_.lightShowStoppedCallback() = [this] { callbacks_.push_back("lightShowStopped"); };
}

TraceWriter::~TraceWriter() { engine_.views().setObserver(nullptr); }

void TraceWriter::alphaChanged(ViewId view, double /*alpha*/, Duration duration) {
  Alpha& alpha = alphas_[indexOf(view)];
  alpha.duration = duration;
  alpha.isTouched = true;
  isAlphaTouched_ = true;
}

void TraceWriter::textChanged(ViewId view, const std::string& /*text*/) {
  if (view == ViewId::fpsLabel) isTextTouched_ = true;
  if (view == ViewId::goboImage) isGoboTouched_ = true;
}

void TraceWriter::lightChanged(const MaybeColour& /*colour*/) { isLightTouched_ = true; }

void TraceWriter::lightAnimationStarted(const MaybeColour& to, Duration duration) {
  lightActs_.push_back({true, to, duration, false});
}

void TraceWriter::lightAnimationEnded(bool finished) {
  lightActs_.push_back({false, {}, {}, finished});
}

void TraceWriter::turnEnded() {
  for (const char* callback : std::exchange(callbacks_, {}))
    finish(line().add("callback", callback));
  writeLight();
  writeViews();
  writeGobo();
  writeDevices();
  writeVideo();
  writePrecomputes();
  writeDefaults();
  if (engine_.scanner().gate() != nullptr) writeFates();
}

void TraceWriter::precomputeProgressed(int done, int total, const std::string& mapId) {
  precomputeActs_.push_back({"progress", done, total, mapId});
}

void TraceWriter::precomputeCompleted(int done, int total) {
  precomputeActs_.push_back({"completion", done, total, std::nullopt});
}

JsonLine& TraceWriter::line() {
  const auto time = std::chrono::floor<std::chrono::milliseconds>(phone_.loop.now());
  return line_.begin().add("t", std::int64_t{time.count()});
}

void TraceWriter::writeLight() {
  for (const LightAct& act : lightActs_) {
    if (!act.isStart) {
      finish(line().add("lightAnimationEnded", act.isFinished));
      continue;
    }
    JsonLine animation;
    animation.begin().addColour("to", act.to).addLevel("duration", toSeconds(act.duration));
    finish(line().addRaw("lightAnimation", objectOf(animation)));
  }
  lightActs_.clear();
  if (!std::exchange(isLightTouched_, false)) return;
  std::string light = colourText(engine_.views().lightColour());
  if (light == lightWritten_) return;
  finish(line().addRaw("light", light));
  lightWritten_ = std::move(light);
}

void TraceWriter::writeViews() {
  const ViewStack& views = engine_.views();
  if (std::exchange(isAlphaTouched_, false)) {
    for (const ViewId view : kTracedViews) {
      Alpha& alpha = alphas_[indexOf(view)];
      if (!std::exchange(alpha.isTouched, false)) continue;
      std::string text = levelText(views.alpha(view));
      if (text == alpha.written) continue;
      finish(line()
                 .add("view", rowOf(view).name)
                 .addRaw("alpha", text)
                 .addLevel("duration", toSeconds(alpha.duration)));
      alpha.written = std::move(text);
    }
  }
  if (!std::exchange(isTextTouched_, false)) return;
  const std::string& fpsText = views.text(ViewId::fpsLabel);
  if (fpsText == fpsTextWritten_) return;
  finish(line().add("fpsText", fpsText));
  fpsTextWritten_ = fpsText;
}

void TraceWriter::writeGobo() {
  if (!std::exchange(isGoboTouched_, false)) return;
  std::string gobo = relativeTo(folders_, engine_.views().text(ViewId::goboImage));
  if (gobo == goboWritten_) return;
  JsonLine& json = line();
  if (gobo.empty()) {
    json.addNull("gobo");
  } else {
    json.add("gobo", gobo);
  }
  finish(json);
  goboWritten_ = std::move(gobo);
}

void TraceWriter::writeVideo() {
  for (const VideoEvent& event : phone_.videoLog.drain()) {
    JsonLine object;
    object.begin().add("player", std::string_view(&event.player, 1)).add("act", nameOf(event.act));
    if (event.act == VideoAct::load) object.add("item", event.item);
    if (event.act == VideoAct::seek) object.addLevel("seconds", toSeconds(event.position));
    finish(line().addRaw("video", objectOf(object)));
  }
}

void TraceWriter::writePrecomputes() {
  for (const PrecomputeAct& act : std::exchange(precomputeActs_, {})) {
    JsonLine object;
    object.begin().add("done", std::int64_t{act.done}).add("total", std::int64_t{act.total});
    if (act.mapId) object.add("mapId", *act.mapId);
    finish(line().addRaw(act.key, objectOf(object)));
  }
}

void TraceWriter::writeDevices() {
  phone_.torch.log.drain();
  writeFlag("torch", phone_.torch.isOn, torchWritten_);

  for (const double level : phone_.screen.log.drain()) finish(line().addLevel("brightness", level));
  for (const HapticAct act : phone_.haptics.log.drain()) finish(line().add("haptic", nameOf(act)));
  for (const std::string& url : phone_.http.log.drain()) finish(line().add("get", url));
  writeFlag("statusBarHidden", phone_.application.isStatusBarHidden, statusBarWritten_);
  writeFlag("idleTimerDisabled", phone_.application.isIdleTimerDisabled, idleTimerWritten_);
  writeFlag("insideVenue", engine_.isInsideVenue(), insideVenueWritten_);
}

void TraceWriter::writeFlag(const char* key, bool value, bool& written) {
  if (value == written) return;
  written = value;
  finish(line().add(key, value));
}

// A key written twice in a turn counts with its last value.
void TraceWriter::writeDefaults() {
  const std::vector<VirtualDefaults::Write> writes = phone_.defaults.log.drain();
  for (auto write = writes.begin(); write != writes.end(); ++write) {
    const bool isOverwritten = std::any_of(
        write + 1, writes.end(), [&](const auto& later) { return later.key == write->key; });
    if (isOverwritten) continue;
    std::optional<DefaultsValue>& written = defaultsWritten_[write->key];
    if (written == write->value) continue;
    written = write->value;
    JsonLine& json = line().add("defaults", write->key);
    if (written) {
      json.addDefault("value", *written);
    } else {
      json.addNull("value");
    }
    finish(json);
  }
}

void TraceWriter::writeFates() {
  const AirDiagnostics air = engine_.airDiagnostics();
  for (std::size_t doubt = 0; doubt < kAirDoubtCount; ++doubt) {
    for (; airWritten_.doubts[doubt] < air.doubts[doubt]; ++airWritten_.doubts[doubt]) {
      finish(line().add("fate", kDoubtNames[doubt]));
    }
  }
}

}  // namespace halvora
