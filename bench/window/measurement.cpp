// SPDX-License-Identifier: Apache-2.0
#include "bench/window/measurement.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <fstream>

#include <sys/resource.h>

namespace halvora {

namespace {

constexpr double kKibiBytesAMebiByte = 1024;

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

rusage usage(int whose) {
  rusage used{};
  getrusage(whose, &used);
  return used;
}

}  // namespace

double processorTime() {
  const rusage used = usage(RUSAGE_SELF);
  return secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
}

double threadProcessorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

long wakeUps() { return usage(RUSAGE_THREAD).ru_nvcsw; }

double residentMemory() {
  std::ifstream file("/proc/self/statm");
  double pages = 0;
  file >> pages >> pages;
  return pages * 4 / kKibiBytesAMebiByte;
}

double largestResidentMemory() {
  return static_cast<double>(usage(RUSAGE_SELF).ru_maxrss) / kKibiBytesAMebiByte;
}

double quantile(std::vector<double> values, double quantile) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const double place = std::ceil(quantile * static_cast<double>(values.size())) - 1;
  return values[static_cast<std::size_t>(std::max(place, 0.0))];
}

}  // namespace halvora
