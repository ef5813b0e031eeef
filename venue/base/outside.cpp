// SPDX-License-Identifier: Apache-2.0
#include "venue/base/outside.h"

#include <utility>

namespace halvora {

namespace {

constexpr int kFailed = 1;
constexpr int kUnusable = 2;

}  // namespace

CommandResult done() { return {}; }

CommandResult unusable(std::string what) { return {kUnusable, std::move(what)}; }

CommandResult failed(std::string what) { return {kFailed, std::move(what)}; }

CommandResult interrupted() { return failed("interrupted"); }

CommandResult writeAll(std::string_view text, const Output& output) {
  return output(text) ? done() : failed("standard output cannot be written");
}

}  // namespace halvora
