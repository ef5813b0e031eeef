// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_part.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "seats/seat_names.h"
#include "venue/crowd/crowd_record.h"

namespace halvora {

namespace {

// The last character counts the forms that parts had.
constexpr std::string_view kMagic = "HVCROWD2";
constexpr char kHead = 'H';
constexpr char kSlice = 'S';
constexpr char kEnd = 'E';
/// A kind and the length of what follows.
constexpr std::size_t kRecordHead = 5;
/// Of a slice: a quarter of a second has fewer.
constexpr std::size_t kMostFrames = 64;
constexpr std::size_t kMostWatches = 64;
constexpr std::uint64_t kMostPhones = 10'000'000;
constexpr std::int64_t kMostTime = std::int64_t{2} * 24 * 3600 * 1'000'000;
/// A phone's light at its brightest.
constexpr std::int64_t kWholeLight = 65535;
constexpr std::int64_t kFarthest = std::int64_t{1} << 52;

// Low byte first.
void writeNumber(std::span<char> bytes, std::uint64_t value) {
  for (std::size_t at = 0; at < bytes.size(); ++at) bytes[at] = static_cast<char>(value >> at * 8);
}
std::uint64_t readNumber(std::span<const char> bytes) {
  std::uint64_t value = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    value |= std::uint64_t{static_cast<unsigned char>(bytes[at])} << at * 8;
  }
  return value;
}

void writeTime(PackedWriter& writer, Duration time) { writer.signedNumber(time.count()); }
Duration readTime(PackedReader& reader) { return Duration(reader.signedNumber(kMostTime)); }

std::uint32_t readWord(PackedReader& reader) {
  return static_cast<std::uint32_t>(reader.number(UINT32_MAX));
}

int readInt(PackedReader& reader, int most) {
  return static_cast<int>(reader.number(static_cast<std::uint64_t>(most)));
}

void writeFigure(PackedWriter& writer, const FlashFigure& figure) {
  writer.number(static_cast<std::uint64_t>(figure.flashes));
  writeTime(writer, figure.at);
}
FlashFigure readFigure(PackedReader& reader) {
  const int flashes = readInt(reader, 1000);
  return {flashes, readTime(reader)};
}

constexpr std::array kCounts = {&FrameCounts::open,       &FrameCounts::showing,
                                &FrameCounts::torches,    &FrameCounts::compared,
                                &FrameCounts::worstError, &FrameCounts::worstPhone,
                                &FrameCounts::lost};
constexpr std::array kField = {&FieldLight::red, &FieldLight::green, &FieldLight::blue,
                               &FieldLight::phones};

void writeLight(PackedWriter& writer, const CrowdLight& light) {
  writer.byte(light.red);
  writer.byte(light.green);
  writer.byte(light.blue);
  writer.byte(static_cast<std::uint8_t>((light.isShowing ? 1 : 0) | (light.isTorchOn ? 2 : 0)));
}
CrowdLight readLight(PackedReader& reader) {
  CrowdLight light;
  light.red = reader.byte();
  light.green = reader.byte();
  light.blue = reader.byte();
  const std::uint8_t flags = reader.byte();
  light.isShowing = (flags & 1) != 0;
  light.isTorchOn = (flags & 2) != 0;
  return light;
}

// What has changed since the frame before: so many the same, so many others, and so on.
void writeLights(PackedWriter& writer, std::span<const CrowdLight> lights,
                 std::vector<CrowdLight>& before) {
  for (std::size_t at = 0; at < lights.size();) {
    std::size_t other = at;
    while (other < lights.size() && lights[other] == before[other]) ++other;
    std::size_t end = other;
    while (end < lights.size() && lights[end] != before[end]) ++end;
    writer.number(other - at);
    writer.number(end - other);
    for (std::size_t phone = other; phone < end; ++phone) writeLight(writer, lights[phone]);
    at = end;
  }
  std::ranges::copy(lights, before.begin());
}

void writeCurve(PackedWriter& writer, const FlashCurve& curve) {
  const auto& points = curve.points();
  const auto isAny = [](const FlashCurve::Point& point) {
    return point.general > 0 || point.red > 0;
  };
  writer.number(static_cast<std::uint64_t>(std::ranges::count_if(points, isAny)));
  for (std::size_t at = 0; at < points.size(); ++at) {
    if (!isAny(points[at])) continue;
    writer.number(at);
    writer.byte(points[at].general);
    writer.byte(points[at].red);
  }
}

void readCurve(PackedReader& reader, FlashCurve& curve) {
  for (std::size_t left = reader.count(3); left > 0; --left) {
    const Duration time =
        FlashCurve::kStep *
        static_cast<std::int64_t>(reader.number(kMostTime / FlashCurve::kStep.count()));
    const int general = reader.byte();
    const int red = reader.byte();
    if (!reader.isGood()) return;
    curve.addGeneral(time, time, general);
    curve.addRed(time, time, red);
  }
}

void writeCues(PackedWriter& writer, std::span<const CueTally> cues) {
  writer.number(cues.size());
  for (const CueTally& cue : cues) {
    writer.text(cue.name);
    writeTime(writer, cue.begin);
    writer.number(cue.sections.size());
    for (const auto& [section, delays] : cue.sections) {
      writer.text(section);
      writer.number(delays.size());
      for (const auto& [delay, phones] : delays) {
        writer.number(delay);
        writer.number(phones);
      }
    }
  }
}

CueTally readCue(PackedReader& reader) {
  CueTally cue;
  cue.name = reader.text();
  cue.begin = readTime(reader);
  for (std::size_t sections = reader.count(2); sections > 0; --sections) {
    CueTally::Delays& delays = cue.sections[std::string(reader.text())];
    for (std::size_t left = reader.count(2); left > 0; --left) {
      const auto delay = static_cast<std::uint16_t>(reader.number(CueTally::kNever));
      delays[delay] += readWord(reader);
    }
  }
  return cue;
}

}  // namespace

