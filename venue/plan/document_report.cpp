// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <iterator>
#include <utility>
#include <vector>

#include "halvora/platform/json.h"
#include "seats/map_versions.h"
#include "seats/seat_texts.h"
#include "text/numbers.h"
#include "venue/plan/map_flaws.h"
#include "venue/plan/map_report.h"

namespace halvora {

namespace {

struct WrittenVersion {
  std::string_view key;
  bool isThere = false;
  bool isWhole = false;
  std::string text = {};
};

// A version that is not written as a whole number from 1 on still counts as one, but not as the one
// that its author sees: two of them may count as equal, and then no phone notices the change.
bool isWholeVersion(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos &&
         integerValue(text) >= 1 && integerValue(text) < INT64_MAX;
}

/// How the document writes its versions; looks at the outermost members alone.
class VersionTexts final : public JsonEvents {
 public:
  bool begin(std::string_view name, JsonContainer /*container*/) override {
    if (isWithin_) settle(name, false, "no number");
    return !std::exchange(isWithin_, true);
  }
  void end() override {}
  void scalar(std::string_view name, const JsonScalar& value) override {
    using Kind = JsonScalar::Kind;
    const std::string_view text = value.isText() ? trimmed(value.text) : value.text;
    const bool isWhole = (value.isText() || value.kind == Kind::integer) && isWholeVersion(text);
    std::string written = value.isText() ? "\"" + std::string(text) + "\"" : std::string(text);
    if (value.kind == Kind::null || value.kind == Kind::boolean) written = "no number";
    settle(name, isWhole, std::move(written));
  }

  const std::array<WrittenVersion, 2>& versions() const { return versions_; }

 private:
  // Of equal members the first one counts.
  void settle(std::string_view name, bool isWhole, std::string text) {
    for (WrittenVersion& version : versions_) {
      if (version.key != name || version.isThere) continue;
      version = {version.key, true, isWhole, std::move(text)};
      return;
    }
  }

  bool isWithin_ = false;
  std::array<WrittenVersion, 2> versions_ = {WrittenVersion{"seatVersion"},
                                             WrittenVersion{"mapAssetsVersion"}};
};

std::optional<Finding> findingOn(const WrittenVersion& version, std::int64_t countsAs) {
  const std::string key(version.key);
  if (!version.isThere) {
    return Finding{"versionMissing", "there is no \"" + key + "\": it counts as 1 for ever", 1, {}};
  }
  if (version.isWhole) return std::nullopt;
  return Finding{"versionUnreadable",
                 "\"" + key + "\" is " + version.text + " and counts as " +
                     std::to_string(countsAs) + ": write a whole number from 1 on",
                 1,
                 {}};
}

void addVersionFindings(DocumentReport& report, const std::array<WrittenVersion, 2>& written) {
  if (!report.versions) {
    report.findings.push_back(
        {"versionMissing", "a document that is a bare list has no versions", 1, {}});
    return;
  }
  const std::array counted = {report.versions->seatVersion, report.versions->mapAssetsVersion};
  for (std::size_t at = 0; at < counted.size(); ++at) {
    auto finding = findingOn(written[at], counted[at]);
    if (finding) report.findings.push_back(std::move(*finding));
  }
}

}  // namespace

DocumentReport reportOnDocument(std::string_view document, const JsonReader& json) {
  DocumentReport report;
  VersionTexts texts;
  std::string reason;
  report.isJson = json.read(document, texts, &reason);
  if (!report.isJson) {
    report.findings.push_back({"malformed", "the document is not JSON: " + reason, 1, {}});
    return report;
  }
  report.versions = mapVersionInfoFromJSON(document, json);
  addVersionFindings(report, texts.versions());
  std::vector<Finding> flaws = flawsOf(document, json);
  std::move(flaws.begin(), flaws.end(), std::back_inserter(report.findings));
  return report;
}

}  // namespace halvora
