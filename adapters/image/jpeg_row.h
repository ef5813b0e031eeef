// SPDX-License-Identifier: Apache-2.0
// One row of a JPEG picture for the memory of a few rows. The rest of the data is read and judged,
// but no pixels are made of it. Stateless; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace halvora {

/// Coefficients of a picture that comes in several scans, all of which must be kept until the last
/// one: what would take more bytes is refused.
inline constexpr std::uint64_t kMostJpegCoefficients = std::uint64_t{128} << 20;

/// Puts the row, 4 bytes a pixel, into `rgba`, which has its length. The pixels are those of the
/// whole picture as it is usually decoded, to the bit. False where the data ends early or is
/// damaged anywhere. Throws std::bad_alloc where memory is short.
bool readJpegRow(std::string_view bytes, std::uint32_t row, std::span<std::uint8_t> rgba);

}  // namespace halvora
