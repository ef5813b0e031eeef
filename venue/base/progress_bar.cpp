// SPDX-License-Identifier: Apache-2.0
#include "venue/base/progress_bar.h"

#include <cmath>

namespace halvora {

namespace {

constexpr std::uint64_t kBarWidth = 16;
// To the beginning of the line, and nothing left of it.
constexpr std::string_view kWipe = "\r\033[K";

std::string clockText(double seconds) {
  const auto whole = static_cast<std::uint64_t>(std::ceil(seconds));
  const std::string rest = std::to_string(whole % 60);
  return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

}  // namespace

ProgressBar::ProgressBar(const Terminal& terminal, std::string_view verb, std::string_view unit,
                         std::uint64_t total)
    : terminal_(terminal), verb_(verb), unit_(unit), total_(total) {
  if (!terminal_.write) return;
  begin_ = terminal_.now();
  nextTime_ = begin_ + pause();
}

ProgressBar::~ProgressBar() {
  if (shown_ > 0 && !terminal_.isLog) terminal_.write(kWipe);
}

void ProgressBar::show(std::uint64_t done) {
  if (!terminal_.write) return;
  // Whoever comes while another one writes has nothing better to say.
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock.owns_lock() || done <= shown_) return;
  const Duration now = terminal_.now();
  if (now < nextTime_) return;
  nextTime_ = now + pause();
  shown_ = done;
  const std::string line = text(done, now - begin_);
  terminal_.write(terminal_.isLog ? line + "\n" : std::string(kWipe) + line);
}

std::string ProgressBar::text(std::uint64_t done, Duration elapsed) const {
  const double pace = static_cast<double>(done) / toSeconds(elapsed);
  const std::string paceText = std::to_string(std::llround(pace)) + " a second";
  // A video of more frames a second than its tables have words: how many there are is not known.
  if (done > total_) return verb_ + " " + std::to_string(done) + " " + unit_ + ", " + paceText;
  const std::uint64_t filled = done * kBarWidth / total_;
  return verb_ + " [" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " +
         std::to_string(done) + " of " + std::to_string(total_) + " " + unit_ + ", " + paceText +
         ", " + clockText(static_cast<double>(total_ - done) / pace) + " left";
}

Terminal lineTerminal(const Outside& outside) {
  if (!outside.messages || !outside.terminal.now) return {};
  return {[messages = outside.messages](std::string_view line) {
            messages("halvora: " + std::string(line));
          },
          outside.terminal.now, true};
}

}  // namespace halvora
