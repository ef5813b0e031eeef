// SPDX-License-Identifier: Apache-2.0
// The defaults that tell an engine where its phone is: whoever chooses a seat writes them.
#pragma once

#include <array>
#include <string_view>

namespace halvora {

/// The seat's pixel in the venue's maps.
inline constexpr std::string_view kXPosKey = "xPos";
inline constexpr std::string_view kYPosKey = "yPos";
/// Its names.
inline constexpr std::string_view kSelectedSectionKey = "selectedSection";
inline constexpr std::string_view kSelectedRowKey = "selectedRow";
inline constexpr std::string_view kSelectedSeatKey = "selectedSeat";

inline constexpr std::array kSeatKeys = {kSelectedSectionKey, kSelectedRowKey, kSelectedSeatKey,
                                         kXPosKey, kYPosKey};

}  // namespace halvora
