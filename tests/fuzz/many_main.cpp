// SPDX-License-Identifier: Apache-2.0
// Seeded random inputs for one target, as many as are asked for, without a fuzzer's bookkeeping:
// ten to a hundred times as many a second, for what is found by number. An input that breaks a rule
// or ends the process is written down.
//
//   halvora_fuzz_many TARGET EXECUTIONS [SEED]
//   halvora_fuzz_many packets NUMBER [SEED]     packets before a whole engine
//   halvora_fuzz_many --list
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "adapters/standard/stopwatch.h"
#include "tests/fuzz/judged_packets.h"
#include "tests/fuzz/kept_inputs.h"
#include "tests/support/source_tree.h"

namespace {

using halvora::FuzzBytes;

FuzzBytes current;
const char* nameOfFinding = nullptr;

// Also from within a signal.
void keepCurrent() {
  const int file = open(nameOfFinding, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file < 0) return;
  const bool isWritten = write(file, current.data(), current.size()) >= 0;
  close(file);
  constexpr char kSaid[] = "the input is in ";
  if (isWritten && write(STDERR_FILENO, kSaid, sizeof kSaid - 1) > 0) {
    static_cast<void>(!write(STDERR_FILENO, nameOfFinding, std::string_view(nameOfFinding).size()));
  }
}

void died(int number) {
  keepCurrent();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

int judge(std::uint64_t packets, std::uint64_t seed) {
  const halvora::Stopwatch watch;
  try {
    const std::uint64_t looks = halvora::judgePackets(packets, seed);
    std::printf("packets: %llu judged, seed %llu, %llu looks taken over, %.1f s, no findings\n",
                static_cast<unsigned long long>(packets), static_cast<unsigned long long>(seed),
                static_cast<unsigned long long>(looks), halvora::toSeconds(watch.elapsed()));
    return 0;
  } catch (const halvora::FuzzFailure& failure) {
    std::fprintf(stderr, "packets, seed %llu: not so: %s\n", static_cast<unsigned long long>(seed),
                 failure.what());
    return 1;
  }
}

int run(const halvora::FuzzTarget& target, std::uint64_t executions, std::uint64_t seed) {
  const std::string finding = std::string("finding-") + target.name;
  nameOfFinding = finding.c_str();
  for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL}) std::signal(number, died);
  auto mutator = mutatorOf(target, halvora::sourceTree() + "/tests/fuzz", seed);
  const halvora::Stopwatch watch;
  for (std::uint64_t done = 0; done < executions; ++done) {
    current = mutator.next();
    try {
      target.run(current);
    } catch (const halvora::FuzzFailure& failure) {
      std::fprintf(stderr, "%s, execution %llu of seed %llu: not so: %s\n", target.name,
                   static_cast<unsigned long long>(done), static_cast<unsigned long long>(seed),
                   failure.what());
      keepCurrent();
      return 1;
    }
  }
  std::printf("%s: %llu executions, seed %llu, %.1f s, no findings\n", target.name,
              static_cast<unsigned long long>(executions), static_cast<unsigned long long>(seed),
              halvora::toSeconds(watch.elapsed()));
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 2 && std::string_view(arguments[1]) == "--list") {
    for (const auto& target : halvora::fuzzTargets()) std::puts(target.name);
    return 0;
  }
  const std::uint64_t number = count >= 3 ? std::strtoull(arguments[2], nullptr, 10) : 0;
  const std::uint64_t seed = count > 3 ? std::strtoull(arguments[3], nullptr, 10) : 1;
  if (number > 0 && std::string_view(arguments[1]) == "packets") return judge(number, seed);
  const halvora::FuzzTarget* target = count >= 3 ? halvora::fuzzTargetOf(arguments[1]) : nullptr;
  if (target == nullptr) {
    std::fputs("halvora_fuzz_many TARGET EXECUTIONS [SEED], or --list\n", stderr);
    return 2;
  }
  return run(*target, number, seed);
}
