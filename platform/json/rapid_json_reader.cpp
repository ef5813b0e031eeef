// SPDX-License-Identifier: Apache-2.0
#include "platform/json/rapid_json_reader.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "platform/json/unicode_text.h"

namespace halvora {

namespace {

/// Reads one number that is not a plain integer; beyond the range it is infinite.
struct RealHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RealHandler> {
  double value = 0;
  bool Double(double number) {
    value = number;
    return true;
  }
};

JsonValue numberOf(std::string_view text) {
  const bool isInteger = text.find_first_of(".eE") == std::string_view::npos;
  // The largest 18 digits are far from the end of 64 bits, and integerValue says where it stopped
  // short.
  if (isInteger) {
    const std::int64_t value = integerValue(text);
    if (value != INT64_MAX && value != INT64_MIN) return JsonValue(value);
    if (text == "9223372036854775807" || text == "-9223372036854775808") return JsonValue(value);
  }
  const std::string real = isInteger ? std::string(text) + ".0" : std::string(text);
  rapidjson::MemoryStream stream(real.data(), real.size());
  rapidjson::Reader reader;
  RealHandler handler;
  const auto result = reader.Parse<rapidjson::kParseFullPrecisionFlag>(stream, handler);
  if (result.IsError()) {
    const double infinity = std::numeric_limits<double>::infinity();
    handler.value = text.front() == '-' ? -infinity : infinity;
  }
  return JsonValue(handler.value);
}

/// Puts one that saturates just the same in place of the integer at `offset`, which is too long for
/// the parser. False for a number that is no integer.
bool shortenInteger(std::string& text, std::size_t offset) {
  const std::size_t begin = offset + (text[offset] == '-' ? 1 : 0);
  const std::size_t end = std::min(text.find_first_not_of("0123456789", begin), text.size());
  if (end < text.size() && std::string_view(".eE").find(text[end]) != std::string_view::npos) {
    return false;
  }
  // As many digits as the range of a double allows, so that nothing else about the number changes.
  constexpr std::size_t kMostDigits = 300;
  if (end - begin <= kMostDigits) return false;
  text.erase(begin + kMostDigits, end - begin - kMostDigits);
  return true;
}

/// Builds the value bottom up: a container collects its children until it ends.
class ValueHandler {
 public:
  // The event names are the parser's.
  bool Null() { return add(JsonValue()); }
  bool Bool(bool value) { return add(JsonValue(value)); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
    return add(numberOf({text, length}));
  }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    std::string value(text, length);
    if (hasSurrogate(value)) return refuse("Half a surrogate pair.");
    return add(JsonValue(std::move(value)));
  }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    open_.back().name.assign(text, length);
    return !hasSurrogate(open_.back().name) || refuse("Half a surrogate pair.");
  }
  bool StartObject() { return begin(true); }
  bool StartArray() { return begin(false); }
  bool EndObject(rapidjson::SizeType) {
    JsonValue ended(std::move(open_.back().members));
    return end(std::move(ended));
  }
  bool EndArray(rapidjson::SizeType) {
    JsonValue ended(std::move(open_.back().elements));
    return end(std::move(ended));
  }
  // Numbers come as RawNumber; the parser still wants these to exist.
  bool Int(int) { return false; }
  bool Uint(unsigned) { return false; }
  bool Int64(std::int64_t) { return false; }
  bool Uint64(std::uint64_t) { return false; }
  bool Double(double) { return false; }

  const char* refusal() const { return refusal_; }
  JsonValue& root() { return root_; }

 private:
  // An escape may spell half of a pair, which the parser then writes as if it were a character.
  static bool hasSurrogate(std::string_view text) {
    for (std::size_t at = text.find('\xED'); at < text.size(); at = text.find('\xED', at + 1)) {
      if (at + 1 < text.size() && static_cast<std::uint8_t>(text[at + 1]) >= 0xA0) return true;
    }
    return false;
  }

  struct Open {
    bool isObject;
    std::string name;
    JsonValue::Object members;
    JsonValue::Array elements;
  };

  bool begin(bool isObject) {
    if (open_.size() >= RapidJsonReader::kDeepestNesting) return refuse("nested too deeply");
    open_.push_back({isObject, {}, {}, {}});
    return true;
  }

  bool end(JsonValue ended) {
    open_.pop_back();
    if (!open_.empty()) return add(std::move(ended));
    root_ = std::move(ended);
    return true;
  }

  bool add(JsonValue value) {
    if (open_.empty()) return refuse("neither an object nor an array");
    Open& parent = open_.back();
    if (parent.isObject) {
      parent.members.push_back({std::move(parent.name), std::move(value)});
    } else {
      parent.elements.push_back(std::move(value));
    }
    return true;
  }

  bool refuse(const char* reason) {
    refusal_ = reason;
    return false;
  }

  std::vector<Open> open_;
  JsonValue root_;
  const char* refusal_ = nullptr;
};

rapidjson::ParseResult parseInto(ValueHandler& handler, std::string_view text) {
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag |
                              rapidjson::kParseNumbersAsStringsFlag |
                              rapidjson::kParseValidateEncodingFlag;
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::Reader reader;
  return reader.Parse<kFlags>(stream, handler);
}

}  // namespace

std::optional<JsonValue> RapidJsonReader::parse(std::string_view document,
                                                std::string* reason) const {
  const auto refuse = [reason](const char* what) {
    if (reason != nullptr) *reason = what;
    return std::nullopt;
  };
  std::string converted;
  const std::optional<std::string_view> text = utf8Of(document, converted);
  if (!text) return refuse("Half a character.");
  // To the parser a zero character is the end of the text, and no document has one.
  if (text->find('\0') != std::string_view::npos) return refuse("A zero character.");

  ValueHandler handler;
  rapidjson::ParseResult result = parseInto(handler, *text);
  std::string shortened(result.Code() == rapidjson::kParseErrorNumberTooBig ? *text : "");
  while (result.Code() == rapidjson::kParseErrorNumberTooBig &&
         shortenInteger(shortened, result.Offset())) {
    handler = {};
    result = parseInto(handler, shortened);
  }
  if (!result.IsError()) return std::move(handler.root());
  return refuse(handler.refusal() != nullptr ? handler.refusal()
                                             : rapidjson::GetParseError_En(result.Code()));
}

}  // namespace halvora
