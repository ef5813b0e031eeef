// SPDX-License-Identifier: Apache-2.0
// Processes that die of SIGKILL in the midst of their work, again and again in one folder: at a
// call that was chosen, half of it done where it writes, or at any moment after it, from outside.
// After each death it is looked at what is to be seen, and now and then one lives to its end.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

namespace halvora {

struct KillCase {
  const char* name;
  /// In a process of its own: goes on with the work from what it finds, to its end. Says in `said`
  /// what is sure to last.
  void (*work)(const std::string& folder, std::atomic<std::uint64_t>& said);
  /// What is to be seen: what is wrong with it, or nothing. `done` says how far the work is.
  std::string (*look)(const std::string& folder, std::uint64_t& done);
  /// `done` is a set of bits, and not a number.
  bool isSet;
  /// `done` when all is done; the next death is then in an empty folder. 0 for never.
  std::uint64_t all;
};

std::span<const KillCase> killCases();

struct Kills {
  std::uint64_t deaths = 0;
  /// Processes that came to their end before they were killed.
  std::uint64_t ends = 0;
  /// What is wrong, and with which death; empty for nothing.
  std::string flaw;
};

/// So many deaths, the moments by the seed.
Kills runKills(const KillCase& one, const std::string& folder, std::uint64_t deaths,
               std::uint64_t seed);

}  // namespace halvora
