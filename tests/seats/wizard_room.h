// SPDX-License-Identifier: Apache-2.0
// A seat selector over a map written by hand, with string tables, plan pictures and fonts that a
// test may fill, and counts of what the wizard asked them. Single-threaded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/virtual/virtual_storage.h"
#include "seats/wizard_controller.h"
#include "tests/seats/seat_maker.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {

class CountingDecoder final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override {
    ++calls;
    return decoder_.decode(bytes);
  }
  mutable int calls = 0;

 private:
  PixmapDecoder decoder_;
};

/// Counts the questions for texts and resources.
class CountingBundle final : public VirtualBundle {
 public:
  CountingBundle() : VirtualBundle("com.example.counted") {}
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override {
    reads.emplace_back(path);
    return VirtualBundle::readResource(path, limit);
  }
  std::string localizedString(std::string_view key) const override {
    ++lookups;
    return VirtualBundle::localizedString(key);
  }
  void setText(const std::string& key, const std::string& text) { strings[key] = text; }
  void setResource(const std::string& path, const std::string& bytes) { resources[path] = bytes; }

  mutable std::vector<std::string> reads;
  mutable int lookups = 0;
};

/// The names and the place of what was confirmed.
struct Chosen {
  std::string section;
  std::string row;
  std::string seat;
  std::int64_t x = 0;
  std::int64_t y = 0;
  friend bool operator==(const Chosen&, const Chosen&) = default;
};

class WizardRoom {
 public:
  /// A wizard over that map, not loaded yet; whoever wants other inputs changes them first.
  explicit WizardRoom(const std::vector<SectionSpec>& sections) {
    inputs.map = mapOf(sections);
    inputs.onSeatSelected = [this](const auto& section, const auto& row, const auto& seat) {
      chosen.push_back({std::string(section.displayName()), std::string(row.displayName()),
                        std::string(seat.displayName), seat.xPos, seat.yPos});
    };
  }

  WizardController& load() {
    wizard_ = std::make_unique<WizardController>(
        kit, overlay, [this](std::string_view name) { return name == font; }, inputs);
    wizard_->viewDidLoad();
    return *wizard_;
  }
  void destroyWizard() { wizard_.reset(); }
  /// Loads with a choice as the storage had it.
  WizardController& loadWith(const SeatNames& stored) {
    inputs.initialSelection = stored;
    return load();
  }
  /// Loads, heard at the venue, and goes on to the plan of the first section.
  WizardController& loadAtPlan(Size dragArea = {100, 100}) {
    inputs.hasLiveVenueSignal = true;
    auto& wizard = load();
    wizard.pickerDidSelectRow(1);
    wizard.nextTapped();
    wizard.viewDidLayoutSubviews(dragArea);
    return wizard;
  }

  CountingBundle kit;
  CountingBundle main;
  CountingDecoder decoder;
  StandingOverlay overlay{main, decoder};
  /// The one font that the phone has; empty for none.
  std::string font;
  SeatSelectorInputs inputs;
  std::vector<Chosen> chosen;

 private:
  std::unique_ptr<WizardController> wizard_;
};

/// Step and indices of section, row and seat.
struct WizardState {
  std::int64_t step = 0;
  std::int64_t section = -1;
  std::int64_t row = -1;
  std::int64_t seat = -1;
  friend bool operator==(const WizardState&, const WizardState&) = default;
};

inline WizardState stateOf(const WizardController& wizard) {
  return {wizard.currentStep(), wizard.selectedSectionIndex(), wizard.selectedRowIndex(),
          wizard.selectedSeatIndex()};
}

inline void PrintTo(const WizardState& state, std::ostream* stream) {
  *stream << "step " << state.step << ", section " << state.section << ", row " << state.row
          << ", seat " << state.seat;
}

inline std::vector<std::string> namesOf(const SeatSelectorItems& items) {
  std::vector<std::string> names;
  for (std::size_t index = 0; index < items.size(); ++index) {
    names.emplace_back(items.displayName(index));
  }
  return names;
}

inline std::vector<std::string> pickerTitles(const WizardController& wizard) {
  std::vector<std::string> titles;
  for (std::size_t row = 0; row < wizard.numberOfPickerRows(); ++row) {
    titles.push_back(wizard.titleForPickerRow(static_cast<std::int64_t>(row)));
  }
  return titles;
}

}  // namespace halvora
