// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/map_report_text.h"

#include <algorithm>

#include "adapters/json/unicode_text.h"
#include "venue/base/json_buffer.h"
#include "venue/base/json_line.h"
#include "venue/plan/placed_seats.h"

namespace halvora {

namespace {

using Writer = JsonWriter;

/// Lines with a label in front, aligned.
class Page {
 public:
  void fact(std::string label, std::string_view text) {
    constexpr std::size_t kLabelWidth = 17;
    label.resize(std::max(kLabelWidth, label.size() + 1), ' ');
    line(label.append(text));
  }
  // Names may hold anything; a line is one line, and moves no cursor.
  void line(std::string text) {
    constexpr char kDelete = '\x7F';
    std::replace_if(
        text.begin(), text.end(),
        [](char character) {
          return static_cast<unsigned char>(character) < ' ' || character == kDelete;
        },
        '?');
    text_ += text;
    text_ += '\n';
  }
  std::string finish() { return std::move(text_); }

 private:
  std::string text_;
};

std::string number(std::uint64_t value) {
  const std::string text = counted(value, "", "");
  return text.substr(0, text.size() - 1);
}

std::string sizeText(FrameSize size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

std::string rangeText(const PositionRange& range) {
  return "x " + std::to_string(range.leastX) + " to " + std::to_string(range.greatestX) + ", y " +
         std::to_string(range.leastY) + " to " + std::to_string(range.greatestY);
}

void writeFacts(Page& page, const MapReport& report) {
  page.fact("Sections", number(report.sections));
  page.fact("Rows", number(report.rows));
  page.fact("Seats", number(report.seats));
  page.fact("Standing areas", report.standingAreas == 0
                                  ? "none"
                                  : number(report.standingAreas) + ", with " +
                                        number(report.standingPlaces) + " of the seats");
  if (report.positions) page.fact("Positions", rangeText(*report.positions));
  page.fact("Versions", report.versions ? "seats " + std::to_string(report.versions->seatVersion) +
                                              ", pixel maps " +
                                              std::to_string(report.versions->mapAssetsVersion)
                                        : "none");
}

// ", 5 stills"; empty for none.
std::string stillsOf(const VenueAssets& assets, const std::string& mapId) {
  for (const FoundStills& stills : assets.stills) {
    if (stills.mapId == mapId) return ", " + counted(stills.count, "still", "stills");
  }
  return {};
}

bool hasVideo(const VenueAssets& assets, const std::string& mapId) {
  return std::any_of(assets.videos.begin(), assets.videos.end(),
                     [&](const FoundVideo& video) { return video.mapId == mapId; });
}

void writeAssets(Page& page, const VenueAssets& assets) {
  for (const FoundVideo& video : assets.videos) {
    page.fact("Pixel map " + video.mapId,
              sizeText(video.picture.size) + ", " +
                  counted(static_cast<std::uint64_t>(video.frames), "frame", "frames") + ", " +
                  levelText(video.seconds) + " s" + stillsOf(assets, video.mapId));
  }
  for (const FoundStills& stills : assets.stills) {
    if (hasVideo(assets, stills.mapId)) continue;
    page.fact("Pixel map " + stills.mapId, "no video, " + counted(stills.count, "still", "stills"));
  }
  if (assets.videos.empty() && assets.stills.empty()) page.fact("Pixel maps", "none");
  page.fact("Standing plan",
            assets.overlay ? assets.overlay->name + ", " + sizeText(assets.overlay->size) : "none");
}

void writeFindings(Page& page, const std::vector<Finding>& findings) {
  for (std::size_t at = 0; at < findings.size(); ++at) {
    const Finding& finding = findings[at];
    page.line(std::to_string(at + 1) + ". " + finding.text);
    for (const std::string& example : finding.examples) page.line("     " + example);
    if (!finding.wantsExamples()) page.line("     ...");
  }
  page.line(findings.empty() ? "Nothing is wrong."
                             : counted(findings.size(), "finding.", "findings."));
}

rapidjson::SizeType lengthOf(std::string_view text) {
  return static_cast<rapidjson::SizeType>(text.size());
}

void write(Writer& writer, std::string_view text) {
  std::string storage;
  const std::string_view valid = validUtf8(text, storage);
  writer.String(valid.data(), lengthOf(valid));
}

void write(Writer& writer, const char* key, std::string_view text) {
  writer.Key(key);
  write(writer, text);
}

void write(Writer& writer, const char* key, std::uint64_t value) {
  writer.Key(key);
  writer.Uint64(value);
}

template <class Items, class Write>
void writeArray(Writer& writer, const char* key, const Items& items, const Write& writeItem) {
  writer.Key(key);
  writer.StartArray();
  for (const auto& item : items) writeItem(item);
  writer.EndArray();
}

void write(Writer& writer, const FoundPicture& picture) {
  write(writer, "file", picture.name);
  write(writer, "width", picture.size.width);
  write(writer, "height", picture.size.height);
}

void write(Writer& writer, const FoundVideo& video) {
  writer.StartObject();
  write(writer, "mapId", video.mapId);
  write(writer, video.picture);
  write(writer, "frames", static_cast<std::uint64_t>(video.frames));
  const std::string seconds = levelText(video.seconds);
  writer.Key("seconds");
  writer.RawValue(seconds.data(), seconds.size(), rapidjson::kNumberType);
  writer.EndObject();
}

void write(Writer& writer, const FoundStills& stills) {
  writer.StartObject();
  write(writer, "mapId", stills.mapId);
  write(writer, "count", stills.count);
  writer.EndObject();
}

void write(Writer& writer, const Finding& finding) {
  writer.StartObject();
  write(writer, "kind", finding.kind);
  write(writer, "text", finding.text);
  write(writer, "count", finding.count);
  writeArray(writer, "examples", finding.examples,
             [&writer](const std::string& example) { write(writer, example); });
  writer.EndObject();
}

void writeVersions(Writer& writer, const std::optional<MapVersionInfo>& versions) {
  writer.Key("versions");
  if (!versions) {
    writer.Null();
    return;
  }
  writer.StartObject();
  writer.Key("seatVersion");
  writer.Int64(versions->seatVersion);
  writer.Key("mapAssetsVersion");
  writer.Int64(versions->mapAssetsVersion);
  writer.EndObject();
}

void writeOverlay(Writer& writer, const std::optional<FoundPicture>& overlay) {
  writer.Key("standingOverlay");
  if (!overlay) {
    writer.Null();
    return;
  }
  writer.StartObject();
  write(writer, *overlay);
  writer.EndObject();
}

}  // namespace

std::string pageOf(const MapReport& report, std::string_view file, std::string_view folder) {
  Page page;
  page.fact("Map", file);
  page.fact("Venue's folder", folder);
  page.line("");
  writeFacts(page, report);
  page.line("");
  writeAssets(page, report.assets);
  page.line("");
  writeFindings(page, report.findings);
  return page.finish();
}

std::string jsonOf(const MapReport& report) {
  JsonBuffer buffer;
  Writer writer(buffer);
  const auto writeItem = [&writer](const auto& item) { write(writer, item); };
  writer.StartObject();
  write(writer, "sections", report.sections);
  write(writer, "rows", report.rows);
  write(writer, "seats", report.seats);
  write(writer, "standingAreas", report.standingAreas);
  write(writer, "standingPlaces", report.standingPlaces);
  writeArray(writer, "videos", report.assets.videos, writeItem);
  writeVersions(writer, report.versions);
  writeArray(writer, "findings", report.findings, writeItem);
  writeArray(writer, "stills", report.assets.stills, writeItem);
  writeOverlay(writer, report.assets.overlay);
  writer.EndObject();
  buffer.Put('\n');
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace halvora
