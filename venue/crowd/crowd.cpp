// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <new>
#include <utility>

#include "adapters/virtual/virtual_run_loop.h"
#include "venue/crowd/cue_watch.h"
#include "venue/show/trace_shown.h"

namespace halvora {

namespace {

constexpr Duration kInstant{1};
// Faster than the fastest effect, which changes every 10 ms.
constexpr std::int64_t kWatchesPerSecond = 120;
// After all acts of a time.
constexpr std::uint64_t kLooking = UINT64_MAX;

Duration timeOfWatch(std::int64_t number) {
  return Duration((number * 1'000'000 + kWatchesPerSecond / 2) / kWatchesPerSecond);
}

double shareOf(std::uint64_t bits) { return static_cast<double>(bits >> 11) / 9007199254740992.0; }

std::uint8_t byteOf(float level) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(level, 0.0F, 1.0F) * 255.0F));
}

// Of chances that a phone draws beside those of its packets.
constexpr std::uint64_t kLateDraw = 0x4C415445;
constexpr std::uint64_t kLateByDraw = 0x4C415442;
constexpr std::uint64_t kLeaveDraw = 0x4C454156;
constexpr std::uint64_t kLeaveAtDraw = 0x4C454154;
constexpr std::uint64_t kSeedDraw = 0x53454544;

}  // namespace

struct Crowd::Block {
  Block() { queues.log.isKept = false; }

  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  CrowdGround ground{loop, queues};
};

struct Crowd::Member final : private LightObserver, private CrowdTorch::Observer {
  Member(CrowdGround& ground, const CrowdParts& parts, const CrowdSeat& seat, std::uint64_t seed)
      : phone(ground, parts, seat, seed) {
    phone.views().setFace(this);
    phone.torch().setObserver(this);
  }

  /// Whether its light may be another one than at the last watch.
  bool takeChange() {
    const bool isMoving = Light(phone.views()).isAnimating();
    const bool hasChanged = std::exchange(isTouched, isMoving);
    return phone.takeBacklightChange() || hasChanged;
  }
  void lightChanged() override { isTouched = true; }
  void lightEnds() override {}
  void torchChanged() override { isTouched = true; }

  CrowdPhone phone;
  bool isTouched = true;
  PhoneMeter meter;
  /// What it adds to the light of its section; nothing while it is closed.
  FieldLight field;
  std::uint32_t nextAct = 0;
  /// The first look that it has not shown.
  std::uint32_t nextLook = 0;
  bool wasLost = false;
  /// Null where none was asked for.
  std::unique_ptr<ProofTrial> trial;
};

enum class CrowdEvent : std::uint8_t { act, packet, leave, frame, watch };

// Something that happens to one phone, or a look at all of a block.
struct Crowd::Moment {
  Duration time{};
  /// Acts at one time come in the order of their lines, before what only looks.
  std::uint64_t order = 0;
  CrowdEvent kind{};
  std::uint32_t phone = 0;
  std::size_t at = 0;

  friend bool operator<(const Moment& one, const Moment& other) {
    return std::pair(one.time, one.order) < std::pair(other.time, other.order);
  }
};

struct Crowd::Plan {
  Duration begin{};
  /// The first time that belongs to the next plan.
  Duration end{};
  std::vector<Duration> frames;
  std::vector<Duration> watches;
  /// The pixel map on the air at each frame.
  std::vector<std::optional<MapMoment>> maps;
  /// What may be heard in the plan.
  std::size_t firstSent = 0;
  std::size_t endSent = 0;
};

// The blocks of one thread.
struct Crowd::Chunk {
  std::size_t first = 0;
  std::size_t end = 0;
  bool isGood = true;
  /// What its thread must not let out.
  std::exception_ptr failure = nullptr;
  std::vector<Moment> moments;
  std::vector<FrameCounts> frames;
  /// How each section's light has changed, watch by watch.
  std::vector<FieldLight> field;
  FlashCurve curve;
  PacketCounts packets;
  OpenLooks looks;
};

Crowd::Crowd(const Parts& parts, const CrowdSettings& settings)
    : parts_(parts), settings_(settings), sections_(parts.seats) {
  const auto looks = parts_.air.looks();
  nextLook_ =
      static_cast<std::uint32_t>(std::ranges::lower_bound(looks, settings_.from) - looks.begin());
  looks_ = OpenLooks(nextLook_);
  ScenarioSchedule schedule(parts_.scenario);
  while (const auto moment = schedule.next(settings_.end)) {
    if (!std::holds_alternative<PacketAction>(*moment->action)) acts_.push_back(*moment);
  }
  seatPhones();
}

