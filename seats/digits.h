// SPDX-License-Identifier: Apache-2.0
// Digits as the seats' texts have them, whatever the locale.
#pragma once

namespace halvora {

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace halvora
