// SPDX-License-Identifier: Apache-2.0
// Linked with the tests and the sources that scripts/mutate.py prepared: chooses the mutant, and on
// request writes down which test reaches which.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

// 512 sources with 4096 mutants each.
static constexpr std::size_t kMost = std::size_t{1} << 21;

static unsigned char reachedHere[kMost];
static std::FILE* reachedFile = nullptr;

extern "C" {
int halvoraMutant = 0;
unsigned char* halvoraReached = reachedHere;

// GoogleTest keeps what it captures in the system's folder for that, where a program with a fault
// may write nothing: under as long a name in the folder that it runs in.
int mkstemp(char* name) noexcept {
  constexpr std::string_view kSystems = P_tmpdir "/";
  if (std::string_view(name).starts_with(kSystems)) {
    std::memset(name, '/', kSystems.size());
    *name = '.';
  }
  return mkostemp(name, 0);
}
}

namespace {

// Of this process and those that it has waited for, not of what else the machine is busy with.
long long processorMilliseconds() {
  long long sum = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
      sum += time.tv_sec * 1000LL + time.tv_usec / 1000;
    }
  }
  return sum;
}

// A line a test: its name, how long it took, the numbers that it reached.
class Writer : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*test*/) override { begin_ = processorMilliseconds(); }

  void OnTestEnd(const testing::TestInfo& test) override {
    std::fprintf(reachedFile, "%s.%s\t%s\t%d\t%lld\t", test.test_suite_name(), test.name(),
                 test.file(), test.result()->Failed() ? 1 : 0, processorMilliseconds() - begin_);
    for (std::size_t at = 0; at < kMost; ++at) {
      const auto* next =
          static_cast<unsigned char*>(std::memchr(halvoraReached + at, 1, kMost - at));
      if (next == nullptr) break;
      at = static_cast<std::size_t>(next - halvoraReached);
      std::fprintf(reachedFile, "%zu ", at);
    }
    std::memset(halvoraReached, 0, kMost);
    std::fputc('\n', reachedFile);
    std::fflush(reachedFile);
  }

  long long begin_ = 0;
};

}  // namespace

// Before all other objects are made, some of which have mutants.
__attribute__((constructor(101))) static void choose() {
  if (const char* number = std::getenv("HALVORA_MUTANT")) halvoraMutant = std::atoi(number);
  const char* path = std::getenv("HALVORA_REACHED");
  if (path == nullptr) return;
  // What a child process of a test reaches counts too.
  void* shared = mmap(nullptr, kMost, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) std::abort();
  halvoraReached = static_cast<unsigned char*>(shared);
  reachedFile = std::fopen(path, "we");
  if (reachedFile == nullptr) std::abort();
}

static const bool isListening = [] {
  if (reachedFile != nullptr) testing::UnitTest::GetInstance()->listeners().Append(new Writer);
  return true;
}();
