// SPDX-License-Identifier: Apache-2.0
// What a venue's seat map costs, from its bytes to the map: the kit's direct pass, and what the
// reading alone takes RapidJSON ("rapidjsonReading", no map).
#include <algorithm>
#include <vector>

#include <malloc.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "bench/seat_map_documents.h"
#include "seats/seat_map_document.h"

namespace halvora {

namespace {

constexpr int kSections = 20;
constexpr int kRows = 50;
constexpr int kSeats = 100;
constexpr std::uint32_t kWidth = 1920;
constexpr std::uint32_t kHeight = 1080;

template <class Writer>
std::string listedDocument() {
  SeededRandom random(7);
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  const auto entry = [&](const std::string& name) {
    writer.StartObject();
    writer.Key("name");
    writer.String(name.c_str());
  };
  const auto list = [&](const char* key) {
    writer.Key(key);
    writer.StartArray();
  };
  writer.StartObject();
  writer.Key("seatVersion");
  writer.Int(3);
  list("sections");
  for (int section = 1; section <= kSections; ++section) {
    entry("Block " + std::to_string(100 + section));
    list("rows");
    for (int row = 1; row <= kRows; ++row) {
      entry(std::to_string(row));
      list("seats");
      for (int seat = 1; seat <= kSeats; ++seat) {
        entry(std::to_string(seat));
        writer.Key("xPos");
        writer.Uint(random.below(kWidth));
        writer.Key("yPos");
        writer.Uint(random.below(kHeight));
        writer.EndObject();
      }
      writer.EndArray();
      writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
  return buffer.GetString();
}

std::vector<std::string> keysUpTo(int last, bool isAlphabetical) {
  std::vector<std::string> keys;
  for (int key = 1; key <= last; ++key) keys.push_back(std::to_string(key));
  if (isAlphabetical) std::sort(keys.begin(), keys.end());
  return keys;
}

std::string keyedDocument(bool isAlphabetical) {
  SeededRandom random(7);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.StartObject();
  writer.Key("seatVersion");
  writer.Int(3);
  writer.Key("s");
  writer.StartObject();
  for (const std::string& section : keysUpTo(kSections, isAlphabetical)) {
    writer.Key(section.c_str());
    writer.StartObject();
    for (const std::string& row : keysUpTo(kRows, isAlphabetical)) {
      writer.Key(row.c_str());
      writer.StartObject();
      for (const std::string& seat : keysUpTo(kSeats, isAlphabetical)) {
        writer.Key(seat.c_str());
        writer.StartArray();
        writer.Uint(random.below(kWidth));
        writer.Uint(random.below(kHeight));
        writer.EndArray();
      }
      writer.EndObject();
    }
    writer.EndObject();
  }
  writer.EndObject();
  writer.EndObject();
  return buffer.GetString();
}

bool isSameRow(const SeatMap::RowItem& left, const SeatMap::RowItem& right) {
  if (left.displayName() != right.displayName()) return false;
  if (left.seatCount() != right.seatCount()) return false;
  for (std::size_t at = 0; at < left.seatCount(); ++at) {
    const SeatMap::SeatItem seat = left.seat(at);
    const SeatMap::SeatItem other = right.seat(at);
    if (seat.displayName != other.displayName) return false;
    if (seat.xPos != other.xPos || seat.yPos != other.yPos) return false;
  }
  return true;
}

// Some readers copy a text that has no room behind it.
std::string withRoom(std::string document) {
  constexpr std::size_t kRoom = 64;
  document.reserve(document.size() + kRoom);
  return document;
}

struct NoHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, NoHandler> {
  bool Default() { return true; }
};

void readWithRapidJson(benchmark::State& state, const std::string& document) {
  keepHeap();
  for (auto _ : state) {
    rapidjson::MemoryStream stream(document.data(), document.size());
    rapidjson::Reader reader;
    NoHandler handler;
    require(!reader.Parse<rapidjson::kParseValidateEncodingFlag>(stream, handler).IsError(),
            "a document is malformed");
  }
}

[[maybe_unused]] const bool kAdded =
    addForEachSeatMap("engine",
                      [](benchmark::State& state, const std::string& document) {
                        measureSeatMap(state, document, seatMapOf);
                      }) &&
    addForEachSeatMap("rapidjsonReading", readWithRapidJson);

}  // namespace

const SeatMapDocuments& seatMapDocuments() {
  using Buffer = rapidjson::StringBuffer;
  static const SeatMapDocuments kDocuments = {
      withRoom(listedDocument<rapidjson::Writer<Buffer>>()),
      withRoom(listedDocument<rapidjson::PrettyWriter<Buffer>>()), withRoom(keyedDocument(false)),
      withRoom(keyedDocument(true))};
  return kDocuments;
}

void keepHeap() {
  // No block is mapped by itself or given back: where the C library does that now and then, a run
  // pays for fresh pages by chance, several times what is to be measured.
  static const bool kDone = mallopt(M_MMAP_MAX, 0) != 0 && mallopt(M_TRIM_THRESHOLD, -1) != 0;
  require(kDone, "the heap cannot be set up");
}

SeatMap seatMapOf(const std::string& document) {
  static const ExactJsonReader kJson;
  return parseSeatMapSectionsFromJSON(document, kPlainTexts, kJson);
}

bool isSameMap(const SeatMap& left, const SeatMap& right) {
  if (left.isEmpty() || left.sectionCount() != right.sectionCount()) return false;
  for (std::size_t at = 0; at < left.sectionCount(); ++at) {
    const auto section = left.section(at);
    const auto other = right.section(at);
    if (section.displayName() != other.displayName()) return false;
    if (section.rowCount() != other.rowCount()) return false;
    for (std::size_t row = 0; row < section.rowCount(); ++row) {
      if (!isSameRow(section.row(row), other.row(row))) return false;
    }
  }
  return true;
}

}  // namespace halvora