CrowdPartWriter::CrowdPartWriter(const std::string& path) : file_(path) {}

void CrowdPartWriter::write(std::string_view bytes) {
  stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  print_ = fingerprintOf(bytes, print_);
}

bool CrowdPartWriter::writeRecord(char kind) {
  const std::string& bytes = record_.bytes();
  if (bytes.size() > UINT32_MAX) return false;
  std::array<char, kRecordHead> head{kind};
  writeNumber(std::span(head).subspan(1), bytes.size());
  write({head.data(), head.size()});
  write(bytes);
  record_.clear();
  std::array<char, sizeof print_> print{};
  writeNumber(print, print_);
  stream_.write(print.data(), print.size());
  return stream_.good();
}

bool CrowdPartWriter::begin(const CrowdPartHead& head) {
  if (!file_.begin()) return false;
  stream_.open(file_.part(), std::ios::binary | std::ios::trunc);
  write(kMagic);
  sections_ = FieldSections(head.places);
  isForSheet_ = head.isForSheet;
  tiles_ = SheetTiles(frameCountOf(head.from, head.end, head.framesPerSecond));
  lights_.assign(head.places.size(), {});
  PackedWriter& to = record_;
  to.number(head.shard.number);
  to.number(head.shard.of);
  to.number(head.facts.size());
  for (const std::string& fact : head.facts) to.text(fact);
  to.number(head.seats);
  to.number(head.phones);
  for (const int value : {head.width, head.height, head.framesPerSecond}) {
    to.number(static_cast<std::uint64_t>(value));
  }
  writeTime(to, head.from);
  writeTime(to, head.end);
  to.number(head.packetsSent);
  to.byte(head.isForSheet ? 1 : 0);
  to.number(head.rogues.size());
  for (const Rogue& rogue : head.rogues) {
    to.text(kindOf(rogue));
    writeTime(to, rogue.at);
  }
  to.number(sections_.count());
  for (std::size_t at = 0; at < sections_.count(); ++at) to.text(sections_.name(at));
  to.number(head.places.size());
  for (std::size_t at = 0; at < head.places.size(); ++at) {
    to.signedNumber(head.places[at].at.x);
    to.signedNumber(head.places[at].at.y);
    to.number(sections_.of(at));
  }
  to.byte(head.coverage ? 1 : 0);
  if (head.coverage) {
    writeTime(to, head.coverage->pause);
    for (const std::uint32_t silence : head.coverage->silences) to.number(silence);
  }
  return writeRecord(kHead);
}

