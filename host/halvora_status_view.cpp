// SPDX-License-Identifier: Apache-2.0
#include "host/halvora_status_view.h"

namespace halvora {

std::unique_ptr<HalvoraStatusView::Coordinator> HalvoraStatusView::makeCoordinator(
    StatusPanelFace face) const {
  auto coordinator = std::make_unique<Coordinator>(engine_, std::move(face));
  coordinator->statusViewController.setFields(fields());
  return coordinator;
}

HalvoraStatusViewController& HalvoraStatusView::makeController(Coordinator& coordinator) const {
  coordinator.statusViewController.setFields(fields());
  return coordinator.statusViewController;
}

void HalvoraStatusView::updateController(HalvoraStatusViewController* controller) const {
  if (controller != nullptr) controller->setFields(fields());
}

std::optional<Size> HalvoraStatusView::sizeThatFits(
    const ProposedSize& proposal, const HalvoraStatusViewController* controller) const {
  if (controller == nullptr) return std::nullopt;
  const Size preferred = controller->preferredContentSize();
  if (preferred.height <= 0) return std::nullopt;
  return Size{proposal.width.value_or(preferred.width), preferred.height};
}

}  // namespace halvora
