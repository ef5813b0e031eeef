// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_files.h"
#include "tests/support/side_by_side.h"

namespace halvora {
namespace {

TEST(VirtualFilesThreads, EveryCallMayBeMadeBesideTheOthers) {
  VirtualFiles files;
  files.put("/kept/file", "kept");
  sideBySide({
      [&] { files.attributes("/show/file"); },
      [&] { files.list("/show"); },
      [&] { files.read("/show/file", 10); },
      [&] { files.replace("/show/file", "new"); },
      [&] { files.removeLeftovers("/show/file"); },
      [&] { files.makeFolder("/show"); },
      [&] { files.move("/show/file", "/show/other"); },
      [&] { files.removeFolder("/show"); },
      [&] { files.put("/show/file", "put"); },
      [&] { files.remove("/show/file"); },
      [&] { files.touch("/show/other", 2); },
  });
  EXPECT_EQ(files.read("/kept/file", 10), "kept");
}

}  // namespace
}  // namespace halvora
