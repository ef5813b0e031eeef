// SPDX-License-Identifier: Apache-2.0
// The seat map by way of QJsonDocument ("qt").
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "bench/seat_map_documents.h"
#include "bench/seat_map_reference.h"

namespace halvora {

namespace {

struct QtTree {
  using Value = QJsonValue;
  using Key = std::string;

  static bool isObject(const Value& value) { return value.isObject(); }
  static bool isArray(const Value& value) { return value.isArray(); }
  static std::size_t size(const Value& array) {
    return static_cast<std::size_t>(array.toArray().size());
  }
  static std::optional<Value> find(const Value& value, const char* name) {
    Value found = value.toObject().value(QLatin1String(name));
    return found.isUndefined() ? std::nullopt : std::optional(std::move(found));
  }
  template <class Function>
  static void forEach(const Value& array, Function function) {
    for (const auto& element : array.toArray()) function(Value(element));
  }
  template <class Function>
  static void forEachMember(const Value& value, Function function) {
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
      const QByteArray key = member.key().toUtf8();
      function({key.constData(), static_cast<std::size_t>(key.size())}, member.value());
    }
  }
  // Whole numbers and texts are all that the measured documents have.
  JsonScalar scalar(const Value& value) {
    using Kind = JsonScalar::Kind;
    if (value.isDouble()) return {.kind = Kind::integer, .integer = value.toInteger()};
    if (!value.isString()) return {};
    text_ = value.toString().toUtf8();
    return {.kind = Kind::text,
            .text = {text_.constData(), static_cast<std::size_t>(text_.size())}};
  }

 private:
  QByteArray text_;
};

SeatMap mapByQt(const std::string& document) {
  const QByteArray bytes =
      QByteArray::fromRawData(document.data(), static_cast<qsizetype>(document.size()));
  const QJsonDocument parsed = QJsonDocument::fromJson(bytes);
  QtTree tree;
  return SeatMapOfTree(tree, kPlainTexts).map(QJsonValue(parsed.object()));
}

[[maybe_unused]] const bool kAdded =
    addForEachSeatMap("qt", [](benchmark::State& state, const std::string& document) {
      measureSeatMap(state, document, mapByQt);
    });

}  // namespace

}  // namespace halvora
