// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/air_options.h"

#include <utility>

#include "apps/halvora/command_line.h"
#include "venue/show/show_key.h"

namespace halvora {

void AirPolicyOptions::describe(CommandOptions& options, const std::string& name) {
  name_ = name;
  options.optional(name, policy_,
                   "what is believed of the air: exact, whatever is newer; or guarded, what goes "
                   "on from what was heard",
                   "exact");
  options.optional("--show-key", keyFile_,
                   "file with the show's key, 32 hexadecimal digits that only its owner may read");
  options.optional("--authentication", authentication_,
                   "what the key is for: prefer, to ignore what has no good tag for ten seconds "
                   "after what has; or require, always",
                   "prefer");
}

std::variant<AirOptions, CommandResult> AirPolicyOptions::read(const Outside& outside) const {
  AirOptions air;
  const std::string policy = policy_.value_or("exact");
  if (policy != "exact" && policy != "guarded") {
    return unusable(name_ + " must be exact or guarded, not \"" + policy + "\"");
  }
  if (policy == "guarded") air.policy = AirPolicy::guarded;
  const std::string authentication = authentication_.value_or("prefer");
  if (authentication != "prefer" && authentication != "require") {
    return unusable("--authentication must be prefer or require, not \"" + authentication + "\"");
  }
  if (!keyFile_) {
    if (authentication_) return unusable("--authentication needs a --show-key");
    return air;
  }
  auto key = readShowKey(*keyFile_);
  if (auto* refusal = std::get_if<CommandResult>(&key)) return std::move(*refusal);
  if (outside.codes == nullptr) return failed("this build has no cipher for show keys");
  air.showKey = std::get<ShowKey>(key);
  air.authentication =
      authentication == "require" ? Authentication::require : Authentication::prefer;
  return air;
}

}  // namespace halvora
