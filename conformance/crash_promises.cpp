// SPDX-License-Identifier: Apache-2.0
#include "conformance/crash_promises.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace halvora::conformance {

namespace {

constexpr const char* kFirst = "first";
constexpr const char* kText = "text";
constexpr const char* kLast = "zLast";

/// So long that no system writes it in one go.
std::string textOfStep(std::int64_t step) {
  return std::string(40'000, static_cast<char>('a' + step % 26));
}

std::int64_t numberAt(const UserDefaults& defaults, const char* key) {
  const DefaultsValue* found = defaults.find(key);
  const auto* number = found != nullptr ? std::get_if<std::int64_t>(&found->storage) : nullptr;
  return number != nullptr ? *number : 0;
}

}  // namespace

void writeForEver(UserDefaults& defaults, const std::function<void()>& wrote) {
  for (std::int64_t step = numberAt(defaults, kFirst) + 1;; ++step) {
    defaults.set(kFirst, step);
    defaults.set(kText, textOfStep(step));
    defaults.set(kLast, step);
    defaults.synchronize();
    wrote();
  }
}

std::vector<BrokenPromise> checkDefaultsAfterCrashes(const CrashUnderTest& its, int deaths) {
  Promises promises("UserDefaults");
  std::int64_t before = 0;
  for (int death = 0; death < deaths; ++death) {
    its.killAWriter();
    const std::unique_ptr<UserDefaults> defaults = its.open();
    const std::int64_t step = numberAt(*defaults, kFirst);
    const std::string found = "step " + std::to_string(step) + " after " + std::to_string(before);
    promises.expect(step >= before, "a crash takes away nothing that had been there before", found);
    promises.expect(step > before, "what was made lasting outlives a crash", found);
    const DefaultsValue* text = defaults->find(kText);
    promises.expect(step == 0 || (text != nullptr && *text == DefaultsValue(textOfStep(step))),
                    "after a crash in a write a value is the whole old one or the whole new one",
                    found);
    promises.expect(numberAt(*defaults, kLast) == step,
                    "after a crash the values are those of one moment, and not some of another",
                    found + ", last " + std::to_string(numberAt(*defaults, kLast)));
    before = step;
  }
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
