// SPDX-License-Identifier: Apache-2.0
// Failure as a test: every case is put through every kind of failure, at the first call that can
// fail, the second, and so on, once and for good, in a child process each. `--help` says how to ask
// for less, for more, or for one of them again.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <map>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/failures/faults.h"
#include "tests/failures/kills.h"
#include "tests/failures/trial.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kHelp = R"(halvora_failures [options]
  --all            every call, not a sample of them (HALVORA_TEST_ALL=1 in the environment too)
  --case TEXT      only cases whose name contains this
  --kind TEXT      only kinds of failure whose name contains this
  --mode once|good only failures that come once, or that stay for good
  --n N            only the N-th call; says where it failed and what became of it
  --sample N       so many calls of a case, kind and mode at most (default: 40)
  --seed N         of the sample (default: 1)
  --kills N        so many deaths of each kind of work (default: 40; 1,000 with --all)
  --shard I/N      every N-th case, from the I-th on (from 0)
  --list           the cases and the kinds
)";

/// A hang, and nothing else, takes so long.
constexpr unsigned kPatienceSeconds = 120;
constexpr std::size_t kTraceDepth = 48;

struct Options {
  bool all = false;
  std::string onlyCase;
  std::string onlyKind;
  std::string onlyMode;
  std::uint64_t n = 0;
  std::size_t sample = 40;
  std::uint64_t seed = 1;
  std::optional<std::uint64_t> kills;
  std::size_t shard = 0;
  std::size_t shards = 1;
  bool isList = false;
};

/// Where a child writes down what became of it; shared with the parent.
struct Record {
  enum class Phase : std::uint8_t { making, acting, judging, ending, done };
  Phase phase = Phase::making;
  Outcome outcome = Outcome::wrong;
  bool hasThrown = false;
  std::uint64_t injected = 0;
  std::array<std::uint64_t, faults::kCallCount> calls{};
  faults::Leak leak;
  std::array<char, 600> why{};
  /// Of the first failure, of the oldest leak, and of the end where it was a crash.
  std::array<std::array<void*, kTraceDepth>, 3> traces{};
};

Record* record = nullptr;

/// Who made each allocation of a case, in the run without failures; shared with the parent.
constexpr std::size_t kMostSurveyed = 1 << 16;
std::span<std::uint32_t> callers;

template <class Shared>
Shared* shared(std::size_t count) {
  void* const memory = mmap(nullptr, sizeof(Shared) * count, PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return static_cast<Shared*>(memory);
}

void keepTrace(std::size_t which, std::span<void* const> trace) {
  std::copy_n(trace.begin(), std::min(trace.size(), kTraceDepth), record->traces[which].begin());
}

void note(const std::string& why) {
  std::snprintf(record->why.data(), record->why.size(), "%s", why.c_str());
}

extern "C" void crashed(int number) {
  faults::end();
  keepTrace(0, faults::traceOfFirst());
  std::array<void*, kTraceDepth> trace{};
  faults::traceHere(trace);
  keepTrace(2, trace);
  signal(number, SIG_DFL);
  raise(number);
}

void act(Trial& trial) {
  try {
    trial.act();
  } catch (const std::exception& error) {
    faults::end();
    record->hasThrown = true;
    note(std::string("an exception came out of it: ") + error.what());
  }
}

[[noreturn]] void runChild(const FailureCase& one, const faults::Plan& plan,
                           const std::string& folder, bool isShown) {
  alarm(kPatienceSeconds);
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  if (isShown) {
    faults::keepTraces(true);
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGALRM}) signal(number, crashed);
  } else {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
  }
  faults::beginLedger();
  {
    const auto trial = one.make(folder);
    record->phase = Record::Phase::acting;
    if (plan.kind == nullptr) faults::survey(faults::Call::allocate, callers);
    faults::begin(plan);
    act(*trial);
    faults::end();
    record->phase = Record::Phase::judging;
    record->injected = faults::injected();
    for (std::size_t at = 0; at < faults::kCallCount; ++at) {
      record->calls[at] = faults::calls(static_cast<faults::Call>(at));
    }
    keepTrace(0, faults::traceOfFirst());
    if (!record->hasThrown) {
      const Verdict verdict = trial->judge();
      record->outcome = verdict.outcome;
      note(verdict.why);
    }
    record->phase = Record::Phase::ending;
  }
  const faults::Leak leak = faults::endLedger();
  record->leak = leak;
  keepTrace(1, leak.trace);
  record->phase = Record::Phase::done;
  _exit(0);
}

