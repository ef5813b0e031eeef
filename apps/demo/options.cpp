// SPDX-License-Identifier: Apache-2.0
#include "apps/demo/options.h"

#include <CLI/CLI.hpp>

namespace halvora {

namespace {

constexpr double kLatestQuit = 1e9;

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

std::variant<DemoOptions, DemoRefusal> parseOptions(int argumentCount, char** arguments) {
  DemoOptions options;
  double quitAfter = 0;
  std::string radio = "process";
  CLI::App app(
      "Opens a phone and an operator's console that sends packets to it, or plays a light show on "
      "the phone. Without a display it writes a contact sheet instead: a picture of every half "
      "second of the show.",
      "halvora-demo");
  app.add_option("--scenario", options.scenario,
                 "JSON Lines file to play instead of opening the console (the contact sheet is of "
                 "example-show.jsonl by default)");
  app.add_option("--radio", radio, "what the phone hears: process, the console's packets (default)")
      ->check(CLI::IsMember({"process", "system"}));
  app.add_option("--assets", options.assets,
                 "folder that holds HVAssets (default: the assets/demo found from here upwards)");
  CLI::Option* sheet = app.add_option("--contact-sheet", options.contactSheet,
                                      "write the contact sheet to this PNG file, open no window");
  app.add_option(
         "--screenshot", options.screenshot,
         "when the scenario ends, or the console's first look shines, save the window as this "
         "PNG file and quit")
      ->excludes(sheet);
  app.add_option("--quit-after", quitAfter, "seconds after which the window closes")
      ->check(CLI::Range(0.0, kLatestQuit));
  app.footer("In the window: F full screen, Esc quit. The shows may contain flashing light.");
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::CallForHelp&) {
    return DemoRefusal{app.help(), 0};
  } catch (const CLI::ParseError& error) {
    return DemoRefusal{firstLine(error.what()) + " (see --help)"};
  }
  if (radio == "system") {
    return DemoRefusal{"--radio system: this program has no way to the system's Bluetooth yet"};
  }
  if (app.count("--quit-after") > 0) options.quitAfter = fromSeconds(quitAfter);
  return options;
}

}  // namespace halvora