Crowd::~Crowd() = default;

void Crowd::seatPhones() {
  const std::size_t count = parts_.seats.size();
  members_.resize(count);
  presences_.resize(count);
  blocks_.resize((count + kBlock - 1) / kBlock);
  const auto threads = static_cast<std::size_t>(std::max(parts_.workers.count(), 1));
  chunks_.resize(std::clamp<std::size_t>(blocks_.size(), 1, threads));
  std::vector<Task> tasks;
  for (std::size_t at = 0; at < chunks_.size(); ++at) {
    chunks_[at].first = blocks_.size() * at / chunks_.size();
    chunks_[at].end = blocks_.size() * (at + 1) / chunks_.size();
    tasks.emplace_back([this, &chunk = chunks_[at]] {
      for (std::size_t block = chunk.first; block < chunk.end; ++block) seatBlock(block);
    });
  }
  if (runAnyway(parts_.workers, tasks) == WorkEnd::failed) throw std::bad_alloc();
}

void Crowd::seatBlock(std::size_t block) {
  blocks_[block] = std::make_unique<Block>();
  for (std::size_t phone = block * kBlock; phone < endOf(block); ++phone) {
    members_[phone] =
        std::make_unique<Member>(blocks_[block]->ground, parts_.phones, parts_.seats[phone],
                                 mixed(settings_.seed, parts_.firstPhone + phone, kSeedDraw));
    if (parts_.proof != nullptr) {
      members_[phone]->trial = std::make_unique<ProofTrial>(*parts_.proof, members_[phone]->phone);
    }
    presences_[phone] = presenceOf(phone);
    const auto looks = parts_.air.looks();
    members_[phone]->nextLook = static_cast<std::uint32_t>(
        std::lower_bound(looks.begin(), looks.end(), presences_[phone].opens) - looks.begin());
  }
}

std::size_t Crowd::endOf(std::size_t block) const {
  return std::min((block + 1) * kBlock, members_.size());
}

Crowd::Presence Crowd::presenceOf(std::size_t phone) const {
  const std::size_t number = parts_.firstPhone + phone;
  const auto draw = [&](std::uint64_t what) {
    return shareOf(mixed(settings_.seed, number, what));
  };
  const auto within = [](Duration span, double share) {
    return Duration(static_cast<std::int64_t>(static_cast<double>(span.count()) * share));
  };
  Presence presence{{}, settings_.end + kSlice};
  if (draw(kLateDraw) < settings_.lateShare) {
    presence.opens = within(settings_.latest, draw(kLateByDraw));
  }
  if (draw(kLeaveDraw) < settings_.leaveShare) {
    const Duration stay = std::max(settings_.end - presence.opens, Duration::zero());
    presence.leaves = presence.opens + within(stay, draw(kLeaveAtDraw));
  }
  return presence;
}

bool Crowd::run() {
  Plan plan;
  makePlan(plan);
  lights_.assign(plan.frames.size() * members_.size(), {});
  std::vector<Task> tasks;
  for (Chunk& chunk : chunks_) {
    tasks.emplace_back([this, &plan, &chunk] { runChunk(plan, chunk); });
  }
  const WorkEnd end = runAnyway(parts_.workers, tasks);
  for (const Chunk& chunk : chunks_) {
    if (chunk.failure) std::rethrow_exception(chunk.failure);
  }
  if (end == WorkEnd::failed) throw std::bad_alloc();
  sumChunks(plan);
  now_ = slice_.end = plan.end;
  closeLooks(isOver() ? settings_.end + kSlice : now_ - LookDelays::kLongest);
  return std::ranges::all_of(chunks_, &Chunk::isGood);
}