/// What became of a child: nothing where all is well.
std::string flawOf(int status, std::size_t libraryLoses) {
  static constexpr const char* kPhases[] = {"while it was made", "while it acted",
                                            "while it was judged", "while it was destroyed", ""};
  if (WIFSIGNALED(status)) {
    const int number = WTERMSIG(status);
    const std::string what =
        number == SIGALRM ? "hangs" : std::string("dies of ") + strsignal(number);
    return what + " " + kPhases[static_cast<std::size_t>(record->phase)];
  }
  if (record->phase != Record::Phase::done) return "ended early";
  if (record->outcome == Outcome::wrong) return record->why.data();
  if (record->leak.bytes > libraryLoses) {
    return "leaks " + std::to_string(record->leak.bytes) + " bytes in " +
           std::to_string(record->leak.blocks) + " blocks";
  }
  return {};
}

/// A function and its line of source, by the tool that knows them.
std::string placeOf(void* address) {
  Dl_info info{};
  if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
  const auto offset = static_cast<char*>(address) - static_cast<char*>(info.dli_fbase) - 1;
  std::array<char, 1024> command{};
  std::snprintf(command.data(), command.size(), "addr2line -Cfe '%s' 0x%lx 2>/dev/null",
                info.dli_fname, static_cast<unsigned long>(offset));
  std::FILE* const tool = popen(command.data(), "r");
  if (tool == nullptr) return {};
  std::array<char, 400> text{};
  std::string place;
  while (std::fgets(text.data(), text.size(), tool) != nullptr) place += text.data();
  pclose(tool);
  // The name without what it takes, then file and line.
  const std::size_t end = place.find('\n');
  const std::string name = place.substr(0, std::min(place.find('('), end));
  const std::size_t slash = place.rfind('/');
  return name.substr(0, 70) + " " +
         (slash == std::string::npos ? "" : place.substr(slash + 1, place.size() - slash - 2));
}

/// Without the frames of the harness itself.
void printTrace(const char* title, const std::array<void*, kTraceDepth>& trace) {
  if (trace[0] == nullptr) return;
  std::printf("  %s\n", title);
  std::fflush(stdout);
  bool hasBegun = false;
  for (void* const address : trace) {
    if (address == nullptr) break;
    const std::string place = placeOf(address);
    const bool isOwn = place.find("faults.cpp") != std::string::npos ||
                       place.find("ledger.cpp") != std::string::npos ||
                       place.find("main.cpp") != std::string::npos;
    if (isOwn && hasBegun) break;
    hasBegun = !isOwn;
    if (!isOwn) std::printf("    %s\n", place.c_str());
  }
}

struct Tally {
  std::uint64_t calls = 0;
  std::uint64_t injected = 0;
  std::uint64_t whole = 0;
  std::uint64_t refused = 0;
  std::uint64_t wrong = 0;
};

class Runner {
 public:
  explicit Runner(const Options& options)
      : options_(options),
        root_((fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) /
              ("halvora-failures-" + std::to_string(getpid()))) {
    fs::create_directories(root_);
    prepareInputs(root_.string());
    record = new (shared<Record>(1)) Record;
    callers = {shared<std::uint32_t>(kMostSurveyed), kMostSurveyed};
    faults::keepTraces(false);
  }
  ~Runner() { fs::remove_all(root_); }
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  void run(const FailureCase& one) {
    warmUp(one);
    const std::string flaw = child(one, {});
    if (!flaw.empty()) return report(one, nullptr, false, 0, flaw + " (without any failure)");
    if (record->outcome != Outcome::whole) {
      return report(one, nullptr, false, 0, "is refused without any failure");
    }
    const auto calls = record->calls;
    for (const faults::Kind& kind : faults::kinds()) {
      const bool isMeant =
          kind.call == faults::Call::allocate ||
          (kind.call == faults::Call::startThread ? one.failing.threads : one.failing.files);
      const std::uint64_t most = calls[static_cast<std::size_t>(kind.call)];
      if (!isMeant || most == 0) continue;
      if (std::string_view(kind.name).find(options_.onlyKind) == std::string_view::npos) continue;
      if (options_.onlyMode != "good") inject(one, kind, false, most);
      if (options_.onlyMode != "once" && kind.mayLast) inject(one, kind, true, most);
    }
  }

