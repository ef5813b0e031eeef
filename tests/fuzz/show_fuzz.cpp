// SPDX-License-Identifier: Apache-2.0
// Any bytes as a show that a person wrote: it is refused with lines and reasons, or its cues come
// in their order and within their bounds.
#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "tests/fuzz/fuzz_targets.h"
#include "venue/show/cue_list.h"
#include "venue/show/cue_schedule.h"
#include "venue/show/cue_steps.h"
#include "venue/show/cue_values.h"

namespace halvora {

namespace {

void checkFlaws(const std::vector<CueListFlaw>& flaws, std::size_t lines) {
  require(!flaws.empty(), "a refusal has a reason");
  for (const CueListFlaw& flaw : flaws) {
    require(flaw.line >= 1 && flaw.line <= lines + 1 && !flaw.what.empty(),
            "a fault has a line and words");
  }
}

// The first steps of a cue; a map may have tens of thousands.
void checkSteps(const CueList& show, const Cue& cue) {
  CueSteps steps(cue, show.repeat, 0);
  Duration last{-1};
  for (int count = 0; count < 50; ++count) {
    const auto step = steps.next();
    require(step.has_value() || count > 0, "a cue has a look");
    if (!step) return;
    require(step->time > last, "steps are in order");
    last = step->time;
  }
}

}  // namespace

int fuzzShow(FuzzBytes bytes) {
  const std::string_view text = textOf(bytes);
  // YAML ends lines with more than one character.
  const std::size_t lines = text.size();
  const auto parsed = parseCueList(text, {{1, "Ember", {}}});
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&parsed)) {
    checkFlaws(*flaws, lines);
    return 0;
  }
  const auto& show = std::get<CueList>(parsed);
  require(!show.cues.empty() && show.repeat >= milliseconds(20), "a show has cues and repeats");
  const auto places = placesOf(show);
  require(places.size() == show.cues.size(), "every cue has a place");
  for (std::size_t at = 0; at < places.size(); ++at) {
    require(cueNamed(show, show.cues[at].name) == at, "a cue is found by its name");
    require(places[at].begin >= Duration{} && places[at].begin <= places[at].end,
            "a cue ends after it began");
    require(at == 0 || places[at - 1].begin <= places[at].begin, "cues come in their order");
    checkSteps(show, show.cues[at]);
  }
  return 0;
}

}  // namespace halvora
