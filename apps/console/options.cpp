// SPDX-License-Identifier: Apache-2.0
#include "apps/console/options.h"

#include <CLI/CLI.hpp>

namespace halvora {

namespace {

constexpr double kLatestQuit = 1e9;
constexpr double kShortestStep = 0.001;
constexpr double kLongestStep = 3600;
constexpr int kMostPhones = 1'000'000;

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

std::variant<DemoOptions, DemoRefusal> parseOptions(int argumentCount, char** arguments) {
  DemoOptions options;
  double quitAfter = 0;
  double step = toSeconds(options.step);
  std::string radio = "process";
  CLI::App app(
      "Opens a phone and an operator's console that sends packets to it, or plays a light show on "
      "the phone. Without a display it writes a contact sheet instead: a picture of every half "
      "second of the show.",
      "halvora-demo");
  app.add_option("--scenario", options.scenario,
                 "JSON Lines file to play instead of opening the console (the contact sheet is of "
                 "example-show.jsonl by default)");
  app.add_option("--radio", radio,
                 "what the phone hears: process, the console's packets (default), or system, what "
                 "is in the air; the phone is this machine then")
      ->check(CLI::IsMember({"process", "system"}));
  app.add_option(
      "--adapter", options.adapter,
      "with --radio system: the adapter to listen on, as hci1 (default: whichever works)");
  app.add_option("--assets", options.assets,
                 "folder that holds HVAssets (default: the assets/demo found from here upwards)");
  CLI::Option* sheet = app.add_option("--contact-sheet", options.contactSheet,
                                      "write the contact sheet to this PNG file, open no window");
  app.add_option(
         "--screenshot", options.screenshot,
         "when the scenario ends, the console's first look shines, or the first show from the air "
         "does, save the window as this PNG file and quit")
      ->excludes(sheet);
  app.add_option("--venue", options.venue,
                 "open the console at the venue, with about so many phones spread over its "
                 "seats (0 for one on every seat)")
      ->check(CLI::Range(0, kMostPhones));
  app.add_option("--show", options.show,
                 "open the console with this show file, cues as YAML, to rehearse it")
      ->excludes(app.get_option("--scenario"));
  app.add_option("--map", options.map, "begin the console's show with this pixel map")
      ->check(CLI::Range(0, 255));
  CLI::Option* frames =
      app.add_option("--frames", options.frames,
                     "paint the scenario step by step, however long each takes, save what the "
                     "screen shows after each as PNG files in this folder, and quit")
          ->excludes(sheet)
          ->excludes(app.get_option("--screenshot"));
  app.add_option("--step", step, "seconds of the show from one frame to the next (default: 0.5)")
      ->needs(frames)
      ->check(CLI::Range(kShortestStep, kLongestStep));
  app.add_option("--quit-after", quitAfter, "seconds after which the window closes")
      ->check(CLI::Range(0.0, kLatestQuit));
  app.footer("In the window: F11 full screen, Esc quit. The shows may contain flashing light.");
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::CallForHelp&) {
    return DemoRefusal{app.help(), 0};
  } catch (const CLI::ParseError& error) {
    return DemoRefusal{firstLine(error.what()) + " (see --help)"};
  }
  options.isOnSystemRadio = radio == "system";
  if (!options.adapter.empty() && !options.isOnSystemRadio) {
    return DemoRefusal{"--adapter: only for --radio system (see --help)"};
  }
#ifdef HALVORA_HAS_BLUETOOTH
  if (options.isOnSystemRadio &&
      !(options.scenario + options.contactSheet + options.frames).empty()) {
    return DemoRefusal{"--radio system: plays no scenario, so there are no pictures of one"};
  }
#else
  if (options.isOnSystemRadio) {
    return DemoRefusal{"--radio system: built without libsystemd, the way to the radio"};
  }
#endif
  options.step = fromSeconds(step);
  if (app.count("--quit-after") > 0) options.quitAfter = fromSeconds(quitAfter);
  return options;
}

}  // namespace halvora
