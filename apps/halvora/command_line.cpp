// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/command_line.h"

#include <algorithm>
#include <map>
#include <string_view>

#include <CLI/CLI.hpp>

#include "apps/halvora/version.h"

namespace halvora {

namespace {

CLI::Option& addSeveral(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                        const std::string& help) {
  CLI::Option* option = app.add_option(name, values, help);
  // One value each time: what follows may be an argument.
  if (name.starts_with('-')) option->allow_extra_args(false);
  return *option;
}

struct Offer {
  CLI::App* app;
  std::unique_ptr<ToolCommand> command;
};

// A group may bear the name of a command that stands alone; the word after it says which is meant.
std::string sharedGroup(std::span<const CommandRow> commands, std::span<const char* const> words) {
  if (words.size() < 3) return {};
  const auto isMeant = [&](const CommandRow& row) {
    return row.group != nullptr && row.group->name == std::string_view(words[1]) &&
           row.name == std::string_view(words[2]);
  };
  return std::ranges::any_of(commands, isMeant) ? words[1] : "";
}

bool isHidden(const CommandRow& row, std::span<const CommandRow> commands,
              const std::string& group) {
  if (row.group == nullptr) return row.name == group;
  const auto isAlone = [&](const CommandRow& other) {
    return other.group == nullptr && other.name == std::string_view(row.group->name);
  };
  return row.group->name != group && std::ranges::any_of(commands, isAlone);
}

std::vector<Offer> offerAll(CLI::App& app, std::span<const CommandRow> commands,
                            std::span<const char* const> words) {
  std::vector<Offer> offers;
  const std::string group = sharedGroup(commands, words);
  std::map<const CommandGroup*, CLI::App*> parents{{nullptr, &app}};
  for (const CommandRow& row : commands) {
    if (isHidden(row, commands, group)) continue;
    CLI::App*& parent = parents[row.group];
    if (parent == nullptr) {
      parent = app.add_subcommand(row.group->name, row.group->purpose)->require_subcommand(1);
    }
    offers.push_back({parent->add_subcommand(row.name, row.purpose), row.make()});
    CommandOptions options(*offers.back().app);
    offers.back().command->describe(options);
  }
  return offers;
}

}  // namespace

void CommandOptions::required(const std::string& name, std::string& value,
                              const std::string& help) {
  app_.add_option(name, value, help)->required();
}

void CommandOptions::required(const std::string& name, std::vector<std::string>& values,
                              const std::string& help) {
  addSeveral(app_, name, values, help).required();
}

void CommandOptions::optional(const std::string& name, std::string& value,
                              const std::string& help) {
  app_.add_option(name, value, help);
}

void CommandOptions::optional(const std::string& name, std::vector<std::string>& values,
                              const std::string& help) {
  addSeveral(app_, name, values, help);
}

void CommandOptions::optional(const std::string& name, std::optional<std::string>& value,
                              const std::string& help, const std::string& shownDefault) {
  // The library's own way with such a value makes an empty text none.
  const auto set = [&value](const std::string& text) { value = text; };
  app_.add_option_function<std::string>(name, set, help)->default_str(shownDefault);
}

void CommandOptions::flag(const std::string& name, bool& isGiven, const std::string& help) {
  app_.add_flag(name, isGiven, help);
}

void CommandOptions::footer(const std::string& text) { app_.footer(text); }

CommandResult runCommandLine(const char* purpose, std::span<const CommandRow> commands,
                             const Call& call) {
  CLI::App app(purpose, "halvora");
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string(versionText()),
                       "print the version and the libraries it was built with");
  const std::vector<Offer> offers = offerAll(app, commands, call.arguments);
  try {
    app.parse(static_cast<int>(call.arguments.size()), call.arguments.data());
  } catch (const CLI::CallForHelp&) {
    return writeAll(app.help(), call.output);
  } catch (const CLI::CallForVersion& version) {
    return writeAll(std::string(version.what()) + "\n", call.output);
  } catch (const CLI::ParseError& error) {
    // The library may explain itself at length; its first line says what is wrong.
    const std::string what = error.what();
    return unusable(what.substr(0, what.find('\n')) + " (see --help)");
  }
  const auto chosen = std::find_if(offers.begin(), offers.end(),
                                   [](const Offer& offer) { return offer.app->parsed(); });
  return chosen->command->run(call);
}

}  // namespace halvora
