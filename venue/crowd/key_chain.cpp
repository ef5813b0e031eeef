// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/key_chain.h"

#include <algorithm>
#include <map>
#include <utility>
#include <variant>

#include "engine/signed_broadcast.h"
#include "venue/show/scenario_schedule.h"

namespace halvora {

namespace {

constexpr std::size_t kMarkOffset = 4;
constexpr std::size_t kIntervalOffset = 5;
constexpr std::size_t kKeyOffset = 8;
/// A key is due so often ...
constexpr Duration kFramePause = milliseconds(250);
/// ... and waits so long for a repeat that it can take the place of.
constexpr Duration kFramePatience = milliseconds(100);

/// What one transmitter does.
struct Sender {
  std::optional<BroadcastBytes> last;
  /// When the next key is.
  Duration due{};
};

ScenarioLine lineAt(Duration time, std::vector<std::uint8_t> data) {
  ScenarioLine line;
  line.action = PacketAction{std::move(data)};
  line.at = toSeconds(time);
  return line;
}

/// Signs for one interval after the other.
class Signer {
 public:
  Signer(const KeyChain& chain, const MessageCodes& codes) : chain_(chain), codes_(codes) {}

  /// None where there is no cipher.
  std::optional<std::vector<std::uint8_t>> sign(const Broadcast& fields, std::uint32_t interval) {
    if (interval != interval_ || code_ == nullptr) code_ = codeOf(chain_.at(interval), codes_);
    if (code_ == nullptr) return std::nullopt;
    interval_ = interval;
    const auto whole = signBroadcast(fields, interval, *code_);
    return std::vector<std::uint8_t>(whole.begin(), whole.end());
  }

 private:
  const KeyChain& chain_;
  const MessageCodes& codes_;
  std::uint32_t interval_ = 0;
  std::unique_ptr<MessageCode> code_;
};

bool isFrameDue(const Sender& sender, Duration time, bool isRepeat) {
  return time >= (isRepeat ? sender.due : sender.due + kFramePatience);
}

}  // namespace

std::array<std::uint8_t, ChainFrame::kSize> ChainFrame::bytes() const {
  std::array<std::uint8_t, kSize> data{0x09, 0xC9};
  data[2] = static_cast<std::uint8_t>(applicationId >> 8);
  data[3] = static_cast<std::uint8_t>(applicationId & 0xFF);
  data[kMarkOffset] = kMark;
  for (std::size_t at = 0; at < 3; ++at) {
    data[kIntervalOffset + at] = static_cast<std::uint8_t>(interval >> (16 - 8 * at) & 0xFF);
  }
  std::ranges::copy(key, data.begin() + kKeyOffset);
  data.back() = transmitter;
  return data;
}

std::optional<ChainFrame> ChainFrame::in(std::span<const std::uint8_t> data) {
  if (data.size() != kSize || formatOf(data) == BroadcastFormat::otherMaker ||
      data[kMarkOffset] != kMark) {
    return std::nullopt;
  }
  ChainFrame frame;
  frame.applicationId = static_cast<std::uint16_t>(data[2] << 8 | data[3]);
  for (std::size_t at = 0; at < 3; ++at) {
    frame.interval = frame.interval << 8 | data[kIntervalOffset + at];
  }
  std::ranges::copy(data.subspan<kKeyOffset, ShowKey::kSize>(), frame.key.begin());
  frame.transmitter = data.back();
  return frame;
}

std::unique_ptr<MessageCode> codeOf(const ChainKey& key, const MessageCodes& codes) {
  return codes.withKey(ShowKey(key));
}

// Under the key itself, so that only who has the key can compute it. Nothing that is signed has one
// byte.
std::optional<ChainKey> keyBefore(const ChainKey& key, const MessageCodes& codes) {
  const auto code = codeOf(key, codes);
  if (code == nullptr) return std::nullopt;
  constexpr std::array<std::uint8_t, 1> kStep = {1};
  return code->of(kStep);
}

std::optional<KeyChain> KeyChain::of(const ChainKey& secret, std::uint32_t intervals,
                                     const MessageCodes& codes) {
  if (intervals > kLongestChain) return std::nullopt;
  std::vector<ChainKey> keys(std::size_t{intervals} + 1);
  keys.back() = secret;
  for (std::size_t at = intervals; at > 0; --at) {
    const auto before = keyBefore(keys[at], codes);
    if (!before) return std::nullopt;
    keys[at - 1] = *before;
  }
  return KeyChain(std::move(keys));
}

std::optional<Scenario> chainedShow(const Scenario& scenario, const KeyChain& chain,
                                    const MessageCodes& codes, Duration end) {
  Scenario made;
  made.device = scenario.device;
  for (const ScenarioLine& line : scenario.lines) {
    if (!std::holds_alternative<PacketAction>(line.action)) made.lines.push_back(line);
  }
  Signer signer(chain, codes);
  std::map<std::pair<std::uint16_t, std::uint8_t>, Sender> senders;
  ScenarioSchedule schedule(scenario);
  while (const auto moment = schedule.next(end)) {
    const auto* packet = std::get_if<PacketAction>(moment->action);
    if (packet == nullptr) continue;
    if (formatOf(packet->data) != BroadcastFormat::valid) {
      made.lines.push_back(lineAt(moment->time, packet->data));
      continue;
    }
    const Broadcast fields = decodeBroadcast(packet->data);
    Sender& sender = senders[{fields.applicationId, fields.transmitter}];
    const BroadcastBytes plain = encodeBroadcast(fields);
    if (!sender.last) sender.due = std::max(moment->time, kChainInterval * kChainDelay);
    const std::uint32_t interval = KeyChain::intervalAt(moment->time);
    if (isFrameDue(sender, moment->time, sender.last == plain)) {
      sender.due = moment->time + kFramePause;
      const std::uint32_t disclosed = interval - kChainDelay;
      const auto frame =
          ChainFrame{fields.applicationId, disclosed, chain.at(disclosed), fields.transmitter}
              .bytes();
      made.lines.push_back(lineAt(moment->time, {frame.begin(), frame.end()}));
      continue;
    }
    sender.last = plain;
    auto data = signer.sign(fields, interval);
    if (!data) return std::nullopt;
    made.lines.push_back(lineAt(moment->time, std::move(*data)));
  }
  std::ranges::stable_sort(made.lines, {}, &ScenarioLine::at);
  return made;
}

}  // namespace halvora
