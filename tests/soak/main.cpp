// SPDX-License-Identifier: Apache-2.0
// Phones through seeded faults, for as many hours as wanted, in virtual time.
//
//   halvora_soak [--seed N] [--first K] [--phones P] [--hours H]
//       phones K to K + P - 1 of the seed, each for H hours; a finding is replayed by its own
//       number: --first K --phones 1
//   halvora_soak [--seed N] [--hours H] --log FILE --until PHONE_HOURS
//       goes on where the file's last line for the seed and the hours ends, a line for each batch
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "adapters/standard/stopwatch.h"
#include "tests/soak/heap_use.h"
#include "tests/soak/soak_phone.h"

namespace {

using halvora::HeapUse;
using halvora::heapUse;

/// What the process makes once and keeps is made by the first phones.
constexpr std::uint64_t kWarmPhones = 5;
constexpr std::uint64_t kWarmHours = 100;
/// What an idle engine may hold after any hour of its life, together with its phone. It is 80 to
/// 130 blocks, by what was seen last: over a thousand hours no growth fits in between.
constexpr HeapUse kMostIdle{24 << 10, 160};
/// The hours that the log compares with all.
constexpr std::uint64_t kFirstHours = 10;

struct Options {
  std::uint64_t seed = 1;
  std::uint64_t first = 0;
  std::uint64_t phones = 10;
  std::uint64_t hours = 24;
  std::uint64_t until = 0;
  std::string log;
};

struct Sums {
  std::uint64_t phones = 0;
  std::uint64_t hours = 0;
  std::uint64_t turns = 0;
  HeapUse first;
  HeapUse most;
};

void widen(HeapUse& most, const HeapUse& use) {
  most.bytes = std::max(most.bytes, use.bytes);
  most.blocks = std::max(most.blocks, use.blocks);
}

void complain(const Options& options, std::uint64_t phone, std::uint64_t hour,
              const std::string& what) {
  std::fprintf(
      stderr,
      "not so: %s, in hour %llu of phone %llu\nagain: %s --seed %llu --first %llu "
      "--phones 1 --hours %llu\n",
      what.c_str(), static_cast<unsigned long long>(hour), static_cast<unsigned long long>(phone),
      "halvora_soak", static_cast<unsigned long long>(options.seed),
      static_cast<unsigned long long>(phone), static_cast<unsigned long long>(options.hours));
}

// False after a finding.
bool livePhone(const Options& options, std::uint64_t number, Sums& sums) {
  const HeapUse before = heapUse();
  const auto held = [&before] {
    const HeapUse now = heapUse();
    return HeapUse{now.bytes - before.bytes, now.blocks - before.blocks};
  };
  {
    halvora::SoakPhone phone(options.seed * 1'000'003 + number);
    for (std::uint64_t hour = 0; hour < options.hours; ++hour) {
      if (!phone.liveAnHour()) {
        complain(options, number, hour, phone.complaint());
        return false;
      }
      const HeapUse use = held();
      widen(sums.most, use);
      if (hour < kFirstHours) widen(sums.first, use);
      if (use.bytes > kMostIdle.bytes || use.blocks > kMostIdle.blocks) {
        complain(options, number, hour,
                 "memory is flat: " + std::to_string(use.bytes) + " bytes in " +
                     std::to_string(use.blocks) + " blocks");
        return false;
      }
    }
    sums.turns += phone.turns();
  }
  ++sums.phones;
  sums.hours += options.hours;
  if (held().blocks == 0) return true;
  complain(options, number, options.hours,
           "a phone gives everything back: " + std::to_string(held().blocks) + " blocks stay");
  return false;
}

// What a process takes once and for good, before any phone is asked whether it gives all back: so
// one that is lived again alone is asked as it was among the others.
void warmUp(const Options& options) {
  for (std::uint64_t number = 0; number < kWarmPhones; ++number) {
    halvora::SoakPhone phone(~options.seed - number);
    for (std::uint64_t hour = 0; hour < kWarmHours && phone.liveAnHour(); ++hour) continue;
  }
}

std::string lineOf(const Options& options, const Sums& sums, double seconds) {
  std::ostringstream line;
  line << "seed " << options.seed << " hours " << options.hours << " first " << options.first
       << " phones " << sums.phones << " phone-hours " << sums.hours << " turns " << sums.turns
       << " seconds " << seconds << " bytes " << sums.first.bytes << " then " << sums.most.bytes
       << " blocks " << sums.first.blocks << " then " << sums.most.blocks;
  return line.str();
}

bool live(const Options& options) {
  const halvora::Stopwatch watch;
  Sums sums;
  for (std::uint64_t at = 0; at < options.phones; ++at) {
    if (!livePhone(options, options.first + at, sums)) return false;
  }
  const std::string line = lineOf(options, sums, halvora::toSeconds(watch.elapsed()));
  std::puts(line.c_str());
  std::fflush(stdout);
  if (!options.log.empty()) std::ofstream(options.log, std::ios::app) << line << std::endl;
  return true;
}

// The first phone that the log does not have.
std::uint64_t nextPhone(const Options& options) {
  std::ifstream log(options.log);
  std::uint64_t next = 0;
  for (std::string line; std::getline(log, line);) {
    unsigned long long seed = 0;
    unsigned long long hours = 0;
    unsigned long long first = 0;
    unsigned long long phones = 0;
    const int read = std::sscanf(line.c_str(), "seed %llu hours %llu first %llu phones %llu", &seed,
                                 &hours, &first, &phones);
    if (read != 4 || seed != options.seed || hours != options.hours) continue;
    next = std::max<std::uint64_t>(next, first + phones);
  }
  return next;
}

bool liveUntil(Options options) {
  options.phones = 10;
  for (options.first = nextPhone(options); options.first * options.hours < options.until;
       options.first += options.phones) {
    if (!live(options)) return false;
  }
  std::printf("%llu phone-hours of seed %llu\n",
              static_cast<unsigned long long>(options.first * options.hours),
              static_cast<unsigned long long>(options.seed));
  return true;
}

bool read(int count, char** arguments, Options& options) {
  struct Number {
    std::string_view name;
    std::uint64_t Options::*value;
  };
  constexpr Number kNumbers[] = {{"--seed", &Options::seed},
                                 {"--first", &Options::first},
                                 {"--phones", &Options::phones},
                                 {"--hours", &Options::hours},
                                 {"--until", &Options::until}};
  for (int at = 1; at + 1 < count; at += 2) {
    const std::string_view name = arguments[at];
    const auto* number = std::ranges::find(kNumbers, name, &Number::name);
    if (number != std::end(kNumbers)) {
      options.*(number->value) = std::strtoull(arguments[at + 1], nullptr, 10);
    } else if (name == "--log") {
      options.log = arguments[at + 1];
    } else {
      return false;
    }
  }
  return count % 2 == 1 && options.hours > 0;
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  if (!read(count, arguments, options)) {
    std::fputs(
        "halvora_soak [--seed N] [--first K] [--phones P] [--hours H]\n"
        "             [--log FILE] [--until PHONE_HOURS]\n",
        stderr);
    return 2;
  }
  warmUp(options);
  return (options.until > 0 ? liveUntil(options) : live(options)) ? 0 : 1;
}
