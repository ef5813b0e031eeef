// SPDX-License-Identifier: Apache-2.0
#include "venue/base/json_line.h"

#include <array>
#include <charconv>
#include <cmath>
#include <variant>

#include "adapters/json/unicode_text.h"

namespace halvora {

namespace {

constexpr long long kSteps = 10000;
// Beyond this a double has no decimals left to round.
constexpr double kLargestRounded = 1e14;

rapidjson::SizeType sizeOf(std::string_view text) {
  return static_cast<rapidjson::SizeType>(text.size());
}

// With six decimals, whatever the locale's decimal point is.
std::string longText(double level) {
  std::array<char, 400> text{};
  const char* const end =
      std::to_chars(text.data(), text.data() + text.size(), level, std::chars_format::fixed, 6).ptr;
  return std::string(text.data(), static_cast<std::size_t>(end - text.data()));
}

}  // namespace

std::string levelText(double level) {
  if (!std::isfinite(level)) return "null";
  if (!(std::fabs(level) < kLargestRounded)) return longText(level);
  const long long steps = std::llround(level * static_cast<double>(kSteps));
  const long long size = steps < 0 ? -steps : steps;
  std::string text = steps < 0 ? "-" : "";
  text += std::to_string(size / kSteps);
  const long long decimals = size % kSteps;
  if (decimals == 0) return text;
  text += '.';
  text += std::to_string(kSteps + decimals).substr(1);
  text.erase(text.find_last_not_of('0') + 1);
  return text;
}

std::string listText(const std::vector<std::string>& texts) {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartArray();
  for (const std::string& text : texts) {
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }
  writer.EndArray();
  return {buffer.GetString(), buffer.GetSize()};
}

std::string colourText(const MaybeColour& colour) {
  if (!colour) return "null";
  std::string text = "[";
  for (const float level : {colour->red, colour->green, colour->blue, colour->alpha}) {
    if (text.size() > 1) text += ',';
    text += levelText(static_cast<double>(level));
  }
  return text += ']';
}

JsonLine& JsonLine::add(std::string_view name, std::string_view text) {
  key(name);
  write(text);
  return *this;
}

JsonLine& JsonLine::add(std::string_view name, bool value) {
  key(name);
  writer_.Bool(value);
  return *this;
}

JsonLine& JsonLine::add(std::string_view name, std::int64_t value) {
  key(name);
  writer_.Int64(value);
  return *this;
}

JsonLine& JsonLine::addDefault(std::string_view name, const DefaultsValue& value) {
  key(name);
  write(value);
  return *this;
}

JsonLine& JsonLine::addRaw(std::string_view name, std::string_view json) {
  key(name);
  writer_.RawValue(json.data(), json.size(), rapidjson::kNumberType);
  return *this;
}

std::string_view JsonLine::end() {
  writer_.EndObject();
  buffer_.Put('\n');
  return {buffer_.GetString(), buffer_.GetSize()};
}

void JsonLine::key(std::string_view name) { writer_.Key(name.data(), sizeOf(name)); }

void JsonLine::write(std::string_view text) {
  std::string storage;
  const std::string_view valid = validUtf8(text, storage);
  writer_.String(valid.data(), sizeOf(valid));
}

void JsonLine::write(const DefaultsValue& value) {
  struct Visitor {
    JsonLine& line;
    void operator()(bool flag) const { line.writer_.Bool(flag); }
    void operator()(std::int64_t number) const { line.writer_.Int64(number); }
    void operator()(double number) const { line.writer_.Double(number); }
    void operator()(const std::string& text) const { line.write(std::string_view(text)); }
    void operator()(const Date& date) const {
      line.writer_.Int64(static_cast<std::int64_t>(std::floor(date.secondsSince1970)));
    }
    void operator()(const DefaultsArray& array) const {
      line.writer_.StartArray();
      for (const DefaultsValue& element : array) line.write(element);
      line.writer_.EndArray();
    }
    void operator()(const DefaultsDictionary& dictionary) const {
      line.writer_.StartObject();
      for (const DefaultsMember& member : dictionary) line.addDefault(member.key, member.value);
      line.writer_.EndObject();
    }
  };
  std::visit(Visitor{*this}, value.storage);
}

}  // namespace halvora
