// SPDX-License-Identifier: Apache-2.0
// The display list of a view stack: what of it is to be seen at this moment. Any thread, as the
// stack allows.
#pragma once

#include "halvora/light.h"
#include "light/view_stack.h"

namespace halvora {

/// `Light::displayList`, which says what it holds.
DisplayList displayListOf(const ViewStack& views, Size container);

}  // namespace halvora
