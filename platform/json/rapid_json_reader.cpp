// SPDX-License-Identifier: Apache-2.0
#include "platform/json/rapid_json_reader.h"

#include <cctype>
#include <cstdlib>
#include <limits>
#include <utility>

#include <rapidjson/encodedstream.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

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
    return add(JsonValue(std::string(text, length)));
  }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    open_.back().name.assign(text, length);
    return true;
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

}  // namespace

std::optional<JsonValue> RapidJsonReader::parse(std::string_view document,
                                                std::string* reason) const {
  using Encoding = rapidjson::AutoUTF<unsigned>;
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag |
                              rapidjson::kParseNumbersAsStringsFlag |
                              rapidjson::kParseValidateEncodingFlag;
  rapidjson::MemoryStream bytes(document.data(), document.size());
  rapidjson::AutoUTFInputStream<unsigned, rapidjson::MemoryStream> stream(bytes);
  rapidjson::GenericReader<Encoding, rapidjson::UTF8<>> reader;
  ValueHandler handler;
  const auto result = reader.Parse<kFlags>(stream, handler);
  // A zero character ends the parser's stream; what stands behind it is no part of a document.
  if (!result.IsError() && stream.Tell() == document.size()) return std::move(handler.root());

  if (reason != nullptr) {
    *reason = handler.refusal() != nullptr ? handler.refusal()
              : result.IsError()           ? rapidjson::GetParseError_En(result.Code())
                                           : "A zero character ends the text too early.";
  }
  return std::nullopt;
}

}  // namespace halvora
