// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <optional>
#include <string>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/map_commands.h"
#include "apps/halvora/map_input.h"
#include "venue/base/written_files.h"
#include "venue/plan/seat_plan.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

class DrawCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    input_.describe(options);
    options.required("--out", out_, "the picture to write, a PNG");
    options.optional("--size", size_, "pixels of the plan's longer side (default: 1600)");
    options.footer("Draws all seats, a colour a section; seats that share a pixel are red.");
  }

  CommandResult run(const Call& call) override {
    const ExactJsonReader json;
    const auto size = decimal(size_, kLargestPlan);
    if (!size || *size < kSmallestPlan) {
      return unusable("--size must be " + std::to_string(kSmallestPlan) + " to " +
                      std::to_string(kLargestPlan) + ", not \"" + size_ + "\"");
    }
    if (const auto refusal = input_.read(json, call.outside.isInterrupted)) return *refusal;
    if (const auto refusal = checkOut()) return *refusal;
    const SeatMap map = seatMapOf(input_.document(), input_.strings(), json);
    if (map.isEmpty()) return failed(input_.file() + ": holds no seats");
    const Image plan = drawSeatPlan(map, static_cast<std::uint32_t>(*size));
    const std::string bytes = call.outside.encodePicture(plan);
    if (bytes.empty()) return failed("the picture cannot be made into a PNG");
    WrittenFiles files(call.outside.isInterrupted);
    const std::string path = absolutePath(out_);
    files.removeLeftovers(path);
    if (files.replace(path, bytes)) return done();
    return call.outside.isInterrupted ? interrupted() : unusable(out_ + ": cannot be written");
  }

 private:
  std::optional<CommandResult> checkOut() const {
    std::error_code error;
    if (out_.empty() || (fs::exists(out_, error) && !fs::is_regular_file(out_, error))) {
      return unusable(out_ + ": not a file (--out)");
    }
    if (fs::equivalent(out_, input_.file(), error)) {
      return unusable(out_ + ": is the map itself (--out)");
    }
    return std::nullopt;
  }

  MapInput input_;
  std::string out_;
  std::string size_ = "1600";
};

}  // namespace

std::unique_ptr<ToolCommand> makeMapDrawCommand() { return std::make_unique<DrawCommand>(); }

}  // namespace halvora
