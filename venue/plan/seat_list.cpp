// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/seat_list.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <tuple>
#include <utility>

#include "venue/base/input_text.h"
#include "venue/plan/csv_table.h"

namespace halvora {

namespace {

constexpr std::size_t kLongestPartName = 200;
constexpr double kFarthest = 1e7;

bool isName(const std::string& text) {
  return !text.empty() && text.size() <= kLongestPartName &&
         std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

// Puts seats into a list, each once.
class SeatCollector {
 public:
  // `where` is what a person looks the entry up by.
  void add(ListedSeat seat, const std::string& where) {
    if (!isName(seat.section) || !isName(seat.row) || !isName(seat.seat)) {
      list_.dropped.push_back(where + ": " + seatLabel(seat) + ": a name is missing or too long");
      return;
    }
    if (!known_.emplace(seat.section, seat.row, seat.seat).second) {
      list_.doubled.push_back(where + ": " + seatLabel(seat));
      return;
    }
    list_.seats.push_back(std::move(seat));
  }
  void drop(std::string what) { list_.dropped.push_back(std::move(what)); }
  std::variant<SeatList, std::string> finish() {
    if (list_.seats.empty()) return "holds no seats";
    return std::move(list_);
  }

 private:
  SeatList list_;
  std::set<std::tuple<std::string, std::string, std::string>> known_;
};

char lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

struct ColumnNames {
  const char* what;
  std::string SeatColumns::*own;
  std::array<const char*, 6> usual;
  bool isNeeded;
};
constexpr ColumnNames kColumns[] = {
    {"section",
     &SeatColumns::section,
     {"section", "block", "sector", "area", "zone", "stand"},
     true},
    {"row", &SeatColumns::row, {"row", "line", "row number", "row_number", "rank", "reihe"}, true},
    {"seat",
     &SeatColumns::seat,
     {"seat", "place", "seat number", "seat_number", "number", "platz"},
     true},
    {"x", &SeatColumns::x, {"x", "left", "xpos", "pos_x", "x_pos", "column"}, false},
    {"y", &SeatColumns::y, {"y", "top", "ypos", "pos_y", "y_pos", "depth"}, false},
};
constexpr std::size_t kColumnCount = std::size(kColumns);
using Places = std::array<std::optional<std::size_t>, kColumnCount>;

std::optional<std::size_t> columnCalled(const CsvTable& table, std::string_view name) {
  for (std::size_t at = 0; at < table.columns.size(); ++at) {
    if (std::ranges::equal(table.columns[at], name, {}, lower, lower)) return at;
  }
  return std::nullopt;
}

// Where each column is, or why that is not known.
std::variant<Places, std::string> placesOf(const CsvTable& table, const SeatColumns& columns) {
  Places places;
  std::string there;
  for (const std::string& name : table.columns) {
    if (!there.empty()) there += ", ";
    there += name;
  }
  for (std::size_t at = 0; at < kColumnCount; ++at) {
    const ColumnNames& names = kColumns[at];
    const std::string& own = columns.*names.own;
    if (!own.empty()) {
      places[at] = columnCalled(table, own);
      if (!places[at]) {
        std::string flaw = "line 1: no column is called \"";
        flaw.append(own).append("\"; there are ").append(there);
        return flaw;
      }
      continue;
    }
    for (const char* name : names.usual) {
      if (!places[at]) places[at] = columnCalled(table, name);
    }
    if (!places[at] && names.isNeeded) {
      return std::string("line 1: no column for the ") + names.what + "; say which of " + there +
             " it is (--columns " + names.what + "=NAME)";
    }
  }
  if (places[3].has_value() != places[4].has_value()) return "line 1: x and y go together";
  return places;
}

std::optional<double> coordinateOf(const std::string& text) {
  const auto number = plainNumber(text);
  return number && std::fabs(*number) <= kFarthest ? number : std::nullopt;
}

std::string textOf(const JsonValue* value) {
  if (value == nullptr) return {};
  if (value->text() != nullptr) return *value->text();
  return value->integer() != nullptr ? std::to_string(*value->integer()) : std::string();
}

struct PlanPoint {
  double x = 0;
  double y = 0;
};
PlanPoint pointOf(const JsonValue& item, PlanPoint from) {
  const JsonValue* position = item.find("position");
  const auto axis = [position](const char* name) {
    const JsonValue* value = position != nullptr ? position->find(name) : nullptr;
    const double number = value != nullptr ? value->number().value_or(0) : 0;
    return std::isfinite(number) ? std::clamp(number, -kFarthest, kFarthest) : 0;
  };
  return {from.x + axis("x"), from.y + axis("y")};
}

const JsonValue::Array& listIn(const JsonValue& item, const char* name) {
  static const JsonValue::Array kNone;
  const JsonValue* list = item.find(name);
  return list != nullptr && list->array() != nullptr ? *list->array() : kNone;
}

}  // namespace

std::string seatLabel(const ListedSeat& seat) {
  return seat.section + " / " + seat.row + " / " + seat.seat;
}

bool SeatList::isPlaced() const {
  return std::ranges::all_of(seats, [](const ListedSeat& seat) { return seat.x && seat.y; });
}

std::variant<SeatList, std::string> seatsOfCsv(std::string_view text, const SeatColumns& columns) {
  const auto parsed = parseCsv(text);
  if (const auto* fault = std::get_if<CsvFault>(&parsed)) {
    return "line " + std::to_string(fault->line) + ": " + fault->what;
  }
  const auto& table = std::get<CsvTable>(parsed);
  const auto found = placesOf(table, columns);
  if (const auto* why = std::get_if<std::string>(&found)) return *why;
  const auto& places = std::get<Places>(found);
  SeatCollector seats;
  for (const CsvRow& row : table.rows) {
    const auto field = [&](std::size_t column) -> std::string {
      const auto place = places[column];
      return place && *place < row.fields.size() ? row.fields[*place] : std::string();
    };
    const std::string where = "line " + std::to_string(row.line);
    ListedSeat seat{field(0), field(1), field(2), {}, {}};
    if (places[3]) {
      seat.x = coordinateOf(field(3));
      seat.y = coordinateOf(field(4));
      if (!seat.x || !seat.y) {
        seats.drop(where + ": " + seatLabel(seat) + ": x and y must be numbers");
        continue;
      }
    }
    seats.add(std::move(seat), where);
  }
  return seats.finish();
}

std::variant<SeatList, std::string> seatsOfPretix(std::string_view text, const JsonReader& json) {
  std::string reason;
  const auto document = json.parse(text, &reason);
  if (!document) return "not JSON: " + reason;
  if (document->find("zones") == nullptr) return "no seating plan: it has no \"zones\"";
  SeatCollector seats;
  for (const JsonValue& zone : listIn(*document, "zones")) {
    const PlanPoint zonePoint = pointOf(zone, {});
    for (const JsonValue& row : listIn(zone, "rows")) {
      const PlanPoint rowPoint = pointOf(row, zonePoint);
      for (const JsonValue& seat : listIn(row, "seats")) {
        const PlanPoint point = pointOf(seat, rowPoint);
        std::string where = "seat " + textOf(seat.find("seat_guid"));
        seats.add({textOf(zone.find("name")), textOf(row.find("row_number")),
                   textOf(seat.find("seat_number")), point.x, point.y},
                  where);
      }
    }
  }
  return seats.finish();
}

std::vector<std::string> seatsMissingIn(const SeatList& wanted, const SeatList& there) {
  std::set<std::string> known;
  for (const ListedSeat& seat : there.seats) known.insert(seatLabel(seat));
  std::vector<std::string> missing;
  for (const ListedSeat& seat : wanted.seats) {
    if (!known.contains(seatLabel(seat))) missing.push_back(seatLabel(seat));
  }
  return missing;
}

}  // namespace halvora
