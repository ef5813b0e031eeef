// SPDX-License-Identifier: Apache-2.0
// The status panel as a host describes it: its style and the venue to begin with. A value; a face
// makes the coordinator once, which owns the panel, loads and shows that panel, and hands every
// later description to it. Main thread.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "halvora/engine.h"
#include "host/embedded_engine.h"
#include "host/proposed_size.h"
#include "seats/halvora_status_view_controller.h"

namespace halvora {

/// The fields are those of the panel, in their order.
class HalvoraStatusView : public StatusPanelFields {
 public:
  struct Coordinator {
    Coordinator(const EmbeddedEngine& engine, StatusPanelFace face)
        : mainViewController(engine.controller()),
          statusViewController(mainViewController, engine.platform(), std::move(face)) {}

    HalvoraViewController& mainViewController;
    HalvoraStatusViewController statusViewController;
  };

  explicit HalvoraStatusView(const EmbeddedEngine& engine, StatusPanelFields fields = {})
      : StatusPanelFields(std::move(fields)), engine_(engine) {}

  const StatusPanelFields& fields() const { return *this; }

  /// The panel has this description's fields; the engine is made if there is none yet.
  std::unique_ptr<Coordinator> makeCoordinator(StatusPanelFace face = {}) const;
  HalvoraStatusViewController& makeController(Coordinator& coordinator) const;
  /// Null, where a face shows something else, is left alone.
  void updateController(HalvoraStatusViewController* controller) const;
  /// The panel's preferred height, as wide as proposed, or as it prefers. None: the face decides.
  std::optional<Size> sizeThatFits(const ProposedSize& proposal,
                                   const HalvoraStatusViewController* controller) const;

 private:
  EmbeddedEngine engine_;
};

}  // namespace halvora
