// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/live_command.h"

#include <memory>
#include <utility>
#include <variant>

#include "apps/halvora/live_options.h"
#include "apps/halvora/live_performance.h"
#include "venue/show/show_key.h"

namespace halvora {

namespace {

class LiveCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override { options_.describe(options); }

  CommandResult run(const Call& call) override {
    if (auto refusal = options_.read(call)) return std::move(*refusal);
    if (!call.outside.openLive) return failed("nothing can be played here");
    std::unique_ptr<MessageCode> code;
    if (options_.keyFile) {
      auto read = readShowCode(*options_.keyFile, call.outside.codes);
      if (auto* refusal = std::get_if<CommandResult>(&read)) return std::move(*refusal);
      code = std::get<std::unique_ptr<MessageCode>>(std::move(read));
    }
    const std::unique_ptr<LiveGround> ground = call.outside.openLive();
    return LivePerformance(options_, *ground, code.get(), call).play();
  }

 private:
  LiveOptions options_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeLiveCommand() { return std::make_unique<LiveCommand>(); }

}  // namespace halvora
