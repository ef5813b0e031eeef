// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <string_view>

#include "platform/image/picture_decoder.h"
#include "tools/halvora/commands.h"

int main(int argumentCount, char** arguments) {
  const halvora::CommandResult result = halvora::runCommand(
      argumentCount, arguments, halvora::PictureDecoder(), [](std::string_view text) {
        return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
      });
  if (!result.error.empty()) std::fprintf(stderr, "halvora: %s\n", result.error.c_str());
  if (std::fflush(stdout) == 0) return result.status;
  if (result.status == 0) std::fputs("halvora: standard output cannot be written\n", stderr);
  return result.status == 0 ? 1 : result.status;
}
