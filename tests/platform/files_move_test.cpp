// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_files.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

void expectMoves(Files& files, const std::string& folder) {
  const std::string from = folder + "/from";
  const std::string to = folder + "/to";
  ASSERT_TRUE(files.replace(from, "new"));
  ASSERT_TRUE(files.replace(to, "old"));
  EXPECT_TRUE(files.move(from, to));
  EXPECT_FALSE(files.attributes(from));
  EXPECT_EQ(files.read(to, 10), "new");

  EXPECT_FALSE(files.move(from, to)) << "there is nothing to move";
  EXPECT_FALSE(files.move(to, folder + "/missing/to"));
  EXPECT_EQ(files.read(to, 10), "new");

  files.removeFolder(to);
  EXPECT_FALSE(files.attributes(to)) << "a file can be removed too";
}

TEST(FilesMove, OnTheMachine) {
  const TemporaryFolder folder;
  StandardFiles files;
  expectMoves(files, folder.path());
}

TEST(FilesMove, InMemory) {
  VirtualFiles files;
  ASSERT_TRUE(files.makeFolder("/data"));
  expectMoves(files, "/data");
  ASSERT_TRUE(files.replace("/data/from", "bytes"));
  files.isReadOnly = true;
  EXPECT_FALSE(files.move("/data/from", "/data/to"));
  EXPECT_EQ(files.read("/data/from", 10), "bytes");
}

}  // namespace
}  // namespace halvora
