// SPDX-License-Identifier: Apache-2.0
// The page of the safety report: a verdict, the flashes over the show as a curve, and what was on
// the air when they were most.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <span>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"
#include "venue/base/json_line.h"
#include "venue/crowd/safety_report.h"
#include "venue/show/scenario_schedule.h"

namespace halvora {

namespace {

constexpr std::size_t kMostMoments = 8;
constexpr int kLimit = 3;
/// Of the drawing, in its own units.
constexpr double kWidth = 960;
constexpr double kHeight = 220;
constexpr double kLeft = 40;
constexpr double kBottom = 28;
constexpr std::size_t kMostColumns = 920;

constexpr std::string_view kStyle = R"(
:root{color-scheme:light dark;--ink:#1b1d22;--paper:#fff;--faint:#6a7080;--line:#d9dce3;
--bad:#b3261e;--good:#1d6b3a;--general:#3559c7;--red:#c2185b;--hall:#8a8f9c}
@media(prefers-color-scheme:dark){:root{--ink:#e8eaf0;--paper:#15171c;--faint:#9aa0b0;
--line:#343844;--bad:#ff8a80;--good:#7bd69a;--general:#8fa8ff;--red:#ff80ab;--hall:#7a8090}}
body{font:16px/1.5 system-ui,sans-serif;color:var(--ink);background:var(--paper);
max-width:64rem;margin:2rem auto;padding:0 1rem}
h1{font-size:1.5rem;margin:0 0 .2rem}h2{font-size:1.1rem;margin:2rem 0 .6rem}
.verdict{font-size:1.2rem;font-weight:600}.pass{color:var(--good)}.fail{color:var(--bad)}
p,figcaption{color:var(--faint)}figure{margin:0}svg{width:100%;height:auto}
table{border-collapse:collapse;width:100%}
th,td{text-align:left;padding:.35rem .8rem .35rem 0;border-bottom:1px solid var(--line)}
td.n,th.n{text-align:right;font-variant-numeric:tabular-nums}
.over{color:var(--bad);font-weight:600}
.chip{display:inline-block;width:1em;height:1em;border:1px solid var(--line);vertical-align:-.12em;
margin-right:.35em;border-radius:.2em}
.key{display:inline-block;width:1.4em;height:.25em;vertical-align:.25em;margin:0 .4em 0 1em}
)";

std::string escaped(std::string_view text) {
  std::string out;
  for (const char character : text) {
    switch (character) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += static_cast<unsigned char>(character) < ' ' ? '?' : character;
    }
  }
  return out;
}

std::string number(double value) { return levelText(std::round(value * 100) / 100); }

// Minutes and seconds, as crews speak of a show.
std::string timeText(Duration time) {
  const auto tenths = time / milliseconds(100);
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%lld:%02lld.%lld", static_cast<long long>(tenths / 600),
                static_cast<long long>(tenths / 10 % 60), static_cast<long long>(tenths % 10));
  return text.data();
}

std::string countCell(int flashes) {
  return std::string("<td class=\"n") + (flashes > kLimit ? " over" : "") + "\">" +
         std::to_string(flashes) + "</td>";
}

int mostOf(const FlashCurve& curve) {
  int most = 0;
  for (const auto& point : curve.points())
    most = std::max({most, int{point.general}, int{point.red}});
  return most;
}

class Graph {
 public:
  Graph(Duration length, int most)
      : steps_(std::max<std::size_t>(1, static_cast<std::size_t>(length / FlashCurve::kStep) + 1)),
        top_(std::max(most, kLimit + 2)),
        length_(length) {}

  std::string frame() const {
    std::string svg = "<svg viewBox=\"0 0 " + number(kWidth) + " " + number(kHeight) +
                      "\" role=\"img\" aria-label=\"Flashes a second over the show\">";
    for (int line = 0; line <= top_; line += top_ > 12 ? 5 : 1) {
      svg += "<text x=\"" + number(kLeft - 6) + "\" y=\"" + number(y(line) + 4) +
             "\" text-anchor=\"end\" font-size=\"11\" fill=\"var(--faint)\">" +
             std::to_string(line) + "</text>";
    }
    const int parts = 6;
    for (int part = 0; part <= parts; ++part) {
      const Duration time = length_ * part / parts;
      svg += "<text x=\"" + number(kLeft + (kWidth - kLeft) * part / parts) + "\" y=\"" +
             number(kHeight - 8) + "\" text-anchor=\"" +
             (part == 0       ? "start"
              : part == parts ? "end"
                              : "middle") +
             "\" font-size=\"11\" fill=\"var(--faint)\">" + timeText(time) + "</text>";
    }
    svg += "<line x1=\"" + number(kLeft) + "\" x2=\"" + number(kWidth) + "\" y1=\"" + number(y(0)) +
           "\" y2=\"" + number(y(0)) + "\" stroke=\"var(--line)\"/>";
    return svg;
  }
  std::string limit() const {
    return "<line x1=\"" + number(kLeft) + "\" x2=\"" + number(kWidth) + "\" y1=\"" +
           number(y(kLimit)) + "\" y2=\"" + number(y(kLimit)) +
           "\" stroke=\"var(--bad)\" stroke-dasharray=\"5 4\"/>";
  }

