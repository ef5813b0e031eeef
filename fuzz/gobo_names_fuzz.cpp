// SPDX-License-Identifier: Apache-2.0
// Any bytes as the names in a gobo folder, one a line after the gobo's number: a gobo that is shown
// is a file of that folder, and the names alone give the same answer as before.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include <stdlib.h>

#include "light/gobo_animator.h"
#include "light/view_stack.h"
#include "platform/standard/standard_files.h"
#include "platform/virtual/virtual_devices.h"
#include "platform/virtual/virtual_run_loop.h"

namespace {

constexpr std::size_t kMostNames = 20;

const std::string& folder() {
  static const std::string kFolder = [] {
    std::string name = (std::filesystem::temp_directory_path() / "halvora-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    static const std::string kKept = name;
    std::atexit([] {
      std::error_code ignored;
      std::filesystem::remove_all(kKept, ignored);
    });
    return name;
  }();
  return kFolder;
}

// Names that no file can have are left out by the system.
void fill(std::string_view names) {
  std::error_code ignored;
  std::filesystem::remove_all(folder(), ignored);
  std::filesystem::create_directory(folder(), ignored);
  for (std::size_t count = 0; count < kMostNames && !names.empty(); ++count) {
    const std::string name(names.substr(0, names.find('\n')));
    names.remove_prefix(std::min(name.size() + 1, names.size()));
    const bool isName = !name.empty() && name.find('/') == std::string::npos &&
                        name.find('\0') == std::string::npos && name != "." && name != "..";
    if (isName) std::ofstream(folder() + "/" + name).flush();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int number = data[0] % 12;
  const std::string_view names(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto said = halvora::variantsNamedBy(names, number);
  if (said && !names.starts_with(std::to_string(number) + "_1")) std::abort();

  fill(names);
  halvora::VirtualRunLoop loop;
  halvora::TimerSet timers(loop);
  halvora::ViewStack views(timers);
  halvora::ScriptedRandom random(halvora::ScriptedRandom::Rule::greatest);
  halvora::GoboState state;
  const halvora::StandardFiles files;
  halvora::GoboAnimator gobo(state, views, files, random);
  state.currentGobo = number;
  gobo.build(std::make_shared<const halvora::GoboFolders>(halvora::GoboFolders{folder(), ""}));
  for (int change = 0; change < 3; ++change) {
    gobo.changeGobo();
    const std::string& shown = views.text(halvora::ViewId::goboImage);
    if (!shown.empty() && !shown.starts_with(folder() + "/" + std::to_string(number))) std::abort();
    if (!shown.empty() && !std::filesystem::is_regular_file(shown)) std::abort();
  }
  return 0;
}
