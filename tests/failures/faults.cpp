// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/failures/ledger.h"

namespace halvora::faults {

namespace {

constexpr Kind kKinds[] = {
    {"memory", Call::allocate, ENOMEM, true},
    {"thread", Call::startThread, EAGAIN, true},
    {"open-EIO", Call::open, EIO, true},
    {"open-ENOSPC", Call::open, ENOSPC, true},
    {"open-EINTR", Call::open, EINTR, false},
    {"read-EIO", Call::read, EIO, true},
    {"read-EINTR", Call::read, EINTR, false},
    {"read-short", Call::read, 0, true},
    {"write-EIO", Call::write, EIO, true},
    {"write-ENOSPC", Call::write, ENOSPC, true},
    {"write-EINTR", Call::write, EINTR, false},
    {"write-short", Call::write, 0, true},
    {"close-EIO", Call::close, EIO, true},
    {"close-EINTR", Call::close, EINTR, false},
    {"fsync-EIO", Call::sync, EIO, true},
    {"fsync-ENOSPC", Call::sync, ENOSPC, true},
    {"fsync-EINTR", Call::sync, EINTR, false},
    {"rename-EIO", Call::rename, EIO, true},
    {"rename-ENOSPC", Call::rename, ENOSPC, true},
    {"mmap-ENOMEM", Call::map, ENOMEM, true},
    {"mkdir-ENOSPC", Call::makeFolder, ENOSPC, true},
};

constexpr std::size_t kTraceDepth = 48;
// Those of the harness among them.
constexpr std::size_t kCallerDepth = 16;

struct State {
  Plan plan;
  std::array<std::atomic<std::uint64_t>, kCallCount> calls{};
  std::atomic<std::uint64_t> injected{0};
  Call surveyed = Call::allocate;
  std::span<std::uint32_t> callers;
  std::atomic<std::uint64_t> outside{0};
  std::atomic<std::uint64_t>* progress = nullptr;
  bool keepsTraces = false;
  std::array<void*, kTraceDepth> trace{};
  int traceSize = 0;
};

State state;
std::atomic<bool> isArmed{false};

void noteCaller(std::uint64_t number) {
  std::array<void*, kCallerDepth> trace{};
  const int size = backtrace(trace.data(), static_cast<int>(trace.size()));
  std::uint64_t mixed = 0;
  for (int at = 0; at < size; ++at) {
    mixed = (mixed ^ reinterpret_cast<std::uintptr_t>(trace[static_cast<std::size_t>(at)])) *
            0x9E3779B97F4A7C15U;
  }
  state.callers[number - 1] = static_cast<std::uint32_t>(mixed >> 32);
}

constexpr Kind kHalf{"half", Call::write, 0, true};

[[noreturn]] void die() {
  kill(getpid(), SIGKILL);
  for (;;) pause();
}

/// What a call other than for memory is to do: null for all of it.
const Kind* deadly(Call call) {
  const std::uint64_t number = ++state.outside;
  if (state.progress != nullptr) ++*state.progress;
  if (!state.plan.isDeadly || number != state.plan.first) return nullptr;
  if (call == Call::write) return &kHalf;
  die();
}

/// Whether this call is to fail, or to do half only.
const Kind* failing(Call call) {
  if (!isArmed.load(std::memory_order_acquire)) return nullptr;
  const std::uint64_t number = ++state.calls[static_cast<std::size_t>(call)];
  if (call != Call::allocate) {
    if (const Kind* half = deadly(call)) return half;
  }
  if (call == state.surveyed && number <= state.callers.size()) noteCaller(number);
  const Plan& plan = state.plan;
  if (plan.kind == nullptr || plan.kind->call != call || number < plan.first) return nullptr;
  if (number > plan.first && !plan.isForGood) return nullptr;
  if (++state.injected == 1 && state.keepsTraces) {
    state.traceSize = backtrace(state.trace.data(), static_cast<int>(state.trace.size()));
  }
  return plan.kind;
}

/// The same for a call that knows no half.
bool fails(Call call) {
  const Kind* kind = failing(call);
  if (kind == nullptr || kind->error == 0) return false;
  errno = kind->error;
  return true;
}

/// Half of what was asked for, one at least.
std::size_t half(std::size_t size) { return size - size / 2; }

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Reading and writing: -1, half, or the whole.
template <class Transfer>
ssize_t transfer(Call call, std::size_t size, const Transfer& real) {
  const Kind* kind = failing(call);
  if (kind == nullptr) return real(size);
  if (kind->error == 0) {
    const ssize_t done = real(half(size));
    if (kind == &kHalf) die();
    return done;
  }
  errno = kind->error;
  return -1;
}

}  // namespace

std::span<const Kind> kinds() { return kKinds; }

const Kind* kindNamed(std::string_view name) {
  const auto* found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [name](const Kind& kind) { return name == kind.name; });
  return found == std::end(kKinds) ? nullptr : found;
}

