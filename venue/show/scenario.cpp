// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "text/numbers.h"
#include "venue/show/scenario_fields.h"

namespace halvora {

namespace {

// Some thirty years: longer than any show, and far from the end of the clock.
constexpr double kLatestTime = 1e9;
constexpr double kShortestRepeat = 1e-4;
constexpr std::uint64_t kMostRepeats = 100'000'000;

using Fields = ScenarioFields;
using MaybeAction = std::optional<ScenarioAction>;

MaybeAction readStart(const JsonValue& value, Fields& fields) {
  if (value.boolean() != nullptr && *value.boolean()) return StartAction{};
  return fields.fail("\"start\" must be true");
}

MaybeAction readBluetooth(const JsonValue& value, Fields& fields) {
  BluetoothAction action;
  Fields inner = fields.objectIn(value, "bluetooth");
  action.authorization = inner.enumeration<BluetoothAuthorization>("authorization", 3);
  action.state = inner.enumeration<CentralState>("state", 5);
  if (!inner.end(fields)) return std::nullopt;
  return action;
}

MaybeAction readPacket(const JsonValue& value, Fields& fields) {
  auto data = value.text() != nullptr ? bytesOfHex(*value.text()) : std::nullopt;
  if (data) return PacketAction{std::move(*data)};
  return fields.fail("\"packet\" must be whole bytes as hexadecimal text");
}

MaybeAction readApp(const JsonValue& value, Fields& fields) {
  if (value.text() != nullptr && *value.text() == "active") return AppAction{true};
  if (value.text() != nullptr && *value.text() == "inactive") return AppAction{false};
  return fields.fail("\"app\" must be \"active\" or \"inactive\"");
}

DefaultsValue defaultsValueOf(const JsonValue& json) {
  if (const bool* flag = json.boolean()) return *flag;
  if (const std::int64_t* number = json.integer()) return *number;
  if (const double* number = json.real()) return *number;
  if (const std::string* text = json.text()) return *text;
  if (const JsonValue::Array* array = json.array()) {
    DefaultsArray values;
    for (const JsonValue& element : *array) values.push_back(defaultsValueOf(element));
    return values;
  }
  DefaultsDictionary dictionary;
  if (const JsonValue::Object* object = json.object()) {
    for (const JsonMember& member : *object) {
      dictionary.push_back({member.name, defaultsValueOf(member.value)});
    }
  }
  return dictionary;
}

MaybeAction readDefaults(const JsonValue& value, Fields& fields) {
  if (value.object() == nullptr) return fields.fail("\"defaults\" must be an object");
  DefaultsAction action;
  for (const JsonMember& member : *value.object()) {
    if (member.value.isNull()) {
      action.writes.emplace_back(member.name, std::nullopt);
    } else {
      action.writes.emplace_back(member.name, defaultsValueOf(member.value));
    }
  }
  return action;
}

MaybeAction readPrecompute(const JsonValue& value, Fields& fields) {
  PrecomputeAction action;
  Fields inner = fields.objectIn(value, "precompute");
  action.venueId = inner.requiredInteger("venueId");
  action.seatX = inner.requiredInteger("seatX");
  action.seatY = inner.requiredInteger("seatY");
  if (!inner.end(fields)) return std::nullopt;
  return action;
}

MaybeAction readInvalidate(const JsonValue& value, Fields& fields) {
  if (value.integer() != nullptr) return InvalidateAction{*value.integer()};
  return fields.fail("\"invalidate\" must be a whole number");
}

MaybeAction readPlayVideo(const JsonValue& value, Fields& fields) {
  if (value.text() != nullptr) return PlayVideoAction{*value.text()};
  return fields.fail("\"playVideo\" must be a text");
}

struct ActionReader {
  const char* name;
  MaybeAction (*read)(const JsonValue& value, Fields& fields);
};
constexpr std::array<ActionReader, 8> kActions = {{
    {"start", readStart},
    {"bluetooth", readBluetooth},
    {"packet", readPacket},
    {"app", readApp},
    {"defaults", readDefaults},
    {"precompute", readPrecompute},
    {"invalidate", readInvalidate},
    {"playVideo", readPlayVideo},
}};

void readDevice(const JsonValue& value, Fields& fields, ScenarioDevice& device) {
  Fields inner = fields.objectIn(value, "device");
  device.brightness = inner.number("brightness", 0, 1).value_or(device.brightness);
  device.torch = inner.flag("torch").value_or(device.torch);
  constexpr double kLargestScreen = 1e5;
  device.bounds.width = inner.number("width", 0, kLargestScreen).value_or(device.bounds.width);
  device.bounds.height = inner.number("height", 0, kLargestScreen).value_or(device.bounds.height);
  device.authorization =
      inner.enumeration<BluetoothAuthorization>("authorization", 3).value_or(device.authorization);
  device.state = inner.enumeration<CentralState>("state", 5).value_or(device.state);
  inner.end(fields);
}

void readRepeats(Fields& fields, ScenarioLine& line) {
  const std::optional<double> every = fields.number("every", kShortestRepeat, kLatestTime);
  const std::optional<double> until = fields.number("until", 0, kLatestTime);
  if (every.has_value() != until.has_value()) {
    fields.fail("\"every\" and \"until\" go together");
    return;
  }
  line.every = every.value_or(0);
  line.until = until.value_or(0);
  if (line.every > 0 && (line.until - line.at) / line.every > static_cast<double>(kMostRepeats)) {
    fields.fail("more than 100 million repeats");
  }
}

// The one action of a line. Where it fails, the fields know why.
void readAction(Fields& fields, ScenarioLine& line) {
  bool isFound = false;
  for (const ActionReader& reader : kActions) {
    const JsonValue* value = fields.take(reader.name);
    if (value == nullptr) continue;
    if (isFound) {
      fields.fail("more than one action");
      return;
    }
    isFound = true;
    if (MaybeAction action = reader.read(*value, fields)) line.action = std::move(*action);
  }
  if (!isFound) fields.fail("no action");
  if (std::holds_alternative<PacketAction>(line.action)) readRepeats(fields, line);
}

std::optional<ScenarioError> addLine(Scenario& scenario, std::string_view text, std::size_t number,
                                     double& previous, const JsonReader& json) {
  std::string reason;
  const std::optional<JsonValue> document = json.parse(text, &reason);
  if (!document) return ScenarioError{number, "not a JSON object: " + reason};
  if (document->object() == nullptr) return ScenarioError{number, "not a JSON object"};

  Fields fields(*document->object());
  ScenarioLine line{.number = number, .action = StartAction{}};
  line.at = fields.requiredNumber("at", 0, kLatestTime);
  if (line.at < previous) fields.fail("\"at\" is below that of the line before");
  previous = line.at;
  if (const JsonValue* device = fields.take("device")) {
    if (number != 1 || line.at != 0) fields.fail("\"device\" belongs in the first line, at 0");
    readDevice(*device, fields, scenario.device);
  } else {
    readAction(fields, line);
    if (fields.isGood()) scenario.lines.push_back(std::move(line));
  }
  if (fields.end()) return std::nullopt;
  return ScenarioError{number, fields.failure()};
}

}  // namespace

std::optional<Duration> ScenarioLine::timeOf(std::uint64_t k) const {
  if (k == 0) return fromSeconds(at);
  if (every <= 0) return std::nullopt;
  // Counted from the first time, so that rounding never adds up.
  const Duration time = fromSeconds(at + static_cast<double>(k) * every);
  return time <= fromSeconds(until) ? std::optional(time) : std::nullopt;
}

std::uint64_t ScenarioLine::occurrences() const {
  if (every <= 0 || until <= at) return 1;
  auto last = static_cast<std::uint64_t>(std::floor((until - at) / every));
  while (timeOf(last + 1)) ++last;
  while (!timeOf(last)) --last;
  return last + 1;
}

std::size_t Scenario::linesBeforeLoading() const {
  const auto first = std::ranges::find_if(lines, [](const ScenarioLine& line) {
    return line.at > 0 || !std::holds_alternative<DefaultsAction>(line.action);
  });
  return static_cast<std::size_t>(first - lines.begin());
}

Duration Scenario::lastAction() const {
  Duration last{};
  for (const ScenarioLine& line : lines) {
    last = std::max(last, *line.timeOf(line.occurrences() - 1));
  }
  return last;
}

std::variant<Scenario, ScenarioError> parseScenario(std::string_view text, const JsonReader& json) {
  Scenario scenario;
  double previous = 0;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (auto error = addLine(scenario, line, number, previous, json)) return *error;
  }
  return scenario;
}

std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text) {
  constexpr std::string_view kBetween = " \t\r\n\v\f:";
  std::vector<std::uint8_t> bytes;
  for (std::size_t at = 0; at < text.size();) {
    if (kBetween.find(text[at]) != std::string_view::npos) {
      ++at;
      continue;
    }
    const int high = hexDigit(text[at]);
    const int low = at + 1 < text.size() ? hexDigit(text[at + 1]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    at += 2;
  }
  return bytes;
}

}  // namespace halvora