  void kill(const KillCase& one) {
    const std::uint64_t deaths = options_.kills.value_or(options_.all ? 1000 : 40);
    const Kills kills = runKills(one, (root_ / "work").string(), deaths, options_.seed);
    tried_ += kills.deaths;
    std::printf("%-26s %llu deaths, %llu ends before one%s%s\n", one.name,
                static_cast<unsigned long long>(kills.deaths),
                static_cast<unsigned long long>(kills.ends), kills.flaw.empty() ? "" : ": ",
                kills.flaw.c_str());
    if (kills.flaw.empty()) return;
    ++failures_;
    std::printf(
        "FAILED %s, seed %llu: %s\n"
        "  again: halvora_failures --case %s --kills %llu --seed %llu\n",
        one.name, static_cast<unsigned long long>(options_.seed), kills.flaw.c_str(), one.name,
        static_cast<unsigned long long>(deaths), static_cast<unsigned long long>(options_.seed));
  }

  bool isGood() const { return failures_ == 0; }
  /// Failures and deaths that came.
  std::uint64_t tried() const { return tried_; }

  void print() const {
    std::printf("\n%-26s %-14s %8s %8s %8s %8s %8s\n", "case", "failure", "calls", "injected",
                "whole", "refused", "wrong");
    Tally sum;
    for (const auto& [key, tally] : tallies_) {
      const auto& [name, kind] = key;
      std::printf("%-26s %-14s %8llu %8llu %8llu %8llu %8llu\n", name.c_str(), kind.c_str(),
                  static_cast<unsigned long long>(tally.calls),
                  static_cast<unsigned long long>(tally.injected),
                  static_cast<unsigned long long>(tally.whole),
                  static_cast<unsigned long long>(tally.refused),
                  static_cast<unsigned long long>(tally.wrong));
      sum.injected += tally.injected;
      sum.whole += tally.whole;
      sum.refused += tally.refused;
      sum.wrong += tally.wrong;
    }
    std::printf(
        "note: %llu failures injected: %llu times all went on as without, %llu times it was "
        "refused in good order, %llu times neither\n",
        static_cast<unsigned long long>(sum.injected), static_cast<unsigned long long>(sum.whole),
        static_cast<unsigned long long>(sum.refused), static_cast<unsigned long long>(sum.wrong));
  }

 private:
  // What a process makes once and keeps is made before anybody counts.
  void warmUp(const FailureCase& one) {
    const std::string folder = emptyFolder();
    const auto trial = one.make(folder);
    trial->act();
    static_cast<void>(trial->judge());
  }

  std::string emptyFolder() {
    const fs::path folder = root_ / "work";
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder.string();
  }

