// SPDX-License-Identifier: Apache-2.0
// A JSON number as a double, rounded to the nearest one, whatever the locale. Stateless; any
// thread.
#pragma once

#include <string_view>

namespace halvora {

/// `written` is a number by the grammar of JSON, or without digits on one side of its point; one
/// beyond the range of a double is infinite.
double realNumber(std::string_view written);

}  // namespace halvora
