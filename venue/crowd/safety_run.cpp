// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/safety_run.h"

#include <utility>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/thread_workers.h"
#include "venue/base/interruptible_videos.h"
#include "venue/base/written_files.h"
#include "venue/crowd/crowd_run.h"
#include "venue/crowd/safety_report.h"
#include "venue/show/trace.h"

namespace halvora {

namespace {

using Measured = std::variant<SafetyFindings, CommandResult>;

Measured measurePhone(const SafetyRequest& request, const Outside& outside) {
  const ExactJsonReader json;
  const InterruptibleVideos videos(outside.videos, outside.isInterrupted);
  WrittenFiles files(outside.isInterrupted);
  ThreadWorkers workers(request.threads);
  TraceOptions options;
  options.assets = request.assets;
  options.flash = request.policy;
  options.until = request.end;
  options.goesOn = [&outside] { return !outside.isInterrupted; };
  PhoneMeter meter;
  SafetyFindings findings;
  const TraceEnd end =
      measureFlashes(request.scenario, options, std::make_unique<SeededRandom>(request.seed),
                     {json, outside.images, &files, &videos, &workers}, meter, findings.curve);
  if (outside.isInterrupted) return interrupted();
  if (end == TraceEnd::noMemory) return failed("out of memory");
  if (end == TraceEnd::endless) return failed(request.name + ": the phone never comes to rest");
  findings.phone = meter.worst();
  return findings;
}

Measured measureVenue(const SafetyRequest& request, const Outside& outside) {
  CrowdRequest crowd;
  crowd.assets = request.assets;
  crowd.venueId = *request.venueId;
  crowd.scenario = request.scenario;
  crowd.settings.end = request.end;
  crowd.settings.seed = crowd.air.seed = request.seed;
  crowd.settings.framesPerSecond = 1;
  crowd.phones = request.phones;
  crowd.threads = request.threads;
  crowd.policy = request.policy;
  auto measured = measureCrowd(crowd, outside);
  if (auto* refusal = std::get_if<CommandResult>(&measured)) return std::move(*refusal);
  auto& flashes = std::get<CrowdFlashes>(measured);
  SafetyFindings findings;
  findings.phones = flashes.phones;
  findings.phone = flashes.phone;
  findings.curve = std::move(flashes.phoneCurve);
  findings.venue = HallFlashes{flashes.hall, std::move(flashes.section), flashes.sectionFigures,
                               std::move(flashes.hallCurve)};
  return findings;
}

}  // namespace

CommandResult runSafety(const SafetyRequest& request, const Call& call) {
  auto measured =
      request.venueId ? measureVenue(request, call.outside) : measurePhone(request, call.outside);
  if (auto* refusal = std::get_if<CommandResult>(&measured)) return std::move(*refusal);
  auto& findings = std::get<SafetyFindings>(measured);
  findings.policy = request.policy;
  findings.seed = request.seed;
  findings.length = request.end;
  if (!request.page.empty()) {
    WrittenFiles files(call.outside.isInterrupted);
    const std::string page = safetyPage(findings, request.scenario, request.name);
    if (!files.replace(request.page, page)) {
      return unusable(request.page + ": cannot be written (--html)");
    }
  }
  CommandResult written = writeAll(safetyJson(findings), call.output);
  if (written.status != 0 || findings.isPass()) return written;
  return failed(request.name + ": there are seconds with more than three flashes");
}

}  // namespace halvora
