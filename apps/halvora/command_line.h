// SPDX-License-Identifier: Apache-2.0
// The tool's command line: the commands that it offers, and how each of them says what it takes.
// The library that reads it takes seconds to compile, so only command_line.cpp includes it.
// Main thread.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/halvora/command.h"

namespace CLI {
class App;
}  // namespace CLI

namespace halvora {

/// What one command takes: options, whose names begin with "--", and arguments in their places,
/// whose names do not. The text that is given goes into the value, which outlives this; the value
/// of what is not given stays as it is. A name with several values may be repeated.
class CommandOptions {
 public:
  explicit CommandOptions(CLI::App& app) : app_(app) {}

  void required(const std::string& name, std::string& value, const std::string& help);
  void required(const std::string& name, std::vector<std::string>& values, const std::string& help);

  void optional(const std::string& name, std::string& value, const std::string& help);
  void optional(const std::string& name, std::vector<std::string>& values, const std::string& help);
  /// For a command to which an empty text is not the same as none. The default is only shown.
  void optional(const std::string& name, std::optional<std::string>& value, const std::string& help,
                const std::string& shownDefault = {});

  void flag(const std::string& name, bool& isGiven, const std::string& help);
  /// What the help says below all options.
  void footer(const std::string& text);

 private:
  CLI::App& app_;
};

struct CommandGroup {
  const char* name;
  const char* purpose;
};

struct CommandRow {
  /// Null for a command that stands alone.
  const CommandGroup* group;
  const char* name;
  const char* purpose;
  std::unique_ptr<ToolCommand> (*make)();
};

/// Runs the command that the call's arguments choose, prints the help that they ask for, or says
/// what is wrong with them. `purpose` is that of all commands together.
CommandResult runCommandLine(const char* purpose, std::span<const CommandRow> commands,
                             const Call& call);

}  // namespace halvora
