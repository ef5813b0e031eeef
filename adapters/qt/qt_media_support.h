// SPDX-License-Identifier: Apache-2.0
// Whether this machine can play media at all: the media library ends the process where the parts
// that it is built on are not installed. Main thread.
#pragma once

namespace halvora {

/// Found out at the first call.
bool canPlayMedia();

}  // namespace halvora