  std::string child(const FailureCase& one, const faults::Plan& plan) {
    const std::string folder = emptyFolder();
    *record = {};
    std::fflush(stdout);
    const pid_t id = fork();
    if (id == 0) runChild(one, plan, folder, options_.n > 0);
    int status = 0;
    while (waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    return flawOf(status, one.libraryLoses);
  }

  std::vector<std::uint64_t> numbers(const faults::Kind& kind, std::uint64_t most) const {
    if (options_.n > 0) return {options_.n};
    std::vector<std::uint64_t> all(most);
    std::iota(all.begin(), all.end(), 1);
    if (options_.all || most <= options_.sample) return all;
    std::mt19937_64 random(options_.seed);
    std::shuffle(all.begin(), all.end(), random);
    // One of each caller comes before a second of any.
    if (kind.call == faults::Call::allocate) {
      std::set<std::uint32_t> met;
      std::stable_partition(all.begin(), all.end(), [&met](std::uint64_t n) {
        return n <= kMostSurveyed && met.insert(callers[n - 1]).second;
      });
    }
    all.resize(options_.sample);
    std::sort(all.begin(), all.end());
    return all;
  }

  void inject(const FailureCase& one, const faults::Kind& kind, bool isForGood,
              std::uint64_t most) {
    Tally& tally = tallies_[{one.name, kind.name}];
    tally.calls = most;
    for (const std::uint64_t n : numbers(kind, most)) {
      const std::string flaw = child(one, {&kind, n, isForGood});
      const bool isTried = record->injected > 0 || !flaw.empty();
      tally.injected += isTried;
      tried_ += isTried;
      if (!flaw.empty()) {
        ++tally.wrong;
        report(one, &kind, isForGood, n, flaw);
      } else if (record->injected > 0) {
        ++(record->outcome == Outcome::whole ? tally.whole : tally.refused);
      }
      if (options_.n > 0) {
        std::printf("%s, %s %s, n %llu: %s\n", one.name, kind.name, isForGood ? "for good" : "once",
                    static_cast<unsigned long long>(n),
                    !flaw.empty()                       ? flaw.c_str()
                    : record->injected == 0             ? "never came so far"
                    : record->outcome == Outcome::whole ? "as without it"
                                                        : "refused");
        printTrace("it failed at", record->traces[0]);
        printTrace("the oldest leak is of", record->traces[1]);
        printTrace("it ended at", record->traces[2]);
      }
    }
  }

  void report(const FailureCase& one, const faults::Kind* kind, bool isForGood, std::uint64_t n,
              const std::string& flaw) {
    ++failures_;
    if (kind == nullptr) {
      std::printf("FAILED %s: %s\n", one.name, flaw.c_str());
    } else {
      std::printf(
          "FAILED %s, %s %s, n %llu, seed %llu: %s\n"
          "  again: halvora_failures --case %s --kind %s --mode %s --n %llu\n",
          one.name, kind->name, isForGood ? "for good" : "once", static_cast<unsigned long long>(n),
          static_cast<unsigned long long>(options_.seed), flaw.c_str(), one.name, kind->name,
          isForGood ? "good" : "once", static_cast<unsigned long long>(n));
    }
    std::fflush(stdout);
  }

  const Options& options_;
  const fs::path root_;
  std::map<std::pair<std::string, std::string>, Tally> tallies_;
  std::uint64_t failures_ = 0;
  std::uint64_t tried_ = 0;
};

std::optional<Options> read(int count, char** words) {
  Options options;
  const char* const all = std::getenv("HALVORA_TEST_ALL");
  options.all = all != nullptr && std::string_view(all) == "1";
  for (int at = 1; at < count; ++at) {
    const std::string_view word = words[at];
    const auto value = [&]() -> std::string { return at + 1 < count ? words[++at] : ""; };
    if (word == "--all") {
      options.all = true;
    } else if (word == "--case") {
      options.onlyCase = value();
    } else if (word == "--kind") {
      options.onlyKind = value();
    } else if (word == "--mode") {
      options.onlyMode = value();
      if (options.onlyMode != "once" && options.onlyMode != "good") return std::nullopt;
    } else if (word == "--n") {
      options.n = std::strtoull(value().c_str(), nullptr, 10);
    } else if (word == "--sample") {
      options.sample = std::strtoull(value().c_str(), nullptr, 10);
    } else if (word == "--seed") {
      options.seed = std::strtoull(value().c_str(), nullptr, 10);
    } else if (word == "--kills") {
      options.kills = std::strtoull(value().c_str(), nullptr, 10);
    } else if (word == "--shard") {
      const std::string text = value();
      options.shard = std::strtoull(text.c_str(), nullptr, 10);
      options.shards = std::strtoull(text.substr(text.find('/') + 1).c_str(), nullptr, 10);
      if (options.shards == 0) return std::nullopt;
    } else if (word == "--list") {
      options.isList = true;
    } else {
      return std::nullopt;
    }
  }
  return options;
}

std::vector<FailureCase> allCases() {
  std::vector<FailureCase> all;
  for (const auto& some : {showCases(), tableCases(), storageCases(), queueCases(), seatCases(),
                           commandCases(), liveCases()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

int runAll(const Options& options) {
  const std::vector<FailureCase> cases = allCases();
  if (options.isList) {
    for (const KillCase& one : killCases()) std::printf("%s\n", one.name);
    for (const FailureCase& one : cases) std::printf("%s\n", one.name);
    for (const faults::Kind& kind : faults::kinds()) std::printf("  %s\n", kind.name);
    return 0;
  }
  Runner runner(options);
  std::size_t number = 0;
  std::size_t met = 0;
  const auto isMeant = [&](const char* name) {
    return number++ % options.shards == options.shard &&
           std::string_view(name).find(options.onlyCase) != std::string_view::npos;
  };
  for (const FailureCase& one : cases) {
    if (!isMeant(one.name)) continue;
    ++met;
    runner.run(one);
  }
  for (const KillCase& one : killCases()) {
    if (!isMeant(one.name)) continue;
    ++met;
    runner.kill(one);
  }
  runner.print();
  // Of many shards some have no case.
  const bool isShard = options.shards > 1;
  const bool hasTried = runner.tried() > 0 || (met == 0 && isShard);
  if (!hasTried)
    std::printf("FAILED: %s\n", met == 0 ? "no such case" : "nothing was made to fail");
  return runner.isGood() && hasTried ? 0 : 1;
}

}  // namespace
}  // namespace halvora

int main(int count, char** words) {
  const auto options = halvora::read(count, words);
  if (!options) {
    std::fputs(halvora::kHelp, stderr);
    return 2;
  }
  return halvora::runAll(*options);
}
