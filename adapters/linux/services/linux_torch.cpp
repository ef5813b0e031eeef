// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_torch.h"

namespace halvora {

LinuxTorch::LinuxTorch(RunLoop& loop, Bus& system, const std::optional<SysfsLight>& light,
                       const LightWriterSettings& settings) {
  if (light) writer_.emplace(loop, system, *light, settings);
}

// Also what was to put it out may still be on its way.
LinuxTorch::~LinuxTorch() {
  if (isOn_ || (writer_ && writer_->isBusy())) writer_->leave(0);
}

void LinuxTorch::setOn(bool on) {
  if (!writer_) return;
  isOn_ = on;
  writer_->write(on ? writer_->light().most : 0);
}

}  // namespace halvora
