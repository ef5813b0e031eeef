// SPDX-License-Identifier: Apache-2.0
#include "tests/seats/panel_bench.h"

#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "text/defaults_values.h"
#include "text/numbers.h"

namespace halvora {

namespace {

const ExactJsonReader& jsonReader() {
  static const ExactJsonReader kReader;
  return kReader;
}

VirtualPhoneSetup phoneSetup(const PanelBenchSetup& setup) {
  VirtualPhoneSetup phone;
  phone.authorization = setup.authorization;
  phone.documents = "/documents";
  return phone;
}

std::string mapPath(std::int64_t venueId) {
  return "/host/HVAssets/Maps/Venue-" + std::to_string(venueId) + "/map.json";
}

}  // namespace

const char* const kBenchMap = R"({"sections": [
  {"name": "Standing Floor", "rows": [
    {"name": "R", "seats": [{"name": "P1", "x": 2, "y": 7}, {"name": "P2", "x": 12, "y": 8}]}]},
  {"name": "A", "rows": [
    {"name": "1", "seats": [{"name": "10", "x": 3, "y": 4}, {"name": "11", "x": 5, "y": 4}]},
    {"name": "2", "seats": [{"name": "20", "x": 3, "y": 6}, {"name": "21", "x": 5, "y": 6}]}]},
  {"name": "B", "rows": [{"name": "1", "seats": [{"name": "1", "x": 9, "y": 1}]}]}]})";

std::string benchMap(int seatVersion, int mapAssetsVersion) {
  return "{\"seatVersion\": " + std::to_string(seatVersion) +
         ", \"mapAssetsVersion\": " + std::to_string(mapAssetsVersion) + "," +
         std::string(kBenchMap).substr(1);
}

PanelBenchSetup inVenue7(const std::string& map) {
  return {.defaultVenueId = 7,
          .prepare = [map](VirtualPhone& phone) { phone.virtualFiles.put(mapPath(7), map); }};
}

PanelBench::PanelBench(PanelBenchSetup setup) : phone(jsonReader(), phoneSetup(setup)) {
  phone.mainBundle.folder = "/host";
  if (setup.hasTexts) {
    phone.mainBundle.strings = {{"inside_venue", "host: inside"},
                                {"outside_venue", "host: outside"}};
    phone.kitBundle.strings = {{"onboarding_label", "kit: onboarding"},
                               {"allow_lightshow", "kit: allow"},
                               {"open_settings", "kit: settings"},
                               {"loading", "kit: loading"},
                               {"bluetooth_off", "kit: off"},
                               {"bluetooth_notAuthorised", "kit: not authorised"}};
  }
  if (setup.prepare) setup.prepare(phone);
  engine_ = std::make_unique<HalvoraViewController>(phone.platform());
  engine_->viewDidLoad();
  panel_ = std::make_unique<PanelController>(*engine_, phone.platform(), face());
  StatusPanelFields fields;
  fields.defaultVenueId = setup.defaultVenueId;
  panel_->setFields(fields);
  if (setup.isViewLoaded) turn([this] { panel_->viewDidLoad(); });
}

StatusPanelFace PanelBench::face() {
  return {.hasFont = [](std::string_view name) { return name == "Known"; },
          .fittingHeight =
              [this](double width) {
                measuredWidths.push_back(width);
                if (onMeasure) onMeasure();
                return fittingHeight;
              },
          .summaryTextFrame = [this](const StatusText&) { return summaryTextFrame; },
          .ancestorScrollViews = [this] { return ancestors; },
          .changed =
              [this] {
                if (onChange) onChange();
              }};
}

std::string PanelBench::shown() const {
  const auto word = [](bool isShown) { return isShown ? "shown " : "hidden "; };
  std::string text;
  text += views().onboardingLabel ? word(!views().onboardingLabel->hidden) : "gone ";
  text += views().joinButton ? word(!views().joinButton->hidden) : "gone ";
  text += word(views().statusTextLabel.alpha > 0);
  text += word(!views().settingsButton.hidden);
  text += word(!views().seatSelectionButton.hidden);
  text += word(!row().hidden);
  text.pop_back();
  return text;
}

std::string PanelBench::textOf(const StatusDot& dot) {
  if (dot.hidden) return "hidden";
  return dot.colour == Colour{1.0F, 0.624F, 0.102F, 1}     ? "amber"
         : dot.colour == Colour{0.129F, 0.773F, 0.365F, 1} ? "green"
                                                           : "of another colour";
}

void PanelBench::putMap(std::int64_t venueId, const std::string& document) {
  phone.virtualFiles.put(mapPath(venueId), document, ++fileTime_);
}

std::size_t PanelBench::readsOfMap(std::int64_t venueId) const {
  const auto& reads = phone.virtualFiles.reads.entries;
  return static_cast<std::size_t>(std::count(reads.begin(), reads.end(), mapPath(venueId)));
}

void PanelBench::putPixelMap(std::int64_t venueId, int mapId,
                             const std::vector<std::uint32_t>& words) {
  const std::string path = "/host/HVAssets/Maps/Venue-" + std::to_string(venueId) + "/" +
                           std::to_string(mapId) + "/video.mp4";
  phone.virtualFiles.put(path, "video");
  phone.virtualVideos.put(path, VirtualVideo::ofWords(words));
}

std::size_t PanelBench::tables() const {
  std::size_t count = 0;
  std::vector<std::string> folders{"/documents"};
  while (!folders.empty()) {
    const std::string folder = std::exchange(folders.back(), {});
    folders.pop_back();
    for (const std::string& name :
         phone.virtualFiles.list(folder).value_or(std::vector<std::string>())) {
      const std::string path = folder + "/" + name;
      if (phone.virtualFiles.attributes(path)->isFolder) folders.push_back(path);
      if (path.ends_with(".bin")) ++count;
    }
  }
  return count;
}

void PanelBench::storeSeat(std::int64_t venueId, const SeatNames& names, SeatPoint seat) {
  SeatStorage(phone.defaults).persistSeatSelectionForVenueId(venueId, names, seat);
}

std::optional<SeatPoint> PanelBench::storedSeat(std::int64_t venueId) const {
  return panel_->storage().hasValidSeatSelectionForVenueId(venueId);
}

bool PanelBench::isStoredReady(std::int64_t venueId) const {
  return panel_->storage().persistedSeatLUTReadyForVenueId(venueId);
}

std::string PanelBench::flat(std::string_view key) const {
  return textForKey(phone.defaults, key).value_or("-");
}

void PanelBench::turn(const std::function<void()>& act) {
  phone.loop.soon([&act] { act(); });
  phone.loop.runFor({});
}

void PanelBench::choose(std::int64_t section, std::int64_t row, std::int64_t seat) {
  turn([&] { panel().openSeatSelector(); });
  const auto selector = panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  for (const std::int64_t pick : {section, row, seat}) {
    turn([&] {
      selector->pickerDidSelectRow(pick);
      selector->nextTapped();
    });
  }
  EXPECT_TRUE(selector->isDismissed());
}

}  // namespace halvora
