// SPDX-License-Identifier: Apache-2.0
// What the command line says of a show that is played, checked before anything is opened. Main
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/halvora/command_line.h"
#include "apps/halvora/show_input.h"

namespace halvora {

class LiveOptions {
 public:
  /// The air that is standard output.
  static constexpr const char* kLines = "stdout";

  void describe(CommandOptions& options);
  /// Reads the show, and says what to end with where it cannot be played so.
  std::optional<CommandResult> read(const Call& call);

  bool hasAdapters() const;
  std::optional<std::uint8_t> zoneOf(std::size_t air) const {
    return zones.empty() ? std::nullopt : std::optional(zones[air]);
  }

  ShowInput input;
  /// Adapters, or kLines.
  std::vector<std::string> airs;
  /// One an air, or none.
  std::vector<std::uint8_t> zones;
  std::optional<std::string> control;
  std::optional<std::string> osc;
  std::uint16_t oscPort = 0;
  std::string oscBind = "127.0.0.1";
  std::optional<std::string> ola;
  unsigned universe = 0;
  /// Once read: none where numbers are to be forgotten.
  std::optional<std::string> journal;
  bool isStandby = false;
  std::uint16_t first = 1;
  std::optional<std::string> keyFile;

 private:
  std::optional<CommandResult> checkOptions();
  std::optional<CommandResult> readZones();
  std::optional<CommandResult> checkZones() const;
  std::optional<CommandResult> checkNumbers() const;
  std::optional<CommandResult> nameJournal();

  std::vector<std::string> words_;
  std::string sequence_ = "1";
  bool isWithoutJournal_ = false;
};

}  // namespace halvora
