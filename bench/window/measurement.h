// SPDX-License-Identifier: Apache-2.0
// What the benchmarks of the window measure with, and the benchmarks themselves: each runs in a
// process of its own, for start-up and memory are a process's, and answers with its figures by
// name. Main thread.
#pragma once

#include <QJsonObject>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace halvora {

struct BenchOptions {
  /// The demo's folder.
  std::string assets;
  std::chrono::seconds time{10};
  /// Nanoseconds of the steady clock, when the process was asked for; 0 for unknown.
  std::int64_t spawned = 0;
};

QJsonObject measureStart(const BenchOptions& options);
QJsonObject measureMemory(const BenchOptions& options);
QJsonObject measureLatency(const BenchOptions& options);
QJsonObject measureMotion(const BenchOptions& options);
QJsonObject measureStrobe(const BenchOptions& options);
/// A rectangle of plain QML that flickers as the strobe does.
QJsonObject measurePlainStrobe(const BenchOptions& options);
/// A window with nothing in it.
QJsonObject measureEmpty(const BenchOptions& options);
QJsonObject measureSteady(const BenchOptions& options);
QJsonObject measureWizard(const BenchOptions& options);

/// Of all threads, in seconds, so far.
double processorTime();
/// Of the calling thread.
double threadProcessorTime();
/// How often this thread has slept and was woken, so far.
long wakeUps();
/// Resident, in MiB: at present, and the most so far.
double residentMemory();
double largestResidentMemory();

/// Of values in any order; 0 for none. Quantile 0.5 is the median, 1 the largest.
double quantile(std::vector<double> values, double quantile);

}  // namespace halvora
