// SPDX-License-Identifier: Apache-2.0
// A report on a map as a page for a venue's crew, and as JSON for programs. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "venue/plan/map_report.h"

namespace halvora {

/// `file` and `folder` are named as the user did. What would move a terminal's cursor in any name
/// of the report is shown as "?".
std::string pageOf(const MapReport& report, std::string_view file, std::string_view folder);

/// One object on one line, its keys always the same.
std::string jsonOf(const MapReport& report);

}  // namespace halvora