void begin(const Plan& plan) {
  end();
  state.plan = plan;
  for (auto& count : state.calls) count = 0;
  state.outside = 0;
  state.injected = 0;
  state.traceSize = 0;
  isArmed.store(true, std::memory_order_release);
}

void survey(Call call, std::span<std::uint32_t> callers) {
  state.surveyed = call;
  state.callers = callers;
}

const Plan& plan() { return state.plan; }

void showProgress(std::atomic<std::uint64_t>* progress) { state.progress = progress; }

void end() { isArmed.store(false, std::memory_order_release); }

std::uint64_t calls(Call call) { return state.calls[static_cast<std::size_t>(call)]; }

std::uint64_t injected() { return state.injected; }

void keepTraces(bool isWanted) {
  // The first look loads a library.
  std::array<void*, 2> unused{};
  backtrace(unused.data(), 2);
  state.keepsTraces = isWanted;
  ledger::keepTraces(isWanted);
}

std::span<void* const> traceOfFirst() {
  return {state.trace.data(), static_cast<std::size_t>(state.traceSize)};
}

void traceHere(std::span<void*> trace) { backtrace(trace.data(), static_cast<int>(trace.size())); }

void beginLedger() { ledger::begin(); }

Leak endLedger() {
  const ledger::Balance balance = ledger::end();
  return {balance.blocks, balance.bytes, balance.trace};
}

bool hasLedger() { return HALVORA_OWNS_HEAP == 1; }

bool failsToAllocate() { return fails(Call::allocate); }

}  // namespace halvora::faults

// From here on: the C library's functions. Each keeps to what it says of itself when it fails.
using halvora::faults::Call;
using halvora::faults::failing;
using halvora::faults::fails;
using halvora::faults::Kind;
using halvora::faults::next;
using halvora::faults::transfer;

// NOLINTBEGIN: these names and shapes are not ours to choose.
extern "C" {

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) noexcept {
  static auto* const real = next<decltype(pthread_create)>("pthread_create");
  if (fails(Call::startThread)) return errno;
  const halvora::ledger::Pause systemsOwn;
  return real(thread, attributes, run, argument);
}

static mode_t modeOf(int flags, va_list rest) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

