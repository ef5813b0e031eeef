// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/map_commands.h"
#include "venue/base/input_file.h"
#include "venue/base/json_line.h"
#include "venue/base/written_files.h"
#include "venue/plan/csv_table.h"
#include "venue/plan/placed_seats.h"
#include "venue/plan/seat_list.h"
#include "venue/plan/seat_placing.h"

namespace halvora {

namespace {

class ImportCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("FILE", file_,
                     "the ticket office's seats: a table (CSV) whose first line names the columns, "
                     "or a pretix seating plan (JSON)");
    options.required("--out", out_, "the map.json that is written");
    options.optional("--columns", columnTexts_,
                     "what=NAME, which column is section, row, seat, x or y; may be repeated "
                     "(default: the usual names)");
    options.optional("--place", placeTexts_,
                     "SECTION=FROM,TO,RADIUS,PITCH: its rows on arcs around the middle, from and "
                     "to in degrees clockwise from the top, the first row's radius and from row to "
                     "row in pixels; may be repeated");
    options.optional("--expect", expect_,
                     "table of tickets; those whose seat the map does not have are listed, and the "
                     "exit status is then 1");
    options.footer(
        "Prints what came of it as one JSON object: how many seats, the canvas's width and height, "
        "how many\nseats were put beside their place, every seat that was dropped or doubled, and "
        "every ticket whose seat\nis missing. Seats without x and y, and sections without an arc, "
        "are put in plain blocks.");
  }

  CommandResult run(const Call& call) override {
    if (auto refusal = readOptions()) return std::move(*refusal);
    auto read = readSeats(file_, call);
    if (auto* refusal = std::get_if<CommandResult>(&read)) return std::move(*refusal);
    const SeatList& list = std::get<SeatList>(read);
    std::vector<std::string> missing;
    if (expect_) {
      auto tickets = readSeats(*expect_, call);
      if (auto* refusal = std::get_if<CommandResult>(&tickets)) return std::move(*refusal);
      missing = seatsMissingIn(std::get<SeatList>(tickets), list);
    }
    auto placed = placeSeats(list, arcs_, call.outside.isInterrupted);
    if (call.outside.isInterrupted) return interrupted();
    if (const auto* why = std::get_if<std::string>(&placed)) return unusable(file_ + ": " + *why);
    const auto& places = std::get<PlacedList>(placed);
    WrittenFiles files(call.outside.isInterrupted);
    if (!files.replace(absolutePath(out_), seatMapDocumentOf(list, places))) {
      return call.outside.isInterrupted ? interrupted() : unusable(out_ + ": cannot be written");
    }
    CommandResult printed = writeAll(reportOf(list, places, missing), call.output);
    if (printed.status != 0 || missing.empty()) return printed;
    return failed(*expect_ + ": " + counted(missing.size(), "ticket", "tickets") +
                  " for seats that the map does not have");
  }

 private:
  std::optional<CommandResult> readOptions() {
    constexpr std::pair<const char*, std::string SeatColumns::*> kNames[] = {
        {"section", &SeatColumns::section},
        {"row", &SeatColumns::row},
        {"seat", &SeatColumns::seat},
        {"x", &SeatColumns::x},
        {"y", &SeatColumns::y}};
    for (const std::string& text : columnTexts_) {
      bool isKnown = false;
      for (const auto& [name, column] : kNames) {
        if (!text.starts_with(std::string(name) + "=")) continue;
        columns_.*column = text.substr(text.find('=') + 1);
        isKnown = !(columns_.*column).empty();
      }
      if (isKnown) continue;
      return unusable(
          "--columns must be section, row, seat, x or y, = and a column's name, not \"" + text +
          "\"");
    }
    for (const std::string& text : placeTexts_) {
      auto arc = seatArcOf(text);
      if (!arc) {
        return unusable("--place must be SECTION=FROM,TO,RADIUS,PITCH, not \"" + text + "\"");
      }
      arcs_.push_back(std::move(*arc));
    }
    std::error_code error;
    if (std::filesystem::equivalent(out_, file_, error)) {
      return unusable(out_ + ": is the ticket office's file itself (--out)");
    }
    return std::nullopt;
  }

  std::variant<SeatList, CommandResult> readSeats(const std::string& file, const Call& call) const {
    auto text = readInput(file, kLargestTable, call.outside.isInterrupted);
    if (auto* refusal = std::get_if<CommandResult>(&text)) return std::move(*refusal);
    const auto& bytes = std::get<std::string>(text);
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    const bool isJson = first != std::string::npos && bytes[first] == '{';
    auto seats = isJson ? seatsOfPretix(bytes, ExactJsonReader()) : seatsOfCsv(bytes, columns_);
    if (const auto* why = std::get_if<std::string>(&seats)) return unusable(file + ": " + *why);
    return std::get<SeatList>(std::move(seats));
  }

  static std::string reportOf(const SeatList& list, const PlacedList& places,
                              const std::vector<std::string>& missing) {
    const auto count = [](std::size_t number) { return static_cast<std::int64_t>(number); };
    JsonLine line;
    line.begin().add("seats", count(list.seats.size()));
    line.add("width", std::int64_t{places.width}).add("height", std::int64_t{places.height});
    line.add("moved", count(places.moved));
    line.addRaw("dropped", listText(list.dropped)).addRaw("doubled", listText(list.doubled));
    line.addRaw("missing", listText(missing));
    return std::string(line.end());
  }

  std::string file_;
  std::string out_;
  std::vector<std::string> columnTexts_;
  std::vector<std::string> placeTexts_;
  std::optional<std::string> expect_;
  SeatColumns columns_;
  std::vector<SeatArc> arcs_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeMapImportCommand() { return std::make_unique<ImportCommand>(); }

}  // namespace halvora
