// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <string>

#include <gtest/gtest.h>

#include "tests/adapters/standard/temporary_folder.h"
#include "tests/support/side_by_side.h"
#include "venue/base/written_files.h"

namespace halvora {
namespace {

TEST(WrittenFilesThreads, WhatWasWrittenSideBySideIsTakenBackWhole) {
  const TemporaryFolder folder;
  const std::atomic<bool> isInterrupted = false;
  WrittenFiles files(isInterrupted);
  const std::string within = folder.path() + "/new";
  const std::string file = within + "/file";
  sideBySide({[&] { files.makeFolder(within); }, [&] { files.replace(file, "x"); },
              [&] { files.firstFailure(); }},
             10);
  files.takeBack();
  EXPECT_FALSE(files.attributes(within));
  // In a folder that was there before, so that only the file comes and goes.
  folder.write("old/mark", "");
  const std::string beside = folder.path() + "/old/file";
  sideBySide({[&] { files.replace(beside, "x"); }, [&] { files.takeBack(); }}, 10);
  files.takeBack();
  EXPECT_FALSE(files.attributes(beside));
  EXPECT_TRUE(files.attributes(folder.path() + "/old/mark"));
}

}  // namespace
}  // namespace halvora
