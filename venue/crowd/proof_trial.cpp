// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/proof_trial.h"

#include <algorithm>

#include "venue/base/json_line.h"

namespace halvora {

namespace {

using Standing = DelayedProof::Standing;

constexpr int kShares[] = {50, 95, 99};

// Whether it says the same as that, but for the tag.
bool isAgain(std::span<const std::uint8_t> data, std::span<const std::uint8_t> obeyed) {
  return data.size() == obeyed.size() && data.back() == obeyed.back() &&
         std::ranges::equal(data.first<kTagOffset>(), obeyed.first<kTagOffset>());
}

void addNumber(PrettyJsonWriter& writer, const char* key, double value) {
  const std::string text = levelText(value);
  writer.Key(key);
  writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
}

double shareOf(std::uint64_t part, std::uint64_t whole) {
  return whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
}

}  // namespace

ProofTrial::ProofTrial(const ProofSettings& settings, CrowdPhone& phone)
    : settings_(settings),
      phone_(phone),
      proof_(settings.applicationId, settings.anchor, *settings.codes) {
  apply({});
}

void ProofTrial::heard(std::span<const std::uint8_t> data, CrowdPhone::Heard heard, Duration now) {
  proof_.hear(data, now);
  if (formatOf(data) == BroadcastFormat::valid) {
    const bool isObeyed = heard != CrowdPhone::Heard::nothing;
    if (isObeyed) current_.assign(data.begin(), data.end());
    if (!current_.empty() && isAgain(data, current_)) {
      if (!began_) began_ = now;
      proof_.hold(data, heard == CrowdPhone::Heard::newLook, now);
    }
  }
  apply(now);
}

// What nobody vouches for flashes less than the law of the hall allows, and lights no torch.
void ProofTrial::apply(Duration now) {
  standing_ = current_.empty() ? Standing::unproven : proof_.standingOf(current_, now);
  const bool isFull = standing_ != Standing::unproven;
  if (isFull && !firstFull_) firstFull_ = now;
  LightLimits limits = settings_.limits;
  if (!isFull) {
    limits.flash = FlashPolicy::limited;
    limits.torch = false;
  }
  if (!(phone_.limits() == limits)) phone_.setLimits(limits);
}

void ProofTrial::look(Duration now, bool isStrange) {
  apply(now);
  if (!phone_.look() || current_.empty()) return;
  const bool isFull = standing_ != Standing::unproven;
  strangeFullNow_ = isFull && isStrange ? strangeFullNow_ + 1 : 0;
  tally_.longestStrangeFull = std::max(tally_.longestStrangeFull, strangeFullNow_);
  if (isStrange) {
    ++tally_.strange;
    tally_.strangeFull += isFull ? 1U : 0U;
    tally_.strangeProven += standing_ == Standing::proven ? 1U : 0U;
    return;
  }
  ++tally_.shown;
  tally_.full += isFull ? 1U : 0U;
  tally_.shownSince += firstFull_ ? 1U : 0U;
}

ProofTally ProofTrial::tally() const {
  ProofTally tally = tally_;
  tally.forged = proof_.counts().forged;
  if (!began_) return tally;
  tally.phones = 1;
  tally.never = firstFull_ ? 0U : 1U;
  if (firstFull_) tally.delays[(*firstFull_ - *began_) / milliseconds(1)] = 1;
  return tally;
}

void ProofTally::add(const ProofTally& other) {
  for (std::uint64_t ProofTally::*const sum :
       {&ProofTally::phones, &ProofTally::never, &ProofTally::shown, &ProofTally::full,
        &ProofTally::shownSince, &ProofTally::strange, &ProofTally::strangeFull,
        &ProofTally::strangeProven, &ProofTally::forged}) {
    this->*sum += other.*sum;
  }
  for (const auto& [delay, count] : other.delays) delays[delay] += count;
  longestStrangeFull = std::max(longestStrangeFull, other.longestStrangeFull);
}

void ProofTally::write(PrettyJsonWriter& writer, int framesPerSecond) const {
  const auto seconds = [framesPerSecond](std::uint64_t frames) {
    return static_cast<double>(frames) / framesPerSecond;
  };
  writer.Key("phones");
  writer.Uint64(phones);
  addNumber(writer, "share", shareOf(full, shown));
  addNumber(writer, "shareSinceFirst", shareOf(full, shownSince));
  writer.Key("delay");
  writer.StartObject();
  for (const int share : kShares) {
    const std::uint64_t wanted = (phones * static_cast<std::uint64_t>(share) + 99) / 100;
    std::uint64_t sum = 0;
    const auto enough = std::ranges::find_if(
        delays, [&](const auto& one) { return (sum += one.second) >= wanted; });
    writer.Key(std::to_string(share).c_str());
    if (enough != delays.end()) {
      writer.Int64(enough->first);
    } else {
      writer.Null();
    }
  }
  writer.Key("never");
  writer.Uint64(never);
  writer.EndObject();
  const double perPhone = phones > 0 ? 1 / static_cast<double>(phones) : 0;
  addNumber(writer, "strangeSeconds", seconds(strange) * perPhone);
  addNumber(writer, "strangeFullSeconds", seconds(strangeFull) * perPhone);
  addNumber(writer, "longestStrangeFull", seconds(longestStrangeFull));
  writer.Key("strangeProven");
  writer.Uint64(strangeProven);
  writer.Key("forged");
  writer.Uint64(forged);
}

}  // namespace halvora
