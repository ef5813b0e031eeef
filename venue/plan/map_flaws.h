// SPDX-License-Identifier: Apache-2.0
// What the kit passes over in a seat map's document, or makes up where the document says nothing,
// without a word to anybody. A second pass beside the parse, which stays as fast as it is: it
// follows the same rules, keeps no seats, and says where in the document each thing stands
// (`sections[3].rows[0].seats[12]`, as programs count, from 0). Any thread.
#pragma once

#include <string_view>
#include <vector>

#include "venue/plan/map_report.h"

namespace halvora {

/// Empty for a document that says what it means, and for one that is no JSON.
std::vector<Finding> flawsOf(std::string_view document, const JsonReader& json);

}  // namespace halvora
