// SPDX-License-Identifier: Apache-2.0
// Makes what a process asks of its system fail on demand: the n-th call of a kind, or all from the
// n-th on. The program that links this stands in for the C library's own functions, so whatever it
// links (FFmpeg, the picture libraries, the standard library) is met too. One plan at a time; the
// calls may come from any thread. Meant for a child process that ends after one plan.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace halvora::faults {

/// What can fail.
enum class Call : std::uint8_t {
  allocate,
  startThread,
  open,
  read,
  write,
  close,
  sync,
  rename,
  map,
  makeFolder,
};
inline constexpr std::size_t kCallCount = 10;

struct Kind {
  const char* name;
  Call call;
  /// What `errno` says; 0 for a call that does half of what it was asked to.
  int error;
  /// Whether it may be so for good. A signal, for one, interrupts a call and is over.
  bool mayLast;
};

/// All kinds, by call.
std::span<const Kind> kinds();
/// Null where there is none of that name.
const Kind* kindNamed(std::string_view name);

struct Plan {
  /// Null fails nothing, and only counts.
  const Kind* kind = nullptr;
  /// The first call to fail, from 1.
  std::uint64_t first = 1;
  bool isForGood = false;
  /// The process dies of SIGKILL in the midst of the call of that number: before it is done, or
  /// when half of it is. Then `kind` is null, and all calls count but those for memory.
  bool isDeadly = false;
};

/// From here on calls are counted and fail as planned.
void begin(const Plan& plan);
/// Calls that count for a deadly plan since the last `begin` are counted here too, for whoever
/// watches the process from outside. To be said before.
void showProgress(std::atomic<std::uint64_t>* progress);

/// From here on nothing fails any more.
void end();
/// The plan in force, or the last one.
const Plan& plan();
/// Calls since the last `begin`.
std::uint64_t calls(Call call);
/// How many of them failed.
std::uint64_t injected();

/// From here on, too, each call to `call` writes down who made it, as a number that is the same for
/// the same callers; the n-th at n - 1. Calls beyond the room are left out.
void survey(Call call, std::span<std::uint32_t> callers);

/// Where the first call failed: return addresses, innermost first. Kept only where it is wanted,
/// because looking costs more than failing. To be said once, before any plan, in either way.
void keepTraces(bool isWanted);
std::span<void* const> traceOfFirst();
/// The same of where this is called.
void traceHere(std::span<void*> trace);

/// From here on it is known what of the heap has been taken and not given back.
void beginLedger();
struct Leak {
  std::size_t blocks = 0;
  std::size_t bytes = 0;
  /// Of the oldest one, as above.
  std::span<void* const> trace;
};
/// What is out since then; ends the ledger. A system's own memory for threads does not count.
Leak endLedger();
/// Whether this build can tell at all: a sanitizer has a heap, and an eye for leaks, of its own.
bool hasLedger();

}  // namespace halvora::faults
