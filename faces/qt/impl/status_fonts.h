// SPDX-License-Identifier: Apache-2.0
// The fonts that a host names, as Qt knows them. A name is a family ("DejaVu Sans") or a family and
// one of its styles ("DejaVu Sans Bold", "DejaVu Sans-Bold"). Main thread, with an application
// object.
#pragma once

#include <QFont>
#include <optional>
#include <string_view>

#include "halvora/labels.h"

namespace halvora {

/// None where the phone has no font of that name.
std::optional<QFont> installedFont(std::string_view name);

/// How many times their size the user wants all texts, as the system says; and as far as layouts go
/// along with it.
double systemTextScale();
double boundedTextScale(double textScale);

/// The font in pixels, at that many times its size. A name that is unknown gives the system's font.
QFont fontOf(const Font& font, double textScale);

}  // namespace halvora
