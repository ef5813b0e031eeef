// SPDX-License-Identifier: Apache-2.0
// What is put through failures: a trial is made while all is well, acts while something fails, and
// is judged when all is well again. A child process does that once, single-threaded but for the
// threads that the trial itself starts and ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace halvora {

enum class Outcome : std::uint8_t {
  /// As without the failure.
  whole,
  /// It was refused with a reason, and everything is as before, or it was counted and left out.
  refused,
  /// Neither: the test has failed.
  wrong,
};

struct Verdict {
  Outcome outcome = Outcome::whole;
  /// Of what is wrong.
  std::string why;
};

inline Verdict whole() { return {}; }
inline Verdict refused() { return {Outcome::refused, {}}; }
inline Verdict wrong(std::string why) { return {Outcome::wrong, std::move(why)}; }

class Trial {
 public:
  virtual ~Trial() = default;
  /// Between the failures' begin and end. Throws nothing.
  virtual void act() = 0;
  /// What came of it, when nothing fails any more.
  virtual Verdict judge() = 0;
};

/// What failures a trial is put through. Memory always.
struct Failing {
  bool threads = false;
  bool files = false;
};

struct FailureCase {
  const char* name;
  Failing failing;
  /// `folder` is empty and the trial's own; it lies beside what was prepared.
  std::unique_ptr<Trial> (*make)(const std::string& folder);
  /// Bytes that a library itself loses where its own start fails.
  std::size_t libraryLoses = 0;
};

/// All cases, by their subject.
std::span<const FailureCase> showCases();
std::span<const FailureCase> tableCases();
std::span<const FailureCase> storageCases();
std::span<const FailureCase> queueCases();
std::span<const FailureCase> seatCases();
std::span<const FailureCase> commandCases();
std::span<const FailureCase> liveCases();

/// Made once before all trials, and only read by them: a clip of 32 frames, 64 by 64, with an IDR
/// picture every fourth.
const std::string& preparedClip();
/// A folder with the map of venue 7, which has that clip as its pixel map 1.
const std::string& preparedAssets();
void prepareInputs(const std::string& folder);

}  // namespace halvora
