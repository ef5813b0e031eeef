// SPDX-License-Identifier: Apache-2.0
#include "venue/live/system_ground.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

#include <sched.h>
#include <unistd.h>

#include "adapters/linux/poll_run_loop.h"
#include "adapters/standard/system_clock.h"
#include "adapters/standard/thread_queues.h"
#include "venue/air/transmitter.h"
#include "venue/live/command_input.h"
#include "venue/live/datagram_socket.h"
#include "venue/live/key_mode.h"
#include "venue/live/osc_message.h"

namespace halvora {

namespace {

/// A signal between a look at who wants an end and the wait would go unnoticed otherwise.
constexpr Duration kLongestWait = milliseconds(200);

// A busy machine must not make a cue late, so a player goes before all that is not urgent where the
// system lets it; where not, it plays all the same. What it starts has no such right, and the
// system itself sees to it that nothing urgent has a processor for itself.
void goFirst() {
  constexpr int kLeast = 1;
  const sched_param urgent{kLeast};
  static_cast<void>(sched_setscheduler(0, SCHED_RR | SCHED_RESET_ON_FORK, &urgent));
}

// A terminal that is closed, which is said by SIGHUP, takes nothing from the hall, whatever gives
// the commands; a show is ended by who means to. Where there is no terminal somebody means that
// signal.
void outliveTerminal() {
  if (isatty(STDIN_FILENO) == 0 && isatty(STDOUT_FILENO) == 0 && isatty(STDERR_FILENO) == 0) return;
  std::signal(SIGHUP, SIG_IGN);
}

class SystemGround final : public LiveGround {
 public:
  explicit SystemGround(MakeAdvertiser makeAdvertiser)
      : makeAdvertiser_(std::move(makeAdvertiser)) {}

  RunLoop& loop() override { return loop_; }
  Date date() const override { return clock_.now(); }
  // A turn that failed for want of memory was counted, and the show goes on.
  void runUntil(const std::function<bool()>& isDone) override {
    while (!loop_.runUntil(isDone, kLongestWait)) {
    }
  }

  void readLines(CommandSource source) override {
    source_ = std::move(source);
    listen(&SystemGround::takeLines);
  }

  bool readKeys(CommandSource source) override {
    if (isatty(STDIN_FILENO) == 0) return false;
    keyMode_.emplace();
    if (!keyMode_->isSet()) return false;
    source_ = std::move(source);
    listen(&SystemGround::takeKeys);
    return true;
  }

  std::string readOsc(const std::string& address, std::uint16_t port,
                      CommandSource source) override {
    if (!readsOsc()) return "this halvora was built without OSC (liblo)";
    return osc_.open(address, port, kLargestOsc, loop_,
                     [line = std::move(source.line)](std::span<const std::uint8_t> datagram) {
                       for (const std::string& command : commandsOfOsc(datagram)) line(command);
                     });
  }

  std::unique_ptr<OlaInput> openOla(unsigned universe, OlaListener listener) override {
    return OlaInput::open(universe, loop_, std::move(listener));
  }

  std::unique_ptr<SerialQueue> makeQueue() override { return queues_.make("halvora.journal"); }
  std::unique_ptr<Advertiser> makeAdvertiser() override {
    return makeAdvertiser_ ? makeAdvertiser_(loop_, loop_) : nullptr;
  }

 private:
  using Take = void (SystemGround::*)(std::string_view bytes);

  void listen(Take take) {
    watch_ = {loop_,
              loop_.watch(STDIN_FILENO, DescriptorEvents::readable, [this, take] { read(take); })};
  }

  // The descriptor may be shared, so it stays as it is: it is read only when something is there.
  void read(Take take) {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count > 0) return (this->*take)({bytes.data(), static_cast<std::size_t>(count)});
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    watch_.end();
    lines_.end(source_.line);
    source_.ended();
  }

  void takeLines(std::string_view bytes) { lines_.add(bytes, source_.line); }
  void takeKeys(std::string_view bytes) {
    for (const char key : bytes) {
      if (const std::string_view command = commandOfKey(key); !command.empty()) {
        source_.line(command);
      }
    }
  }

  MakeAdvertiser makeAdvertiser_;
  SystemWallClock clock_;
  PollRunLoop loop_;
  ThreadQueues queues_;
  std::optional<KeyMode> keyMode_;
  CommandLines lines_;
  CommandSource source_;
  DescriptorWatch watch_;
  DatagramSocket osc_;
};

}  // namespace

std::unique_ptr<LiveGround> openSystemGround(MakeAdvertiser makeAdvertiser) {
  goFirst();
  outliveTerminal();
  return std::make_unique<SystemGround>(std::move(makeAdvertiser));
}

}  // namespace halvora
