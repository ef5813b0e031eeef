// SPDX-License-Identifier: Apache-2.0
// Puts the shards of a crowd together: the report and the pictures are those that one run of all
// phones would have made. One thread.
#pragma once

#include <string>
#include <vector>

#include "venue/base/outside.h"

namespace halvora {

struct CrowdMergeRequest {
  /// In any order; all shards of one show, each once.
  std::vector<std::string> parts;
  /// Absolute; empty for no pictures.
  std::string out;
  /// Likewise.
  std::string coverage;
};

CommandResult mergeCrowd(const CrowdMergeRequest& request, const Call& call);

}  // namespace halvora
