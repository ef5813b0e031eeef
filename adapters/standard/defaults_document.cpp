// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/defaults_document.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <string_view>
#include <type_traits>
#include <utility>

namespace halvora {

namespace {

// The last 256 code points stand for bytes that are no UTF-8. Nobody writes with them, and a text
// that does is spelled byte by byte.
constexpr std::string_view kByteLead = "\xF4\x8F";
constexpr unsigned kFirstByteThird = 0xBC;

unsigned byteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool standsForByte(std::string_view text) {
  return text.size() >= 4 && text.starts_with(kByteLead) && byteAt(text, 2) >= kFirstByteThird;
}

/// The bytes of the UTF-8 character that a text begins with; 0 where it begins with none.
std::size_t characterSize(std::string_view text) {
  struct Lead {
    unsigned from, to;
    std::size_t size;
    unsigned secondFrom, secondTo;
  };
  constexpr Lead kLeads[] = {
      {0x00, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
      {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
      {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F}};
  const unsigned first = byteAt(text, 0);
  const auto* lead = std::find_if(std::begin(kLeads), std::end(kLeads), [first](const Lead& row) {
    return first >= row.from && first <= row.to;
  });
  if (lead == std::end(kLeads) || text.size() < lead->size) return 0;
  for (std::size_t at = 1; at < lead->size; ++at) {
    const unsigned from = at == 1 ? lead->secondFrom : 0x80;
    const unsigned to = at == 1 ? lead->secondTo : 0xBF;
    if (byteAt(text, at) < from || byteAt(text, at) > to) return 0;
  }
  return lead->size;
}

void appendByte(std::string& out, unsigned byte) {
  out += kByteLead;
  out += static_cast<char>(kFirstByteThird + (byte >> 6));
  out += static_cast<char>(0x80 + (byte & 0x3F));
}

void appendText(std::string& out, std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '"';
  while (!text.empty()) {
    const unsigned first = byteAt(text, 0);
    std::size_t size = characterSize(text);
    if (size == 0 || standsForByte(text)) {
      appendByte(out, first);
      size = 1;
    } else if (first < 0x20) {
      out += "\\u00";
      out += kHex[first >> 4];
      out += kHex[first & 15];
    } else {
      if (first == '"' || first == '\\') out += '\\';
      out += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
  out += '"';
}

std::string textOf(std::string_view written) {
  std::string text;
  while (!written.empty()) {
    if (standsForByte(written)) {
      text += static_cast<char>((byteAt(written, 2) - kFirstByteThird) << 6 |
                                (byteAt(written, 3) & 0x3F));
      written.remove_prefix(4);
    } else {
      const std::size_t plain = std::min(written.find(kByteLead[0], 1), written.size());
      text += written.substr(0, plain);
      written.remove_prefix(plain);
    }
  }
  return text;
}

void appendReal(std::string& out, double value) {
  if (!std::isfinite(value)) {
    out += std::isnan(value) ? R"({"real":"nan"})"
           : value > 0       ? R"({"real":"inf"})"
                             : R"({"real":"-inf"})";
    return;
  }
  // As many digits as it takes to read the same number again, whatever the host's locale.
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << std::setprecision(std::numeric_limits<double>::max_digits10) << value;
  const std::string text = stream.str();
  out += text;
  if (text.find_first_of(".e") == std::string::npos) out += ".0";
}

bool isDeeperThan(const DefaultsValue& value, int levels) {
  if (const auto* array = std::get_if<DefaultsArray>(&value.storage)) {
    return levels == 0 || std::any_of(array->begin(), array->end(), [levels](const auto& element) {
             return isDeeperThan(element, levels - 1);
           });
  }
  if (const auto* members = std::get_if<DefaultsDictionary>(&value.storage)) {
    return levels == 0 || std::any_of(members->begin(), members->end(), [levels](const auto& one) {
             return isDeeperThan(one.value, levels - 1);
           });
  }
  return false;
}

void append(std::string& out, const DefaultsValue& value);

/// `begin` and `end` around the elements, commas between them.
template <class Elements, class AppendOne>
void appendAll(std::string& out, char begin, char end, const Elements& elements,
               AppendOne appendOne) {
  out += begin;
  bool isFirst = true;
  for (const auto& element : elements) {
    if (!std::exchange(isFirst, false)) out += ',';
    appendOne(element);
  }
  out += end;
}

struct Appender {
  std::string& out;

  void operator()(bool value) const { out += value ? "true" : "false"; }
  void operator()(std::int64_t value) const { out += std::to_string(value); }
  void operator()(double value) const { appendReal(out, value); }
  void operator()(const std::string& value) const { appendText(out, value); }
  void operator()(Date value) const {
    out += R"({"date":)";
    appendReal(out, value.secondsSince1970);
    out += '}';
  }
  void operator()(const DefaultsArray& value) const {
    appendAll(out, '[', ']', value, [this](const DefaultsValue& element) { append(out, element); });
  }
  void operator()(const DefaultsDictionary& value) const {
    out += R"({"dictionary":)";
    appendAll(out, '{', '}', value, [this](const DefaultsMember& member) {
      appendText(out, member.key);
      out += ':';
      append(out, member.value);
    });
    out += '}';
  }
};

void append(std::string& out, const DefaultsValue& value) {
  std::visit(Appender{out}, value.storage);
}

std::optional<DefaultsValue> valueOf(const JsonValue& json);

std::optional<DefaultsValue> arrayOf(const JsonValue::Array& elements) {
  DefaultsArray array;
  for (const JsonValue& element : elements) {
    std::optional<DefaultsValue> value = valueOf(element);
    if (!value) return std::nullopt;
    array.push_back(std::move(*value));
  }
  return array;
}

std::optional<DefaultsValue> dictionaryOf(const JsonValue& json) {
  if (json.object() == nullptr) return std::nullopt;
  DefaultsDictionary dictionary;
  for (const JsonMember& member : *json.object()) {
    std::optional<DefaultsValue> value = valueOf(member.value);
    if (!value) return std::nullopt;
    dictionary.push_back({textOf(member.name), std::move(*value)});
  }
  return dictionary;
}

std::optional<DefaultsValue> realOf(const JsonValue& json) {
  if (json.text() == nullptr) return std::nullopt;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (*json.text() == "inf") return DefaultsValue(kInfinity);
  if (*json.text() == "-inf") return DefaultsValue(-kInfinity);
  if (*json.text() == "nan") return DefaultsValue(std::numeric_limits<double>::quiet_NaN());
  return std::nullopt;
}

std::optional<DefaultsValue> dateOf(const JsonValue& json) {
  const std::optional<DefaultsValue> value = valueOf(json);
  const auto* seconds = value ? std::get_if<double>(&value->storage) : nullptr;
  return seconds != nullptr ? std::optional(DefaultsValue(Date{*seconds})) : std::nullopt;
}

std::optional<DefaultsValue> valueOf(const JsonValue& json) {
  if (const bool* flag = json.boolean()) return *flag;
  if (const std::int64_t* number = json.integer()) return *number;
  if (const double* number = json.real()) return *number;
  if (const std::string* text = json.text()) return textOf(*text);
  if (const JsonValue::Array* elements = json.array()) return arrayOf(*elements);
  if (json.object() == nullptr || json.object()->size() != 1) return std::nullopt;
  const JsonMember& marked = json.object()->front();
  if (marked.name == "date") return dateOf(marked.value);
  if (marked.name == "dictionary") return dictionaryOf(marked.value);
  if (marked.name == "real") return realOf(marked.value);
  return std::nullopt;
}

}  // namespace

std::string defaultsDocument(const DefaultsValues& values) {
  std::string out = "{";
  for (const auto& [key, value] : values) {
    if (isDeeperThan(value, kDeepestDefaults)) continue;
    if (out.size() > 1) out += ',';
    out += '\n';
    appendText(out, key);
    out += ':';
    append(out, value);
  }
  return out + "\n}\n";
}

ReadDefaults readDefaultsDocument(const JsonValue& document) {
  if (document.object() == nullptr) return {};
  ReadDefaults read{.values = {}, .isWhole = true};
  for (const JsonMember& member : *document.object()) {
    std::optional<DefaultsValue> value = valueOf(member.value);
    const bool isTaken =
        value && read.values.emplace(textOf(member.name), std::move(*value)).second;
    read.isWhole = read.isWhole && isTaken;
  }
  return read;
}

}  // namespace halvora
