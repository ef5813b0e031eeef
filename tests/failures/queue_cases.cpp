// SPDX-License-Identifier: Apache-2.0
// Serial queues on threads of the system's own: what is accepted runs, in its order, whatever the
// tasks before it have thrown; what is refused never does. Workers: all tasks run, or none.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/standard/thread_queues.h"
#include "adapters/standard/thread_workers.h"
#include "tests/failures/trial.h"

namespace halvora {

namespace {

/// What became of one queue's tasks. Shared with them, and made without the heap.
struct Heard {
  static constexpr std::size_t kMost = 32;
  std::array<int, kMost> ran{};
  std::atomic<std::size_t> count{0};
  std::atomic<int> refusals{0};

  /// Only ever called by the queue's own thread.
  void note(int number) {
    ran[count] = number;
    ++count;
    count.notify_all();
  }
  void waitFor(std::size_t wanted) const {
    for (std::size_t now = count; now < wanted; now = count) count.wait(now);
  }
};

class Queues final : public Trial {
 public:
  void act() override {
    for (Line& line : lines_) open(line);
    for (int number = 0; number < 8; ++number) {
      for (Line& line : lines_) dispatch(line, number);
    }
    for (Line& line : lines_) line.heard.waitFor(line.accepted.size());
  }

  Verdict judge() override {
    bool isWhole = true;
    for (Line& line : lines_) {
      isWhole = isWhole && line.accepted.size() == 8 && line.heard.refusals == 0;
      if (!line.queue) open(line);
      if (!line.queue || !dispatch(line, 100)) return wrong("nothing is accepted afterwards");
      line.heard.waitFor(line.accepted.size());
    }
    // Goes through the end of its thread, so that nothing comes later.
    for (Line& line : lines_) {
      line.queue.reset();
      const std::span ran(line.heard.ran.data(), line.heard.count);
      if (!std::equal(ran.begin(), ran.end(), line.accepted.begin(), line.accepted.end())) {
        return wrong("what ran is not what was accepted");
      }
    }
    return isWhole ? whole() : refused();
  }

 private:
  struct Line {
    Line() { accepted.reserve(Heard::kMost); }
    std::unique_ptr<SerialQueue> queue;
    Heard heard;
    std::vector<int> accepted;
  };

  void open(Line& line) {
    try {
      line.queue = ThreadQueues().make("a label that is in no small string at all");
    } catch (const std::bad_alloc&) {
      // Whoever makes a queue is told.
    }
  }

  /// Each task takes memory, and every third one throws besides.
  static bool dispatch(Line& line, int number) {
    if (!line.queue) return false;
    try {
      const bool isAccepted = line.queue->dispatch([&heard = line.heard, number] {
        heard.note(number);
        try {
          const std::string text(1000, 'x');
          if (number % 3 == 2) throw std::runtime_error(text);
        } catch (const std::bad_alloc&) {
          ++heard.refusals;
          throw;
        }
      });
      if (isAccepted) line.accepted.push_back(number);
      return isAccepted;
    } catch (const std::bad_alloc&) {
      // A task of that size lies on the heap, and is the caller's to make.
      return false;
    }
  }

  std::array<Line, 2> lines_;
};

/// Tasks that take memory and catch nothing.
class WorkerTasks final : public Trial {
 public:
  void act() override { hasBegun_ = run(); }

  Verdict judge() override {
    const bool isWhole = hasBegun_ && failures_ == 0;
    const int wanted = hasBegun_ ? 1 : 0;
    for (const std::atomic<int>& count : ran_) {
      if (count != wanted) return wrong("a task ran " + std::to_string(count) + " times");
    }
    if (hasBegun_ && (end_ == WorkEnd::failed) != (failures_ > 0)) {
      return wrong("what a task has thrown is not told, or made up");
    }
    if (!run() || end_ != WorkEnd::done) return wrong("nothing runs afterwards");
    return isWhole ? whole() : refused();
  }

 private:
  bool run() {
    try {
      std::vector<Task> tasks;
      for (std::atomic<int>& count : ran_) {
        tasks.emplace_back([this, &count] {
          ++count;
          try {
            const std::string text(1000, 'x');
          } catch (const std::bad_alloc&) {
            ++failures_;
            throw;
          }
        });
      }
      end_ = workers_.run(tasks);
    } catch (const std::bad_alloc&) {
      end_ = WorkEnd::notBegun;
    }
    return end_ != WorkEnd::notBegun;
  }

  ThreadWorkers workers_{4};
  std::array<std::atomic<int>, 4> ran_{};
  std::atomic<int> failures_{0};
  WorkEnd end_ = WorkEnd::done;
  bool hasBegun_ = false;
};

template <class Made>
std::unique_ptr<Trial> make(const std::string& /*folder*/) {
  return std::make_unique<Made>();
}

constexpr FailureCase kCases[] = {
    {"thread-queues", {.threads = true}, make<Queues>},
    {"thread-workers", {.threads = true}, make<WorkerTasks>},
};

}  // namespace

std::span<const FailureCase> queueCases() { return kCases; }

}  // namespace halvora