bool CrowdPartWriter::add(const CrowdSlice& slice) {
  PackedWriter& to = record_;
  writeTime(to, slice.end);
  to.number(slice.frames.size());
  for (const CrowdFrame& frame : slice.frames) {
    writeTime(to, frame.time);
    for (const auto count : kCounts) to.number(frame.counts.*count);
    to.number(frame.counts.squaredError);
    to.byte(frame.isShowOnAir ? 1 : 0);
    to.signedNumber(frame.mapFrame.value_or(-1));
    const bool isWanted = !isForSheet_ || tiles_.wantsNext();
    tiles_.next(isWanted);
    if (isWanted) writeLights(to, frame.lights, lights_);
  }
  to.number(slice.closedLooks.size());
  for (const ClosedLook& look : slice.closedLooks) {
    writeTime(to, look.time);
    to.number(look.phones);
    const auto counts = look.delays.counts();
    to.number(static_cast<std::uint64_t>(
        std::ranges::count_if(counts, [](std::uint32_t count) { return count > 0; })));
    for (std::size_t at = 0; at < counts.size(); ++at) {
      if (counts[at] == 0) continue;
      to.number(at);
      to.number(counts[at]);
    }
  }
  to.number(slice.watches.size());
  for (std::size_t at = 0; at < slice.watches.size(); ++at) {
    writeTime(to, slice.watches[at]);
    const auto changes = std::span(slice.field).subspan(at * sections_.count(), sections_.count());
    to.number(static_cast<std::uint64_t>(std::ranges::count_if(
        changes, [](const FieldLight& change) { return change != FieldLight{}; })));
    for (std::size_t section = 0; section < changes.size(); ++section) {
      if (changes[section] == FieldLight{}) continue;
      to.number(section);
      for (const auto level : kField) to.signedNumber(changes[section].*level);
    }
  }
  to.number(slice.packets.offered);
  to.number(slice.packets.heard);
  writeCurve(to, slice.phoneCurve);
  return writeRecord(kSlice);
}

bool CrowdPartWriter::finish(const CrowdEnd& end) {
  writeFigure(record_, end.phoneFlashes.general);
  writeFigure(record_, end.phoneFlashes.red);
  record_.number(end.phonesLost);
  record_.signedNumber(end.spent.count());
  writeCues(record_, end.cues);
  if (!writeRecord(kEnd)) return false;
  stream_.close();
  return stream_.good() && file_.place();
}

CrowdPartReader::CrowdPartReader(std::string path) : path_(std::move(path)) {}

std::variant<std::unique_ptr<CrowdPartReader>, std::string> CrowdPartReader::open(
    const std::string& path) {
  std::unique_ptr<CrowdPartReader> part(new CrowdPartReader(path));
  std::error_code error;
  const bool isFile = std::filesystem::is_regular_file(path, error);
  if (isFile) part->left_ = std::filesystem::file_size(path, error);
  if (isFile && !error) part->stream_.open(path, std::ios::binary);
  if (!part->stream_.is_open()) return path + ": cannot be read";
  std::array<char, kMagic.size()> magic{};
  if (!part->read(magic) || std::string_view(magic.data(), magic.size()) != kMagic) {
    return path + ": is no part of a crowd that this version writes";
  }
  char kind = 0;
  bool isGood = part->readRecord(kind) && kind == kHead;
  if (isGood) {
    PackedReader reader(part->record_);
    isGood = part->readHead(reader);
  }
  if (!isGood) return path + ": is damaged; run its shard again";
  return part;
}

