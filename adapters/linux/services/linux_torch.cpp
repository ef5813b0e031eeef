// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_torch.h"

namespace halvora {

namespace {

/// A strobe is not to write a file with each of its flashes.
constexpr Duration kStaysOff = milliseconds(2000);

}  // namespace

LinuxTorch::LinuxTorch(RunLoop& loop, Bus& system, const std::optional<SysfsLight>& light,
                       const LightWriterSettings& settings, LightJournal* journal)
    : loop_(loop), journal_(journal) {
  if (!light) return;
  writer_.emplace(loop, system, *light, settings);
  if (journal_ != nullptr && journal_->owed(*light)) setOn(false);
}

LinuxTorch::~LinuxTorch() { giveBack(); }

// Also what was to put it out may still be on its way.
void LinuxTorch::giveBack() {
  if (!writer_) return;
  if (isOn_ || writer_->isBusy()) writer_->leave(0);
  isOn_ = false;
  if (journal_ != nullptr) journal_->forget(writer_->light());
}

void LinuxTorch::setOn(bool on) {
  if (!writer_) return;
  isOn_ = on;
  writer_->write(on ? writer_->light().most : 0);
  if (journal_ == nullptr) return;
  if (!on) return forgetLater();
  journal_->note(writer_->light(), 0);
}

void LinuxTorch::forgetLater() {
  forgetting_ = Timer(loop_, loop_.after(kStaysOff, [this] {
    if (isOn_ || writer_->isBusy()) return;
    if (writer_->light().level() == 0U) journal_->forget(writer_->light());
  }));
}

}  // namespace halvora
