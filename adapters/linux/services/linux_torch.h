// SPDX-License-Identifier: Apache-2.0
// The torch need on Linux: the kernel's light beside the camera, through the login daemon. A torch
// that was switched on goes out with this. The host owns it; main thread.
#pragma once

#include <optional>

#include "adapters/linux/services/light_writer.h"
#include "halvora/platform/torch.h"

namespace halvora {

class LinuxTorch final : public Torch {
 public:
  /// Without a light there is no torch.
  LinuxTorch(RunLoop& loop, Bus& system, const std::optional<SysfsLight>& light,
             const LightWriterSettings& settings = {});
  ~LinuxTorch() override;
  LinuxTorch(const LinuxTorch&) = delete;
  LinuxTorch& operator=(const LinuxTorch&) = delete;

  bool hasTorch() const override { return writer_.has_value(); }
  /// The one lamp is both.
  bool hasFlash() const override { return writer_.has_value(); }
  void setOn(bool on) override;

  LightWriterCounts counts() const { return writer_ ? writer_->counts() : LightWriterCounts{}; }

 private:
  std::optional<LightWriter> writer_;
  bool isOn_ = false;
};

}  // namespace halvora
