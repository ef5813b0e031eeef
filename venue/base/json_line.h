// SPDX-License-Identifier: Apache-2.0
// One JSON object on one line, built key by key in the order of the calls. Levels are rounded to 4
// decimals without trailing zeros, whatever the locale. One writer is used again for line after
// line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/user_defaults.h"
#include "venue/base/json_buffer.h"

namespace halvora {

/// A level as text: rounded to 4 decimals, no trailing zeros.
std::string levelText(double level);
/// Texts as a list in JSON.
std::string listText(const std::vector<std::string>& texts);
/// A colour as "[r,g,b,a]", none as "null".
std::string colourText(const MaybeColour& colour);

class JsonLine {
 public:
  JsonLine& begin() {
    buffer_.Clear();
    writer_.Reset(buffer_);
    writer_.StartObject();
    return *this;
  }
  JsonLine& add(std::string_view key, std::string_view text);
  JsonLine& add(std::string_view key, const char* text) { return add(key, std::string_view(text)); }
  JsonLine& add(std::string_view key, bool value);
  JsonLine& add(std::string_view key, std::int64_t value);
  JsonLine& addLevel(std::string_view key, double level) { return addRaw(key, levelText(level)); }
  JsonLine& addColour(std::string_view key, const MaybeColour& colour) {
    return addRaw(key, colourText(colour));
  }
  JsonLine& addNull(std::string_view key) { return addRaw(key, "null"); }
  /// Dates are whole seconds since 1970; other numbers as they are.
  JsonLine& addDefault(std::string_view key, const DefaultsValue& value);
  /// A value that is JSON already.
  JsonLine& addRaw(std::string_view key, std::string_view json);

  /// The finished line, with its line end; lives until the next begin.
  std::string_view end();

 private:
  void key(std::string_view key);
  void write(std::string_view text);
  void write(const DefaultsValue& value);

  JsonBuffer buffer_;
  JsonWriter writer_;
};

}  // namespace halvora