#define HALVORA_OPEN(name)                                   \
  int name(const char* path, int flags, ...) {               \
    static auto* const real = next<decltype(name)>(#name);   \
    va_list rest;                                            \
    va_start(rest, flags);                                   \
    const mode_t mode = modeOf(flags, rest);                 \
    va_end(rest);                                            \
    return fails(Call::open) ? -1 : real(path, flags, mode); \
  }
HALVORA_OPEN(open)
HALVORA_OPEN(open64)

#define HALVORA_OPEN_AT(name)                                        \
  int name(int folder, const char* path, int flags, ...) {           \
    static auto* const real = next<decltype(name)>(#name);           \
    va_list rest;                                                    \
    va_start(rest, flags);                                           \
    const mode_t mode = modeOf(flags, rest);                         \
    va_end(rest);                                                    \
    return fails(Call::open) ? -1 : real(folder, path, flags, mode); \
  }
HALVORA_OPEN_AT(openat)
HALVORA_OPEN_AT(openat64)

#define HALVORA_STREAM(name)                               \
  FILE* name(const char* path, const char* how) {          \
    static auto* const real = next<decltype(name)>(#name); \
    return fails(Call::open) ? nullptr : real(path, how);  \
  }
HALVORA_STREAM(fopen)
HALVORA_STREAM(fopen64)

#define HALVORA_TEMPORARY(name)                            \
  int name(char* path, int flags) {                        \
    static auto* const real = next<decltype(name)>(#name); \
    return fails(Call::open) ? -1 : real(path, flags);     \
  }
HALVORA_TEMPORARY(mkostemp)
HALVORA_TEMPORARY(mkostemp64)

DIR* opendir(const char* path) {
  static auto* const real = next<decltype(opendir)>("opendir");
  return fails(Call::open) ? nullptr : real(path);
}

// The descriptor is gone whatever a close says, as the kernel has it.
int close(int file) {
  static auto* const real = next<decltype(close)>("close");
  const Kind* kind = failing(Call::close);
  const int result = real(file);
  if (kind == nullptr) return result;
  errno = kind->error;
  return -1;
}

int fclose(FILE* file) {
  static auto* const real = next<decltype(fclose)>("fclose");
  const Kind* kind = failing(Call::close);
  const int result = real(file);
  if (kind == nullptr) return result;
  errno = kind->error;
  return EOF;
}

ssize_t read(int file, void* to, size_t size) {
  static auto* const real = next<decltype(read)>("read");
  return transfer(Call::read, size, [&](size_t most) { return real(file, to, most); });
}

#define HALVORA_READ_AT(name, Offset)                                                         \
  ssize_t name(int file, void* to, size_t size, Offset at) {                                  \
    static auto* const real = next<decltype(name)>(#name);                                    \
    return transfer(Call::read, size, [&](size_t most) { return real(file, to, most, at); }); \
  }
HALVORA_READ_AT(pread, off_t)
HALVORA_READ_AT(pread64, off64_t)

ssize_t write(int file, const void* from, size_t size) {
  static auto* const real = next<decltype(write)>("write");
  return transfer(Call::write, size, [&](size_t most) { return real(file, from, most); });
}

ssize_t writev(int file, const iovec* parts, int count) {
  static auto* const real = next<decltype(writev)>("writev");
  return transfer(Call::write, static_cast<size_t>(count),
                  [&](size_t most) { return real(file, parts, static_cast<int>(most)); });
}

#define HALVORA_WRITE_AT(name, Offset)                                                           \
  ssize_t name(int file, const void* from, size_t size, Offset at) {                             \
    static auto* const real = next<decltype(name)>(#name);                                       \
    return transfer(Call::write, size, [&](size_t most) { return real(file, from, most, at); }); \
  }
HALVORA_WRITE_AT(pwrite, off_t)
HALVORA_WRITE_AT(pwrite64, off64_t)

#define HALVORA_SYNC(name)                                 \
  int name(int file) {                                     \
    static auto* const real = next<decltype(name)>(#name); \
    return fails(Call::sync) ? -1 : real(file);            \
  }
HALVORA_SYNC(fsync)
HALVORA_SYNC(fdatasync)

int rename(const char* from, const char* to) noexcept {
  static auto* const real = next<decltype(rename)>("rename");
  return fails(Call::rename) ? -1 : real(from, to);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
  static auto* const real = next<decltype(renameat)>("renameat");
  return fails(Call::rename) ? -1 : real(fromFolder, from, toFolder, to);
}

#define HALVORA_MAP(name, Offset)                                                                \
  void* name(void* at, size_t size, int protection, int flags, int file, Offset from) noexcept { \
    static auto* const real = next<decltype(name)>(#name);                                       \
    return fails(Call::map) ? MAP_FAILED : real(at, size, protection, flags, file, from);        \
  }
HALVORA_MAP(mmap, off_t)
HALVORA_MAP(mmap64, off64_t)

int mkdir(const char* path, mode_t mode) noexcept {
  static auto* const real = next<decltype(mkdir)>("mkdir");
  return fails(Call::makeFolder) ? -1 : real(path, mode);
}

char* mkdtemp(char* path) noexcept {
  static auto* const real = next<decltype(mkdtemp)>("mkdtemp");
  return fails(Call::makeFolder) ? nullptr : real(path);
}

}  // extern "C"
// NOLINTEND