void Crowd::sumChunks(const Plan& plan) {
  slice_ = {};
  for (std::size_t at = 0; at < plan.frames.size(); ++at) {
    CrowdFrame& frame = slice_.frames.emplace_back();
    frame.time = plan.frames[at];
    frame.lights = std::span(lights_).subspan(at * members_.size(), members_.size());
    frame.isShowOnAir = isShowOnAir(frame.time);
    if (plan.maps[at]) frame.mapFrame = plan.maps[at]->frame;
  }
  for (Chunk& chunk : chunks_) {
    for (std::size_t at = 0; at < plan.frames.size(); ++at) {
      slice_.frames[at].counts.add(chunk.frames[at]);
    }
    slice_.packets.add(chunk.packets);
    slice_.phoneCurve.take(std::exchange(chunk.curve, {}));
    looks_.add(chunk.looks);
  }
  sumField(plan);
}

const Broadcast* Crowd::onAir(Duration time) const {
  const auto sent = parts_.air.sent();
  auto after = std::upper_bound(sent.begin(), sent.end(), time,
                                [](Duration moment, const Sent& one) { return moment < one.time; });
  while (after != sent.begin()) {
    --after;
    if (const auto& broadcast = parts_.air.packet(*after).broadcast) return &*broadcast;
  }
  return nullptr;
}

bool Crowd::isShowOnAir(Duration time) const {
  const Broadcast* broadcast = onAir(time);
  return broadcast != nullptr && broadcast->mode != 0;
}

void Crowd::makePlan(Plan& plan) {
  plan.begin = now_;
  plan.end = std::min(now_ + kSlice, settings_.end + kInstant);
  for (;; ++nextFrame_) {
    const Duration time(static_cast<std::int64_t>(std::llround(
        static_cast<double>(nextFrame_) * 1e6 / static_cast<double>(settings_.framesPerSecond))));
    if (time >= plan.end) break;
    if (time >= settings_.from) planMap(plan, time);
  }
  for (; timeOfWatch(nextWatch_) < plan.end; ++nextWatch_) {
    const Duration time = timeOfWatch(nextWatch_);
    if (time >= settings_.from) plan.watches.push_back(time);
  }
  const auto sent = parts_.air.sent();
  const auto firstAt = [&](Duration time) {
    return static_cast<std::size_t>(
        std::lower_bound(sent.begin(), sent.end(), time,
                         [](const Sent& one, Duration moment) { return one.time < moment; }) -
        sent.begin());
  };
  plan.firstSent = firstAt(plan.begin - parts_.air.jitter());
  plan.endSent = firstAt(plan.end);
}

void Crowd::planMap(Plan& plan, Duration time) {
  plan.frames.push_back(time);
  const Broadcast* broadcast = onAir(time);
  auto& map = plan.maps.emplace_back();
  if (broadcast == nullptr || broadcast->pixelMapId == 0 || broadcast->mode == 0) return;
  const VenueTables::Block* const tables = tablesOf(*broadcast);
  if (tables != nullptr && tables->frameCount > 0) {
    map = MapMoment{tables, cueToken(*broadcast) % tables->frameCount};
  }
}

const VenueTables::Block* Crowd::tablesOf(const Broadcast& broadcast) {
  const auto [found, isNew] = tables_.try_emplace({broadcast.venueId, broadcast.pixelMapId});
  if (isNew) {
    found->second = parts_.tables.block(
        parts_.assets.pixelMapVideoURLForVenueId(broadcast.venueId, broadcast.pixelMapId));
  }
  return found->second;
}

void Crowd::runChunk(const Plan& plan, Chunk& chunk) {
  chunk.frames.assign(plan.frames.size(), {});
  chunk.field.assign(plan.watches.size() * sections_.count(), {});
  chunk.looks = OpenLooks(nextLook_);
  chunk.packets = {};
  try {
    for (std::size_t block = chunk.first; block < chunk.end; ++block) {
      chunk.isGood = runBlock(plan, block, chunk) && chunk.isGood;
    }
  } catch (...) {
    chunk.failure = std::current_exception();
  }
}

