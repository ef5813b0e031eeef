// SPDX-License-Identifier: Apache-2.0
// The login daemon as far as lights go, over a folder that stands for the kernel's: what it is told
// to set is in the light's file when it answers.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/adapters/linux/services/fake_service.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

class FakeLogin : public FakeService {
 public:
  static constexpr const char* kSetBrightness = "org.freedesktop.login1.Session.SetBrightness";

  FakeLogin(RunLoop& loop, Descriptors& descriptors, const std::string& address)
      : FakeService(loop, descriptors, address, "org.freedesktop.login1") {
    answers[kSetBrightness] = [this](sd_bus_message* call) {
      const char* subsystem = nullptr;
      const char* name = nullptr;
      std::uint32_t level = 0;
      if (sd_bus_message_read(call, "ssu", &subsystem, &name, &level) <= 0) return -1;
      set(std::string(subsystem) + "/" + name, level);
      return agree(call);
    };
  }

  void addLight(const std::string& light, std::uint32_t most, std::uint32_t level) {
    folder.write(light + "/max_brightness", std::to_string(most) + "\n");
    set(light, level);
  }
  void set(const std::string& light, std::uint32_t level) {
    folder.write(light + "/brightness", std::to_string(level) + "\n");
  }
  std::uint32_t levelOf(const std::string& light) const {
    std::uint32_t level = UINT32_MAX;
    std::ifstream(folder.path() + "/" + light + "/brightness") >> level;
    return level;
  }
  /// Where the lights are.
  const std::string& lights() const { return folder.path(); }

  TemporaryFolder folder;
};

}  // namespace halvora