bool CrowdPartReader::read(std::span<char> bytes) {
  if (bytes.size() > left_) return false;
  left_ -= bytes.size();
  if (!stream_.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return false;
  print_ = fingerprintOf({bytes.data(), bytes.size()}, print_);
  return true;
}

bool CrowdPartReader::readPrint() {
  const std::uint64_t before = print_;
  std::array<char, sizeof print_> print{};
  const bool isSame = read(print) && readNumber(print) == before;
  print_ = before;
  return isSame;
}

bool CrowdPartReader::readRecord(char& kind) {
  std::array<char, kRecordHead> head{};
  if (!read(head)) return false;
  kind = head[0];
  const std::uint64_t size = readNumber(std::span(head).subspan(1));
  if (size > left_) return false;
  record_.resize(size);
  return read(record_) && readPrint();
}

bool CrowdPartReader::readHead(PackedReader& reader) {
  head_.shard.number = reader.number(CrowdShard::kMost);
  head_.shard.of = reader.number(CrowdShard::kMost);
  for (std::size_t left = reader.count(1); left > 0; --left) {
    head_.facts.emplace_back(reader.text());
  }
  head_.seats = static_cast<std::size_t>(reader.number(kMostPhones));
  head_.phones = static_cast<std::size_t>(reader.number(kMostPhones));
  head_.width = readInt(reader, 8192);
  head_.height = readInt(reader, 8192);
  head_.framesPerSecond = readInt(reader, 120);
  head_.from = readTime(reader);
  head_.end = readTime(reader);
  head_.packetsSent = reader.number();
  head_.isForSheet = reader.byte() != 0;
  for (std::size_t left = reader.count(2); left > 0; --left) {
    const auto rogue = rogueOf(std::string(reader.text()) + "@0");
    const Duration at = readTime(reader);
    if (!rogue) return false;
    head_.rogues.push_back({rogue->row, at});
  }
  const bool isPossible = head_.shard.number >= 1 && head_.shard.number <= head_.shard.of &&
                          head_.width > 0 && head_.height > 0 && head_.framesPerSecond > 0 &&
                          head_.from >= Duration::zero() && head_.from <= head_.end;
  return isPossible && readPlaces(reader) && reader.isDone();
}

bool CrowdPartReader::readPlaces(PackedReader& reader) {
  for (std::size_t left = reader.count(1); left > 0; --left) {
    head_.sections.emplace_back(reader.text());
  }
  const std::size_t places = reader.count(3);
  const auto& shard = head_.shard;
  if (places != shard.end(head_.phones) - shard.first(head_.phones)) return false;
  head_.places.reserve(places);
  for (std::size_t at = 0; at < places; ++at) {
    const SeatPosition seat{reader.signedNumber(kFarthest), reader.signedNumber(kFarthest)};
    const std::size_t section = reader.number();
    if (section >= head_.sections.size()) return false;
    const std::string& name = head_.sections[section];
    head_.places.push_back({seat, name, isStandingName(name)});
  }
  if (reader.byte() != 0) {
    Coverage& coverage = head_.coverage.emplace();
    coverage.pause = readTime(reader);
    coverage.silences.resize(places);
    for (std::uint32_t& silence : coverage.silences) silence = readWord(reader);
  }
  tiles_ = SheetTiles(frameCountOf(head_.from, head_.end, head_.framesPerSecond));
  lights_.assign(places, {});
  field_.assign(head_.sections.size(), {});
  return reader.isGood();
}

CrowdPartReader::Next CrowdPartReader::next() {
  char kind = 0;
  if (!readRecord(kind)) return Next::bad;
  PackedReader reader(record_);
  if (kind == kSlice && readSlice(reader)) return Next::slice;
  if (kind == kEnd && readEnd(reader) && left_ == 0) return Next::end;
  return Next::bad;
}

bool CrowdPartReader::readSlice(PackedReader& reader) {
  slice_ = {};
  frameLights_.clear();
  slice_.end = readTime(reader);
  const std::size_t frames = reader.count(kCounts.size());
  if (frames > kMostFrames) return false;
  std::vector<bool> isLit;
  for (std::size_t at = 0; at < frames && reader.isGood(); ++at) {
    readFrame(reader, slice_.frames.emplace_back());
    isLit.push_back(!head_.isForSheet || tiles_.wantsNext());
    tiles_.next(isLit.back());
    if (!isLit.back()) continue;
    readLights(reader);
    frameLights_.insert(frameLights_.end(), lights_.begin(), lights_.end());
  }
  for (std::size_t left = reader.count(3); left > 0 && reader.isGood(); --left) readLook(reader);
  const std::size_t watches = reader.count(2);
  if (watches > kMostWatches) return false;
  slice_.field.resize(watches * head_.sections.size());
  for (std::size_t at = 0; at < watches && reader.isGood(); ++at) readField(reader);
  slice_.packets.offered = reader.number();
  slice_.packets.heard = reader.number();
  readCurve(reader, slice_.phoneCurve);
  if (!reader.isDone()) return false;
  std::span<const CrowdLight> lit = frameLights_;
  for (std::size_t at = 0; at < frames; ++at) {
    if (!isLit[at]) continue;
    slice_.frames[at].lights = lit.first(lights_.size());
    lit = lit.subspan(lights_.size());
  }
  return true;
}

void CrowdPartReader::readFrame(PackedReader& reader, CrowdFrame& frame) {
  frame.time = readTime(reader);
  for (const auto count : kCounts) frame.counts.*count = readWord(reader);
  frame.counts.squaredError = reader.number();
  frame.isShowOnAir = reader.byte() != 0;
  const auto map = reader.signedNumber(std::numeric_limits<int>::max());
  if (map >= 0) frame.mapFrame = static_cast<int>(map);
  if (frame.counts.showing > frame.counts.open || frame.counts.open > lights_.size() ||
      (frame.counts.compared > 0 && frame.counts.worstPhone >= head_.phones)) {
    reader.fail();
  }
}

void CrowdPartReader::readLights(PackedReader& reader) {
  for (std::size_t at = 0; at < lights_.size() && reader.isGood();) {
    at += reader.number(lights_.size() - at);
    const std::size_t end = at + reader.number(lights_.size() - at);
    for (; at < end && reader.isGood(); ++at) lights_[at] = readLight(reader);
  }
}

void CrowdPartReader::readLook(PackedReader& reader) {
  ClosedLook& look = slice_.closedLooks.emplace_back();
  look.time = readTime(reader);
  look.phones = reader.number(lights_.size());
  const auto counts = look.delays.counts();
  for (std::size_t left = reader.count(2); left > 0 && reader.isGood(); --left) {
    const std::uint64_t step = reader.number(counts.size() - 1);
    counts[step] = readWord(reader);
  }
}

void CrowdPartReader::readField(PackedReader& reader) {
  const std::size_t first = slice_.watches.size() * head_.sections.size();
  slice_.watches.push_back(readTime(reader));
  const auto most = kWholeLight * static_cast<std::int64_t>(lights_.size());
  for (std::size_t left = reader.count(5); left > 0; --left) {
    const std::size_t section = reader.number();
    if (section >= field_.size()) return reader.fail();
    FieldLight& light = field_[section];
    for (const auto level : kField) {
      const std::int64_t change = reader.signedNumber(most);
      slice_.field[first + section].*level = change;
      light.*level += change;
      if (light.*level < 0 || light.*level > most) return reader.fail();
    }
  }
}

bool CrowdPartReader::readEnd(PackedReader& reader) {
  end_.phoneFlashes = {readFigure(reader), readFigure(reader)};
  end_.phonesLost = reader.number(kMostPhones);
  end_.spent = Duration(reader.signedNumber(kMostTime * 1000));
  for (std::size_t left = reader.count(3); left > 0 && reader.isGood(); --left) {
    end_.cues.push_back(readCue(reader));
  }
  return reader.isDone();
}

}  // namespace halvora
