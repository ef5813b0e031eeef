// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/safety_report.h"

#include "venue/base/json_buffer.h"
#include "venue/base/json_line.h"

namespace halvora {

namespace {

constexpr const char* kRules =
    "WCAG 2.2, 2.3.1: more than three flashes in any second fail. A flash is a pair of opposing "
    "changes of relative luminance of 0.1 or more with the darker below 0.8; a red flash a pair of "
    "opposing changes between a saturated red, R/(R+G+B) of 0.8 or more, and a colour more than "
    "0.2 from it in u'v'. Backlight counts; a lit torch has luminance 1.";

void addFigures(PrettyJsonWriter& writer, const FlashFigures& figures) {
  writer.Key("general");
  writer.Int(figures.general.flashes);
  writer.Key("red");
  writer.Int(figures.red.flashes);
  const std::string at = levelText(toSeconds(figures.at()));
  writer.Key("at");
  writer.RawValue(at.data(), at.size(), rapidjson::kNumberType);
}

void addText(PrettyJsonWriter& writer, const char* key, std::string_view text) {
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void addObject(PrettyJsonWriter& writer, const char* key, const FlashFigures& figures) {
  writer.Key(key);
  writer.StartObject();
  addFigures(writer, figures);
  writer.EndObject();
}

}  // namespace

bool SafetyFindings::isPass() const {
  if (!phone.areHarmless()) return false;
  return !venue || (venue->hall.areHarmless() && venue->sectionFigures.areHarmless());
}

std::string safetyJson(const SafetyFindings& findings) {
  JsonBuffer buffer;
  PrettyJsonWriter writer(buffer);
  writer.SetIndent(' ', 2);
  writer.StartObject();
  addText(writer, "verdict", findings.isPass() ? "pass" : "fail");
  addText(writer, "rules", kRules);
  addObject(writer, "phone", findings.phone);
  if (findings.venue) {
    addObject(writer, "venue", findings.venue->hall);
    writer.Key("section");
    writer.StartObject();
    addText(writer, "name", findings.venue->section);
    addFigures(writer, findings.venue->sectionFigures);
    writer.EndObject();
  }
  writer.Key("phones");
  writer.Uint64(findings.phones);
  writer.Key("seed");
  writer.Uint64(findings.seed);
  addText(writer, "flash", findings.policy == FlashPolicy::limited ? "limited" : "exact");
  const std::string seconds = levelText(toSeconds(findings.length));
  writer.Key("seconds");
  writer.RawValue(seconds.data(), seconds.size(), rapidjson::kNumberType);
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace halvora
