// SPDX-License-Identifier: Apache-2.0
// What decoders are tried on: a clip and pictures whose every pixel is known. They are small enough
// to be part of the suite, so that a port needs no files for it. Any thread; they last for ever.
#pragma once

#include <cstdint>
#include <string_view>

namespace halvora::conformance {

/// H.264 in MP4, without sound: 12 frames of 64 by 64 pixels, 25 a second. The left half of frame n
/// has the grey level 17 n, the upper right quarter is red (220, 40, 40), the lower right one blue
/// (40, 40, 220), as exactly as the encoding has kept them. Written to a file it is a video that
/// any decoder of phones knows.
std::string_view sampleClip();

/// 3 by 2 pixels with alpha, from the top left: red opaque, green half transparent, blue clear;
/// then (1, 2, 3, 255), (10, 20, 30, 4), (250, 251, 252, 253).
std::string_view samplePng();

/// 16 by 16 pixels, the upper half red (220, 40, 40), the lower one blue (40, 40, 220).
std::string_view sampleJpeg();

/// A PNG that claims 100,000 by 100,000 pixels.
std::string_view vastPng();

}  // namespace halvora::conformance
