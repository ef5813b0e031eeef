// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/kills.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>

#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/failures/faults.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

/// A hang, and nothing else, takes so long.
constexpr unsigned kPatienceSeconds = 120;

struct Shared {
  std::atomic<std::uint64_t> progress{0};
  std::atomic<std::uint64_t> said{0};
  std::uint64_t done = 0;
  std::array<char, 400> why{};
};

class Killer {
 public:
  Killer(const KillCase& one, const std::string& folder, std::uint64_t seed)
      : one_(one), folder_(folder), random_(seed) {
    void* const page =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    shared_ = new (page) Shared;
  }
  ~Killer() { munmap(shared_, sizeof(Shared)); }
  Killer(const Killer&) = delete;
  Killer& operator=(const Killer&) = delete;

  Kills run(std::uint64_t deaths) {
    Kills kills;
    begin();
    // How many calls there are to die in, by a process that lives.
    const bool isWhole = live() && look() && (one_.all == 0 || isAllDone());
    mostCalls_ = shared_->progress;
    begin();
    while (isWhole && flaw_.empty() && kills.deaths < deaths) {
      const bool hasDied = isFromOutside() ? dieFromOutside() : dieAtACall();
      ++(hasDied ? kills.deaths : kills.ends);
      if (!look()) break;
      if (!isAllDone()) continue;
      if (!live() || !look()) break;
      if (const std::string left = leftover(); !left.empty()) flaw_ = left + " stays for ever";
      begin();
    }
    if (!isWhole && flaw_.empty()) flaw_ = "does not come to its end without being killed";
    if (flaw_.empty() && one_.all != 0 && live() && look() && !isAllDone()) {
      flaw_ = "does not go on after it was killed";
    }
    if (flaw_.empty() && !leftover().empty()) flaw_ = leftover() + " stays";
    if (!flaw_.empty()) flaw_ = "death " + std::to_string(kills.deaths) + ": " + flaw_;
    kills.flaw = flaw_;
    return kills;
  }

 private:
  void begin() {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    known_ = 0;
    shared_->said = 0;
  }

  bool isFromOutside() { return random_() % 2 == 0; }

  template <class Do>
  pid_t inChild(const Do& act) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child != 0) return child;
    alarm(kPatienceSeconds);
    act();
    _exit(0);
  }
  /// Whether it died of the kill; a flaw where of anything else.
  bool ends(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) return true;
    if (WIFSIGNALED(status)) flaw_ = "dies of signal " + std::to_string(WTERMSIG(status));
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0) flaw_ = "ends with a failure";
    return false;
  }

  pid_t start(const faults::Plan& plan) {
    shared_->progress = 0;
    return inChild([&] {
      faults::showProgress(&shared_->progress);
      faults::begin(plan);
      one_.work(folder_, shared_->said);
      faults::end();
    });
  }
  bool live() { return !ends(start({})) && flaw_.empty(); }
  bool dieAtACall() {
    faults::Plan plan;
    plan.first = 1 + random_() % mostCalls_;
    plan.isDeadly = true;
    return ends(start(plan));
  }
  // After so many calls, and then wherever it is by the time the signal comes.
  bool dieFromOutside() {
    const std::uint64_t calls = random_() % mostCalls_;
    volatile std::uint64_t turns = random_() % 20'000;
    const pid_t child = start({});
    while (shared_->progress < calls) {
      siginfo_t info{};
      if (waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
          info.si_pid == child) {
        break;
      }
      sched_yield();
    }
    while (turns > 0) turns = turns - 1;
    kill(child, SIGKILL);
    return ends(child);
  }

  bool isAllDone() const { return one_.all != 0 && known_ == one_.all; }

  /// Looks at what is to be seen, in a process of its own.
  bool look() {
    if (!flaw_.empty()) return false;
    shared_->why[0] = '\0';
    const pid_t child = inChild([this] {
      std::uint64_t done = 0;
      const std::string why = one_.look(folder_, done);
      shared_->done = done;
      std::snprintf(shared_->why.data(), shared_->why.size(), "%s", why.c_str());
    });
    if (ends(child)) flaw_ = "looking at it was killed";
    if (flaw_.empty()) flaw_ = shared_->why.data();
    const std::uint64_t done = shared_->done;
    const std::uint64_t said = shared_->said;
    const bool isBack = one_.isSet ? (known_ & ~done) != 0 : done < known_;
    const bool isLost = one_.isSet ? (said & ~done) != 0 : done < said;
    if (flaw_.empty() && isBack) flaw_ = "goes back behind what was there";
    if (flaw_.empty() && isLost) flaw_ = "lacks what was said to last";
    known_ = done;
    return flaw_.empty();
  }

  std::string leftover() const {
    for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
      const std::string name = entry.path().filename().string();
      if (name.find(".new-") != std::string::npos) return name;
    }
    return {};
  }

  const KillCase& one_;
  const std::string folder_;
  std::mt19937_64 random_;
  Shared* shared_ = nullptr;
  std::uint64_t mostCalls_ = 0;
  std::uint64_t known_ = 0;
  std::string flaw_;
};

}  // namespace

Kills runKills(const KillCase& one, const std::string& folder, std::uint64_t deaths,
               std::uint64_t seed) {
  return Killer(one, folder, seed).run(deaths);
}

}  // namespace halvora
