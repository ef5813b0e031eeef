// SPDX-License-Identifier: Apache-2.0
// What a simulated phone believes of the air, on the command line. Owned by the command that has
// them; main thread.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "apps/halvora/command.h"
#include "halvora/air.h"

namespace halvora {

class CommandOptions;

class AirPolicyOptions {
 public:
  /// `name` is that of the option for the policy.
  void describe(CommandOptions& options, const std::string& name = "--air");
  /// The policy, or why it cannot be had.
  std::variant<AirOptions, CommandResult> read(const Outside& outside) const;
  /// As it was given.
  std::string text() const { return policy_.value_or("") + " " + authentication_.value_or(""); }

 private:
  std::string name_;
  std::optional<std::string> policy_;
  std::optional<std::string> keyFile_;
  std::optional<std::string> authentication_;
};

}  // namespace halvora
