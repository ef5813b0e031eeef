// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "halvora/host.h"

namespace halvora {

HalvoraStatusView::HalvoraStatusView(const EmbeddedEngine& engine, StatusPanelFields fields)
    : StatusPanelFields(std::move(fields)), engine_(engine) {}

std::unique_ptr<HalvoraStatusView::Coordinator> HalvoraStatusView::makeCoordinator(
    StatusPanelFace face) const {
  HalvoraViewController& engine = engine_.controller();
  auto panel = HalvoraStatusViewController::make(engine, engine_.platform, std::move(face));
  panel->setFields(fields());
  return std::make_unique<Coordinator>(Coordinator{engine, std::move(panel)});
}

HalvoraStatusViewController& HalvoraStatusView::makeController(
    const Coordinator& coordinator) const {
  coordinator.statusViewController->setFields(fields());
  return *coordinator.statusViewController;
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