bool Crowd::runBlock(const Plan& plan, std::size_t block, Chunk& chunk) {
  collectMoments(plan, block, chunk);
  VirtualRunLoop& loop = blocks_[block]->loop;
  for (const Moment& moment : chunk.moments) {
    if (moment.kind != CrowdEvent::frame && moment.kind != CrowdEvent::watch) {
      if (!loop.actAt(moment.time, [&] { act(moment, loop.now(), chunk); })) return false;
      continue;
    }
    if (!loop.runUntil(moment.time)) return false;
    const bool isWatch = moment.kind == CrowdEvent::watch;
    for (std::size_t phone = block * kBlock; phone < endOf(block); ++phone) {
      (this->*(isWatch ? &Crowd::watch : &Crowd::look))(plan, moment.at, phone, chunk);
    }
  }
  const bool hasEnded = loop.runUntil(plan.end - kInstant);
  // A phone goes on after a turn that failed, but then it shows what no other one would.
  if (loop.failures() > 0) std::rethrow_exception(loop.firstFailure());
  for (std::size_t phone = block * kBlock; phone < endOf(block); ++phone) {
    if (members_[phone]->phone.hasFailed()) throw std::bad_alloc();
  }
  return hasEnded;
}

void Crowd::act(const Moment& moment, Duration now, Chunk& chunk) {
  Member& member = *members_[moment.phone];
  switch (moment.kind) {
    case CrowdEvent::act:
      return member.phone.act(*acts_[moment.at].action);
    case CrowdEvent::packet:
      return hear(moment.at, moment.phone, now, chunk);
    case CrowdEvent::leave:
      return member.phone.leave();
    case CrowdEvent::frame:
    case CrowdEvent::watch:
      return;
  }
}

// In the order in which they happen.
void Crowd::collectMoments(const Plan& plan, std::size_t block, Chunk& chunk) {
  std::vector<Moment>& moments = chunk.moments;
  moments.clear();
  for (std::size_t phone = block * kBlock; phone < endOf(block); ++phone) {
    collectMomentsOf(plan, phone, chunk);
  }
  for (std::size_t at = 0; at < plan.frames.size(); ++at) {
    moments.push_back({plan.frames[at], kLooking, CrowdEvent::frame, 0, at});
  }
  for (std::size_t at = 0; at < plan.watches.size(); ++at) {
    moments.push_back({plan.watches[at], kLooking, CrowdEvent::watch, 0, at});
  }
  std::stable_sort(moments.begin(), moments.end());
}

void Crowd::collectMomentsOf(const Plan& plan, std::size_t phone, Chunk& chunk) {
  Member& member = *members_[phone];
  const Presence& presence = presences_[phone];
  const auto number = static_cast<std::uint32_t>(phone);
  const auto inVenue = static_cast<std::uint32_t>(parts_.firstPhone + phone);
  std::vector<Moment>& moments = chunk.moments;
  const auto isNow = [&](Duration time) { return time >= plan.begin && time < plan.end; };

  for (; member.nextAct < acts_.size(); ++member.nextAct) {
    const ScenarioMoment& act = acts_[member.nextAct];
    const Duration time = act.time + presence.opens;
    if (time >= plan.end) break;
    moments.push_back({time, act.order, CrowdEvent::act, number, member.nextAct});
  }
  for (std::size_t at = plan.firstSent; at < plan.endSent; ++at) {
    const Sent& sent = parts_.air.sent()[at];
    const bool isOffered = presence.isOpen(sent.time);
    if (isOffered && isNow(sent.time) && isCounted(sent.time)) ++chunk.packets.offered;
    const auto arrival =
        parts_.air.arrival(at, inVenue, member.phone.seat().at, member.phone.seat().section);
    if (!arrival || !isOffered || !isNow(*arrival)) continue;
    moments.push_back({*arrival, parts_.air.packet(sent).order, CrowdEvent::packet, number, at});
  }
  if (isNow(presence.leaves)) {
    moments.push_back({presence.leaves, kLooking - 1, CrowdEvent::leave, number, 0});
  }
}

void Crowd::hear(std::size_t sent, std::size_t phone, Duration now, Chunk& chunk) {
  Member& member = *members_[phone];
  const Sent& one = parts_.air.sent()[sent];
  const AirPacket& packet = parts_.air.packet(one);
  if (!member.phone.isScanning()) return;
  if (isCounted(one.time)) ++chunk.packets.heard;
  // A phone that missed a look may be on the next one already, where that is the one before again.
  const CrowdPhone::Heard heard = member.phone.hear(packet.data);
  if (member.trial) member.trial->heard(packet.data, heard, now);
  if (heard == CrowdPhone::Heard::nothing || !packet.broadcast) return;
  // Who shows a look has no more use for the ones before it.
  for (; member.nextLook <= one.look; ++member.nextLook) {
    chunk.looks.add(member.nextLook, now - parts_.air.looks()[member.nextLook]);
    if (parts_.cues != nullptr) parts_.cues->add(member.nextLook, phone, now);
  }
}

