// SPDX-License-Identifier: Apache-2.0
// The torch need on Linux: the kernel's light beside the camera, through the login daemon. A torch
// that was switched on goes out with this, and one that a process before has left on, when it
// begins. The host owns it; main thread.
#pragma once

#include <optional>

#include "adapters/linux/services/light_journal.h"
#include "adapters/linux/services/light_writer.h"
#include "halvora/platform/torch.h"

namespace halvora {

class LinuxTorch final : public Torch {
 public:
  /// Without a light there is no torch.
  LinuxTorch(RunLoop& loop, Bus& system, const std::optional<SysfsLight>& light,
             const LightWriterSettings& settings = {}, LightJournal* journal = nullptr);
  ~LinuxTorch() override;
  LinuxTorch(const LinuxTorch&) = delete;
  LinuxTorch& operator=(const LinuxTorch&) = delete;

  bool hasTorch() const override { return writer_.has_value(); }
  /// The one lamp is both.
  bool hasFlash() const override { return writer_.has_value(); }
  void setOn(bool on) override;

  /// As when this goes, for a process that ends without that.
  void giveBack();

  LightWriterCounts counts() const { return writer_ ? writer_->counts() : LightWriterCounts{}; }

 private:
  void forgetLater();

  RunLoop& loop_;
  std::optional<LightWriter> writer_;
  /// May be null.
  LightJournal* const journal_;
  bool isOn_ = false;
  Timer forgetting_;
};

}  // namespace halvora
