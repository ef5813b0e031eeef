// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/linux/services/system_daemon.h"

#include <csignal>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvora {

SystemDaemon::SystemDaemon(Descriptors& descriptors, std::string program, Environment environment)
    : descriptors_(descriptors),
      program_(std::move(program)),
      environment_(std::move(environment)) {}

bool SystemDaemon::isInstalled() const { return access(program_.c_str(), X_OK) == 0; }

bool SystemDaemon::start() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  process_ = fork();
  if (process_ == 0) become(ends[1]);
  close(ends[1]);
  output_ = ends[0];
  watch_ = {descriptors_,
            descriptors_.watch(output_, DescriptorEvents::readable, [this] { read(); })};
  return process_ > 0;
}

void SystemDaemon::become(int output) const {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  for (const auto& [name, value] : environment_) setenv(name.c_str(), value.c_str(), 1);
  execl(program_.c_str(), program_.c_str(), nullptr);
  _exit(127);
}

void SystemDaemon::read() {
  char bytes[4096];
  const ssize_t size = ::read(output_, bytes, sizeof bytes);
  if (size > 0) {
    printed_.append(bytes, static_cast<std::size_t>(size));
  } else {
    watch_.end();
  }
}

void SystemDaemon::stop() {
  watch_.end();
  if (output_ >= 0) close(std::exchange(output_, -1));
  const pid_t process = std::exchange(process_, 0);
  if (process <= 0) return;
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

}  // namespace halvora
