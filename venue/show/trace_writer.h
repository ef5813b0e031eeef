// SPDX-License-Identifier: Apache-2.0
// Writes down what one virtual phone does: acts as they happen, values when they differ at the end
// of a turn from what was written last. Looks at a phone and an engine that outlive it; call
// `turnEnded` after each turn.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "venue/base/json_line.h"

namespace halvora {

/// Where the phone's pictures may lie; the trace names them relative to these. Empty for none.
struct TraceFolders {
  std::string assets;
  std::string documents;
};

class TraceWriter final : private ViewObserver {
 public:
  TraceWriter(VirtualPhone& phone, ShowEngine& engine, TraceFolders folders,
              std::function<void(std::string_view)> write);
  ~TraceWriter() override;
  TraceWriter(const TraceWriter&) = delete;
  TraceWriter& operator=(const TraceWriter&) = delete;

  void turnEnded();
  void precomputeProgressed(int done, int total, const std::string& mapId);
  void precomputeCompleted(int done, int total);

 private:
  struct LightAct {
    bool isStart;
    MaybeColour to;
    Duration duration;
    bool isFinished;
  };
  struct PrecomputeAct {
    const char* key;
    int done;
    int total;
    /// None for a completion.
    std::optional<std::string> mapId;
  };
  struct Alpha {
    std::string written;
    Duration duration{};
    bool isTouched = false;
  };

  void alphaChanged(ViewId view, double alpha, Duration duration) override;
  void textChanged(ViewId view, const std::string& text) override;
  void lightChanged(const MaybeColour& colour) override;
  void lightAnimationStarted(const MaybeColour& to, Duration duration) override;
  void lightAnimationEnded(bool finished) override;

  JsonLine& line();
  void finish(JsonLine& line) { write_(line.end()); }
  void writeLight();
  void writeViews();
  void writeGobo();
  void writeDevices();
  void writeVideo();
  void writePrecomputes();
  void writeDefaults();
  void writeFates();
  void writeFlag(const char* key, bool value, bool& written);

  VirtualPhone& phone_;
  ShowEngine& engine_;
  TraceFolders folders_;
  std::function<void(std::string_view)> write_;
  JsonLine line_;
  std::vector<LightAct> lightActs_;
  std::vector<const char*> callbacks_;
  std::vector<PrecomputeAct> precomputeActs_;
  std::array<Alpha, kViewCount> alphas_;
  bool isLightTouched_ = false;
  bool isAlphaTouched_ = false;
  bool isTextTouched_ = false;
  bool isGoboTouched_ = false;
  std::string lightWritten_;
  std::string fpsTextWritten_;
  std::string goboWritten_;
  bool torchWritten_ = false;
  bool statusBarWritten_ = false;
  bool idleTimerWritten_ = false;
  bool insideVenueWritten_ = false;
  AirDiagnostics airWritten_;
  std::map<std::string, std::optional<DefaultsValue>, std::less<>> defaultsWritten_;
};

}  // namespace halvora
