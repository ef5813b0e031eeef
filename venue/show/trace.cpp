// SPDX-License-Identifier: Apache-2.0
#include "venue/show/trace.h"

#include <utility>

#include "venue/show/phone_run.h"
#include "venue/show/trace_shown.h"
#include "venue/show/trace_writer.h"

namespace halvora {

TraceEnd runTrace(const Scenario& scenario, const TraceOptions& options,
                  std::unique_ptr<Random> random, const TraceLibraries& libraries,
                  const std::function<void(std::string_view)>& write) {
  PhoneRun run(scenario, options, std::move(random), libraries);
  TraceWriter writer(run.phone(), run.engine(), {options.assets, options.documents}, write);
  ShownWriter shown({{}, scenario.device.brightness, false}, write);
  EmissionWatch watch(run.phone(), run.engine(), [&](Duration time, const Emission& emission) {
    if (options.isShownWritten) shown.add(time, emission);
  });
  // A limit is kept for whoever looks, so somebody does even where nobody reads of it.
  const bool isWatched = options.isShownWritten || options.flash != FlashPolicy::exact;
  return run.run({[&] {
                    if (isWatched) watch.turnEnded();
                    writer.turnEnded();
                  },
                  [&writer](int done, int total, const std::string& mapId) {
                    writer.precomputeProgressed(done, total, mapId);
                  },
                  [&writer](int done, int total) { writer.precomputeCompleted(done, total); }});
}

TraceEnd measureFlashes(const Scenario& scenario, const TraceOptions& options,
                        std::unique_ptr<Random> random, const TraceLibraries& libraries,
                        PhoneMeter& meter, FlashCurve& curve) {
  PhoneRun run(scenario, options, std::move(random), libraries);
  EmissionWatch watch(run.phone(), run.engine(), [&](Duration time, const Emission& emission) {
    meter.add(time, phoneLightOf(emission), &curve);
  });
  return run.run({[&watch] { watch.turnEnded(); }});
}

}  // namespace halvora
