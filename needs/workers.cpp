// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/workers.h"

namespace halvora {

bool v0::ranToItsEnd(Task& task) noexcept {
  try {
    task();
    return true;
  } catch (...) {
    return false;
  }
}

WorkEnd v0::runAnyway(Workers& workers, std::span<Task> tasks) {
  WorkEnd end = workers.run(tasks);
  if (end != WorkEnd::notBegun) return end;
  end = WorkEnd::done;
  for (Task& task : tasks) {
    if (!ranToItsEnd(task)) end = WorkEnd::failed;
  }
  return end;
}

}  // namespace halvora
