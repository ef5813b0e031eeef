// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/map_dump.h"

#include "venue/base/json_buffer.h"

namespace halvora {

namespace {

using Writer = JsonWriter;

void writeName(Writer& writer, std::string_view name) {
  writer.Key("displayName");
  writer.String(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void writeRow(Writer& writer, const SeatMap::RowItem& row) {
  writer.StartObject();
  writeName(writer, row.displayName());
  writer.Key("seats");
  writer.StartArray();
  for (std::size_t at = 0; at < row.seatCount(); ++at) {
    const SeatMap::SeatItem seat = row.seat(at);
    writer.StartObject();
    writeName(writer, seat.displayName);
    writer.Key("xPos");
    writer.Int64(seat.xPos);
    writer.Key("yPos");
    writer.Int64(seat.yPos);
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
}

void writeSection(Writer& writer, const SeatMap::SectionItem& section) {
  writer.StartObject();
  writeName(writer, section.displayName());
  writer.Key("rows");
  writer.StartArray();
  for (std::size_t at = 0; at < section.rowCount(); ++at) writeRow(writer, section.row(at));
  writer.EndArray();
  writer.EndObject();
}

}  // namespace

std::string dumpSeatMap(std::string_view document, const StringTable& strings,
                        const JsonReader& json) {
  const SeatMap map = seatMapOf(document, strings, json);
  JsonBuffer buffer;
  Writer writer(buffer);
  writer.StartArray();
  for (std::size_t at = 0; at < map.sectionCount(); ++at) writeSection(writer, map.section(at));
  writer.EndArray();
  buffer.Put('\n');
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace halvora
