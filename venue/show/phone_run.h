// SPDX-License-Identifier: Apache-2.0
// One engine on a virtual phone that goes through a scenario in virtual time, for whoever watches
// it: a trace, or a meter. Main thread.
#pragma once

#include <functional>
#include <memory>

#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "light/picture_means.h"
#include "venue/show/trace.h"

namespace halvora {

class PhoneRun {
 public:
  /// All that is referred to must outlive it.
  PhoneRun(const Scenario& scenario, const TraceOptions& options, std::unique_ptr<Random> random,
           const TraceLibraries& libraries);
  PhoneRun(const PhoneRun&) = delete;
  PhoneRun& operator=(const PhoneRun&) = delete;

  VirtualPhone& phone() { return phone_; }
  ShowEngine& engine() { return engine_; }

  struct Watcher {
    /// After each turn that did not fail.
    std::function<void()> turnEnded;
    PrecomputeProgress progress = {};
    PrecomputeCompletion completion = {};
  };
  /// Once.
  TraceEnd run(const Watcher& watcher);

 private:
  bool hasFailed() const;

  const Scenario& scenario_;
  const TraceOptions& options_;
  const StandardFiles disk_{};
  FolderBundle mainBundle_;
  VirtualPhone phone_;
  PictureMeans pictures_;
  ShowEngine engine_;
};

}  // namespace halvora
