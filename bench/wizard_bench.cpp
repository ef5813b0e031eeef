// SPDX-License-Identifier: Apache-2.0
// The seat selector on a section of 100,000 seats: a walk to a seat and back, and a finger that
// drags the dot over the plan; each beside the plain way, which copies all titles at every reload
// and makes the plan's points anew at every touch.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "adapters/virtual/virtual_storage.h"
#include "bench/heap_count.h"
#include "bench/require.h"
#include "halvora/platform/absent.h"
#include "seats/wizard_controller.h"

namespace halvora {

namespace {

constexpr int kRows = 10;
constexpr int kSeatsARow = 10'000;
constexpr Size kDragArea{358, 520};

std::shared_ptr<const SeatMap> mapOfOneSection(const std::string& name) {
  SeatMapBuilder builder;
  for (std::int64_t row = 1; row <= kRows; ++row) {
    for (int seat = 1; seat <= kSeatsARow; ++seat) {
      builder.addSeat(builder.addName("Seat " + std::to_string(seat)), seat, row * 1000);
    }
    builder.endRow(builder.addName("Row " + std::to_string(row)));
  }
  builder.endSection(builder.addName(name));
  return std::make_shared<const SeatMap>(builder.finish());
}

class Wizard {
 public:
  explicit Wizard(const std::string& section)
      : wizard_(kit_, overlay_, nullptr, inputsOf(section)) {
    wizard_.viewDidLoad();
    wizard_.pickerDidSelectRow(1);
  }
  WizardController& operator*() { return wizard_; }
  WizardController* operator->() { return &wizard_; }

 private:
  static SeatSelectorInputs inputsOf(const std::string& section) {
    SeatSelectorInputs inputs;
    inputs.map = mapOfOneSection(section);
    inputs.venueId = 7;
    inputs.hasLiveVenueSignal = true;
    return inputs;
  }

  VirtualBundle main_{"com.example.host"};
  VirtualBundle kit_{"com.halvora.sdk"};
  StandingOverlay overlay_{main_, absent::images()};
  WizardController wizard_;
};

// What a face does after an action: it asks for the titles that the picker shows, seven around the
// selected one.
std::size_t titlesInSight(const WizardController& wizard) {
  constexpr std::int64_t kAround = 3;
  std::size_t length = 0;
  const std::int64_t middle = wizard.views().pickerView.selectedRow;
  for (std::int64_t row = middle - kAround; row <= middle + kAround; ++row) {
    length += wizard.titleForPickerRow(row).size();
  }
  return length;
}

std::size_t allTitles(const WizardController& wizard) {
  std::vector<std::string> titles;
  for (std::size_t row = 0; row < wizard.numberOfPickerRows(); ++row) {
    titles.push_back(wizard.titleForPickerRow(static_cast<std::int64_t>(row)));
  }
  return titles.size();
}

// Section, next, row, next, seat, and back to the section.
template <class ReadTitles>
void walk(WizardController& wizard, std::int64_t seat, ReadTitles readTitles) {
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  benchmark::DoNotOptimize(readTitles(wizard));
  wizard.pickerDidSelectRow(kRows);
  wizard.nextTapped();
  benchmark::DoNotOptimize(readTitles(wizard));
  wizard.pickerDidSelectRow(seat);
  wizard.backTapped();
  benchmark::DoNotOptimize(readTitles(wizard));
  wizard.backTapped();
}

template <class ReadTitles>
void walks(benchmark::State& state, ReadTitles readTitles) {
  Wizard wizard("A");
  walk(*wizard, 9'999, readTitles);
  require(wizard->views().selectionSummaryLabel.text == "A  |  Row 10  |  Seat 9999",
          "the walk leads to another seat");
  std::int64_t seat = 0;
  const AllocationsAnIteration allocations(state);
  for (auto _ : state) walk(*wizard, 1 + seat++ % kSeatsARow, readTitles);
}

void walkInSight(benchmark::State& state) { walks(state, titlesInSight); }
BENCHMARK(walkInSight)->Name("SeatWalk/engine");
void walkPlainly(benchmark::State& state) { walks(state, allTitles); }
BENCHMARK(walkPlainly)->Name("SeatWalk/plain");

// Positions all over the plan, in no simple order.
Point touchNumber(int number) {
  return {static_cast<double>(number * 131 % 358), static_cast<double>(number * 197 % 520)};
}

void drag(benchmark::State& state) {
  Wizard wizard("Standing");
  wizard->nextTapped();
  wizard->viewDidLayoutSubviews(kDragArea);
  require(wizard->standingSeatPoints().size() == std::size_t{kRows} * kSeatsARow,
          "the plan lacks seats");
  wizard->handleStandingDrag({358, 520});
  require(wizard->selectedRowIndex() == kRows - 1 && wizard->selectedSeatIndex() == kSeatsARow - 1,
          "the dot is at another seat");
  int number = 0;
  const AllocationsAnIteration allocations(state);
  for (auto _ : state) wizard->handleStandingDrag(touchNumber(number++));
}
BENCHMARK(drag)->Name("StandingDrag/engine")->Unit(benchmark::kMicrosecond);

void dragPlainly(benchmark::State& state) {
  Wizard wizard("Standing");
  wizard->nextTapped();
  wizard->viewDidLayoutSubviews(kDragArea);
  int number = 0;
  for (auto _ : state) {
    const Point touch = touchNumber(number++);
    const auto points = wizard->buildStandingSeatPointsForSectionIndex(0);
    benchmark::DoNotOptimize(
        nearestStandingSeat(points, touch.x / kDragArea.width, touch.y / kDragArea.height));
  }
}
BENCHMARK(dragPlainly)->Name("StandingDrag/plain")->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace halvora
