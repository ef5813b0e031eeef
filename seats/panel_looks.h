// SPDX-License-Identifier: Apache-2.0
// How the status panel's views look: the texts and styles that they begin with, and what the seat's
// views say. Functions over values, which the panel calls; main thread.
#pragma once

#include "halvora/panel.h"
#include "halvora/platform/bundle.h"
#include "seats/seat_storage.h"

namespace halvora {

/// The views as they are loaded. A text that the kit's table lacks comes out empty.
StatusPanelViews loadedViews(const Bundle& kit);

void applyStyle(const StatusPanelFields& fields, const FontLookup& hasFont,
                StatusPanelViews& views);

/// While the venue's map is being loaded.
void showSeatLoading(const Bundle& kit, StatusPanelViews& views);
/// Afterwards: the names of the seat that is chosen, or less than all of them.
void showSeatNames(const SeatNames& names, const Bundle& kit, StatusPanelViews& views);

/// The same views without what nobody can see, so that a change of a hidden one is none.
StatusPanelViews asSeen(StatusPanelViews views);

}  // namespace halvora
