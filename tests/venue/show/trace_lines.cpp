// SPDX-License-Identifier: Apache-2.0
#include "tests/venue/show/trace_lines.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>

#include <rapidjson/document.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {

namespace {

using Document = rapidjson::Document;

constexpr std::array<std::string_view, 18> kKeys = {
    "light",
    "lightAnimation",
    "lightAnimationEnded",
    "view",
    "gobo",
    "fpsText",
    "brightness",
    "torch",
    "haptic",
    "callback",
    "statusBarHidden",
    "idleTimerDisabled",
    "insideVenue",
    "defaults",
    "get",
    "progress",
    "completion",
    "video",
};

struct Line {
  std::string text;
  Document json;
};
using LinesByTime = std::map<std::int64_t, std::vector<Line>>;

Document parsed(const std::string& text) {
  Document json;
  json.Parse<rapidjson::kParseFullPrecisionFlag>(text.c_str(), text.size());
  return json;
}

std::string_view textOf(const rapidjson::Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

bool hasTime(const Document& json) {
  return json.IsObject() && json.HasMember("t") && json["t"].IsInt64();
}

LinesByTime byTime(std::string_view trace) {
  LinesByTime lines;
  for (const std::string& text : linesOf(trace)) {
    Document json = parsed(text);
    const std::int64_t time = hasTime(json) ? json["t"].GetInt64() : -1;
    lines[time].push_back({text, std::move(json)});
  }
  return lines;
}

bool endsLike(const rapidjson::Value& expected, const rapidjson::Value& written) {
  if (!expected.IsString() || !written.IsString()) return false;
  const std::string_view pattern = textOf(expected);
  const std::string_view text = textOf(written);
  return pattern.starts_with('*') && text.ends_with(pattern.substr(1));
}

bool matches(const Document& expected, const Document& written) {
  if (!expected.IsObject() || !written.IsObject()) return false;
  return std::all_of(expected.MemberBegin(), expected.MemberEnd(), [&written](const auto& member) {
    const auto found = written.FindMember(member.name);
    if (found == written.MemberEnd()) return false;
    if (member.name == "get" && endsLike(member.value, found->value)) return true;
    return member.value == found->value;
  });
}

}  // namespace

std::vector<std::string> differences(std::string_view expected, std::string_view written) {
  std::vector<std::string> found;
  LinesByTime rest = byTime(written);
  for (const auto& [time, lines] : byTime(expected)) {
    std::vector<Line>& candidates = rest[time];
    for (const Line& line : lines) {
      const auto match =
          std::find_if(candidates.begin(), candidates.end(),
                       [&line](const Line& other) { return matches(line.json, other.json); });
      if (match == candidates.end()) {
        found.push_back("missing     " + line.text);
      } else {
        candidates.erase(match);
      }
    }
  }
  for (const auto& [time, lines] : rest) {
    for (const Line& line : lines) found.push_back("unexpected  " + line.text);
  }
  return found;
}

std::vector<std::string> flawsOfTrace(std::string_view written) {
  std::vector<std::string> flaws;
  std::int64_t previous = 0;
  for (const std::string& text : linesOf(written)) {
    const Document json = parsed(text);
    if (!hasTime(json) || json.MemberCount() < 2 || json.MemberBegin()->name != "t") {
      flaws.push_back("no object that begins with its time: " + text);
      continue;
    }
    const std::string_view key = textOf((json.MemberBegin() + 1)->name);
    if (std::find(kKeys.begin(), kKeys.end(), key) == kKeys.end()) {
      flaws.push_back("unknown key: " + text);
    }
    const std::int64_t time = json["t"].GetInt64();
    if (time < previous) flaws.push_back("goes back in time: " + text);
    previous = time;
  }
  return flaws;
}

}  // namespace halvora