  // Long shows have several steps in a column, of which the worst counts.
  std::string curve(const FlashCurve& curve, std::uint8_t FlashCurve::Point::*what,
                    const char* colour) const {
    const std::size_t columns = std::min(steps_, kMostColumns);
    std::string points;
    for (std::size_t column = 0; column < columns; ++column) {
      const std::size_t first = column * steps_ / columns;
      const std::size_t last = std::max(first + 1, (column + 1) * steps_ / columns);
      int most = 0;
      for (std::size_t at = first; at < std::min(last, curve.points().size()); ++at) {
        most = std::max(most, int{curve.points()[at].*what});
      }
      const double width = (kWidth - kLeft) / static_cast<double>(columns);
      const double x = kLeft + width * static_cast<double>(column);
      points +=
          number(x) + "," + number(y(most)) + " " + number(x + width) + "," + number(y(most)) + " ";
    }
    return "<polyline fill=\"none\" stroke=\"" + std::string(colour) +
           "\" stroke-width=\"1.6\" points=\"" + points + "\"/>";
  }

 private:
  double y(int flashes) const {
    return (kHeight - kBottom) - (kHeight - kBottom - 10) * flashes / top_;
  }

  std::size_t steps_;
  int top_;
  Duration length_;
};

struct WorstMoment {
  Duration from{};
  Duration to{};
  int general = 0;
  int red = 0;
  int worst() const { return std::max(general, red); }
};

// Stretches of the curve that lie above the limit; of one that has none, those that flash at all.
std::vector<WorstMoment> worstMoments(const FlashCurve& curve) {
  const int least = mostOf(curve) > kLimit ? kLimit + 1 : 1;
  std::vector<WorstMoment> moments;
  Duration time{};
  bool goesOn = false;
  for (const auto& point : curve.points()) {
    const WorstMoment now{time, time + FlashCurve::kStep, point.general, point.red};
    const bool isOne = now.worst() >= least;
    if (isOne && !goesOn) moments.push_back(now);
    if (isOne) {
      WorstMoment& moment = moments.back();
      moment = {moment.from, now.to, std::max(moment.general, now.general),
                std::max(moment.red, now.red)};
    }
    goesOn = isOne;
    time = now.to;
  }
  std::ranges::stable_sort(moments, [](const WorstMoment& one, const WorstMoment& other) {
    return one.worst() > other.worst();
  });
  if (moments.size() > kMostMoments) moments.resize(kMostMoments);
  std::ranges::sort(moments, {}, &WorstMoment::from);
  return moments;
}

struct OnAir {
  Duration time{};
  Broadcast look;
};

std::vector<OnAir> looksOf(const Scenario& scenario, Duration end) {
  std::vector<OnAir> looks;
  ScenarioSchedule schedule(scenario);
  while (const auto moment = schedule.next(end)) {
    const auto* packet = std::get_if<PacketAction>(moment->action);
    if (packet == nullptr) continue;
    if (formatOf(packet->data) != BroadcastFormat::valid) continue;
    looks.push_back({moment->time, decodeBroadcast(packet->data)});
  }
  return looks;
}

std::string lookText(std::span<const OnAir> looks, Duration time) {
  const auto after = std::ranges::upper_bound(looks, time, {}, &OnAir::time);
  if (after == looks.begin()) return "nothing";
  const Broadcast& look = std::prev(after)->look;
  std::array<char, 8> colour{};
  std::snprintf(colour.data(), colour.size(), "#%02x%02x%02x", unsigned{look.red},
                unsigned{look.green}, unsigned{look.blue});
  std::string text = "<span class=\"chip\" style=\"background:" + std::string(colour.data()) +
                     "\"></span>" + colour.data() + ", mode " + std::to_string(look.mode) +
                     " at speed " + std::to_string(look.speed) + ", master " +
                     std::to_string(look.master);
  if (look.ledMode != 0) {
    text += ", torch mode " + std::to_string(look.ledMode) + " at speed " +
            std::to_string(look.ledSpeed);
  }
  if (look.gobo != 0) text += ", gobo " + std::to_string(look.gobo);
  if (look.pixelMapId != 0) text += ", map " + std::to_string(look.pixelMapId);
  return text;
}

std::string figuresRow(const std::string& name, const FlashFigures& figures) {
  const bool isAny = figures.general.flashes + figures.red.flashes > 0;
  return "<tr><td>" + escaped(name) + "</td>" + countCell(figures.general.flashes) +
         countCell(figures.red.flashes) + "<td class=\"n\">" +
         (isAny ? timeText(figures.at()) : std::string("–")) + "</td></tr>\n";
}

std::string figuresTable(const SafetyFindings& findings) {
  std::string html =
      "<table><tr><th>Most flashes in any second</th><th class=\"n\">general</th>"
      "<th class=\"n\">red</th><th class=\"n\">first at</th></tr>\n";
  html += figuresRow(findings.phones == 1 ? "the phone" : "the worst phone", findings.phone);
  if (findings.venue) {
    html += figuresRow("the hall's mean", findings.venue->hall);
    html += figuresRow("the worst section's mean (" + findings.venue->section + ")",
                       findings.venue->sectionFigures);
  }
  return html + "</table>\n";
}

std::string figure(const SafetyFindings& findings) {
  int most = mostOf(findings.curve);
  if (findings.venue) most = std::max(most, mostOf(findings.venue->curve));
  const Graph graph(findings.length, most);
  using Point = FlashCurve::Point;
  std::string html = "<figure>" + graph.frame();
  if (findings.venue) html += graph.curve(findings.venue->curve, &Point::general, "var(--hall)");
  html += graph.curve(findings.curve, &Point::red, "var(--red)") +
          graph.curve(findings.curve, &Point::general, "var(--general)") + graph.limit() + "</svg>";
  html +=
      "<figcaption>At each moment: the most flashes in a second that it lies in."
      "<span class=\"key\" style=\"background:var(--general)\"></span>general"
      "<span class=\"key\" style=\"background:var(--red)\"></span>red";
  if (findings.venue) {
    html += "<span class=\"key\" style=\"background:var(--hall)\"></span>the hall's mean, general";
  }
  return html +
         "<span class=\"key\" style=\"background:var(--bad)\"></span>the limit, three"
         "</figcaption></figure>\n";
}

std::string momentsTable(const SafetyFindings& findings, const Scenario& scenario) {
  const std::vector<WorstMoment> moments = worstMoments(findings.curve);
  if (moments.empty()) return "<p>Nothing flashes.</p>\n";
  const std::vector<OnAir> looks = looksOf(scenario, findings.length);
  std::string html =
      "<table><tr><th>from</th><th>to</th><th class=\"n\">general</th><th class=\"n\">red</th>"
      "<th>on the air</th></tr>\n";
  for (const WorstMoment& moment : moments) {
    html += "<tr><td>" + timeText(moment.from) + "</td><td>" + timeText(moment.to) + "</td>" +
            countCell(moment.general) + countCell(moment.red) + "<td>" +
            lookText(looks, (moment.from + moment.to) / 2) + "</td></tr>\n";
  }
  return html + "</table>\n";
}

}  // namespace

std::string safetyPage(const SafetyFindings& findings, const Scenario& scenario,
                       const std::string& title) {
  const bool isPass = findings.isPass();
  const bool isLimited = findings.policy == FlashPolicy::limited;
  std::string html = "<!doctype html>\n<html lang=\"en\"><meta charset=\"utf-8\">\n<meta name=";
  html += "\"viewport\" content=\"width=device-width,initial-scale=1\">\n<title>Flashes in " +
          escaped(title) + "</title>\n<style>" + std::string(kStyle) + "</style>\n";
  html += "<h1>Flashes in " + escaped(title) + "</h1>\n<p class=\"verdict " +
          std::string(isPass ? "pass\">Pass: no second has more than three flashes"
                             : "fail\">Fail: there are seconds with more than three flashes") +
          "</p>\n";
  html += "<p>" + std::to_string(findings.phones) + (findings.phones == 1 ? " phone" : " phones") +
          ", " + timeText(findings.length) + " of show, chances from seed " +
          std::to_string(findings.seed) + ", " +
          (isLimited ? "shown with the flash limit on" : "shown exactly as sent") + ".</p>\n";
  html += figuresTable(findings) + "<h2>Over the show</h2>\n" + figure(findings);
  html += "<h2>Worst moments of a phone</h2>\n" + momentsTable(findings, scenario);
  html +=
      "<h2>What is counted</h2>\n<p>By WCAG 2.2, 2.3.1: a flash is a pair of opposing changes of "
      "relative luminance of 0.1 or more with the darker below 0.8; a red flash a pair of opposing "
      "changes between a saturated red and a colour that differs by more than 0.2 in u&prime;v"
      "&prime;. The backlight counts, and a lit torch has luminance 1. More than three of either "
      "in any second fail. These are figures of a simulation: they find what is wrong with a show "
      "and certify nothing.</p>\n</html>\n";
  return html;
}

}  // namespace halvora
