// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/linux/bus/private_bus.h"

#include <csignal>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvora {

namespace {

constexpr int kNoSuchProgram = 127;

std::string configuration(const std::string& address, const std::string& policy) {
  return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
         " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
         "<busconfig><listen>" +
         address +
         "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
         "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/>"
         "<allow user=\"*\"/></policy>" +
         policy + "</busconfig>\n";
}

// In the child: becomes the daemon, which says its address on `ready` when it listens.
[[noreturn]] void becomeDaemon(const std::string& configurationOption, int ready) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // It complains about limits that do not matter to a test.
  dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
  const std::string print = "--print-address=" + std::to_string(ready);
  execlp("dbus-daemon", "dbus-daemon", configurationOption.c_str(), "--nofork", "--nopidfile",
         "--nosyslog", print.c_str(), nullptr);
  _exit(kNoSuchProgram);
}

}  // namespace

bool PrivateBus::start(const std::string& policy) {
  const std::string option =
      "--config-file=" + folder_.write("bus.conf", configuration(address(), policy));
  unlink((folder_.path() + "/bus").c_str());
  int ready[2];
  if (pipe(ready) != 0) return false;
  process_ = fork();
  if (process_ == 0) becomeDaemon(option, ready[1]);
  close(ready[1]);
  // The pipe ends without a word if there is no such program, or it refuses to start.
  char first = 0;
  const bool isListening = read(ready[0], &first, 1) == 1;
  close(ready[0]);
  if (isListening) return true;
  int status = 0;
  waitpid(std::exchange(process_, 0), &status, 0);
  isMissing_ = WIFEXITED(status) && WEXITSTATUS(status) == kNoSuchProgram;
  return false;
}

void PrivateBus::stop() {
  const pid_t process = std::exchange(process_, 0);
  if (process <= 0) return;
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

}  // namespace halvora