void Crowd::look(const Plan& plan, std::size_t frame, std::size_t index, Chunk& chunk) {
  Member& member = *members_[index];
  const Duration time = plan.frames[frame];
  if (!presences_[index].isOpen(time)) return;
  const CrowdLight light = member.phone.light();
  lights_[frame * members_.size() + index] = light;
  FrameCounts& counts = chunk.frames[frame];
  ++counts.open;
  counts.showing += light.isShowing ? 1 : 0;
  counts.torches += light.isTorchOn ? 1 : 0;
  const bool isLost = parts_.truth != nullptr && time >= parts_.attackedFrom &&
                      !parts_.truth->showed(member.phone.look(), time - kLate, time);
  counts.lost += isLost ? 1 : 0;
  member.wasLost = member.wasLost || isLost;
  if (member.trial && isCounted(time)) {
    // A look that is held too long is the show's all the same.
    member.trial->look(time, isLost && !parts_.truth->showed(member.phone.look(), {}, time));
  }

  const std::optional<MapMoment>& map = plan.maps[frame];
  if (!map) return;
  const auto row = parts_.tables.rowOf(member.phone.seat().at);
  if (!row) return;
  const std::uint32_t word = map->tables->row(*row)[static_cast<std::size_t>(map->frame)];
  const Colour shown = member.phone.plainLight();
  std::uint32_t error = 0;
  for (const auto& [level, shift] : {std::pair(shown.red, 16), {shown.green, 8}, {shown.blue, 0}}) {
    const int difference = byteOf(level) - static_cast<int>(word >> shift & 255);
    error += static_cast<std::uint32_t>(difference * difference);
  }
  FrameCounts one;
  one.compared = 1;
  one.squaredError = one.worstError = error;
  one.worstPhone = static_cast<std::uint32_t>(parts_.firstPhone + index);
  counts.add(one);
}

std::uint64_t Crowd::phonesLost() const {
  return static_cast<std::uint64_t>(
      std::ranges::count_if(members_, [](const auto& one) { return one->wasLost; }));
}

std::optional<ProofTally> Crowd::proofTally() const {
  if (parts_.proof == nullptr) return std::nullopt;
  ProofTally tally;
  for (const auto& member : members_) tally.add(member->trial->tally());
  return tally;
}

void Crowd::watch(const Plan& plan, std::size_t tick, std::size_t phone, Chunk& chunk) {
  Member& member = *members_[phone];
  const Duration time = plan.watches[tick];
  const bool isOpen = presences_[phone].isOpen(time);
  const bool wasOpen = member.field.phones > 0;
  if (!isOpen && !wasOpen) return;
  if (isOpen == wasOpen && !member.takeChange()) return;
  FieldLight now;
  if (isOpen) {
    const PhoneLight light = phoneLightOf(member.phone.emission());
    member.meter.add(time, light, &chunk.curve);
    now = FieldLight::of(light);
  }
  FieldLight& change = chunk.field[tick * sections_.count() + sections_.of(phone)];
  change += now;
  change -= member.field;
  member.field = now;
}

void Crowd::sumField(const Plan& plan) {
  slice_.watches = plan.watches;
  slice_.field.resize(plan.watches.size() * sections_.count());
  for (const Chunk& chunk : chunks_) {
    for (std::size_t at = 0; at < slice_.field.size(); ++at) slice_.field[at] += chunk.field[at];
  }
}

FlashFigures Crowd::phoneFlashes() const {
  FlashFigures worst;
  for (const auto& member : members_) worst.take(member->meter.worst());
  return worst;
}

void Crowd::closeLooks(Duration before) {
  const auto looks = parts_.air.looks();
  for (; nextLook_ < looks.size() && looks[nextLook_] < before; ++nextLook_) {
    slice_.closedLooks.push_back(
        {looks[nextLook_], openAt(looks[nextLook_]), looks_.take(nextLook_)});
  }
}

std::uint64_t Crowd::openAt(Duration time) const {
  return static_cast<std::uint64_t>(
      std::count_if(presences_.begin(), presences_.end(),
                    [time](const Presence& presence) { return presence.isOpen(time); }));
}

}  // namespace halvora
