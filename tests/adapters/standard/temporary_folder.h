// SPDX-License-Identifier: Apache-2.0
// A folder of one test, gone with everything in it when the test ends.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace halvora {

class TemporaryFolder {
 public:
  TemporaryFolder() : path_(testing::TempDir() + "halvora-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }

  /// Makes the file and its folders; returns its path.
  std::string write(const std::string& name, const std::string& bytes) const {
    const std::filesystem::path file = std::filesystem::path(path_) / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file.string();
  }

 private:
  std::string path_;
};

}  // namespace halvora
