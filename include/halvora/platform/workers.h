// SPDX-License-Identifier: Apache-2.0
// Work that is done by several threads at once and waited for, such as the decoding of a video in
// stretches. Any thread but the main one.
#pragma once

#include <cstdint>
#include <span>

#include "halvora/platform/need.h"
#include "halvora/platform/task.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// What became of a row of tasks.
enum class WorkEnd : std::uint8_t {
  done,  ///< Every task came to its end.
  /// There were no threads, or no memory for them: no task has begun.
  notBegun,
  /// A task threw; as a rule memory was short.
  failed,
};

class Workers : public Need {
 public:
  /// How many tasks may decode at once, at least 1.
  virtual int count() const = 0;
  /// Whether the tasks of one `run` go on side by side, so that one may wait for another. Where
  /// they do not, they run one after the other in their order.
  virtual bool areParallel() const = 0;
  /// Runs every task and returns when all have ended. A task that throws has ended; the others go
  /// on.
  virtual WorkEnd run(std::span<Task> tasks) = 0;
};

/// Whether the task came to its end without throwing.
bool ranToItsEnd(Task& task) noexcept;

/// For tasks of which none waits for another: where there are no threads, the caller's own does
/// them one after the other. Never `notBegun`.
WorkEnd runAnyway(Workers& workers, std::span<Task> tasks);

}  // namespace v0
}  // namespace halvora
